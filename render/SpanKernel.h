#pragma once

#include "render/Resampler.h"

/// The resampler by spans: pixels of a row whose source pixels lie side by side are blended as one
/// contiguous run. One source text compiled for several instruction sets; same bits from each.

void ResampleRowsSpans(const SResampleJob& job, int firstRow, int lastRow);
#if defined(__x86_64__)
bool HasAvx2();
bool HasAvx512();
/// REQUIRE: the instruction set is there.
void ResampleRowsSpansAvx2(const SResampleJob& job, int firstRow, int lastRow);
void ResampleRowsSpansAvx512(const SResampleJob& job, int firstRow, int lastRow);
#endif
