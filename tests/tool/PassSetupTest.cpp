#include "ToolFixture.h"
#include "render/StabilizerToolParameters.h"

namespace {

class PassSetup : public ToolTest {
 protected:
  void SetUp() override {
    ToolTest::SetUp();
    makeSmoothed();
    forgetCalls();
  }
};

TEST_F(PassSetup, ValidateMarksNamesTheFirstThingThatIsWrong) {
  struct {
    int in, out, frame;
    const char* message;  // null: valid
  } const cases[] = {
      {-1, 10, -1, "Set marks to designate the material to be processed"},
      {0, -1, -1, "Set marks to designate the material to be processed"},
      {10, 10, -1, "Mark IN must be earlier than mark OUT"},
      {11, 10, 5, "Mark IN must be earlier than mark OUT"},
      {5, 10, 4, "Frame must be between the marks"},
      {5, 10, 10, "Frame must be between the marks"},
      {5, 10, 5, nullptr},
      {5, 10, 9, nullptr},
      {5, 10, -1, nullptr},
  };
  for (const auto& c : cases) {
    errors.clear();
    EXPECT_EQ(tool.ValidateMarks(c.in, c.out, c.frame), c.message == nullptr);
    const std::vector<std::string> expected =
        c.message ? std::vector<std::string>{std::string("CStabilizerTool::ValidateMarks -1 ") +
                                             c.message}
                  : std::vector<std::string>{};
    EXPECT_EQ(errors, expected) << c.in << ' ' << c.out << ' ' << c.frame;
  }
}

TEST_F(PassSetup, FailuresAreReportedInFull) {
  const struct {
    const char* operation;
    int result, expected;
    const char *range, *frame;  ///< what a pass over the range says, what one over a frame
  } cases[] = {
      {"MakeSimpleToolSetup", -7, -1,
       "Stabilizer internal error: CNavSystemInterface::MakeSimpleToolSetup failed",
       "Stabilize internal error: MakeSimpleToolSetup failed"},
      {"SetActiveToolSetup", -12, -12,
       "Stabilizer internal error: SetActiveToolSetup(0) failed with return code -12",
       "Stabilizer internal error: SetActiveToolSetup(1) failed with return code -12"},
      {"SetToolFrameRange", 4, 4,
       "Stabilizer internal error: SetToolFrameRange failed with return code 4",
       "Stabilization internal error: SetToolFrameRange failed with return code 4"},
      {"SetToolParameters", -9, -9,
       "Stabilizer internal error: SetToolParameters failed with return code -9",
       "Stabilization internal error: SetToolParameters failed with return code -9"},
  };
  for (const auto& c : cases) {
    for (const bool range : {true, false}) {
      SCOPED_TRACE(std::string(c.operation) + (range ? ", range" : ", one frame"));
      forgetCalls();
      host.failures = {{c.operation, c.result}};
      EXPECT_EQ(range ? tool.RunFrameProcessing(-1) : tool.ProcessSingleFrame(1), c.expected);
      EXPECT_EQ(errors, std::vector<std::string>{
                            std::string("CStabilizerTool::") +
                            (range ? "RunFrameProcessing " : "ProcessSingleFrame ") +
                            std::to_string(c.expected) + " " + (range ? c.range : c.frame)});
      EXPECT_EQ(tool.runState(), RUN_ERROR);
      EXPECT_EQ(host.calls.count("RunActiveToolSetup"), 0);
      tool.onHeartbeat();
      EXPECT_EQ(tool.runState(), RUN_IDLE);
    }
  }
  host.failures.clear();
  EXPECT_EQ(tool.RunFrameProcessing(-1), 0) << "a failed pass must not stop the next one";
}

TEST_F(PassSetup, APassWithoutMarksOrClipDoesNotReachTheHost) {
  host.markOut = IN;
  EXPECT_EQ(tool.RunFrameProcessing(-1), -1);
  EXPECT_EQ(errors.back(),
            "CStabilizerTool::RunFrameProcessing -1 Mark IN must be earlier than mark OUT");
  EXPECT_EQ(tool.RunFramePreprocessing(), -1);
  EXPECT_EQ(errors.back(), "CStabilizerTool::RunFramePreprocessing -1 Marks are invalid!    ");
  host.markOut = OUT;
  host.clipOpen = false;
  EXPECT_EQ(tool.RunFrameProcessing(-1), -1);
  EXPECT_EQ(errors.back(), "CStabilizerTool::RunFrameProcessing -1 No clip open");
  EXPECT_EQ(tool.RunFramePreprocessing(), -1);
  EXPECT_EQ(errors.back(), "CStabilizerTool::RunFramePreprocessing -1 No clip is open   ");
  EXPECT_EQ(tool.RunFrameProcessing(OUT), -1) << "frame outside the marks";
  EXPECT_TRUE(host.calls.texts().empty());
}

TEST_F(PassSetup, AOneFramePassIsRefusedWithoutAWord) {
  for (const int displayed : {IN - 1, OUT}) {
    host.displayedFrame = displayed;
    EXPECT_EQ(tool.ProcessSingleFrame(3), -1);
    EXPECT_EQ(tool.runState(), RUN_ERROR);
  }
  host.displayedFrame = IN;
  host.displayedFrameStatus = 2;
  EXPECT_EQ(tool.ProcessSingleFrame(3), -1);
  EXPECT_TRUE(errors.empty());
  EXPECT_TRUE(host.calls.texts().empty());
}

TEST_F(PassSetup, RangesReachTheHost) {
  struct {
    const char* name;
    std::function<void()> act;
    bool flag;
    int first, end;
    int kind, threads;
  } const cases[] = {
      {"whole range", [this] { tool.startProcessing(ETool::EVENT_RENDER_RANGE, false); }, false, IN,
       OUT, 2, AvailableProcessorCoreCount()},
      {"from a frame", [this] { tool.RunFrameProcessing(104); }, false, 104, OUT, 2,
       AvailableProcessorCoreCount()},
      {"one frame for looking at",
       [this] { tool.startProcessing(ETool::EVENT_PREVIEW_FRAME, false); }, false, 105, 106, 2,
       AvailableProcessorCoreCount()},
      {"one frame to keep", [this] { tool.startProcessing(ETool::EVENT_RENDER_FRAME, false); },
       true, 104, 107, 1, 1},
      {"kind 4", [this] { tool.processFrameKind4(); }, true, 104, 107, 4, 1},
  };
  host.parameterValue = 77;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    host.displayedFrame = 105;
    c.act();
    ASSERT_TRUE(host.frameRange);
    ASSERT_EQ(host.frameRange->inputs.size(), 1u);
    ASSERT_EQ(host.frameRange->outputs.size(), 1u);
    EXPECT_EQ(host.frameRange->inputs[0].flag, c.flag);
    EXPECT_EQ(host.frameRange->inputs[0].firstFrame, c.first);
    EXPECT_EQ(host.frameRange->inputs[0].endFrame, c.end);
    const CRecordingHost::SToolSetup& setup = host.toolSetups.at(host.activeToolSetup);
    EXPECT_EQ(setup.kind, c.kind);
    EXPECT_EQ(setup.config.threadCount, c.threads);
    const auto* sent = dynamic_cast<CStabilizerToolParameters*>(host.parameters.get());
    ASSERT_NE(sent, nullptr);
    EXPECT_EQ(sent->hostValue, 77);
    EXPECT_EQ(sent->shot, &shot);
    EXPECT_EQ(sent->parameters, window->gatherParameters());
    report(CAutotoolStatus::STOPPED);
    tool.onHeartbeat();
  }
  EXPECT_EQ(host.toolSetups.size(), 3u) << "setups are made once and used again";
}

