#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/ZoomFractional.h"

namespace {

struct SFrame {
  int width = 0;
  int height = 0;
  std::vector<std::uint16_t> samples;

  SFrame(int w, int h, std::uint16_t value = 0)
      : width(w), height(h), samples(static_cast<std::size_t>(w) * h * 3, value) {}
  std::uint16_t& at(int x, int y, int c) {
    return samples[(static_cast<std::size_t>(y) * width + x) * 3 + c];
  }
  std::uint16_t at(int x, int y, int c) const {
    return samples[(static_cast<std::size_t>(y) * width + x) * 3 + c];
  }
};

SFrame noiseFrame(int width, int height) {
  SFrame frame(width, height);
  std::mt19937 random(5);
  for (auto& sample : frame.samples) sample = static_cast<std::uint16_t>(random() >> 16);
  return frame;
}

void zoom(const SRectD& source, const SRect& target, const SFrame& from, SFrame& to) {
  CZoomFractional zoom(2);
  zoom.initialize(CImageFormat(from.width, from.height), 2, 2, 128, 128, 128);
  zoom.convert(source, target, from.samples.data(), to.samples.data());
}

double cubic(double x) {
  x = std::abs(x);
  if (x < 1.0) return 1.5 * x * x * x - 2.5 * x * x + 1.0;
  return x < 2.0 ? -0.5 * x * x * x + 2.5 * x * x - 4.0 * x + 2.0 : 0.0;
}

// One direction of the filter, straight from its definition, in double and unclamped indices.
double filtered(double centre, double width, int lower, int upper,
                const std::function<double(int)>& sample) {
  double sum = 0.0;
  double weights = 0.0;
  double low = 1e9;
  double high = -1e9;
  for (int i = static_cast<int>(std::floor(centre - 2.0 * width)) - 1;
       i <= centre + 2.0 * width + 1.0; ++i) {
    const double weight = cubic((i - centre) / width);
    if (std::abs(i - centre) >= 2.0 * width) continue;
    const double value = sample(std::clamp(i, lower, upper));
    sum += weight * value;
    weights += weight;
    low = std::min(low, value);
    high = std::max(high, value);
  }
  return std::clamp(sum / weights, low, high);
}

TEST(ZoomFractional, IsTheSeparableCubicWithinItsReach) {
  const struct {
    const char* name;
    SRectD source;
    SRect target;
    SRect reach;  // what the filter may read
  } cases[] = {{"enlarges", {8.3, 6.2, 31.9, 28.4}, {3, 2, 36, 30}, {3, 2, 36, 30}},
               {"moves_by_half_a_pixel", {3.5, 2, 37.5, 31}, {3, 2, 36, 30}, {3, 2, 37, 30}},
               {"reduces", {1, 2, 39, 32}, {10, 10, 19, 17}, {1, 2, 38, 31}},
               {"reduces_and_enlarges", {0, 12.5, 41, 17.5}, {5, 5, 20, 30}, {0, 5, 40, 30}},
               {"reaches_out_of_the_frame", {-3, -2, 44, 35}, {0, 0, 40, 32}, {0, 0, 40, 32}},
               {"edge_is_off_by_rounding_top_left",
                {3.0 - 1e-12, 2.0 - 1e-12, 20, 16.5},
                {3, 2, 36, 30},
                {3, 2, 36, 30}},
               {"edge_is_off_by_rounding_bottom_right",
                {20, 16.5, 37.0 + 1e-12, 31.0 + 1e-12},
                {3, 2, 36, 30},
                {3, 2, 36, 30}},
               {"one_pixel", {7.2, 7.2, 7.9, 7.9}, {7, 7, 7, 7}, {7, 7, 7, 7}}};
  const SFrame from = noiseFrame(41, 33);
  for (const auto& [name, source, target, reach] : cases) {
    SFrame to(41, 33, 777);
    zoom(source, target, from, to);
    const double scaleX = (source.right - source.left) / (target.right - target.left + 1);
    const double scaleY = (source.bottom - source.top) / (target.bottom - target.top + 1);
    for (int y = 0; y < to.height; ++y) {
      for (int x = 0; x < to.width; ++x) {
        const bool isInside =
            x >= target.left && x <= target.right && y >= target.top && y <= target.bottom;
        const double centreX = source.left + (x - target.left + 0.5) * scaleX - 0.5;
        const double centreY = source.top + (y - target.top + 0.5) * scaleY - 0.5;
        for (int c = 0; c < 3; ++c) {
          const auto line = [&](int sourceY) {
            return filtered(centreX, std::max(scaleX, 1.0), reach.left, reach.right,
                            [&](int sourceX) { return from.at(sourceX, sourceY, c); });
          };
          const double expected =
              isInside ? filtered(centreY, std::max(scaleY, 1.0), reach.top, reach.bottom, line)
                       : 777.0;
          // Half a code of rounding and the precision of single floats.
          ASSERT_NEAR(to.at(x, y, c), expected, 0.55) << name << " " << x << ", " << y;
        }
      }
    }
  }
}

TEST(ZoomFractional, EqualRectanglesGiveIdenticalSamples) {
  const SFrame from = noiseFrame(53, 40);
  SFrame to(53, 40);
  zoom({0, 0, 53, 40}, {0, 0, 52, 39}, from, to);
  EXPECT_EQ(to.samples, from.samples);
}

const SRectD SOURCE{10.25, 9.5, 50.75, 40.125};
const SRect TARGET{4, 3, 59, 44};

// The picture is enlarged within its mat; both ends of the frame are overwritten before they are
// read unless a copy is kept.
TEST(ZoomFractional, InPlaceEqualsTwoFrames) {
  const SFrame from = noiseFrame(64, 48);
  SFrame apart = from;
  SFrame inPlace = from;
  zoom(SOURCE, TARGET, from, apart);
  zoom(SOURCE, TARGET, inPlace, inPlace);
  EXPECT_EQ(inPlace.samples, apart.samples);
}

TEST(ZoomFractional, PartsEqualTheWhole) {
  const SFrame from = noiseFrame(64, 48);
  SFrame whole = from;
  zoom(SOURCE, TARGET, from, whole);
  CZoomFractional parts(2);
  parts.initialize(CImageFormat(64, 48), 2, 2, 128, 128, 128);
  SFrame to = from;
  ASSERT_TRUE(parts.prepare(SOURCE, TARGET));
  for (const auto& [first, last] : {std::pair{30, 100}, {-5, 3}, {4, 4}, {9, 8}, {5, 29}}) {
    parts.convertRows(first, last, from.samples.data(), to.samples.data());
  }
  EXPECT_EQ(to.samples, whole.samples);

  EXPECT_FALSE(parts.prepare({50, 9, 10, 40}, TARGET));
  parts.convertRows(0, 47, whole.samples.data(), to.samples.data());
  EXPECT_EQ(to.samples, whole.samples) << "a source without extent writes nothing";
}

TEST(ZoomFractional, SecondRectangleDoesNotSeeTheFirst) {
  const SFrame from = noiseFrame(64, 48);
  CZoomFractional recycled(2);
  recycled.initialize(CImageFormat(64, 48), 2, 2, 128, 128, 128);
  SFrame out = from;
  recycled.convert({0, 0, 64, 48}, {5, 5, 20, 12}, from.samples.data(), out.samples.data());
  for (const SRectD& source : {SRectD{9.5, 8.5, 50, 40}, SRectD{9.5, 8.5, 50, 41}}) {
    SFrame expected = from;
    out = from;
    zoom(source, {0, 0, 63, 47}, from, expected);
    recycled.convert(source, {0, 0, 63, 47}, from.samples.data(), out.samples.data());
    EXPECT_EQ(out.samples, expected.samples);
  }
}

TEST(ZoomFractional, EdgesDoNotRing) {
  SFrame from(60, 40, 9000);
  for (int y = 0; y < 40; ++y)
    for (int x = 30; x < 60; ++x)
      for (int c = 0; c < 3; ++c) from.at(x, y, c) = 50000;
  SFrame to(60, 40);
  zoom({10.3, 7.1, 49.2, 33.4}, {0, 0, 59, 39}, from, to);
  const auto [low, high] = std::minmax_element(to.samples.begin(), to.samples.end());
  EXPECT_EQ(*low, 9000);
  EXPECT_EQ(*high, 50000);
}

TEST(ZoomFractional, RefusedRectanglesWriteNothing) {
  const SFrame from = noiseFrame(20, 10);
  const double infinite = std::numeric_limits<double>::infinity();
  const std::pair<SRectD, SRect> cases[] = {
      {{5, 2, 5, 8}, {0, 0, 19, 9}},          {{5, 8, 9, 2}, {0, 0, 19, 9}},
      {{0, 0, 20, 10}, {0, 0, 20, 9}},        {{0, 0, 20, 10}, {-1, 0, 19, 9}},
      {{0, 0, 20, 10}, {9, 0, 8, 9}},         {{0, 0, infinite, 10}, {0, 0, 19, 9}},
      {{-infinite, 0, 20, 10}, {0, 0, 9, 9}}, {{std::nan(""), 0, 20, 10}, {0, 0, 19, 9}},
  };
  for (const auto& [source, target] : cases) {
    SFrame to(20, 10, 5);
    zoom(source, target, from, to);
    EXPECT_EQ(to.samples, SFrame(20, 10, 5).samples) << source.right << " " << target.right;
  }
}

}  // namespace
