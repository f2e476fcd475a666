#include "smoothing/MotionSmoother.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "doubles/ShotDouble.h"
#include "support/ErrorReport.h"
#include "support/Threads.h"
#include "support/Trace.h"

namespace {

using Calls = std::vector<std::string>;

/// Final failures of a scope, as "operation code text".
class CReportedErrors {
 public:
  CReportedErrors() {
    SetErrorSink([this](const std::string& operation, int code, const std::string& text) {
      const std::lock_guard lock(mutex_);
      errors_.push_back(operation + " " + std::to_string(code) + " " + text);
    });
  }
  ~CReportedErrors() { SetErrorSink({}); }
  Calls take() {
    const std::lock_guard lock(mutex_);
    return std::move(errors_);
  }

 private:
  std::mutex mutex_;
  Calls errors_;
};

std::vector<double> Zigzag(int size) {
  std::vector<double> sequence;
  for (int i = 0; i < size; ++i) sequence.push_back(0.1 * i + (i % 2 == 0 ? 1.0 : -1.0));
  return sequence;
}

double Roughness(const std::vector<double>& s) {
  double sum = 0.0;
  for (std::size_t i = 3; i < s.size(); ++i) {
    sum += std::pow(s[i] - 3.0 * s[i - 1] + 3.0 * s[i - 2] - s[i - 3], 2);
  }
  return sum;
}

TEST(SmoothSequence, EveryModeDoesItsOwn) {
  const std::vector<double> measured = Zigzag(20);
  const auto smoothed = [&](int mode, int reference, double alpha) {
    std::vector<double> sequence = measured;
    SmoothSequence(mode, sequence, 2, 0, reference, alpha);
    return sequence;
  };
  EXPECT_EQ(smoothed(STABMODE_None, 3, 0.5), measured);
  EXPECT_EQ(smoothed(STABMODE_Registered, 3, 0.5), std::vector<double>(20, measured[3]));
  EXPECT_EQ(smoothed(STABMODE_Registered, -4, 0.5), std::vector<double>(20, measured.front()));
  EXPECT_EQ(smoothed(STABMODE_Registered, 99, 0.5), std::vector<double>(20, measured.back()));
  const std::vector<double> still = smoothed(STABMODE_Flat, 0, 0.5);
  for (const double position : still) EXPECT_NEAR(position, (measured[0] + measured[1]) / 2, 1e-12);

  EXPECT_EQ(smoothed(STABMODE_Smoothed, 0, -1.0), measured) << "a negative weight leaves the path";
  const std::vector<double> loose = smoothed(STABMODE_Smoothed, 0, 0.01);
  const std::vector<double> loosest = smoothed(STABMODE_Smoothed, 0, 0.0);
  EXPECT_LT(Roughness(loose), 0.1 * Roughness(measured));
  EXPECT_LT(Roughness(loosest), Roughness(loose));
  EXPECT_GT(Roughness(loosest), 0.0) << "weight 0 is the smoothest path, not the still one";
  for (const auto& path : {loose, loosest}) {
    EXPECT_EQ(path[0], measured[0]);
    EXPECT_EQ(path[1], measured[1]);
  }
}

TEST(SmoothSequence, SettingsBeyondTheSequenceAreSafe) {
  for (const int mode : {-1, 0, 1, 2, 77}) {
    for (const int anchors : {-5, 0, 1, 2, 1000000}) {
      for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{2}}) {
        std::vector<double> sequence(size, 4.0);
        SmoothSequence(mode, sequence, anchors, anchors, 7, 0.1);
        EXPECT_EQ(sequence, std::vector<double>(size, 4.0)) << mode << " " << anchors;
      }
    }
  }
}

/// Robust points of a shot over [100, 100 + frames): as many as `points`, shaky.
SMotionArrays Shaky(int points, int frames) {
  SMotionArrays motion;
  for (int i = 0; i < frames; ++i) {
    for (int point = 0; point < points; ++point) {
      motion.original.PointsAt(100 + i).Point(point) = {
          300.0 + 100.0 * point + std::sin(1.7 * i + point), 200.0 + std::cos(2.3 * i + point)};
    }
  }
  return motion;
}

std::vector<double> PathOf(const CTrackingArray& array, int point, double CTrackPoint::*axis) {
  std::vector<double> path;
  const CTrackingPoints trajectory = array.Trajectory(point);
  for (const auto& [frame, position] : trajectory.Entries()) path.push_back(position.*axis);
  return path;
}

