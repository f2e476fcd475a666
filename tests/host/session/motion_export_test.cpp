#include "session/MotionExport.h"

#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <cmath>
#include <nlohmann/json.hpp>
#include <vector>

#include "MotionRows.h"

namespace {

constexpr double RADIANS = 3.14159265358979323846 / 180.0;

/// A triangle as the tool completes it: an origin, a point beside it, and one square to both.
void putTriangle(CTrackingPoints& points, double x, double y, double degrees) {
  const double c = 100.0 * std::cos(degrees * RADIANS);
  const double s = 100.0 * std::sin(degrees * RADIANS);
  points.Point(0) = CTrackPoint(x, y);
  points.Point(1) = CTrackPoint(x + c, y + s);
  points.Point(2) = CTrackPoint(x + s, y - c);
}

/// Frames 10, 11, 12: at rest, then moved by (3, -2), then by (-4.5, 1.25) and turned by half a
/// degree; all of it is to be taken back.
class Moves : public ::testing::Test {
 protected:
  Moves() {
    putTriangle(original_.PointsAt(10), 0.0, 0.0, 0.0);
    putTriangle(original_.PointsAt(11), 3.0, -2.0, 0.0);
    putTriangle(original_.PointsAt(12), -4.5, 1.25, 0.5);
    for (int frame : {10, 11, 12}) putTriangle(smoothed_.PointsAt(frame), 0.0, 0.0, 0.0);
  }
  std::vector<SPictureMove> moves() const {
    return PictureMoves(original_, smoothed_, settings_, zoom_);
  }

  CTrackingArray original_;
  CTrackingArray smoothed_;
  SMoveSettings settings_;
  SZoom zoom_;
};

TEST_F(Moves, TakeThePictureBack) {
  const SPoint2 there = moves()[1].at({100.0, 50.0});
  EXPECT_DOUBLE_EQ(there.x, 97.0);
  EXPECT_DOUBLE_EQ(there.y, 52.0);
  EXPECT_EQ(moves()[1].angle(), 0.0);
  EXPECT_EQ(moves()[1].scale(), 1.0);
}

TEST_F(Moves, TurnOnlyWhereTheRotationIsStabilised) {
  EXPECT_EQ(moves()[2].angle(), 0.0);
  settings_.turns = true;
  EXPECT_NEAR(moves()[2].angle(), -0.5, 1e-4);
  EXPECT_NEAR(moves()[2].scale(), 1.0, 1e-4);
  // The renderer looks up the source of every output pixel, with a scale of 1: what lies at the
  // output (x, y) comes from (x - s y - 4.5, y + s x + 1.25).
  const double s = std::sin(0.5 * RADIANS);
  const SPoint2 there = moves()[2].at({700.0 - s * 500.0 - 4.5, 500.0 + s * 700.0 + 1.25});
  EXPECT_NEAR(there.x, 700.0, 1e-9);
  EXPECT_NEAR(there.y, 500.0, 1e-9);
}

TEST_F(Moves, LeaveAnchorsAndWhatIsNotMovedWhereItIs) {
  const auto isMoved = [this](std::size_t i) { return moves()[i].at({0.0, 0.0}).x != 0.0; };
  putTriangle(smoothed_.PointsAt(10), 1.0, 0.0, 0.0);
  EXPECT_TRUE(isMoved(0) && isMoved(1) && isMoved(2));
  settings_.anchorsIn = settings_.anchorsOut = 1;
  EXPECT_FALSE(isMoved(0));
  EXPECT_TRUE(isMoved(1));
  EXPECT_FALSE(isMoved(2));
  settings_.zooms = true;
  EXPECT_TRUE(isMoved(0));
  settings_.still = true;
  EXPECT_FALSE(isMoved(1));
}

TEST_F(Moves, EndInTheEnlargement) {
  zoom_ = {{10.0, 20.0, 190.0, 110.0}, {0, 0, 199, 99}};  // 180 by 90 becomes 200 by 100
  EXPECT_DOUBLE_EQ(zoom_.factor(), 200.0 / 180.0);
  // Pixel edges go to pixel edges; frame 11 is moved by (-3, 2) before.
  const SPoint2 corner = moves()[1].at({10.0 - 0.5 + 3.0, 20.0 - 0.5 - 2.0});
  EXPECT_NEAR(corner.x, -0.5, 1e-9);
  EXPECT_NEAR(corner.y, -0.5, 1e-9);
  EXPECT_DOUBLE_EQ(moves()[1].scale(), 200.0 / 180.0);
}

class MotionExport : public Moves {
 protected:
  MotionExport() {
    result_.clip.path = "scan \"one\".####.dpx";
    result_.clip.format = CImageFormat(640, 480);
    result_.clip.firstFrame = 1;
    result_.clip.endFrame = 20;
    result_.options.in = 10;
    result_.options.out = 13;
    result_.region = {0, 0, 639, 479};
    settings_.turns = true;
    result_.moves = moves();
    result_.measured = {{10, 0.0, 0.0, 0.0}, {11, 3.0, -2.0, 0.0}, {12, -4.5, 1.25, 0.5}};
    result_.asShot = result_.measured;
    for (int frame : {10, 11, 12})
      for (int point : {0, 1})
        result_.points.PointsAt(frame).Point(point) =
            CTrackPoint(100.0 / 3.0 + frame * point, 200.1 + frame / 7.0);
  }

