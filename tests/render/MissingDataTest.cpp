#include "render/MissingData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

CTrackingPoints pathOf(const std::vector<CTrackPoint>& list, int firstFrame = 20) {
  CTrackingPoints path;
  for (std::size_t i = 0; i < list.size(); ++i) {
    path.Point(firstFrame + static_cast<int>(i)) = list[i];
  }
  return path;
}

struct SZoomCase {
  const char* name;
  SRect area;
  std::vector<CTrackPoint> path;
  double rise;  // of smoothed point 1 over smoothed point 0, in every frame
  SRectD expected;
};

TEST(MissingDataTest, ZoomSourceIsWhatAllFramesShareInTheAreasAspectRatio) {
  const double halfDegree = 0.5 * 3.1415927 / 180.0;  // rise 1: as if one degree
  const SZoomCase cases[] = {
      {"no motion", {10, 20, 109, 69}, {{5, 5}, {5, 5}}, 0, {10, 20, 110, 70}},
      {"no point selected", {10, 20, 109, 69}, {}, 0, {10, 20, 110, 70}},
      // 90 x 50 left: the width decides, 45 rows about the centre.
      {"to the right", {0, 0, 99, 49}, {{5, 5}, {15, 5}, {8, 5}}, 0, {0, 2.5, 90, 47.5}},
      {"to the left", {0, 0, 99, 49}, {{5, 5}, {-5, 5}}, 0, {10, 2.5, 100, 47.5}},
      // 100 x 40 left: the height decides, 80 columns about the centre.
      {"downwards", {0, 0, 99, 49}, {{5, 5}, {5, 15}}, 0, {10, 0, 90, 40}},
      {"both ways", {0, 0, 99, 99}, {{5, 5}, {15, 5}, {-5, 5}}, 0, {10, 10, 90, 90}},
      {"turned",
       {0, 0, 99, 99},
       {{5, 5}, {5, 5}},
       1,
       {100 * halfDegree, 100 * halfDegree, 100 - 100 * halfDegree, 100 - 100 * halfDegree}},
  };
  for (const SZoomCase& c : cases) {
    SCOPED_TRACE(c.name);
    const std::vector<CTrackPoint> low(c.path.size(), CTrackPoint(0, 40));
    const std::vector<CTrackPoint> high(c.path.size(), CTrackPoint(90, 40 + c.rise));
    const SRectD zoom = ZoomSourceRectangle(c.area, pathOf(c.path), pathOf(low), pathOf(high));
    EXPECT_NEAR(zoom.left, c.expected.left, 1e-9);
    EXPECT_NEAR(zoom.top, c.expected.top, 1e-9);
    EXPECT_NEAR(zoom.right, c.expected.right, 1e-9);
    EXPECT_NEAR(zoom.bottom, c.expected.bottom, 1e-9);
  }
}

TEST(MissingDataTest, MotionAcrossTheWholePictureLeavesNothingToZoom) {
  const auto path = pathOf({{0, 0}, {60, 0}, {-60, 0}});
  EXPECT_TRUE(IsEmpty(ZoomSourceRectangle({0, 0, 99, 49}, path, {}, {})));
}

TEST(MissingDataTest, CopyAndPaintTouchOnlyTheOutside) {
  constexpr int WIDTH = 9;
  constexpr int LINES = 7;
  const std::uint16_t mixed[3] = {1, 2, 3};
  const std::uint16_t grey[3] = {4, 4, 4};
  for (const SRect inside : {SRect{2, 1, 5, 4}, SRect{0, 0, 8, 6}, SRect{0, 2, 8, 6},
                             SRect{3, 0, 8, 0}, SRect{8, 6, 8, 6}}) {
    std::vector<std::uint16_t> source(WIDTH * LINES * 3, 50);
    std::vector<std::uint16_t> copied(source.size(), 99);
    std::vector<std::uint16_t> painted(source.size(), 99);
    std::vector<std::uint16_t> greyed(source.size(), 99);
    for (const SRows rows : {SRows{0, 1}, SRows{2, 1}, SRows{2, 3}, SRows{4, LINES - 1}}) {
      CopyOutside(source.data(), copied.data(), WIDTH, rows, inside);
      PaintOutside(painted.data(), WIDTH, rows, inside, mixed);
      PaintOutside(greyed.data(), WIDTH, rows, inside, grey);
    }
    for (int i = 0; i < WIDTH * LINES * 3; ++i) {
      const int x = i / 3 % WIDTH;
      const int y = i / 3 / WIDTH;
      const bool isInside =
          x >= inside.left && x <= inside.right && y >= inside.top && y <= inside.bottom;
      ASSERT_EQ(copied[static_cast<std::size_t>(i)], isInside ? 99 : 50) << x << " " << y;
      ASSERT_EQ(painted[static_cast<std::size_t>(i)], isInside ? 99 : 1 + i % 3) << x << " " << y;
      ASSERT_EQ(greyed[static_cast<std::size_t>(i)], isInside ? 99 : 4) << x << " " << y;
    }
  }
}

}  // namespace
