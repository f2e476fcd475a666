#include "ToolFixture.h"

namespace {

enum EPoints { NO_POINTS, PLACED, TRACKED, SMOOTHED };

class RunControl : public ToolTest {
 protected:
  void prepare(EPoints points) {
    tool.clearAllTrackingData();
    tool.editor().updateMarks();
    shot.setSmoothedFlag(false);
    if (points == PLACED) placePoints();
    if (points == TRACKED) makeTracked();
    if (points == SMOOTHED) makeSmoothed();
    forgetCalls();
  }

  /// The request that waits for the end of a smoothing run; it is taken by looking.
  int takePending() {
    shot.setRunState(RUN_SMOOTHED);
    tool.onHeartbeat();
    return tool.runState();
  }

  /// Runs a render of the range until the processor has been told to run.
  void startRangePass(int request) {
    makeSmoothed();
    tool.request(request);
    heartbeat();
    ASSERT_EQ(tool.runState(), RUN_RENDERING);
  }
};

struct SRequestCase {
  const char* name;
  EPoints points;
  int runState;
  int request;
  int expectedState;
  int expectedPending;
};

TEST_F(RunControl, RequestsMoveTheRunStateOnlyWhereTheyFit) {
  const SRequestCase cases[] = {
      {"track if possible", PLACED, 0, 1, 2, 0},
      {"track if possible, no points", NO_POINTS, 0, 1, 0, 0},
      {"track if possible while smoothing", PLACED, 6, 1, 6, 2},
      {"track if possible while rendering", PLACED, 9, 1, 9, 0},
      {"track", TRACKED, 0, 2, 2, 0},
      {"track while smoothing", TRACKED, 6, 2, 6, 2},
      {"track while rendering", TRACKED, 9, 2, 9, 0},
      {"settings changed, untracked", PLACED, 0, 3, 0, 0},
      {"settings changed while smoothing", TRACKED, 6, 3, 6, 5},
      {"settings changed while tracking", TRACKED, 3, 3, 3, 0},
      {"preview frame, untracked", PLACED, 0, 4, 2, 8},
      {"preview range, tracked", TRACKED, 0, 6, 5, 8},
      {"render frame, smoothed", SMOOTHED, 0, 7, 8, 8},
      {"render range, smoothed", SMOOTHED, 0, 9, 8, 8},
      {"render range while tracking", PLACED, 3, 9, 3, 8},
      {"render range while smoothing", TRACKED, 6, 9, 6, 8},
      {"no request 5", SMOOTHED, 0, 5, 0, 0},
      {"no request 8", SMOOTHED, 0, 8, 0, 0},
      {"no request 0", SMOOTHED, 0, 0, 0, 0},
  };
  for (const SRequestCase& c : cases) {
    SCOPED_TRACE(c.name);
    prepare(c.points);
    tool.request(REQUEST_STOP);
    shot.setRunState(c.runState);
    tool.request(c.request);
    EXPECT_EQ(tool.runState(), c.expectedState);
    EXPECT_EQ(takePending(), c.expectedPending);
    shot.setRunState(RUN_IDLE);
  }
}

TEST_F(RunControl, TrackKeepsOnlyTheFirstFrameUnlessItIsBeingRendered) {
  makeTracked();
  tool.request(REQUEST_TRACK);
  EXPECT_EQ(tool.livePoints().FrameCount(), 1);
  EXPECT_EQ(tool.livePoints().TrackState(), TRACK_STATE_Untracked);
  EXPECT_TRUE(tool.evaluateRetracking());

  makeTracked();
  shot.setRunState(RUN_RENDERING);
  tool.request(REQUEST_TRACK);
  EXPECT_TRUE(tool.isTracked()) << "a click in the midst of a render must not cost the tracking";
}

TEST_F(RunControl, ARenderCommandWhileRenderingIsRefusedWithABeep) {
  ZRNQTraceLevel = 0;
  startRangePass(REQUEST_RENDER_ALL);
  forgetCalls();
  tool.request(REQUEST_RENDER_ALL);
  EXPECT_EQ(tool.runState(), RUN_RENDERING);
  EXPECT_EQ(application.beeps, 1);
  EXPECT_EQ(trace, std::vector<std::string>{
                       "ERROR: Stabilize: received render command while already rendering"});
  report(CAutotoolStatus::STOPPED);
  EXPECT_EQ(takePending(), RUN_IDLE);
}

struct SHeartbeatCase {
  const char* name;
  EPoints points;
  int runState;
  int expectedState;
  const char* hostCall;  ///< one that must have been made; null for none at all
};

TEST_F(RunControl, HeartbeatsAdvanceTheRunState) {
  const SHeartbeatCase cases[] = {
      {"idle stays", SMOOTHED, 0, 0, nullptr},
      {"error ends idle", SMOOTHED, 1, 0, nullptr},
      {"tracking is started", PLACED, 2, 3, "StartTrackingRun"},
      {"tracked already", TRACKED, 2, 5, nullptr},
      {"smoothed already", SMOOTHED, 2, 7, nullptr},
      {"tracking runs", PLACED, 3, 3, nullptr},
      {"tracking ended without success", PLACED, 4, 1, nullptr},
      {"smoothing without tracking", PLACED, 5, 1, nullptr},
      {"smoothed, nothing pending", SMOOTHED, 7, 0, nullptr},
      {"render without an event", SMOOTHED, 8, 1, nullptr},
      {"rendering runs", SMOOTHED, 9, 9, nullptr},
      {"preview ended", SMOOTHED, 10, 0, nullptr},
  };
  for (const SHeartbeatCase& c : cases) {
    SCOPED_TRACE(c.name);
    prepare(c.points);
    shot.setRunState(c.runState);
    EXPECT_EQ(tool.onHeartbeat(), 0);
    EXPECT_EQ(tool.runState(), c.expectedState);
    EXPECT_EQ(host.calls.texts(),
              c.hostCall ? std::vector<std::string>{c.hostCall} : std::vector<std::string>{});
    shot.setRunState(RUN_IDLE);
  }
}

TEST_F(RunControl, BusyStatesShowAsRunning) {
  for (int state = RUN_IDLE; state <= RUN_RENDERED; ++state) {
    shot.setRunState(state);
    const bool busy = state >= RUN_TRACKING_REQUESTED && state <= RUN_RENDERING;
    EXPECT_EQ(tool.getToolProcessingState(), busy ? +ETool::STATE_RUNNING : +ETool::STATE_IDLE)
        << "run state " << state;
  }
}

TEST_F(RunControl, RenderAllOfAnUntrackedShotTracksSmoothsAndRenders) {
  placePoints();
  tool.request(REQUEST_RENDER_ALL);
  heartbeat();
  ASSERT_EQ(tool.runState(), RUN_TRACKING);
  ASSERT_TRUE(tool.onTrackingStart());
  trackPoints();
  tool.onTrackingEnd(0);
  ASSERT_EQ(tool.runState(), RUN_TRACKED);
  tool.onHeartbeat();
  heartbeat();  // smoothing has completed
  EXPECT_EQ(tool.runState(), RUN_RENDER_REQUESTED);
  EXPECT_TRUE(tool.isSmoothed());
  EXPECT_EQ(tool.syntheticSmoothedArray().FrameCount(), OUT - IN);
  EXPECT_EQ(tool.editor().smoothedMotion(), &tool.syntheticSmoothedArray());
  forgetCalls();
  heartbeat();
  EXPECT_EQ(tool.runState(), RUN_RENDERING);
  EXPECT_EQ(host.calls.take(), (std::vector<std::string>{
                                   "prepareForToolCall", "MakeSimpleToolSetup Stabilize 2",
                                   "SetActiveToolSetup 0", "SetToolFrameRange 0 100 110",
                                   "setRenderMode 1", "SetToolParameters", "RunActiveToolSetup"}));
  report(CAutotoolStatus::RUNNING);
  complete(IN);
  report(CAutotoolStatus::END_OF_MATERIAL);
  report(CAutotoolStatus::STOPPED);
  EXPECT_EQ(tool.runState(), RUN_RENDERED);
  host.displayedFrame = OUT - 1;
  heartbeat();
  EXPECT_EQ(tool.runState(), RUN_IDLE);
  EXPECT_EQ(host.displayedFrame, IN);
  EXPECT_FALSE(window->isShowPointsChecked());
  EXPECT_FALSE(tool.editor().showPoints);
  EXPECT_EQ(tool.livePoints().TrackState(), TRACK_STATE_Rendered);
  EXPECT_TRUE(tool.isTracked());
}

TEST_F(RunControl, TrackingAloneEndsWithTrackingComplete) {
  makeTracked();
  shot.setRunState(RUN_SMOOTHED);
  CRecordingProgressMonitor monitor;
  tool.setProgressMonitor(&monitor);
  heartbeat();
  EXPECT_EQ(monitor.calls.take(), std::vector<std::string>{"SetStatusMessage Tracking Complete"});
  EXPECT_TRUE(window->calls.contains("buttons 0 0"));
  tool.setProgressMonitor(nullptr);
}

TEST_F(RunControl, ABatchRenderWithCurrentTrackingStartsAtOnce) {
  makeSmoothed();
  shot.setRunState(RUN_TRACKED);
  tool.onHeartbeat();
  heartbeat();
  ASSERT_EQ(tool.runState(), RUN_IDLE);
  host.batchRun = true;
  EXPECT_EQ(tool.startProcessing(ETool::EVENT_RENDER_RANGE, false), 0);
  EXPECT_EQ(host.calls.count("RunActiveToolSetup"), 1);
  report(CAutotoolStatus::STOPPED);
  heartbeat();

  tool.setBoxExtents(7, 7, 9, 9, 9, 9);
  tool.livePoints().SetBoxExtents(8, 8, 9, 9, 9, 9);  // tracked with another box
  tool.startProcessing(ETool::EVENT_RENDER_RANGE, false);
  EXPECT_EQ(host.calls.count("RunActiveToolSetup"), 1);
  EXPECT_EQ(tool.runState(), RUN_TRACKING_REQUESTED);
}

// The path that a render is waiting for must be that of the settings as they stand.
TEST_F(RunControl, SettingsChangedDuringSmoothingAreSmoothedAgainBeforeTheRender) {
  for (const bool ended : {false, true}) {  // whether the run has ended by then or not
    SCOPED_TRACE(ended);
    makeTracked();
    tool.request(REQUEST_RENDER_ALL);
    tool.onHeartbeat();
    if (ended) BThreadWaitForAll();
    tool.discardSmoothedPath();
    tool.request(REQUEST_PARAMETERS_CHANGED);
    BThreadWaitForAll();
    for (int beats = 0; beats < 10 && tool.runState() != RUN_RENDERING; ++beats) {
      if (tool.runState() == RUN_RENDER_REQUESTED) {
        EXPECT_TRUE(tool.isSmoothed());
      }
      heartbeat();
    }
    EXPECT_EQ(tool.runState(), RUN_RENDERING);
    report(CAutotoolStatus::STOPPED);
    heartbeat();
  }
}

TEST_F(RunControl, StopGoesToWhoeverIsWorking) {
  placePoints();
  shot.setRunState(RUN_TRACKING);
  tool.request(REQUEST_STOP);
  EXPECT_EQ(host.calls.take(), std::vector<std::string>{"StopTrackingRun"});
  shot.setRunState(RUN_IDLE);

  startRangePass(REQUEST_RENDER_ALL);
  forgetCalls();
  tool.request(REQUEST_STOP);
  EXPECT_EQ(host.calls.take(), std::vector<std::string>{"stopActiveToolSetup"});
  EXPECT_EQ(tool.runState(), RUN_RENDERED);
  heartbeat();
  EXPECT_EQ(tool.runState(), RUN_RENDERED) << "the processor is still at its last frame";
  report(CAutotoolStatus::STOPPED);
  heartbeat();
  EXPECT_EQ(tool.runState(), RUN_IDLE);
}

TEST_F(RunControl, StopTakesBackARenderThatWaitsForSmoothing) {
  makeTracked();
  tool.request(REQUEST_RENDER_ALL);
  tool.onHeartbeat();
  tool.request(REQUEST_STOP);
  heartbeat();
  EXPECT_EQ(tool.runState(), RUN_IDLE);
  EXPECT_EQ(host.calls.count("RunActiveToolSetup"), 0);
}

TEST_F(RunControl, ARenderThatTheHostForbidsLeavesTheToolIdle) {
  host.renderPermitted = false;
  makeSmoothed();
  tool.request(REQUEST_RENDER_ALL);
  heartbeat();
  EXPECT_EQ(tool.runState(), RUN_IDLE);
  EXPECT_EQ(host.calls.count("MakeSimpleToolSetup"), 0);
  host.renderPermitted = true;
  tool.request(REQUEST_RENDER_ALL);
  heartbeat();
  EXPECT_EQ(tool.runState(), RUN_RENDERING);
}

TEST_F(RunControl, PauseAndResumeGoOnAtTheResumeFrame) {
  startRangePass(REQUEST_RENDER_ALL);
  tool.request(REQUEST_PAUSE);
  report(CAutotoolStatus::PAUSED);
  EXPECT_EQ(host.calls.count("pauseActiveToolSetup"), 1);
  tool.setResumeFrame(104);
  forgetCalls();
  tool.request(REQUEST_RESUME);
  EXPECT_TRUE(host.calls.contains("SetToolFrameRange 0 104 110"));
  EXPECT_TRUE(host.calls.contains("RunActiveToolSetup"));
}

TEST_F(RunControl, ARangeIsRenderedWhenNoFrameOfItWasLeftOutWhateverThePauses) {
  const struct {
    const char* name;
    int doneBeforeThePause, resume;
    int event, looksAt;  // at this frame meanwhile
    bool rendered;
  } cases[] = {
      {"goes on where it stopped", 104, 104, 0, 0, true},
      {"does some again", 104, 102, 0, 0, true},
      {"leaves one out", 104, 105, 0, 0, false},
      {"renders one frame meanwhile", 104, 105, CToolObject::EVENT_RENDER_FRAME, 104, false},
      {"looks at the first frame", 104, 104, CToolObject::EVENT_PREVIEW_FRAME, IN, true},
      {"begins anew", 104, IN, 0, 0, true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    makeSmoothed();
    tool.startProcessing(CToolObject::EVENT_RENDER_RANGE, false);
    report(CAutotoolStatus::RUNNING);
    for (int frame = IN; frame < c.doneBeforeThePause; ++frame) shot.frameRendered(frame);
    tool.pauseProcessing();
    report(CAutotoolStatus::PAUSED);
    if (c.looksAt) {
      host.displayedFrame = c.looksAt;
      tool.startProcessing(c.event, false);
      shot.frameRendered(c.looksAt);
      report(CAutotoolStatus::STOPPED);
    }
    tool.resumeProcessing(c.resume);
    complete(c.resume);
    report(CAutotoolStatus::STOPPED);
    EXPECT_EQ(tool.livePoints().TrackState() == TRACK_STATE_Rendered, c.rendered);
    heartbeat();
    forgetCalls();
  }
}

TEST_F(RunControl, ALookAtTheLastFrameDoesNotRenderWhatWasTrackedAnew) {
  makeSmoothed();
  tool.startProcessing(CToolObject::EVENT_RENDER_RANGE, false);
  complete(IN);
  report(CAutotoolStatus::STOPPED);
  heartbeat();
  makeSmoothed();
  host.displayedFrame = OUT - 1;
  tool.startProcessing(CToolObject::EVENT_PREVIEW_FRAME, false);
  complete(OUT - 1);
  report(CAutotoolStatus::STOPPED);
  EXPECT_EQ(tool.livePoints().TrackState(), TRACK_STATE_Tracked);
}

TEST_F(RunControl, StartTrackingNamesWhatIsMissing) {
  placePoints();
  host.markOut = IN;
  shot.setRunState(RUN_TRACKING_REQUESTED);
  heartbeat();
  EXPECT_EQ(tool.runState(), RUN_ERROR);
  host.markOut = OUT;
  host.clipOpen = false;
  tool.StartTracking();
  EXPECT_EQ(errors,
            (std::vector<std::string>{"CStabilizerTool::StartTracking -1 Marks are invalid!    ",
                                      "CStabilizerTool::StartTracking -1 No clip is open   "}));
  EXPECT_EQ(host.calls.count("StartTrackingRun"), 0);
}

}  // namespace
