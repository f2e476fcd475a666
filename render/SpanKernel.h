#pragma once

#include "render/Resampler.h"

/// The resampler by spans, for every map: pixels of a row whose source pixels lie side by side are
/// blended as one contiguous run, in double precision. One source text compiled for several
/// instruction sets; same bits from each.

/// Columns [first, end) of row `y`.
void ResampleColumnsSpans(const SResampleJob& job, int y, int first, int end);
#if defined(__x86_64__)
/// REQUIRE: the instruction set is there.
void ResampleColumnsSpansAvx2(const SResampleJob& job, int y, int first, int end);
void ResampleColumnsSpansAvx512(const SResampleJob& job, int y, int first, int end);
#endif