TEST(SmoothRobustPoints, EachAxisOfEachPointIsSmoothedByItsMode) {
  for (const int points : {1, 2}) {
    CShotDouble shot;
    SMotionArrays motion = Shaky(points, 30);
    motion.original.SetBoxExtents(1, 2, 3, 4, 5, 6);
    ASSERT_TRUE(
        SmoothRobustPoints(shot, motion, 3, 2, 112, 0.01, STABMODE_Registered, STABMODE_Smoothed));
    EXPECT_EQ(shot.calls.take(), Calls{"setStatusMessage Phase 2..."});
    EXPECT_FALSE(motion.smoothed.BoxExtentsDiffer(1, 2, 3, 4, 5, 6));
    for (int point = 0; point < points; ++point) {
      const double still = motion.original.FindPoints(112).Entries().at(point).x;
      EXPECT_EQ(PathOf(motion.smoothed, point, &CTrackPoint::x), std::vector<double>(30, still));
      std::vector<double> expected = PathOf(motion.original, point, &CTrackPoint::y);
      SmoothSequence(STABMODE_Smoothed, expected, 3, 2, 0, 0.01);
      EXPECT_EQ(PathOf(motion.smoothed, point, &CTrackPoint::y), expected);
    }
  }
}

TEST(SmoothRobustPoints, FailuresAndTheirTexts) {
  struct SCase {
    const char* name;
    int points, frames, anchorsIn, anchorsOut;
    std::function<void(CTrackingArray&)> damage;
    int code;
    const char* text;
  };
  const char* const missing = "Internal Error: A frame is missing a tracking point";
  const char* const tooShort =
      "Operation failed: To render this shot, the marked frame range must be greater than the "
      "number of anchor frames";
  const SCase cases[] = {
      {"ten frames, two anchors", 1, 10, 1, 1, {}, 0, ""},
      {"ten frames, nine anchors", 1, 10, 4, 5, {}, 0, ""},
      {"ten frames, ten anchors", 1, 10, 5, 5, {}, -8501, tooShort},
      {"anchors past counting", 1, 10, 2147483647, 2147483647, {}, -8501, tooShort},
      {"no frames", 0, 0, 0, 0, {}, -8500, missing},
      {"three points",
       3,
       10,
       1,
       1,
       {},
       -8506,
       "INTERNAL ERROR: More than two robust points passed to smoother! "},
      {"frame left out", 1, 10, 1, 1, [](CTrackingArray& a) { a.frames.erase(105); }, -8500,
       missing},
      {"second point left out", 2, 10, 1, 1,
       [](CTrackingArray& a) { a.PointsAt(109).RemovePoint(1); }, -8500, missing},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    CShotDouble shot;
    SMotionArrays motion = Shaky(c.points, c.frames);
    if (c.damage) c.damage(motion.original);
    theError.clear();
    EXPECT_EQ(SmoothRobustPoints(shot, motion, c.anchorsIn, c.anchorsOut, 100, 0.1, STABMODE_Flat,
                                 STABMODE_Flat),
              c.code == 0);
    EXPECT_EQ(theError.getError(), c.code);
    EXPECT_EQ(theError.getMessage(), c.text);
  }
}

TEST(CompleteSyntheticPoints, MakesTrianglesOfBothSets) {
  SMotionArrays one;
  one.original.PointsAt(5).Point(0) = {10, 20};
  one.smoothed.PointsAt(5).Point(0) = {1, 2};
  CompleteSyntheticPoints(one);
  const auto& single = one.smoothed.FindPoints(5).Entries();
  EXPECT_EQ(single.at(1), CTrackPoint(101, 2));
  EXPECT_EQ(single.at(2), CTrackPoint(1, 102));
  EXPECT_EQ(one.original.FindPoints(5).Entries().at(2), CTrackPoint(10, 120));

  SMotionArrays two;
  for (CTrackingArray* array : {&two.original, &two.smoothed}) {
    array->PointsAt(5).Point(0) = {10, 20};
    array->PointsAt(5).Point(1) = {110, 27};
  }
  CompleteSyntheticPoints(two);
  EXPECT_EQ(two.original.FindPoints(5).Entries().at(2), CTrackPoint(17, -80));
  EXPECT_EQ(two.smoothed.FindPoints(5).Entries().at(2), CTrackPoint(17, -80));
}

TEST(RunSmoothing, PublishesArraysFlagAndStateInThisOrder) {
  CShotDouble shot;
  shot.addMovingPoint(0, 100, 10, 300.0, 200.0, 1.0, -0.5);
  shot.parameters.HMode = STABMODE_Registered;
  shot.parameters.VMode = STABMODE_None;
  shot.parameters.RefFrameIndex = 104;
  RunSmoothing(shot);
  EXPECT_EQ(shot.calls.take(),
            (Calls{"setStatusMessage Smoothing", "gatherParameters", "setStatusMessage Phase 2...",
                   "setStatusMessage Smoothing complete", "setSmoothedFlag 1",
                   "setRunState " + std::to_string(RUN_SMOOTHED)}));
  EXPECT_EQ(shot.monitor.calls.take(),
            (Calls{"SetStatusMessage Smoothing", "SetStatusMessage Smoothing complete"}));
  for (int frame = 100; frame < 110; ++frame) {
    const double y = 200.0 - 0.5 * (frame - 100);
    const auto& original = shot.syntheticOriginal.FindPoints(frame).Entries();
    const auto& smoothed = shot.syntheticSmoothed.FindPoints(frame).Entries();
    ASSERT_EQ(original.size(), 3u);
    EXPECT_EQ(original.at(0), CTrackPoint(300.0 + (frame - 100), y));
    EXPECT_EQ(smoothed.at(0), CTrackPoint(304.0, y));
    EXPECT_EQ(smoothed.at(1), CTrackPoint(404.0, y));
    EXPECT_EQ(smoothed.at(2), CTrackPoint(304.0, y + 100.0));
  }
}