  SStabilizeResult result_;
};

TEST_F(MotionExport, CsvHoldsEveryNumberToItsLastBit) {
  auto rows = rowsOf(MotionAsCsv(result_));
  ASSERT_EQ(rows.size(), 6u);
  for (auto& row : rows) {
    const int frame = static_cast<int>(row["frame"]);
    const int point = static_cast<int>(row["point"]);
    const CTrackPoint& position = result_.points.FindPoints(frame).Entries().at(point);
    EXPECT_EQ(row["x"], position.x);
    EXPECT_EQ(row["y"], position.y);
    EXPECT_EQ(row["m11"] * row["x"] + row["m12"] * row["y"] + row["m13"], row["smoothed_x"]);
    EXPECT_EQ(row["m21"] * row["x"] + row["m22"] * row["y"] + row["m23"], row["smoothed_y"]);
  }
  EXPECT_EQ(rows[5]["measured_dx"], -4.5);
  EXPECT_EQ(rows[5]["measured_angle"], 0.5);
  EXPECT_NEAR(rows[5]["applied_angle"], -0.5, 1e-4);
  EXPECT_NEAR(rows[3]["applied_dx"], -3.0, 1e-12);
  EXPECT_NEAR(rows[3]["applied_scale"], 1.0, 1e-12);
}

TEST_F(MotionExport, JsonHoldsTheSameNumbers) {
  const auto motion = nlohmann::json::parse(MotionAsJson(result_));
  EXPECT_EQ(motion["clip"]["path"], result_.clip.path);
  EXPECT_EQ(motion["marks"], (std::vector<int>{10, 13}));
  std::size_t at = 0;
  auto rows = rowsOf(MotionAsCsv(result_));
  for (const auto& frame : motion["frames"])
    for (const auto& point : frame["points"]) {
      ASSERT_LT(at, rows.size());
      auto& row = rows[at++];
      EXPECT_EQ(frame["frame"], row["frame"]);
      EXPECT_EQ(frame["matrix"][0], (std::array<double, 3>{row["m11"], row["m12"], row["m13"]}));
      EXPECT_EQ(frame["matrix"][1], (std::array<double, 3>{row["m21"], row["m22"], row["m23"]}));
      EXPECT_EQ(frame["measured"]["angle"], row["measured_angle"]);
      EXPECT_EQ(frame["applied"]["dy"], row["applied_dy"]);
      EXPECT_EQ(point["point"], row["point"]);
      EXPECT_EQ(point["x"], row["x"]);
      EXPECT_EQ(point["smoothedY"], row["smoothed_y"]);
    }
  EXPECT_EQ(at, rows.size());
}

TEST_F(MotionExport, HasPointsForDecimalsWhereverItIsWritten) {
  const std::string csv = MotionAsCsv(result_);
  const std::string json = MotionAsJson(result_);
  for (const char* locale : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"})
    if (std::setlocale(LC_ALL, locale)) break;
  EXPECT_EQ(MotionAsCsv(result_), csv);
  EXPECT_EQ(MotionAsJson(result_), json);
  std::setlocale(LC_ALL, "C");
}

TEST(MotionExportName, ChoosesTheForm) {
  for (const char* path : {"a.csv", "b/a.CSV", "a.json", "x.y.Json"})
    EXPECT_TRUE(IsMotionExport(path)) << path;
  for (const char* path : {"a.txt", "csv", "a.csv.gz", "", ".json"})
    EXPECT_FALSE(IsMotionExport(path)) << path;
}

}  // namespace
