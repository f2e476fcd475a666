#include "ZoomLine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

// Cubic of Mitchell & Netravali (1988) with B = 0, C = 1/2; 0 from a distance of 2 on.
double cubic(double distance) {
  const double x = std::abs(distance);
  if (x < 1.0) return (1.5 * x - 2.5) * x * x + 1.0;
  if (x < 2.0) return ((-0.5 * x + 2.5) * x - 4.0) * x + 2.0;
  return 0.0;
}

}  // namespace

void SZoomAxis::setUp(double from, double to, int count, int lower, int upper) {
  const double scale = (to - from) / count;
  const double width = std::max(scale, 1.0);  // reducing: the filter covers what it averages
  taps = static_cast<int>(std::ceil(4.0 * width)) + (width > 1.0 ? 1 : 0);
  samples.assign(static_cast<std::size_t>(count) * taps, 0);
  weights.assign(static_cast<std::size_t>(count) * taps, 0.0F);
  std::vector<double> exact(static_cast<std::size_t>(taps));
  for (int i = 0; i < count; ++i) {
    const double centre = from + (i + 0.5) * scale - 0.5;
    const int start = static_cast<int>(std::floor(centre - 2.0 * width)) + 1;
    double sum = 0.0;
    int last = start;
    for (int t = 0; t < taps; ++t) {
      const double distance = (start + t - centre) / width;
      if (distance < 2.0) last = start + t;
      exact[t] = cubic(distance);
      sum += exact[t];
    }
    for (int t = 0; t < taps; ++t) {
      const std::size_t at = static_cast<std::size_t>(i) * taps + t;
      // A tap beyond the filter's end must not widen the range that the result is limited to.
      samples[at] = std::clamp(std::min(start + t, last), lower, upper);
      weights[at] = static_cast<float>(exact[t] / sum);
    }
  }
}

SZoomBlocks FindZoomBlocks(const SZoomAxis& axis, int firstColumn, int lastColumn) {
  SZoomBlocks blocks;
  const int samplesRead = (lastColumn + 1 - firstColumn) * ZOOM_COMPONENTS;
  if (axis.taps != ZOOM_TAPS || samplesRead < SZoomBlocks::WINDOW) return blocks;
  const int pixels = static_cast<int>(axis.samples.size()) / axis.taps;
  const int count = pixels * ZOOM_COMPONENTS;
  for (int at = 0; at < count; at += SZoomBlocks::SIZE) {
    const auto tapsOf = [&](int component) {
      const int pixel = std::min(component / ZOOM_COMPONENTS, pixels - 1);  // padding: the last
      return static_cast<std::size_t>(pixel) * ZOOM_TAPS;
    };
    const int wanted = (axis.samples[tapsOf(at)] - firstColumn) * ZOOM_COMPONENTS;
    const int first = std::min(wanted, samplesRead - SZoomBlocks::WINDOW);
    blocks.first.push_back(first);
    for (std::size_t t = 0; t < ZOOM_TAPS; ++t) {
      for (int component = at; component < at + SZoomBlocks::SIZE; ++component) {
        const std::size_t tap = tapsOf(component) + t;
        const int sample = (axis.samples[tap] - firstColumn) * ZOOM_COMPONENTS +
                           component % ZOOM_COMPONENTS - first;
        if (sample < 0 || sample >= SZoomBlocks::WINDOW) return {};
        blocks.sample.push_back(static_cast<std::uint8_t>(sample));
        blocks.weight.push_back(axis.weights[tap]);
      }
    }
  }
  return blocks;
}
