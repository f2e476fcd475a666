#include "tracking/TrackingArray.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <random>

namespace {

/// Every given point valid in every frame of [first, end); the position tells point and frame.
CTrackingArray Tracked(int first, int end, std::initializer_list<int> points) {
  CTrackingArray array;
  for (int frame = first; frame < end; ++frame) {
    for (const int point : points) array.PointsAt(frame).Point(point) = {point * 10.0, frame + 0.5};
  }
  array.SetTrackState(TRACK_STATE_Tracked);
  return array;
}

TEST(TrackingPoints, AnEntryMayExistAndStillBeInvalid) {
  CTrackingPoints points;
  EXPECT_EQ(points.FirstIndex(), 0);
  EXPECT_EQ(points.EndIndex(), 0);
  points.Point(7);
  points.Point(3) = {1.0, 2.0};
  EXPECT_EQ(points.FirstIndex(), 3);
  EXPECT_EQ(points.EndIndex(), 8);
  EXPECT_EQ(points.Count(), 2);
  EXPECT_EQ(points.ValidCount(), 1);
  EXPECT_TRUE(points.IsValidPoint(3));
  EXPECT_FALSE(points.IsValidPoint(7));
  EXPECT_FALSE(points.IsValidPoint(4));
  EXPECT_EQ(points.Count(), 2) << "a test must not create";
}

TEST(TrackingArray, AnEmptyArrayAnswersWithDefaults) {
  CTrackingArray array;
  EXPECT_EQ(array.FirstFrame(), 0);
  EXPECT_EQ(array.EndFrame(), 0);
  EXPECT_EQ(array.NumberOfPoints(), 0);
  EXPECT_FALSE(array.PointExists(0));
  EXPECT_EQ(array.AnchorType(0), ANCHOR_None);
  EXPECT_EQ(array.AnchorIndex(0), -1);
  EXPECT_EQ(array.TrackStatus(0), 0);
  EXPECT_EQ(array.Compact(), 0);
  EXPECT_EQ(array.FindPoints(5).Count(), 0);
  EXPECT_EQ(array, CTrackingArray()) << "asking left something behind";
}

TEST(TrackingArray, TheNumberOfPointsIsThatOfTheFirstFrameWithAPoint) {
  CTrackingArray array = Tracked(101, 103, {0, 1});
  array.PointsAt(100).Point(0);
  array.PointsAt(99);
  EXPECT_EQ(array.NumberOfPoints(), 2);
  EXPECT_EQ(array.FirstFrame(), 101);
  array.PointsAt(102).Point(9) = {1, 1};
  EXPECT_EQ(array.NumberOfPoints(), 2) << "later frames do not count";
}

TEST(TrackingArray, IsTrackedOver) {
  struct SCase {
    const char* name;
    int point, in, out;
    bool tracked;
    int frameCount;  // afterwards; 2 before
  };
  const SCase cases[] = {
      {"the frames there are", 0, 11, 13, true, 2},
      {"one of them", 0, 12, 13, true, 2},
      {"another point", 1, 11, 13, false, 2},
      {"empty range", 0, 12, 12, false, 2},
      {"below zero", 0, -1, 3, false, 2},
      {"starts early", 0, 10, 13, false, 3},
      {"ends late", 0, 11, 14, false, 3},
      {"stops at the first hole", 0, 20, 2000000000, false, 3},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    CTrackingArray array = Tracked(11, 13, {0});
    EXPECT_EQ(array.IsTrackedOver(c.point, c.in, c.out), c.tracked);
    EXPECT_EQ(array.FrameCount(), c.frameCount);
    EXPECT_EQ(array.NumberOfPoints(), 1);
    EXPECT_EQ(array.FirstFrame(), 11) << "an early empty frame is dropped again";
  }
}

TEST(TrackingArray, ATrajectoryHoldsTheValidFramesOnly) {
  CTrackingArray array = Tracked(5, 9, {2});
  array.PointsAt(6).Point(2).valid = false;
  array.frames.erase(7);
  const CTrackingPoints path = array.Trajectory(2);
  EXPECT_EQ(path.Count(), 2);
  EXPECT_TRUE(path.IsValidPoint(5));
  EXPECT_EQ(path.Entries().at(8).y, 8.5);
  EXPECT_EQ(array.Trajectory(3).Count(), 0);
}

TEST(TrackingArray, StatusIsKeptBetweenTheFirstAndTheLastAttribute) {
  CTrackingArray array = Tracked(0, 2, {0, 1, 2, 3});
  array.SetTrackStatus(1, TRACK_STATUS_Tracked);
  EXPECT_TRUE(array.attributes.empty());
  array.attributes[1];
  array.attributes[3];
  EXPECT_EQ(array.attributes[1].Al, 0.0001);
  array.SetTrackStatus(2, TRACK_STATUS_Tracked);
  EXPECT_EQ(array.TrackStatus(2), TRACK_STATUS_Tracked);
  EXPECT_EQ(array.TrackStatus(3), TRACK_STATUS_Unknown);
  EXPECT_EQ(array.TrackStatus(0), 0);
  EXPECT_EQ(array.TrackStatus(4), 0);
}

TEST(TrackingArray, DeletingAPointReleasesWhatIsAnchoredToIt) {
  CTrackingArray array = Tracked(10, 13, {2, 3});
  array.frames.erase(11);
  array.attributes[2].An = ANCHOR_Both;
  array.attributes[3].An = ANCHOR_Both;
  array.attributes[3].AnIn = 2;
  array.DeletePoint(2);
  EXPECT_EQ(array.AnchorType(3), ANCHOR_None);
  EXPECT_EQ(array.AnchorIndex(3), 2);
  EXPECT_FALSE(array.attributes.contains(2));
  EXPECT_FALSE(array.PointExists(2));
  EXPECT_TRUE(array.HasFrame(11)) << "the hole is a frame without points now";
  EXPECT_EQ(array.TrackState(), TRACK_STATE_Untracked);
}

TEST(TrackingArray, CompactCarriesAttributesAndAnchorsAlong) {
  CTrackingArray array = Tracked(100, 103, {0, 2, 5});
  array.PointsAt(99).Point(4);  // no valid point: goes
  array.PointsAt(100).Point(1);
  array.attributes[2].Gr = 22;
  array.attributes[5].An = ANCHOR_Vertical;
  array.attributes[5].AnIn = 2;
  array.attributes[5].trackStatus = TRACK_STATUS_Tracked;
  EXPECT_EQ(array.Compact(), 3);
  for (int frame = 100; frame < 103; ++frame) {
    const CTrackingPoints& points = array.FindPoints(frame);
    ASSERT_EQ(points.ValidCount(), 3) << frame;
    EXPECT_EQ(points.Entries().at(0), CTrackPoint(0.0, frame + 0.5));
    EXPECT_EQ(points.Entries().at(1), CTrackPoint(20.0, frame + 0.5));
    EXPECT_EQ(points.Entries().at(2), CTrackPoint(50.0, frame + 0.5));
  }
  EXPECT_EQ(array.FirstFrame(), 100);
  EXPECT_EQ(array.attributes[1].Gr, 22);
  EXPECT_EQ(array.attributes[2].An, ANCHOR_Vertical);
  EXPECT_EQ(array.attributes[2].AnIn, 1);
  EXPECT_EQ(array.attributes[2].trackStatus, TRACK_STATUS_Tracked);
  EXPECT_FALSE(array.attributes.contains(5));
}

/// What Compact means: one point after the other takes the next index.
int CompactPointByPoint(CTrackingArray& array) {
  array.RemoveEmptyFrames();
  if (array.frames.empty()) return 0;
  const CTrackingPoints& first = array.frames.begin()->second;
  int next = 0;
  for (int index = first.FirstIndex(); index < first.EndIndex(); ++index) {
    if (first.IsValidPoint(index)) array.RenumberPoint(index, next++);
  }
  return first.Count();
}

TEST(TrackingArray, CompactRenumbersAsPointByPoint) {
  std::mt19937 random(5);
  const auto below = [&random](int end) { return static_cast<int>(random() % end); };
  for (int round = 0; round < 20000; ++round) {
    CTrackingArray array;
    array.SetTrackState(TRACK_STATE_Tracked);
    for (int frame = below(4); frame > 0; --frame) {
      CTrackingPoints& points = array.PointsAt(below(7));
      for (int n = below(6); n > 0; --n) {
        CTrackPoint& point = points.Point(below(8));
        point = {below(100) + 0.5, 1.0, below(2) == 0};
        point.valid = below(3) > 0;
      }
    }
    for (int n = below(7); n > 0; --n) {
      array.attributes[below(8)] = {below(9), below(2) == 0, 0,           0.5,
                                    below(6), below(10) - 1, 1 + below(4)};
    }
    CTrackingArray expected = array;
    ASSERT_EQ(array.Compact(), CompactPointByPoint(expected)) << round;
    ASSERT_EQ(array, expected) << round;
  }
}

TEST(TrackingArray, IndicesFarApartCostNothing) {
  const int largest = 2147483646;
  CTrackingArray array = Tracked(0, 1, {3, largest});
  array.PointsAt(largest).Point(largest) = {1.0, 1.0};
  array.attributes[largest].AnIn = 3;
  EXPECT_EQ(array.Compact(), 2);
  EXPECT_EQ(array.FrameCount(), 2) << "two thousand million frames between them stay out";
  EXPECT_EQ(array.attributes[1].AnIn, 0);
  EXPECT_EQ(array.Trajectory(1).EndIndex(), largest + 1);
  array.RenumberPoint(1, largest);
  array.SetTrackStatus(largest, TRACK_STATUS_Tracked);
  EXPECT_EQ(array.TrackStatus(largest), TRACK_STATUS_Tracked);
  array.DeletePoint(largest);
  EXPECT_EQ(array.FrameCount(), 2);
  EXPECT_FALSE(array.PointExists(largest));
}

TEST(TrackingArray, RenumberingOntoAPointReplacesIt) {
  CTrackingArray array = Tracked(0, 2, {0, 1, 2});
  array.PointsAt(1).Point(2).valid = false;
  array.attributes[0].An = ANCHOR_Both;
  array.attributes[0].AnIn = 1;
  array.RenumberPoint(2, 1);
  EXPECT_EQ(array.FindPoints(0).Entries().at(1), CTrackPoint(20.0, 0.5));
  EXPECT_FALSE(array.FindPoints(1).IsValidPoint(1)) << "the replaced point must not shine through";
  EXPECT_FALSE(array.PointExists(2));
  EXPECT_EQ(array.AnchorType(0), ANCHOR_None);
  const CTrackingArray before = array;
  array.RenumberPoint(1, 1);
  EXPECT_EQ(array, before);
}

TEST(TrackingArray, KeepingMovingAndClearingLeaveTheSettingsOfTheSet) {
  struct SCase {
    const char* name;
    void (*edit)(CTrackingArray&);
    int firstFrame, endFrame;
    double y;  // of point 1 in the only frame; -1 none
    bool keepsAttributes;
  };
  const SCase cases[] = {
      {"keep", [](CTrackingArray& a) { a.KeepOnlyFrame(21); }, 21, 22, 21.5, true},
      {"keep absent", [](CTrackingArray& a) { a.KeepOnlyFrame(9); }, 9, 10, -1, true},
      {"move back", [](CTrackingArray& a) { a.MoveToFrame(5); }, 5, 6, 20.5, true},
      {"move inside", [](CTrackingArray& a) { a.MoveToFrame(22); }, 22, 23, 20.5, true},
      {"clear", [](CTrackingArray& a) { a.Clear(); }, 0, 0, -1, false},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    CTrackingArray array = Tracked(20, 24, {1});
    array.attributes[1].Gr = 4;
    array.SetUseMatting(true);
    array.SetMattingBox({1, 2, 3, 4});
    array.SetBoxExtents(1, 2, 3, 4, 5, 6);
    c.edit(array);
    EXPECT_EQ(array.FirstFrame(), c.firstFrame);
    EXPECT_EQ(array.EndFrame(), c.endFrame);
    EXPECT_EQ(array.PointExists(1), c.y >= 0);
    if (c.y >= 0) {
      EXPECT_EQ(array.FindPoints(c.firstFrame).Entries().at(1).y, c.y);
    }
    EXPECT_EQ(array.attributes.contains(1), c.keepsAttributes);
    EXPECT_EQ(array.TrackState(), TRACK_STATE_Untracked);
    EXPECT_TRUE(array.UseMatting());
    EXPECT_EQ(array.MattingBox(), (SRect{1, 2, 3, 4}));
    EXPECT_FALSE(array.BoxExtentsDiffer(1, 2, 3, 4, 5, 6));
  }
}

TEST(TrackingArray, EveryExtentCountsAsADifference) {
  CTrackingArray array;
  array.SetBoxExtents(1, 2, 3, 4, 5, 6);
  for (int changed = 0; changed < 6; ++changed) {
    int e[6] = {1, 2, 3, 4, 5, 6};
    e[changed] += 1;
    EXPECT_TRUE(array.BoxExtentsDiffer(e[0], e[1], e[2], e[3], e[4], e[5])) << changed;
  }
  int e[6] = {};
  array.GetBoxExtents(e[0], e[1], e[2], e[3], e[4], e[5]);
  EXPECT_FALSE(array.BoxExtentsDiffer(e[0], e[1], e[2], e[3], e[4], e[5]));
}

}  // namespace
