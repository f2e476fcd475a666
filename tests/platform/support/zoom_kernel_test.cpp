#include "ZoomKernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "support/Kernels.h"

namespace {

class ZoomKernel : public testing::TestWithParam<SZoomKernel> {
 protected:
  void SetUp() override {
    if (!FindKernel(GetParam().name)) GTEST_SKIP() << "not on this machine";
  }
};

const SZoomKernel& plain() {
  return AllZoomKernels().back();
}

/// Filtered lines without their padding. `samples` holds what may be read and nothing else.
std::vector<std::vector<float>> filtered(const SZoomKernel& kernel, const SZoomLineFilter& filter,
                                         const std::vector<std::uint16_t>& samples, int lines) {
  std::vector<std::vector<float>> made(
      static_cast<std::size_t>(lines),
      std::vector<float>(filter.valuesPerLine + ZOOM_LINE_PADDING, -1.0F));
  std::vector<float*> targets;
  for (std::vector<float>& line : made) targets.push_back(line.data());
  std::vector<float> scratch;
  kernel.filterLines(samples.data(), lines, filter, scratch, targets.data());
  for (std::vector<float>& line : made) line.resize(filter.valuesPerLine);
  return made;
}

struct SLineCase {
  const char* name;
  double from, to;   // source edges
  int pixels;        // of the target
  int lower, upper;  // columns that may be read
  bool inBlocks;     // a filter that enlarges, and a line that holds a block's window
};

TEST_P(ZoomKernel, FiltersLinesToTheSameBits) {
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
    SZoomLineFilter filter;
    filter.axis.setUp(c.from, c.to, c.pixels, c.lower, c.upper);
    filter.blocks = FindZoomBlocks(filter.axis, c.lower, c.upper);
    ASSERT_EQ(!filter.blocks.first.empty(), c.inBlocks);
    filter.firstColumn = c.lower;
    filter.lastColumn = c.upper;
    filter.stride = static_cast<std::ptrdiff_t>(filter.samplesRead()) + 5;
    filter.valuesPerLine = static_cast<std::size_t>(c.pixels) * ZOOM_COMPONENTS;
    for (int lines = 1; lines <= SZoomKernel::MOST_LINES; ++lines) {
      std::vector<std::uint16_t> samples(static_cast<std::size_t>(lines - 1) *
                                             static_cast<std::size_t>(filter.stride) +
                                         filter.samplesRead());
      for (std::uint16_t& sample : samples)
        sample = lines == 1 ? (random() & 1 ? 65535 : 0) : static_cast<std::uint16_t>(random());
      EXPECT_EQ(filtered(GetParam(), filter, samples, lines),
                filtered(plain(), filter, samples, lines));
    }
  }
}

TEST_P(ZoomKernel, CombinesRowsToTheSameBits) {
  std::mt19937 random(7);
  std::uniform_real_distribution<float> value(0, 65535);
  for (const int count : {1, 8, 15, 16, 33, 300}) {
    std::vector<std::vector<float>> lines(SZoomRows::MOST + ZOOM_TAPS - 1);
    for (std::vector<float>& line : lines)
      for (int i = 0; i < count + ZOOM_LINE_PADDING; ++i)
        line.push_back(i % 5 ? value(random) : (i % 2 ? 65535.0F : 0.0F));
    SZoomAxis axis;
    axis.setUp(0.4, 3.9, SZoomRows::MOST, -9, 99);
    for (const int rows : {1, SZoomRows::MOST}) {
      const auto combined = [&](const SZoomKernel& kernel) {
        std::vector<std::vector<std::uint16_t>> made(
            SZoomRows::MOST, std::vector<std::uint16_t>(static_cast<std::size_t>(count) + 1, 7));
        SZoomRows job;
        job.rows = rows;
        job.count = count;
        for (std::size_t i = 0; i < lines.size(); ++i) job.lines[i] = lines[i].data();
        for (std::size_t r = 0; r < made.size(); ++r) {
          std::copy_n(axis.weights.begin() + static_cast<std::ptrdiff_t>(r) * ZOOM_TAPS, ZOOM_TAPS,
                      job.weights[r].begin());
          job.output[r] = made[r].data();
        }
        kernel.combineRows(job);
        for (const auto& row : made) EXPECT_EQ(row.back(), 7) << "written behind the row";
        return made;
      };
      EXPECT_EQ(combined(GetParam()), combined(plain())) << count << " values, " << rows << " rows";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kernels, ZoomKernel, testing::ValuesIn(AllZoomKernels()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
