#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/PixelRegionList.h"

namespace {

constexpr int WIDTH = 6;
constexpr int HEIGHT = 5;
constexpr int COMPONENTS = 3;
using Samples = std::vector<std::uint16_t>;

std::uint16_t sampleAt(int x, int y, int c, int base) {
  return static_cast<std::uint16_t>(base + y * 100 + x * 10 + c);
}

Samples frame(int base) {
  Samples samples;
  for (int y = 0; y < HEIGHT; ++y)
    for (int x = 0; x < WIDTH; ++x)
      for (int c = 0; c < COMPONENTS; ++c) samples.push_back(sampleAt(x, y, c, base));
  return samples;
}

// `rect` of a frame, each line from the frame that `baseOfLine` names.
template <typename BaseOfLine>
Samples expectedPixels(const SRect& rect, BaseOfLine&& baseOfLine) {
  Samples samples;
  for (int y = rect.top; y <= rect.bottom; ++y)
    for (int x = rect.left; x <= rect.right; ++x)
      for (int c = 0; c < COMPONENTS; ++c)
        samples.push_back(baseOfLine(y) < 0 ? 0 : sampleAt(x, y, c, baseOfLine(y)));
  return samples;
}

TEST(PixelRegionList, AddClipsToTheFrameAndCopiesItsPart) {
  const struct {
    const char* name;
    SRect rect;
    SRect clipped;  // empty: nothing is added
  } cases[] = {
      {"inside", {1, 2, 3, 4}, {1, 2, 3, 4}},
      {"one pixel", {5, 4, 5, 4}, {5, 4, 5, 4}},
      {"over the edges", {-3, -1, 40, 1}, {0, 0, 5, 1}},
      {"outside", {6, 0, 9, 3}, {0, 0, -1, -1}},
      {"inverted", {3, 3, 2, 4}, {0, 0, -1, -1}},
  };
  const Samples source = frame(1000);
  for (const auto& c : cases) {
    CPixelRegionList list;
    list.Add(c.rect, source.data(), WIDTH, HEIGHT, COMPONENTS);
    list.Add(c.rect, nullptr, WIDTH, HEIGHT, COMPONENTS);
    if (c.clipped.right < c.clipped.left) {
      EXPECT_TRUE(list.IsEmpty()) << c.name;
      continue;
    }
    ASSERT_EQ(list.Regions().size(), 2U) << c.name;
    EXPECT_EQ(list.Regions()[0].rect, c.clipped) << c.name;
    EXPECT_EQ(list.Regions()[0].pixels, expectedPixels(c.clipped, [](int) { return 1000; }));
    EXPECT_TRUE(list.Regions()[1].pixels.empty()) << c.name;
  }
}

TEST(PixelRegionList, ReplaceTakesTheLinesOfTheField) {
  using EField = CPixelRegionList::EField;
  const SRect rect{1, 1, 4, 4};
  const Samples before = frame(1000);
  const Samples now = frame(5000);
  for (const EField field : {EField::first, EField::second, EField::both}) {
    const auto isTaken = [field](int y) {
      return field == EField::both || (y % 2 == 0) == (field == EField::first);
    };
    CPixelRegionList list;
    list.Add(rect, before.data(), WIDTH, HEIGHT, COMPONENTS);
    list.Add(rect, nullptr, WIDTH, HEIGHT, COMPONENTS);
    list.ReplacePixelsFromFrame(now.data(), WIDTH, HEIGHT, COMPONENTS, field);
    EXPECT_EQ(list.Regions()[0].pixels,
              expectedPixels(rect, [&](int y) { return isTaken(y) ? 5000 : 1000; }));
    EXPECT_EQ(list.Regions()[1].pixels,
              expectedPixels(rect, [&](int y) { return isTaken(y) ? 5000 : -1; }));
  }
}

TEST(PixelRegionList, CopiesTheRegionsLinesFromFrameToFrame) {
  const Samples from = frame(1000);
  Samples to = frame(5000);
  CPixelRegionList list;
  list.Add({1, 1, 2, 3}, nullptr, WIDTH, HEIGHT, COMPONENTS);
  list.Add({5, 3, 5, 3}, nullptr, WIDTH, HEIGHT, COMPONENTS);
  list.CopyPixelsFrameToFrame(from.data(), to.data(), WIDTH, HEIGHT, COMPONENTS,
                              CPixelRegionList::EField::second);
  Samples expected;
  for (int y = 0; y < HEIGHT; ++y)
    for (int x = 0; x < WIDTH; ++x)
      for (int c = 0; c < COMPONENTS; ++c) {
        const bool isFirst = x >= 1 && x <= 2 && (y == 1 || y == 3);
        const bool isSecond = x == 5 && y == 3;
        expected.push_back(sampleAt(x, y, c, isFirst || isSecond ? 1000 : 5000));
      }
  EXPECT_EQ(to, expected);
}

// A region may come from a larger frame than the one it is used with.
TEST(PixelRegionList, PartsOutsideTheFrameAreLeftAlone) {
  const Samples large(static_cast<std::size_t>(WIDTH) * 4 * HEIGHT * COMPONENTS, 7);
  CPixelRegionList list;
  list.Add({4, 1, 9, 2}, large.data(), WIDTH * 4, HEIGHT, COMPONENTS);
  const Samples source = frame(1000);
  Samples target = frame(5000);
  list.CopyPixelsFrameToFrame(source.data(), target.data(), WIDTH, HEIGHT, COMPONENTS,
                              CPixelRegionList::EField::both);
  EXPECT_EQ(target[(1 * WIDTH + 3) * COMPONENTS], sampleAt(3, 1, 0, 5000));
  EXPECT_EQ(target[(1 * WIDTH + 5) * COMPONENTS], sampleAt(5, 1, 0, 1000));
  EXPECT_EQ(target[(2 * WIDTH + 0) * COMPONENTS], sampleAt(0, 2, 0, 5000));
  list.ReplacePixelsFromFrame(source.data(), WIDTH, HEIGHT, COMPONENTS,
                              CPixelRegionList::EField::both);
  const Samples& pixels = list.Regions()[0].pixels;
  EXPECT_EQ(pixels[1 * COMPONENTS], sampleAt(5, 1, 0, 1000));
  EXPECT_EQ(pixels[2 * COMPONENTS], 7);
}

TEST(PixelRegionList, TakeFromMovesBehindWhatIsThere) {
  CPixelRegionList list;
  CPixelRegionList other;
  const Samples source = frame(0);
  list.Add({0, 0, 1, 1}, nullptr, WIDTH, HEIGHT, COMPONENTS);
  other.Add({2, 2, 3, 3}, source.data(), WIDTH, HEIGHT, COMPONENTS);
  list.TakeFrom(other);
  list.TakeFrom(list);
  EXPECT_TRUE(other.IsEmpty());
  ASSERT_EQ(list.Regions().size(), 2U);
  EXPECT_EQ(list.Regions()[1].rect, (SRect{2, 2, 3, 3}));
  EXPECT_EQ(list.Regions()[1].pixels.size(), 12U);
}

}  // namespace
