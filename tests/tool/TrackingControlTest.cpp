#include "ToolFixture.h"

namespace {

class TrackingControl : public ToolTest {};

TEST_F(TrackingControl, APassStartsOnlyWithMarksClipAndPoints) {
  struct {
    const char* name;
    int markOut;
    bool clip;
    int points;
    bool starts;
  } const cases[] = {
      {"everything there", OUT, true, 2, true},
      {"no range", IN, true, 2, false},
      {"no clip", OUT, false, 2, false},
      {"no points", OUT, true, 0, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CRecordingProgressMonitor monitor;
    tool.setProgressMonitor(&monitor);
    host.markOut = c.markOut;
    host.clipOpen = c.clip;
    placePoints(c.points);
    if (c.points > 0) tool.livePoints().PointsAt(IN + 5).Point(0) = CTrackPoint(1, 1);
    const int frames = tool.livePoints().FrameCount();
    EXPECT_EQ(tool.onTrackingStart(), c.starts);
    EXPECT_EQ(tool.livePoints().FrameCount(), c.starts ? 1 : frames);
    EXPECT_EQ(tool.runState(), c.starts ? RUN_TRACKING : RUN_IDLE);
    EXPECT_EQ(monitor.calls.contains("StopProgress 0"), !c.starts);
    tool.setProgressMonitor(nullptr);
    if (!c.starts) {  // whoever waits for it already must not wait for ever
      shot.setRunState(RUN_TRACKING);
      EXPECT_FALSE(tool.onTrackingStart());
      EXPECT_EQ(tool.runState(), RUN_ERROR);
    }
    shot.setRunState(RUN_IDLE);
  }
}

TEST_F(TrackingControl, APassIsTrackedWithTheBoxesOfTheSettings) {
  tool.setBoxExtents(6, 6, 8, 8, 8, 8);
  placePoints();
  tool.livePoints().SetBoxExtents(-1, -1, -1, -1, -1, -1);
  ASSERT_TRUE(tool.onTrackingStart());
  EXPECT_FALSE(tool.livePoints().BoxExtentsDiffer(6, 6, 8, 8, 8, 8));
}

TEST_F(TrackingControl, APassDuringSmoothingIsTakenAfterIt) {
  placePoints();
  shot.setRunState(RUN_SMOOTHING);
  EXPECT_TRUE(tool.onTrackingStart());
  shot.setRunState(RUN_SMOOTHED);
  heartbeat();
  EXPECT_EQ(tool.runState(), RUN_TRACKING);
}

TEST_F(TrackingControl, TheEndOfAPassMovesOnlyARunningOne) {
  for (int state = RUN_IDLE; state <= RUN_RENDERED; ++state) {
    for (const int failed : {0, 1, -5}) {
      shot.setRunState(state);
      tool.onTrackingEnd(failed);
      int expected = state;
      if (state == RUN_TRACKING) expected = failed == 0 ? RUN_TRACKED : RUN_ERROR;
      EXPECT_EQ(tool.runState(), expected) << state << ' ' << failed;
    }
  }
}

struct SMarkCase {
  const char* name;
  int points;
  bool tracked;
  bool protectedTracking;  ///< a long tracking pass, not rendered since
  bool clearOnShotChange;
  bool warnMarkOut;
  int markIn, markOut;
  const char* question;  ///< null: none
};

constexpr const char* DELETE_IN =
    "All tracking points will be deleted if you delete your IN mark.    \nContinue anyway?";
constexpr const char* MOVE_IN =
    "All tracking data will be lost if you move your IN mark.    \nContinue anyway?";
constexpr const char* DELETE_OUT =
    "Tracking information will be lost if you delete your OUT mark.\nContinue anyway?";
constexpr const char* MOVE_OUT = "All points will need to be re-tracked.    \nContinue anyway?";

class MarkQuestions : public ToolTest {
 protected:
  void arrange(const SMarkCase& c) {
    host.markIn = IN;
    host.markOut = OUT;
    tool.clearAllTrackingData();
    tool.editor().updateMarks();
    placePoints(c.points);
    if (c.tracked) trackPoints();
    endTracking(c.protectedTracking ? 61.4 : 60.9);
    tool.setClearOnShotChange(c.clearOnShotChange);
    tool.setMarkOutWarnings(c.warnMarkOut);
    host.markIn = c.markIn;
    host.markOut = c.markOut;
    application.questions.clear();
    forgetCalls();
  }
};

// Cancelled, the mark goes back and the points stay.
TEST_F(MarkQuestions, AreAskedWhereAMarkWouldCostWork) {
  const SMarkCase cases[] = {
      {"nothing moved", 2, true, true, false, true, IN, OUT, nullptr},
      {"in deleted, one untracked point", 1, false, false, false, true, -1, OUT, nullptr},
      {"in deleted, two points", 2, false, false, false, true, -1, OUT, DELETE_IN},
      {"in deleted, one point long tracked", 1, true, true, false, true, -1, OUT, DELETE_IN},
      {"in moved inside", 2, true, true, false, true, IN + 3, OUT, nullptr},
      {"in moved outside, short pass", 2, true, false, false, true, IN - 10, OUT, nullptr},
      {"in moved outside, long pass", 2, true, true, false, true, IN - 10, OUT, MOVE_IN},
      {"in moved to another shot", 2, true, true, true, true, IN - 10, OUT, nullptr},
      {"out moved inside", 2, true, true, false, true, IN, OUT - 3, nullptr},
      {"out moved outside, long pass", 2, true, true, false, true, IN, OUT + 9, MOVE_OUT},
      {"out moved outside, short pass", 2, true, false, false, true, IN, OUT + 9, nullptr},
      {"out moved outside, no warnings", 2, true, true, false, false, IN, OUT + 9, nullptr},
      {"out deleted, long pass", 2, true, true, false, true, IN, -1, DELETE_OUT},
      {"out deleted, no warnings", 2, true, true, false, false, IN, -1, nullptr},
  };
  for (const SMarkCase& c : cases) {
    SCOPED_TRACE(c.name);
    arrange(c);
    application.answer = EConfirmation::proceed;
    EXPECT_TRUE(tool.checkMarkChanges());
    EXPECT_EQ(application.questions,
              c.question ? std::vector<std::string>{c.question} : std::vector<std::string>{});
    EXPECT_EQ(host.calls.count("setMarkIn") + host.calls.count("setMarkOut"), 0);
    if (!c.question) continue;
    arrange(c);
    application.answer = EConfirmation::cancel;
    const int frames = tool.livePoints().FrameCount();
    EXPECT_EQ(tool.onMarksChange(), CToolObject::HANDLED);
    EXPECT_EQ(host.markIn, IN);
    EXPECT_EQ(host.markOut, OUT);
    EXPECT_EQ(host.calls.count("setMarkIn"), c.markIn != IN ? 1 : 0);
    EXPECT_EQ(host.calls.count("setMarkOut"), c.markIn != IN ? 0 : 1);
    EXPECT_EQ(tool.livePoints().FrameCount(), frames);
  }
}

TEST_F(MarkQuestions, MovingInIsAskedOncePerTrackingPass) {
  const SMarkCase moved = {"", 2, true, true, false, true, IN - 10, OUT, MOVE_IN};
  arrange(moved);
  EXPECT_TRUE(tool.checkMarkInChange());
  EXPECT_TRUE(tool.checkMarkInChange());
  EXPECT_EQ(application.questions.size(), 1u);
  endTracking(61.0);
  EXPECT_TRUE(tool.checkMarkInChange());
  EXPECT_EQ(application.questions.size(), 2u);
}

TEST_F(MarkQuestions, ARenderedRangeNeedsNoProtection) {
  const SMarkCase moved = {"", 2, true, true, false, true, IN, OUT + 9, MOVE_OUT};
  arrange(moved);
  host.markOut = OUT;
  shot.setSmoothedFlag(true);
  tool.startProcessing(ETool::EVENT_RENDER_RANGE, false);
  report(CAutotoolStatus::STOPPED);
  tool.onHeartbeat();
  host.markOut = OUT + 9;
  EXPECT_TRUE(tool.checkMarkChanges());
  EXPECT_TRUE(application.questions.empty());
}

TEST_F(MarkQuestions, AnotherClipOrAFirstShowIsNotAsked) {
  const SMarkCase moved = {"", 2, true, true, false, true, IN - 10, OUT, MOVE_IN};
  arrange(moved);
  host.folderText = "/clips/other";
  EXPECT_TRUE(tool.checkMarkChanges());
  host.folderText = "/clips/shot";
  host.firstShow = true;
  EXPECT_TRUE(tool.checkMarkInChange());
  EXPECT_TRUE(application.questions.empty());
}

TEST_F(MarkQuestions, AllowedMarksReachThePoints) {
  struct {
    const char* name;
    int markIn;
    bool clearOnShotChange;
    int firstFrame, frames;
  } const cases[] = {
      {"moved outside: the points move along", IN - 10, false, IN - 10, 1},
      {"moved inside: all is kept", IN + 3, false, IN, OUT - IN},
      {"another shot: all is cleared", IN - 10, true, 0, 0},
      {"deleted: all is cleared", -1, false, 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    arrange({"", 2, true, false, c.clearOnShotChange, true, c.markIn, OUT, nullptr});
    int notified = 0;
    tool.marksChangedHook.subscribe(this, 0, [&notified] { ++notified; });
    EXPECT_EQ(tool.onMarksChange(), CToolObject::HANDLED);
    EXPECT_EQ(tool.livePoints().FirstFrame(), c.firstFrame);
    EXPECT_EQ(tool.livePoints().FrameCount(), c.frames);
    EXPECT_EQ(notified, 1);
    tool.marksChangedHook.unsubscribe(this, 0);
  }
}

TEST_F(TrackingControl, SelectionGoesRound) {
  struct {
    int points, selected, delta, expected;
  } const cases[] = {
      {3, 2, 1, 0}, {3, -1, -1, 2}, {3, -1, 1, 0}, {3, 0, -1, 2}, {3, 1, 1, 2}, {0, -1, 1, -1},
  };
  for (const auto& c : cases) {
    placePoints(c.points);
    tool.editor().selectedPoint = c.selected;
    tool.selectRelativePoint(c.delta);
    EXPECT_EQ(tool.editor().selectedPoint, c.expected) << c.points << ' ' << c.selected;
  }
}

TEST_F(TrackingControl, ClearTakesThePointsAndTheMeasuredMotion) {
  makeTracked();
  tool.syntheticOriginalArray().PointsAt(IN).Point(0) = CTrackPoint(1, 1);
  tool.editor().setMotionArrays(&tool.syntheticOriginalArray(), &tool.syntheticSmoothedArray());
  tool.editor().selectedPoint = 1;
  tool.clearAllTrackingData();
  EXPECT_EQ(tool.livePoints().NumberOfPoints(), 0);
  EXPECT_EQ(tool.syntheticOriginalArray().FrameCount(), 0);
  EXPECT_EQ(tool.editor().originalMotion(), nullptr);
  EXPECT_EQ(tool.editor().selectedPoint, -1);
  EXPECT_TRUE(tool.pointNeedsRetracking());
  EXPECT_TRUE(window->calls.contains("pointButtons"));
  EXPECT_FALSE(tool.isTracked());
  makeTracked();
  EXPECT_TRUE(tool.isTracked()) << "what is placed afterwards can be tracked";
}

TEST_F(TrackingControl, ClearEndsWhatIsUnderWayForThePoints) {
  const struct {
    int state, after;  ///< of the clear and of the next heartbeat
  } cases[] = {{RUN_TRACKING, RUN_TRACKING},
               {RUN_TRACKED, RUN_IDLE},
               {RUN_SMOOTHED, RUN_IDLE},
               {RUN_RENDER_REQUESTED, RUN_IDLE},
               {RUN_RENDERING, RUN_RENDERING}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.state);
    makeTracked();
    shot.setRunState(c.state);
    host.calls.clear();
    tool.clearAllTrackingData();
    EXPECT_EQ(tool.runState(), c.after);
    EXPECT_EQ(host.calls.contains("StopTrackingRun"), c.state == RUN_TRACKING);
    tool.onHeartbeat();
    EXPECT_EQ(tool.runState(), c.after);
    EXPECT_EQ(tool.editor().originalMotion(), nullptr);
    EXPECT_EQ(tool.livePoints().NumberOfPoints(), 0);
    shot.setRunState(RUN_IDLE);
  }
}

TEST_F(TrackingControl, ClearWhileSmoothingLeavesNoPathBehind) {
  makeTracked();
  shot.setRunState(RUN_SMOOTHING);
  tool.request(REQUEST_RENDER_ALL);
  tool.clearAllTrackingData();
  shot.setRunState(RUN_SMOOTHED);
  for (int beat = 0; beat < 3; ++beat) tool.onHeartbeat();
  EXPECT_EQ(tool.runState(), RUN_IDLE);
  EXPECT_EQ(tool.editor().originalMotion(), nullptr);
  EXPECT_FALSE(tool.isSmoothed());
}

TEST_F(TrackingControl, NewBoxSizesReachThePointsOnce) {
  tool.setBoxExtents(6, 6, 8, 8, 8, 8);
  EXPECT_FALSE(tool.livePoints().BoxExtentsDiffer(6, 6, 8, 8, 8, 8));
  EXPECT_EQ(host.calls.count("redrawDisplay"), 1);
  tool.setBoxExtents(6, 6, 8, 8, 8, 8);
  EXPECT_EQ(host.calls.count("redrawDisplay"), 1);
}

}  // namespace
