#include "render/Resampler.h"

#include <cstdlib>

#include "IntegerKernel.h"
#include "ScalarFormula.h"
#include "SpanKernel.h"
#include "support/ErrorReport.h"

namespace {

bool always() {
  return true;
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

template <auto COLUMNS>
void resampleRowsByColumns(const SResampleJob& job, int firstRow, int lastRow) {
  for (int y = firstRow; y <= lastRow; ++y) COLUMNS(job, y, job.area.left, job.area.right + 1);
}

#if defined(__x86_64__)

bool hasAvx2() {
  return __builtin_cpu_supports("avx2");
}

bool hasAvx512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
         __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
}

#endif

const SResampler resamplers[] = {
#if defined(__x86_64__)
    {"integer", "avx512", &hasAvx512, &ResampleRowsIntegerAvx512},
    {"integer", "avx2", &hasAvx2, &ResampleRowsIntegerAvx2},
    {"spans", "avx512", &hasAvx512, &resampleRowsByColumns<&ResampleColumnsSpansAvx512>},
    {"spans", "avx2", &hasAvx2, &resampleRowsByColumns<&ResampleColumnsSpansAvx2>},
#endif
    {"spans", "plain", &always, &resampleRowsByColumns<&ResampleColumnsSpans>},
    {"scalar", "plain", &always, &resampleRowsScalar},
};

const std::string& chosenName() {
  static const std::string name = [] {
    const char* value = std::getenv("STABILIZE_KERNEL");
    return std::string(value ? value : "");
  }();
  return name;
}

}  // namespace

std::span<const SResampler> AllResamplers() {
  return resamplers;
}

const SResampler* FindResampler(const std::string& name) {
  for (const SResampler& resampler : resamplers) {
    const bool meant = name.empty() || name == resampler.name || name == resampler.fullName();
    if (meant && resampler.usable()) return &resampler;
  }
  theError.set(UNKNOWN_RESAMPLER, "No usable resampling kernel is called \"" + name +
                                      "\" (environment variable STABILIZE_KERNEL)");
  return nullptr;
}

const SResampler* TheResampler() {
  static const SResampler* const found = FindResampler(chosenName());
  if (found) return found;
  return FindResampler(chosenName());  // again, for the caller's thread to have the error
}

std::string ResamplerName() {
  const SResampler* resampler = TheResampler();
  return resampler ? resampler->fullName() : std::string();
}