TEST_F(PassSetup, AFinishedRangeIsRenderedAFinishedFrameIsNot) {
  struct {
    const char* name;
    int event;
    bool completed, edited;
    int expected;
  } const cases[] = {
      {"range preview", ETool::EVENT_PREVIEW_RANGE, true, false, TRACK_STATE_Rendered},
      {"stopped range", ETool::EVENT_RENDER_RANGE, false, false, TRACK_STATE_Tracked},
      {"edited meanwhile", ETool::EVENT_RENDER_RANGE, true, true, TRACK_STATE_Untracked},
      {"one frame", ETool::EVENT_RENDER_FRAME, true, false, TRACK_STATE_Tracked},
      {"one frame preview", ETool::EVENT_PREVIEW_FRAME, true, false, TRACK_STATE_Tracked},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    makeSmoothed();
    tool.startProcessing(c.event, false);
    ASSERT_EQ(host.calls.count("RunActiveToolSetup"), 1);
    if (c.completed) complete(IN);
    if (c.edited) tool.livePoints().SetTrackState(TRACK_STATE_Untracked);
    EXPECT_NE(tool.livePoints().TrackState(), TRACK_STATE_Rendered)
        << "not from the processor's thread";
    report(CAutotoolStatus::STOPPED);
    EXPECT_EQ(tool.livePoints().TrackState(), c.expected);
    tool.onHeartbeat();
    forgetCalls();
  }
}

TEST_F(PassSetup, EditsDuringAPassDoNotReachIt) {
  tool.setMattingBox({2, 3, 40, 30});
  tool.editor().selectedPoint = 1;
  tool.startProcessing(ETool::EVENT_RENDER_RANGE, false);
  tool.setMattingBox({0, 0, 1, 1});
  tool.syntheticOriginalArray().PointsAt(IN).Point(0) = CTrackPoint(1, 2);
  tool.clearAllTrackingData();
  EXPECT_EQ(shot.mattingBox(), (SRect{2, 3, 40, 30}));
  EXPECT_EQ(shot.selectedPoint(), 1);
  EXPECT_EQ(shot.trackedArray().NumberOfPoints(), 2);
  tool.onHeartbeat();
  EXPECT_EQ(tool.syntheticOriginalArray().NumberOfPoints(), 1);
  report(CAutotoolStatus::STOPPED);
  tool.onHeartbeat();
  EXPECT_EQ(tool.syntheticOriginalArray().NumberOfPoints(), 0);
}

TEST_F(PassSetup, ALeftClipGivesItsSetupBackUnlessItStillRuns) {
  tool.startProcessing(ETool::EVENT_RENDER_RANGE, false);
  host.toolSetupStatuses[0] = CNavSystemInterface::SETUP_STATUS_RUNNING;
  tool.toolDeactivate();
  EXPECT_EQ(host.calls.count("destroyToolSetup"), 0);
  tool.toolActivate();
  forgetCalls();
  tool.onClipChange();
  EXPECT_TRUE(host.calls.contains("SetActiveToolSetup -1"));
  EXPECT_TRUE(host.calls.contains("destroyToolSetup 0"));
  forgetCalls();
  tool.onFramingChange();
  EXPECT_EQ(host.calls.count("destroyToolSetup"), 0) << "given back once";
}

TEST_F(PassSetup, ProcessorsAreMadeForTheHost) {
  CAbortFlag abortFlag{0};
  CToolProcessor* processor = tool.makeToolProcessorInstance(&abortFlag);
  ASSERT_NE(processor, nullptr);
  processor->commandQueue().Add({CAutotoolCommand::EXIT, nullptr});
  BThreadWaitForAll();
  delete processor;
}

}  // namespace
