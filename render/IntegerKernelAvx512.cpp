#if defined(__x86_64__)

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

#include "CornerWeights.h"
#include "IntegerKernel.h"
#include "RowSpans.h"
#include "ScalarFormula.h"
#include "SpanKernel.h"

// What is above is compiled for every machine; nothing of it may be compiled anew below.
#pragma GCC target("avx512f,avx512bw,avx512dq,avx512vl")

#include "IntegerRows.h"
#include "LanesAvx512.h"

void ResampleRowsIntegerAvx512(const SResampleJob& job, int firstRow, int lastRow) {
  SIntegerRows<SLanesAvx512, &ResampleColumnsSpansAvx512>::rows(job, firstRow, lastRow);
}

#endif
