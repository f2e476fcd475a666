#include "session/TrackerText.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "Complaint.h"
#include "tracking/TrackingLimits.h"

namespace {

constexpr STrackerPicture PICTURE{ETrackerOrigin::topLeft, 480};
constexpr STrackerPicture FROM_BELOW{ETrackerOrigin::bottomLeft, 480};

TEST(TrackerText, WritesABlockForEveryPoint) {
  CTrackingArray array;
  array.PointsAt(1001).Point(0) = CTrackPoint(512.25, 300.0);
  array.PointsAt(1001).Point(3) = CTrackPoint(90.5, 88.0);
  array.PointsAt(1001).Point(4);  // there, and not valid
  array.PointsAt(1002).Point(0) = CTrackPoint(513.0, 301.5);
  EXPECT_EQ(TrackerText(array, PICTURE),
            "# point 0\n1001 512.25 300\n1002 513 301.5\n\n# point 3\n1001 90.5 88\n");
  EXPECT_EQ(TrackerText(array, FROM_BELOW),
            "# point 0\n1001 512.25 179\n1002 513 177.5\n\n# point 3\n1001 90.5 391\n");
  EXPECT_EQ(TrackerText(CTrackingArray(), PICTURE), "");
}

TEST(TrackerText, ReadsBackTheSameBits) {
  CTrackingArray array;
  double x = 100.0 / 3.0;
  double y = 1e-7 / 7.0;
  for (int frame = 0; frame < 50; ++frame)
    for (int point = 0; point < 12; ++point) {
      array.PointsAt(frame).Point(point) = CTrackPoint(x, y);
      x = x * 1.0000001 + 1.0 / 3.0;
      y += 0.1;
    }
  EXPECT_EQ(ReadTrackerText(TrackerText(array, PICTURE), PICTURE), array);
  const CTrackingArray turned = ReadTrackerText(TrackerText(array, FROM_BELOW), FROM_BELOW);
  for (const auto& [frame, points] : array.frames)
    for (const auto& [index, point] : points.Entries()) {
      const CTrackPoint& again = turned.FindPoints(frame).Entries().at(index);
      EXPECT_EQ(again.x, point.x);
      EXPECT_NEAR(again.y, point.y, 1e-12);
    }
}

TEST(TrackerText, ReadsWhatOthersWrite) {
  const CTrackingArray array = ReadTrackerText(
      "# made elsewhere\r\n\r\n"
      "3\t10.5  20\r\n"
      "2 -1e1 2.5E1 # out of the picture\r\n"
      "# a comment parts nothing\r\n"
      "5 0 0\r\n"
      "\n   \n"
      "3 7 8",
      PICTURE);
  EXPECT_EQ(array.FrameCount(), 3);
  EXPECT_EQ(array.TrackState(), TRACK_STATE_Untracked);
  EXPECT_EQ(array.FindPoints(2).Entries().at(0), CTrackPoint(-10.0, 25.0));
  EXPECT_EQ(array.FindPoints(3).Entries().at(0), CTrackPoint(10.5, 20.0));
  EXPECT_EQ(array.FindPoints(3).Entries().at(1), CTrackPoint(7.0, 8.0));
  EXPECT_EQ(array.FindPoints(5).Count(), 1);
  EXPECT_TRUE(ReadTrackerText("\n# nothing\n\n", PICTURE).frames.empty());
}

TEST(TrackerText, ABadOneIsRefusedWithItsLine) {
  const struct {
    const char* name;
    std::string text;
    const char* says;
  } cases[] = {
      {"TwoFields", "1 2 3\n2 3\n", "line 2: wants \"frame x y\", not \"2 3\""},
      {"FourFields", "1 2 3 4", "line 1: wants"},
      {"NotANumber", "1 nan 3", "line 1: \"nan\" is no position"},
      {"Infinite", "1 2 inf", "line 1: \"inf\" is no position"},
      {"TooLargeForADouble", "1 2 1e999", "line 1: \"1e999\" is out of range"},
      {"TooFar", "1 2 1000001", "line 1: \"1000001\" is no position"},
      {"NegativeFrame", "1 2 3\n\n-1 2 3", "line 3: frame \"-1\" is out of range"},
      {"FrameBeyondInt", "99999999999 2 3", "line 1: \"99999999999\" is out of range"},
      {"BrokenFrame", "1.5 2 3", "line 1: \"1.5\" is no frame number"},
      {"DecimalComma", "1 2,5 3", "line 1: \"2,5\" is no number"},
      {"FrameTwice", "1 2 3\n# again\n1 2 3", "line 3: frame 1 comes twice in point 0"},
      {"FramesTooFarApart", "1 2 3\n2000000 2 3", "line 2: frame 2000000 lies too far"},
      {"Binary",
       std::string("\x7f"
                   "ELF\x00\x01\xff\xfe\n",
                   9),
       "line 1: wants \"frame x y\", not \"?ELF?"},
      {"OneLongLine", std::string(100000, 'x'), "xxx...\""},
  };
  for (const auto& c : cases) {
    const std::string complaint =
        complaintOf<std::runtime_error>([&] { ReadTrackerText(c.text, PICTURE); });
    EXPECT_NE(complaint.find(c.says), std::string::npos) << c.name << ": " << complaint;
    EXPECT_LT(complaint.size(), 120u) << c.name;
  }
}

TEST(TrackerText, HoldsNoMorePointsThanASetMay) {
  std::string text;
  for (int point = 0; point <= LARGEST_POINT_INDEX; ++point) text += "1 2 3\n\n";
  EXPECT_EQ(ReadTrackerText(text, PICTURE).FindPoints(1).Count(), LARGEST_POINT_INDEX + 1);
  EXPECT_THROW(ReadTrackerText(text + "1 2 3\n", PICTURE), std::runtime_error);
}

}  // namespace
