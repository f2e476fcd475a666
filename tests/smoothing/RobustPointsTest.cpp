#include "smoothing/RobustPoints.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "doubles/ShotDouble.h"
#include "doubles/TraceCapture.h"
#include "support/ErrorReport.h"

namespace {

using Calls = std::vector<std::string>;

/// `count` points on a grid over a 2K frame, in [first, first + frames); frame f lies displaced by
/// (f - reference) * (dx, dy) and turned, to first order, by (f - reference) * theta about the
/// image origin.
CTrackingArray Grid(int count, int first, int frames, int reference, double dx, double dy,
                    double theta) {
  CTrackingArray array;
  for (int frame = first; frame < first + frames; ++frame) {
    const double step = frame - reference;
    for (int i = 0; i < count; ++i) {
      const double x = 200.0 + 300.0 * (i % 5);
      const double y = 150.0 + 250.0 * (i / 5);
      array.PointsAt(frame).Point(i) = {x + step * (dx - theta * y), y + step * (dy + theta * x)};
    }
  }
  return array;
}

CTrackPoint At(const CTrackingArray& array, int frame, int point) {
  const CTrackingPoints& points = array.FindPoints(frame);
  if (!array.HasFrame(frame) || !points.IsValidPoint(point)) {
    ADD_FAILURE() << "no point " << point << " in frame " << frame;
    return {};
  }
  return points.Entries().at(point);
}

void ExpectPoint(const CTrackPoint& point, double x, double y, double tolerance = 1e-6) {
  EXPECT_NEAR(point.x, x, tolerance);
  EXPECT_NEAR(point.y, y, tolerance);
  EXPECT_TRUE(point.IsValid());
  EXPECT_FALSE(point.highlight);
}

TEST(RobustPoints, WithoutPointsThereIsNothingToDoAndNothingToSay) {
  CShotDouble shot;
  theError.clear();
  SMotionArrays motion;
  motion.tracked.PointsAt(3).Point(0);
  EXPECT_FALSE(ComputeRobustPoints(shot, motion, 0, STABMODE_None));
  EXPECT_EQ(theError.getError(), 0);
}

TEST(RobustPoints, OneOrTwoPointsAreTheRobustPointsThemselves) {
  struct SCase {
    int points, rMode;
  };
  for (const SCase& c : {SCase{1, STABMODE_None}, SCase{1, STABMODE_Flat}, SCase{2, STABMODE_Flat},
                         SCase{2, STABMODE_Smoothed}}) {
    CShotDouble shot;
    SMotionArrays motion;
    motion.tracked = Grid(c.points, 10, 4, 10, 3.0, -2.0, 0.0);
    motion.tracked.attributes[0].Gr = 5;
    motion.tracked.SetBoxExtents(1, 2, 3, 4, 5, 6);
    motion.tracked.SetTrackState(TRACK_STATE_Tracked);
    ASSERT_TRUE(ComputeRobustPoints(shot, motion, 10, c.rMode));
    EXPECT_EQ(motion.original, motion.tracked);
    EXPECT_EQ(shot.calls.take(), Calls{});
  }
}

TEST(RobustPoints, TwoPointsWithoutRotationGiveTheirMidpoint) {
  CShotDouble shot;
  SMotionArrays motion;
  motion.tracked = Grid(2, 10, 4, 10, 3.0, -2.0, 0.0);
  motion.tracked.PointsAt(12).Point(1).valid = false;
  ASSERT_TRUE(ComputeRobustPoints(shot, motion, 10, STABMODE_None));
  ExpectPoint(At(motion.original, 11, 0), 353.0, 148.0);
  ExpectPoint(At(motion.original, 13, 0), 359.0, 144.0);
  EXPECT_FALSE(motion.original.PointExists(1));
  EXPECT_FALSE(motion.original.HasFrame(12)) << "half a pair has no midpoint";
}

TEST(RobustPoints, ThreeAndMoreGiveTheDisplacementFromTheReferenceFrame) {
  struct SCase {
    const char* name;
    int points, rMode, reference, actual;
    double theta;
  };
  const SCase cases[] = {
      {"three points", 3, STABMODE_None, 42, 42, 0.0},
      {"many points", 15, STABMODE_None, 42, 42, 0.0},
      {"reference too early", 3, STABMODE_None, -7, 40, 0.0},
      {"reference too late", 3, STABMODE_None, 900, 45, 0.0},
      {"rotation allowed, none there", 15, STABMODE_Flat, 42, 42, 0.0},
      {"rotation", 15, STABMODE_Smoothed, 42, 42, 0.002},
      {"rotation, three points", 3, STABMODE_Flat, 900, 45, -0.003},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    CShotDouble shot;
    SMotionArrays motion;
    motion.tracked = Grid(c.points, 40, 6, c.actual, 3.0, -2.0, c.theta);
    ASSERT_TRUE(ComputeRobustPoints(shot, motion, c.reference, c.rMode));
    EXPECT_EQ(shot.calls.take(), (Calls{"setStatusMessage Initializing...", "setTimeMessage "}));
    EXPECT_EQ(motion.original.FrameCount(), 6);
    for (int frame = 40; frame < 46; ++frame) {
      const double step = frame - c.actual;
      ExpectPoint(At(motion.original, frame, 0), 3.0 * step, -2.0 * step);
      EXPECT_EQ(motion.original.FindPoints(frame).IsValidPoint(1), c.rMode != STABMODE_None);
      if (c.rMode == STABMODE_None) continue;
      ExpectPoint(At(motion.original, frame, 1), 3.0 * step + 100.0,
                  -2.0 * step + 100.0 * c.theta * step);
    }
  }
}

TEST(RobustPoints, AFewPointsThatSlippedDoNotMoveTheFit) {
  std::mt19937_64 generator(11);
  std::uniform_real_distribution<double> slip(20.0, 200.0);
  for (const int rMode : {static_cast<int>(STABMODE_None), static_cast<int>(STABMODE_Flat)}) {
    const double theta = rMode == STABMODE_None ? 0.0 : 0.001;
    CShotDouble shot;
    SMotionArrays motion;
    motion.tracked = Grid(15, 0, 40, 0, 1.5, 0.75, theta);
    for (int frame = 1; frame < 40; ++frame) {
      for (int k = 0; k < 4; ++k) {
        CTrackPoint& slipped = motion.tracked.PointsAt(frame).Point((frame * 7 + k * 4) % 15);
        slipped.x += slip(generator);
        slipped.y -= slip(generator);
      }
    }
    ASSERT_TRUE(ComputeRobustPoints(shot, motion, 0, rMode));
    for (int frame = 0; frame < 40; ++frame) {
      SCOPED_TRACE(frame);
      ExpectPoint(At(motion.original, frame, 0), 1.5 * frame, 0.75 * frame, 1e-3);
      if (rMode == STABMODE_None) continue;
      ExpectPoint(At(motion.original, frame, 1), 1.5 * frame + 100.0, 0.75 * frame + 0.1 * frame,
                  1e-3);
    }
  }
}

TEST(RobustPoints, APointThatIsNotInBothFramesDoesNotCount) {
  CShotDouble shot;
  SMotionArrays motion;
  motion.tracked = Grid(5, 0, 4, 0, 3.0, -2.0, 0.0);
  for (int point = 2; point < 5; ++point) motion.tracked.PointsAt(1).Point(point) = CTrackPoint();
  motion.tracked.PointsAt(2).RemovePoint(4);
  motion.tracked.PointsAt(3).Point(9) = {1.0, 1.0};
  ASSERT_TRUE(ComputeRobustPoints(shot, motion, 0, STABMODE_None));
  for (int frame = 0; frame < 4; ++frame) {
    ExpectPoint(At(motion.original, frame, 0), 3.0 * frame, -2.0 * frame);
  }
}

TEST(RobustPoints, IndicesWithHolesAreClosedFirst) {
  struct SCase {
    int points, removed;
  };
  for (const SCase& c : {SCase{5, 1}, SCase{3, 0}}) {
    CShotDouble shot;
    SMotionArrays motion;
    motion.tracked = Grid(c.points, 0, 3, 0, 3.0, -2.0, 0.0);
    motion.tracked.DeletePoint(c.removed);
    ASSERT_TRUE(ComputeRobustPoints(shot, motion, 0, STABMODE_None));
    const CTrackPoint start = At(motion.original, 0, 0);
    ExpectPoint(At(motion.original, 2, 0), start.x + 6.0, start.y - 4.0);
  }
}

TEST(RobustPoints, AReferenceFrameWithoutPointsFails) {
  CShotDouble shot;
  SMotionArrays motion;
  motion.tracked = Grid(4, 0, 5, 0, 1.0, 1.0, 0.0);
  motion.tracked.frames.erase(2);
  EXPECT_FALSE(ComputeRobustPoints(shot, motion, 2, STABMODE_None));
  EXPECT_EQ(theError.getError(), -8500);
  EXPECT_EQ(theError.getMessage(), "Internal Error: A frame is missing a tracking point");
}

TEST(RobustPoints, TheTraceShowsEveryFrameAndWarnsOfFitsThatCannotConverge) {
  CTrackingArray tracked;
  for (int i = 0; i < 3; ++i) {
    tracked.PointsAt(7).Point(i) = {100.0 * i, 50.0 * i * i};
    tracked.PointsAt(9).Point(i) = {100.0 * i + 2.5, 50.0 * i * i - 1.0};
  }
  SMotionArrays motion;
  motion.tracked = tracked;
  CShotDouble shot;
  const CTraceCapture trace(3);
  ASSERT_TRUE(ComputeRobustPoints(shot, motion, 7, STABMODE_None));
  EXPECT_EQ(trace.lines.texts(),
            (Calls{"=== FRAME 7 ====", "=== FRAME 8 ====",
                   "WARNING: Check frame 8 -- regression did not reach convergence", "OUT = (0,0)",
                   "=== FRAME 9 ====", "IN[0] = (2.5,-1)", "IN[1] = (2.5,-1)", "IN[2] = (2.5,-1)",
                   "OUT = (2.5,-1)"}));
  ExpectPoint(At(motion.original, 8, 0), 0.0, 0.0);
}

TEST(RobustPoints, TheRotationTraceEndsWithBothPoints) {
  SMotionArrays motion;
  motion.tracked = Grid(3, 0, 1, 0, 0.0, 0.0, 0.0);
  CShotDouble shot;
  {
    const CTraceCapture trace(3);
    ASSERT_TRUE(ComputeRobustPoints(shot, motion, 0, STABMODE_Flat));
    EXPECT_EQ(trace.lines.texts(), (Calls{"=== FRAME 0 ====", "0: (0,0)", "1: (100,0)"}));
  }
  const CTraceCapture quiet(2);
  ASSERT_TRUE(ComputeRobustPoints(shot, motion, 0, STABMODE_Flat));
  EXPECT_EQ(quiet.lines.texts(), Calls{});
}

}  // namespace
