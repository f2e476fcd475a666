#include "ZoomLine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "support/Kernels.h"

namespace {

/// A filtered line without its padding.
std::vector<float> line(const std::vector<std::uint16_t>& samples, const SZoomAxis& axis,
                        int pixels, int origin, const SZoomBlocks* blocks) {
  const auto values = static_cast<std::size_t>(pixels) * ZOOM_COMPONENTS;
  std::vector<float> filtered(values + ZOOM_LINE_PADDING, -1.0F);
  if (blocks) {
#if defined(STAB_ZOOM_AVX512)
    FilterZoomLineAvx512(samples.data(), *blocks, filtered.data());
#endif
  } else {
    std::vector<float> widened(samples.begin(), samples.end());
    widened.resize(samples.size() + ZOOM_LINE_PADDING);
    FilterZoomLine(widened.data(), axis, origin, filtered.data());
  }
  filtered.resize(values);
  return filtered;
}

struct SLineCase {
  const char* name;
  double from, to;   // source edges
  int pixels;        // of the target
  int lower, upper;  // columns that may be read
  bool inBlocks;     // a filter that enlarges
};

TEST(ZoomLine, BlocksGiveTheSameBits) {
  const bool usable = FindKernel("avx512") != nullptr;
  const SLineCase cases[] = {
      {"a little", 2.3, 196.4, 200, 0, 199, true},
      {"half a pixel", 0.5, 63.5, 63, 0, 63, true},
      {"much", 20.25, 23.5, 117, 11, 90, true},
      {"as it is", 3, 36, 33, 3, 35, true},
      {"a window and one pixel", 1, 11.7, 12, 1, 11, true},
      {"past both edges", -4, 64, 68, 0, 59, true},
      {"whole blocks", 5, 52.5, 48, 5, 52, true},
      {"too short a line", 0, 9.5, 10, 0, 9, false},
      {"a filter that reduces", 0, 200, 150, 0, 199, false},
  };
  std::mt19937 random(6);
  for (const SLineCase& c : cases) {
    SCOPED_TRACE(c.name);
    SZoomAxis axis;
    axis.setUp(c.from, c.to, c.pixels, c.lower, c.upper);
    const SZoomBlocks blocks = FindZoomBlocks(axis, c.lower, c.upper);
    ASSERT_EQ(!blocks.first.empty(), c.inBlocks);
    if (!c.inBlocks || !usable) continue;
    for (int i = 0; i < 4; ++i) {
      // No sample more than may be read: a sanitizer would see it.
      std::vector<std::uint16_t> samples(static_cast<std::size_t>(c.upper + 1 - c.lower) *
                                         ZOOM_COMPONENTS);
      for (std::uint16_t& sample : samples)
        sample = i == 0 ? (random() & 1 ? 65535 : 0) : static_cast<std::uint16_t>(random());
      EXPECT_EQ(line(samples, axis, c.pixels, c.lower, &blocks),
                line(samples, axis, c.pixels, c.lower, nullptr));
    }
  }
}

}  // namespace
