#include "ToolFixture.h"

namespace {

class ProcessingStates : public ToolTest {};

enum { S_NONE = 0, S_STOPPED = 1, S_PAUSED = 3, S_ERROR = 5 };

struct SStateCase {
  const char* name;
  int state;
  int runState;
  int event;
  int status;
  int expectedState;
  int expectedRunState;
};

// Where a shot's machine differs from every tool's, and what it shares at those places.
TEST_F(ProcessingStates, TheRunStateFollowsTheProcessor) {
  const SStateCase cases[] = {
      {"stopped while stopping", 1, 9, 0, S_STOPPED, 0, 10},
      {"stopped while running", 3, 9, 0, S_STOPPED, 0, 10},
      {"tracking stopped while running", 3, 3, 0, S_STOPPED, 2, 4},
      {"stopped while pausing", 4, 9, 0, S_STOPPED, 0, 10},
      {"stopped after one frame", 7, 9, 0, S_STOPPED, 0, 10},
      {"stopped after one rendered frame", 9, 9, 0, S_STOPPED, 0, 10},
      {"stopped after one frame of a paused pass", 8, 9, 0, S_STOPPED, 5, 9},
      {"stopped after one rendered frame of a paused pass", 10, 9, 0, S_STOPPED, 5, 9},
      {"stop while running", 3, 9, 7, S_NONE, 1, 10},
      {"stop while tracking by preprocessing", 3, 3, 7, S_NONE, 1, 4},
      {"stop while pausing", 4, 9, 7, S_NONE, 1, 9},
      {"stop while paused", 5, 9, 7, S_NONE, 1, 9},
      {"stop of a one-frame preview is ignored", 7, 9, 7, S_NONE, 7, 9},
      {"stop of a one-frame render is ignored", 9, 9, 7, S_NONE, 9, 9},
      {"stop of a paused one-frame preview is ignored", 8, 9, 7, S_NONE, 8, 9},
      {"stop of a paused one-frame render is ignored", 10, 9, 7, S_NONE, 10, 9},
      {"stop after preprocessing", 2, 0, 7, S_NONE, 0, 0},
      {"stop while idle", 0, 0, 7, S_NONE, 0, 0},
      {"preview after preprocessing", 2, 0, 3, S_NONE, 3, 9},
      {"render one frame after preprocessing", 2, 0, 6, S_NONE, 9, 0},
      {"error", 3, 9, 0, S_ERROR, 1, 9},
      {"paused", 4, 9, 0, S_PAUSED, 5, 9},
      {"pause", 3, 9, 2, S_NONE, 4, 9},
      {"pause while idle", 0, 0, 2, S_NONE, 0, 0},
      {"resume", 5, 9, 1, S_NONE, 3, 9},
      {"preview one frame of a paused pass", 5, 9, 4, S_NONE, 8, 9},
      {"render one frame of a paused pass", 5, 9, 6, S_NONE, 10, 9},
      {"preprocess an untracked shot", 0, 0, 8, S_NONE, 3, 3},
  };
  placePoints();
  for (const SStateCase& c : cases) {
    SCOPED_TRACE(c.name);
    forgetCalls();
    tool.setToolProcessingState(c.state);
    shot.setRunState(c.runState);
    CAutotoolStatus status;
    status.status = c.status;
    status.errorCode = -42;
    EXPECT_EQ(tool.onProcessingEvent(c.event, status, c.event == 1 ? 105 : -1), 0);
    EXPECT_EQ(tool.runState(), c.expectedRunState);
    shot.setRunState(RUN_IDLE);
    EXPECT_EQ(tool.getToolProcessingState(), c.expectedState);
    const bool changed = c.state != c.expectedState;
    EXPECT_EQ(window->calls.count("buttons"), changed ? 1 : 0);
    EXPECT_EQ(host.calls.count("notifyToolIdle"), 0);
    if (c.status == S_ERROR) {
      EXPECT_EQ(tool.getLastProcessingError(), -42);
    }
  }
}

TEST_F(ProcessingStates, RenderFlagAndSingleFrameFollowTheEvent) {
  makeSmoothed();
  struct {
    int event;
    bool flagBefore;
    bool flagAfter;
    int singleFrame;
  } const cases[] = {
      {ETool::EVENT_RENDER_RANGE, false, true, -1},  {ETool::EVENT_PREVIEW_FRAME, true, true, IN},
      {ETool::EVENT_PREVIEW_RANGE, true, false, -1}, {ETool::EVENT_PREVIEW_FRAME, false, false, IN},
      {ETool::EVENT_RENDER_FRAME, false, true, IN},  {ETool::EVENT_PREPROCESS, true, false, -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.event);
    ASSERT_EQ(tool.getRenderFlag(), c.flagBefore);
    tool.startProcessing(c.event, false);
    EXPECT_EQ(tool.getRenderFlag(), c.flagAfter);
    EXPECT_EQ(tool.singleFrame(), c.singleFrame);
    report(S_STOPPED);
  }
}

TEST_F(ProcessingStates, ARunThatCannotStartLeavesTheStateAndGivesItsCode) {
  makeSmoothed();
  host.failures = {{"SetToolFrameRange", -6}};
  for (const int state : {0, 2, 5}) {
    tool.setToolProcessingState(state);
    const int event = state == 5 ? ETool::EVENT_RESUME : ETool::EVENT_RENDER_RANGE;
    EXPECT_EQ(tool.onProcessingEvent(event, CAutotoolStatus(), state == 5 ? IN : -1), -6);
    shot.setRunState(RUN_IDLE);
    EXPECT_EQ(tool.getToolProcessingState(), state);
  }
}

TEST_F(ProcessingStates, PreprocessingATrackedShotGoesOnWithSmoothing) {
  makeTracked();
  EXPECT_EQ(tool.RunFramePreprocessing(), 0);
  EXPECT_EQ(tool.runState(), RUN_SMOOTHING_REQUESTED);
  shot.setSmoothedFlag(true);
  EXPECT_EQ(tool.RunFramePreprocessing(), 0);
  EXPECT_EQ(tool.runState(), RUN_SMOOTHED);
}

}  // namespace
