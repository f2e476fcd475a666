#include "render/Resampler.h"

#include <cstdlib>

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

const SResampler resamplers[] = {
#if defined(__x86_64__)
    {"spans", "avx512", &HasAvx512, &ResampleRowsSpansAvx512},
    {"spans", "avx2", &HasAvx2, &ResampleRowsSpansAvx2},
#endif
    {"spans", "plain", &always, &ResampleRowsSpans},
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
