#include "render/Resampler.h"

#include <atomic>
#include <string_view>

#include "IntegerKernel.h"
#include "ScalarFormula.h"
#include "SpanKernel.h"
#include "support/Kernels.h"

namespace {

constexpr char AVX512[] = "avx512";
constexpr char AVX2[] = "avx2";
constexpr char PLAIN[] = "plain";
constexpr char SCALAR[] = "scalar";

std::atomic<const char*> lastKernel{""};

/// A resampler that leaves its name behind.
template <auto ROWS, const char* KERNEL>
void noted(const SResampleJob& job, int firstRow, int lastRow) {
  lastKernel.store(KERNEL, std::memory_order_relaxed);
  ROWS(job, firstRow, lastRow);
}

void resampleRowsScalar(const SResampleJob& job, int firstRow, int lastRow) {
  for (int y = firstRow; y <= lastRow; ++y) {
    const float rowX = job.map.rowTermX(y);
    const float rowY = job.map.rowTermY(y);
    for (int x = job.area.left; x <= job.area.right; ++x) {
      ResamplePixel(job, x, y, job.map.sourceX(x, rowX), job.map.sourceY(x, rowY));
    }
  }
}

void resampleRowsSpans(const SResampleJob& job, int firstRow, int lastRow) {
  for (int y = firstRow; y <= lastRow; ++y)
    ResampleColumnsSpans(job, y, job.area.left, job.area.right + 1);
}

constexpr SResampler resamplers[] = {
#if defined(__x86_64__)
    {AVX512, &noted<&ResampleRowsIntegerAvx512, AVX512>},
    {AVX2, &noted<&ResampleRowsIntegerAvx2, AVX2>},
#endif
    {PLAIN, &noted<&resampleRowsSpans, PLAIN>},
    {SCALAR, &noted<&resampleRowsScalar, SCALAR>},
};

}  // namespace

std::span<const SResampler> AllResamplers() {
  return resamplers;
}

const SResampler* TheResampler() {
  const SKernel* const kernel = TheKernel();
  if (!kernel) return nullptr;
  for (const SResampler& resampler : resamplers)
    if (std::string_view(kernel->name) == resampler.kernel) return &resampler;
  return nullptr;
}

const char* LastResamplerKernel() {
  return lastKernel.load(std::memory_order_relaxed);
}