TEST(RunSmoothing, NothingOfAnEarlierRunIsLeft) {
  CShotDouble shot;
  shot.parameters.RMode = STABMODE_Flat;
  for (int point = 0; point < 4; ++point) {
    shot.addMovingPoint(point, 100, 40, 100.0 * point, 70.0 * point * point, 0.5, 0.25);
  }
  RunSmoothing(shot);
  EXPECT_EQ(shot.syntheticOriginal.FrameCount(), 40);
  for (int frame = 100; frame < 120; ++frame) shot.tracked.frames.erase(frame);
  shot.parameters.RMode = STABMODE_None;
  RunSmoothing(shot);
  EXPECT_EQ(shot.runState(), RUN_SMOOTHED);
  for (CTrackingArray* array : {&shot.syntheticOriginal, &shot.syntheticSmoothed}) {
    EXPECT_EQ(array->FirstFrame(), 120);
    EXPECT_EQ(array->FrameCount(), 20);
  }
  EXPECT_NEAR(shot.syntheticOriginal.FindPoints(139).Entries().at(1).y, 0.25 * 19, 1e-6)
      << "point 1 completes the triangle, it is no lever of a rotation any more";
}

TEST(RunSmoothing, AFailureIsReportedAndLeavesTheLastResult) {
  CReportedErrors reported;
  CShotDouble shot;
  shot.addMovingPoint(0, 0, 10, 300.0, 200.0, 1.0, 1.0);
  RunSmoothing(shot);
  const CTrackingArray original = shot.syntheticOriginal;
  const CTrackingArray smoothed = shot.syntheticSmoothed;
  shot.calls.clear();
  shot.parameters.GoodFramesIn = 10;
  RunSmoothing(shot);
  EXPECT_EQ(shot.calls.texts().back(), "setRunState " + std::to_string(RUN_ERROR));
  EXPECT_EQ(shot.calls.count("setSmoothedFlag"), 0);
  EXPECT_EQ(shot.syntheticOriginal, original);
  EXPECT_EQ(shot.syntheticSmoothed, smoothed);
  EXPECT_EQ(reported.take(),
            Calls{"CStabilizerTool::DoSmoothing_trampoline -8501 Smoothing failed:Operation "
                  "failed: To render this shot, the marked frame range must be greater than the "
                  "number of anchor frames"});
  shot.tracked.Clear();
  RunSmoothing(shot);
  EXPECT_EQ(shot.runState(), RUN_ERROR);
  EXPECT_EQ(reported.take(), Calls{}) << "no points: the earlier failure must not be told again";
}

TEST(StartSmoothing, TheResultIsThereOnceTheRunStateSaysSo) {
  CShotDouble shot;
  shot.parameters.RMode = STABMODE_Flat;
  for (int point = 0; point < 5; ++point) {
    shot.addMovingPoint(point, 50, 200, 130.0 * point, 40.0 * point * point, 0.5, 0.25);
  }
  for (int run = 0; run < 5; ++run) {
    ASSERT_EQ(StartSmoothing(shot), 0);
    // Whoever sits at the window goes on drawing while the run works on its copy.
    while (shot.runState() == RUN_SMOOTHING) {
      shot.tracked.IsTrackedOver(0, 40, 300);
      shot.tracked.AnchorType(4);
      shot.tracked.NumberOfPoints();
    }
    ASSERT_EQ(shot.runState(), RUN_SMOOTHED);
    EXPECT_TRUE(shot.smoothed);
    EXPECT_EQ(shot.syntheticOriginal.FirstFrame(), 50);
    EXPECT_EQ(shot.syntheticSmoothed.FrameCount(), 200);
    EXPECT_EQ(shot.syntheticSmoothed.FindPoints(249).ValidCount(), 3);
  }
  BThreadWaitForAll();
}

TEST(StartSmoothing, AFailureIsReportedBeforeTheRunStateTellsIt) {
  CShotDouble shot;
  std::atomic<int> stateWhenReported{-1};
  SetErrorSink(
      [&](const std::string&, int, const std::string&) { stateWhenReported = shot.runState(); });
  shot.addMovingPoint(0, 0, 2, 300.0, 200.0, 1.0, 1.0);
  ASSERT_EQ(StartSmoothing(shot), 0);
  BThreadWaitForAll();
  SetErrorSink({});
  EXPECT_EQ(shot.runState(), RUN_ERROR);
  EXPECT_EQ(stateWhenReported, RUN_SMOOTHING) << "whoever sees the state may leave at once";
}

}  // namespace
