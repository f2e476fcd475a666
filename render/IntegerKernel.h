#pragma once

#include "render/Resampler.h"

/// The resampler in whole numbers: where a map does not scale, whole vectors of samples are blended
/// with 16-bit weights, exactly; everything else is the business of the resampler by spans.

#if defined(__x86_64__)
/// REQUIRE: the instruction set is there.
void ResampleRowsIntegerAvx2(const SResampleJob& job, int firstRow, int lastRow);
void ResampleRowsIntegerAvx512(const SResampleJob& job, int firstRow, int lastRow);
#endif
