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
#pragma GCC target("avx2")

#include "IntegerRows.h"
#include "LanesAvx2.h"

void ResampleRowsIntegerAvx2(const SResampleJob& job, int firstRow, int lastRow) {
  SIntegerRows<SLanesAvx2, &ResampleColumnsSpansAvx2>::rows(job, firstRow, lastRow);
}

#endif
