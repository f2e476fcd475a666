#include "render/Warp.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "support/ErrorReport.h"
#include "support/Numerics.h"

namespace {

CTrackingPoints pointsAt(const std::vector<CTrackPoint>& list) {
  CTrackingPoints points;
  for (std::size_t i = 0; i < list.size(); ++i) points.Point(static_cast<int>(i)) = list[i];
  return points;
}

const std::vector<CTrackPoint> triangle{{100.0, 200.0}, {200.0, 200.0}, {100.0, 300.0}};

std::vector<CTrackPoint> turned(double angle, double scale, double dx, double dy) {
  std::vector<CTrackPoint> list;
  for (const CTrackPoint& p : triangle) {
    list.emplace_back(scale * (std::cos(angle) * p.x - std::sin(angle) * p.y) + dx,
                      scale * (std::sin(angle) * p.x + std::cos(angle) * p.y) + dy);
  }
  return list;
}

SWarpMap solvedMap(const std::vector<CTrackPoint>& original,
                   const CStabilizerParameters& parameters) {
  SelectRadialBasis(parameters.UFunction);
  mvector<long double> vx;
  mvector<long double> vy;
  EXPECT_TRUE(SolveWarp(pointsAt(triangle), pointsAt(original), vx, vy));
  return PrepareWarpMap(vx, vy, parameters, 486);
}

struct SMapCase {
  const char* name;
  std::vector<CTrackPoint> original;
  int rotationMode;
  std::vector<float> wx;
  std::vector<float> wy;
};

TEST(WarpTest, MapOfTwoTriangles) {
  const double angle = 0.01;
  const float s = static_cast<float>(std::sin(angle));
  const std::vector<SMapCase> cases{
      {"identity", triangle, STABMODE_Flat, {0, 1, 0}, {0, 0, 1}},
      {"shift", turned(0, 1, 5, -3), STABMODE_None, {5, 1, 0}, {-3, 0, 1}},
      {"rotation kept", turned(angle, 1, 5, -3), STABMODE_Smoothed, {5, 1, -s}, {-3, s, 1}},
      {"rotation removed", turned(angle, 1, 5, -3), STABMODE_None, {5, 1, 0}, {-3, 0, 1}},
      {"scale is not applied", turned(0, 2, 5, -3), STABMODE_Flat, {5, 1, 0}, {-3, 0, 1}},
  };
  for (const SMapCase& c : cases) {
    for (const int basis : {U_Fcn_Euclidean, U_Fcn_Logrithmic, U_Fcn_Thin_Plate}) {
      SCOPED_TRACE(std::string(c.name) + ", basis " + std::to_string(basis));
      CStabilizerParameters parameters;
      parameters.RMode = c.rotationMode;
      parameters.UFunction = basis;
      const SWarpMap map = solvedMap(c.original, parameters);
      for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(map.wx[i], c.wx[i], 1e-5F) << "wx " << i;
        EXPECT_NEAR(map.wy[i], c.wy[i], 1e-5F) << "wy " << i;
      }
    }
  }
}

TEST(WarpTest, NoWarpFunctionLeavesThePictureWhereItIs) {
  CStabilizerParameters parameters;
  parameters.UFunction = U_Fcn_None;
  parameters.RMode = STABMODE_Flat;
  EXPECT_EQ(solvedMap(turned(0.1, 1, 50, -30), parameters), SWarpMap{});
}

struct SFailureCase {
  const char* name;
  std::vector<CTrackPoint> smoothed;
  std::vector<CTrackPoint> original;
  int code;
  std::string text;
};

TEST(WarpTest, FailuresSayWhichPointsAreWrong) {
  const std::vector<CTrackPoint> invalid{{1, 2}, CTrackPoint{}, {3, 9}};
  const std::string line = "Tracking points are close to a stright line";
  const std::string badOriginal =
      "Internal Error: Some original tracking points are marked invalid";
  const std::string badSmoothed =
      "Internal Error: Some smoothed tracking points are marked invalid";
  const std::vector<SFailureCase> cases{
      {"original", triangle, invalid, WARP_INVALID_POINTS, badOriginal},
      {"smoothed", invalid, triangle, WARP_INVALID_POINTS, badSmoothed},
      {"both: the original is named", invalid, invalid, WARP_INVALID_POINTS, badOriginal},
      {"one point short", {{1, 2}, {5, 3}}, triangle, WARP_INVALID_POINTS, badSmoothed},
      {"left edge", {{0, 1}, {0, 2}, {0, 9}}, triangle, WARP_STRAIGHT_LINE, line},
      {"top edge", {{1, 0}, {2, 0}, {9, 0}}, triangle, WARP_STRAIGHT_LINE, line},
      {"any other line does not fail", {{1, 1}, {2, 2}, {3, 3}}, triangle, 0, ""},
  };
  SelectRadialBasis(U_Fcn_Euclidean);
  for (const SFailureCase& c : cases) {
    SCOPED_TRACE(c.name);
    theError.clear();
    mvector<long double> vx;
    mvector<long double> vy;
    EXPECT_EQ(SolveWarp(pointsAt(c.smoothed), pointsAt(c.original), vx, vy), c.code == 0);
    EXPECT_EQ(theError.getError(), c.code);
    EXPECT_EQ(theError.getMessage(), c.text);
  }
}

TEST(WarpTest, JitterAmplitudeFollowsTheSettingAndThePictureHeight) {
  const struct {
    double jitter;
    int height;
    double amplitude;
  } cases[] = {{0, 486, 0.0},  {1, 486, 0.0625}, {4, 486, 0.25}, {4, 972, 0.5}, {6, 486, 0.5},
               {8, 486, 0.75}, {9, 486, 1.0},    {10, 486, 1.5}, {-3, 486, 0.0}};
  for (const auto& c : cases) {
    EXPECT_NEAR(static_cast<double>(JitterAmplitude(c.jitter, c.height)), c.amplitude, 1e-12)
        << c.jitter;
  }
}

TEST(WarpTest, JitterMovesColumnsThenRowsAndZeroDrawsNothing) {
  setRandSeed(7);
  const double first = getRandNormal();
  const double second = getRandNormal();

  setRandSeed(7);
  CStabilizerParameters parameters;
  const SWarpMap still = solvedMap(turned(0, 1, 5, -3), parameters);
  parameters.Jitter = 4.0;
  const SWarpMap moved = solvedMap(turned(0, 1, 5, -3), parameters);
  EXPECT_NEAR(moved.wx[0], still.wx[0] + 0.25 * first, 1e-5);
  EXPECT_NEAR(moved.wy[0], still.wy[0] + 0.25 * second, 1e-5);
}

}  // namespace
