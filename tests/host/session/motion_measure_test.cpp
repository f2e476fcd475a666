#include "session/MotionMeasure.h"

#include <gtest/gtest.h>

#include <cmath>

#include "session/MotionGraph.h"

namespace {

constexpr SPoint2 CENTRE{960.0, 540.0};
constexpr double RADIANS = 3.14159265358979323846 / 180.0;

/// Where a scene point of the first frame lies when the picture has moved.
SPoint2 moved(const SPoint2& point, const SFrameMotion& motion) {
  const double c = std::cos(motion.angle * RADIANS);
  const double s = std::sin(motion.angle * RADIANS);
  const double x = point.x - CENTRE.x;
  const double y = point.y - CENTRE.y;
  return {c * x - s * y + CENTRE.x + motion.x, s * x + c * y + CENTRE.y + motion.y};
}

CTrackingArray shotOf(const std::vector<SFrameMotion>& path, int points) {
  CTrackingArray array;
  for (const SFrameMotion& motion : path)
    for (int i = 0; i < points; ++i) {
      const SPoint2 at = moved({200.0 + 150.0 * i, 900.0 - 70.0 * i * (i % 3)}, motion);
      array.PointsAt(motion.frame).Point(i) = CTrackPoint(at.x, at.y);
    }
  return array;
}

const std::vector<SFrameMotion> PATH = {
    {100, 0.0, 0.0, 0.0}, {101, 3.5, -2.0, 0.04}, {102, -1.25, 6.0, -0.07}};

TEST(FitMotion, FindsTheMotionThatThePointsShare) {
  CTrackingArray array = shotOf(PATH, 9);
  array.PointsAt(102).Point(4).x += 40.0;  // one of them goes its own way
  const std::vector<SFrameMotion> motion = FitMotion(array, CENTRE);
  ASSERT_EQ(motion.size(), 3u);
  for (std::size_t i = 0; i < motion.size(); ++i) {
    EXPECT_EQ(motion[i].frame, PATH[i].frame);
    EXPECT_NEAR(motion[i].x, PATH[i].x, 0.01);
    EXPECT_NEAR(motion[i].y, PATH[i].y, 0.01);
    EXPECT_NEAR(motion[i].angle, PATH[i].angle, 0.001);
  }
}

TEST(MostTypicalPoint, GoesWithThePictureAndNotItsOwnWay) {
  CTrackingArray array = shotOf(PATH, 5);
  CTrackingPoints& points = array.PointsAt(101);
  points.Point(0).x += 0.4;
  points.Point(1).x -= 0.4;
  points.Point(2).y += 0.4;
  points.Point(4).y -= 0.4;
  array.PointsAt(102).Point(0).y -= 30.0;
  EXPECT_EQ(MostTypicalPoint(array, FitMotion(array, CENTRE), CENTRE), 3);
  EXPECT_EQ(MostTypicalPoint(CTrackingArray(), {}, CENTRE), -1);
}

TEST(FitMotion, OnePointHasNoRotation) {
  const std::vector<SFrameMotion> motion = FitMotion(shotOf({PATH[0], {101, 2, 3, 0}}, 1), CENTRE);
  EXPECT_NEAR(motion[1].x, 2.0, 1e-9);
  EXPECT_EQ(motion[1].angle, 0.0);
  EXPECT_TRUE(FitMotion(CTrackingArray(), CENTRE).empty());
}

TEST(MotionOfTriangles, IsTheMotionAtTheCentre) {
  // Two ways in which a pair of points may stand for the same motion: picture points, or the
  // displacement of the origin and of a point 100 beside it.
  const SPoint2 starts[] = {{1200.0, 300.0}, {0.0, 0.0}};
  for (const SPoint2& start : starts) {
    CTrackingArray triangles;
    for (const SFrameMotion& motion : PATH) {
      const SPoint2 a = moved(start, motion);
      const SPoint2 b = moved({start.x + 100.0, start.y}, motion);
      triangles.PointsAt(motion.frame).Point(0) = CTrackPoint(a.x, a.y);
      triangles.PointsAt(motion.frame).Point(1) = CTrackPoint(b.x, b.y);
    }
    const std::vector<SFrameMotion> motion = MotionOfTriangles(triangles, CENTRE);
    ASSERT_EQ(motion.size(), PATH.size());
    for (std::size_t i = 0; i < motion.size(); ++i) {
      EXPECT_NEAR(motion[i].x, PATH[i].x, 1e-9);
      EXPECT_NEAR(motion[i].y, PATH[i].y, 1e-9);
      EXPECT_NEAR(motion[i].angle, PATH[i].angle, 1e-9);
    }
  }
}

TEST(Steadiness, APictureThatStandsStillAsideIsSteady) {
  std::vector<SFrameMotion> meant;
  std::vector<SFrameMotion> path;
  for (int i = 0; i < 8; ++i) {
    meant.push_back({i, 0.5 * i, 0.0, 0.0});
    path.push_back({i, 0.5 * i + 3.0 + (i % 2 ? 0.25 : -0.25), -4.0, 0.1});
  }
  const std::vector<SDeviation> deviations = Deviations(path, meant);
  const SSteadiness steadiness = Steadiness(deviations);
  EXPECT_NEAR(steadiness.weave, 0.25, 1e-12);
  EXPECT_NEAR(steadiness.peakWeave, 0.25, 1e-12);
  EXPECT_NEAR(steadiness.jump, 0.0, 1e-12);
  EXPECT_NEAR(steadiness.rotation, 0.0, 1e-12);
}

TEST(WorstFrames, ComeWorstFirstAndNoMoreThanThereAre) {
  const std::vector<SDeviation> deviations = {{1, 0.1, 0, 0}, {2, 0, -0.5, 0}, {3, 0.3, 0.3, 0}};
  const std::vector<SDeviation> worst = WorstFrames(deviations, 2);
  ASSERT_EQ(worst.size(), 2u);
  EXPECT_EQ(worst[0].frame, 2);
  EXPECT_EQ(worst[1].frame, 3);
  EXPECT_EQ(WorstFrames(deviations, 10).size(), 3u);
}

TEST(MotionGraph, ShowsCurvesAndSurvivesOddOnes) {
  const std::string svg = MotionGraphAsSvg(
      "a<b & c", {{"as shot", "#123456", 2.0, PATH}, {"never measured", "#654321", 2.0, {}}});
  EXPECT_NE(svg.find("a&lt;b &amp; c"), std::string::npos);
  EXPECT_NE(svg.find("#123456"), std::string::npos);
  EXPECT_EQ(svg.find("never measured"), std::string::npos);
  for (const auto& motion : {std::vector<SFrameMotion>{}, {PATH[0]}, {{5, 1e9, -1e9, 0}}})
    EXPECT_EQ(MotionGraphAsSvg("odd", {{"curve", "#000", 1.0, motion}}).find("nan"),
              std::string::npos);
}

}  // namespace
