#include "ToolObj/ToolObject.h"

#include <gtest/gtest.h>

#include "doubles/RecordingHost.h"
#include "doubles/RecordingProgressMonitor.h"

namespace {

using Calls = std::vector<std::string>;

/// A tool that overrides nothing.
class CPlainTool : public CToolObject {
 public:
  explicit CPlainTool(const std::string& name = "Plain") : CToolObject(name) {}
  int toolInitialize(CNavSystemInterface*) override { return 0; }
  int toolShutdown() override { return 0; }
  CToolProcessor* makeToolProcessorInstance(const CAbortFlag*) override { return nullptr; }
};

// Records its run operations together with the host's calls; `runResult` is what they return.
class CTestTool : public CPlainTool {
 public:
  explicit CTestTool(CRecordingHost& host) : CPlainTool("Test"), host_(host) {}

  int runResult = 0;
  bool asksBeforeRendering = false;
  bool consumesAll = false;
  int reportedState = -1;  // -1: the state machine's own

  bool canRenderWithoutAsking() override { return !asksBeforeRendering; }
  bool consumesUnmappedInput() override { return consumesAll; }
  int onToolCommand(CToolCommand& command) override { return 100 + command.getCommandNumber(); }
  int getToolProcessingState() override {
    return reportedState >= 0 ? reportedState : CToolObject::getToolProcessingState();
  }
  int ProcessSingleFrame(int kind) override { return run(CCallLog::text("single", kind)); }
  int RunFrameProcessing(int frame) override { return run(CCallLog::text("process", frame)); }
  int RunFramePreprocessing() override { return run("preprocess"); }
  int pauseRun() override { return CToolObject::pauseRun() + run("pause"); }
  int stopRun() override { return CToolObject::stopRun() + run("stop"); }
  int stopSingleFrame() override { return CToolObject::stopSingleFrame() + run("stopFrame"); }
  void onProcessingStateChanged(int state, bool render) override {
    host_.calls.add(CCallLog::text("state", state, render));
  }

  /// Sends a status (a negative number) or an event into the state machine.
  int send(int input, int frame = 42) {
    const CAutotoolStatus status{input < 0 ? -input : 0, input < 0 ? -77 : 0, -1, -1};
    return onProcessingEvent(input < 0 ? EVENT_STATUS : input, status, frame);
  }

 private:
  int run(const std::string& call) {
    host_.calls.add(call);
    return runResult;
  }

  CRecordingHost& host_;
};

class CToolObjectTest : public testing::Test {
 protected:
  CToolObjectTest() : tool_(host_) {
    tool_.initBaseToolObject(20, &host_, nullptr, &emptyConfiguration_);
    tool_.setProgressMonitor(&monitor_);
  }
  Calls calls() { return host_.calls.take(); }

  CRecordingHost host_;
  const CUserInputConfiguration emptyConfiguration_{0, nullptr};
  CRecordingProgressMonitor monitor_;
  CTestTool tool_;
};

}  // namespace

// Every row of the state machine: where, on what (statuses negative), which operation, whereto; and
// what a failing operation leaves. Whatever is not in the table changes nothing.
TEST_F(CToolObjectTest, ProcessingStates) {
  constexpr int ALL_STATES[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  constexpr int ALL_INPUTS[] = {-7, -6, -5, -4, -3, -2, -1, 1, 2, 3, 4, 5, 6, 7, 8};
  struct SRow {
    Calls operation;
    int newState;
    bool evenOnFailure = false;
  };
  const Calls stop = {"stopActiveToolSetup", "stop"};
  const Calls stopFrame = {"stopActiveToolSetup", "stopFrame"};
  const std::map<std::pair<int, int>, SRow> rows = {
      {{0, 4}, {{"single 3"}, 7}},
      {{0, 3}, {{"process 42"}, 3}},
      {{0, 6}, {{"single 1"}, 9}},
      {{0, 5}, {{"process 42"}, 3}},
      {{0, 8}, {{"preprocess"}, 3}},
      {{1, -1}, {{}, 0}},
      {{3, -5}, {{}, 1}},
      {{3, -1}, {{}, 0}},
      {{3, 7}, {stop, 1}},
      {{3, 2}, {{"pauseActiveToolSetup", "pause"}, 4}},
      {{4, -1}, {{}, 0}},
      {{4, -3}, {{}, 5}},
      {{4, 7}, {stop, 1}},
      {{5, 7}, {stop, 1}},
      {{5, 1}, {{"process 42"}, 3}},
      {{5, 4}, {{"single 3"}, 8}},
      {{5, 6}, {{"single 1"}, 10}},
      {{7, -1}, {{}, 0}},
      {{9, -1}, {{}, 0}},
      {{7, 7}, {stopFrame, 1, true}},
      {{9, 7}, {stopFrame, 1, true}},
      {{8, -1}, {{}, 5}},
      {{10, -1}, {{}, 5}},
      {{8, 7}, {stopFrame, 1, true}},
      {{10, 7}, {stopFrame, 1, true}},
  };
  for (const int result : {0, -9}) {
    for (const int state : ALL_STATES) {
      for (const int input : ALL_INPUTS) {
        tool_.setToolProcessingState(state);
        tool_.runResult = result;
        const auto found = rows.find({state, input});
        const SRow row = found == rows.end() ? SRow{{}, state} : found->second;
        const int code = row.operation.empty() ? 0 : result;
        const bool moves = code == 0 || row.evenOnFailure;
        EXPECT_EQ(tool_.send(input), code) << state << " " << input;
        EXPECT_EQ(tool_.getToolProcessingState(), moves ? row.newState : state)
            << state << " " << input << " result " << result;
        Calls expected = row.operation;
        if (moves && row.newState != state) {
          expected.push_back(CCallLog::text("state", row.newState, tool_.getRenderFlag()));
          if (row.newState == 0) expected.push_back("notifyToolIdle");
        }
        EXPECT_EQ(calls(), expected) << state << " " << input;
      }
    }
  }
}

TEST_F(CToolObjectTest, StartingAPassChoosesWhetherItWrites) {
  const struct {
    int event;
    bool renders;
  } cases[] = {{4, false}, {6, true}, {3, false}, {5, true}, {8, false}};
  for (const auto& c : cases) {
    tool_.setToolProcessingState(3);
    tool_.send(-5);
    EXPECT_EQ(tool_.getLastProcessingError(), -77);
    tool_.send(-1);
    ASSERT_EQ(tool_.getToolProcessingState(), 0);
    tool_.send(c.event);
    EXPECT_EQ(tool_.getRenderFlag(), c.renders) << c.event;
    EXPECT_EQ(tool_.getLastProcessingError(), 0) << c.event;
  }
}

TEST_F(CToolObjectTest, AStatusGoesBeforeTheEventThatCameWithIt) {
  tool_.setToolProcessingState(3);
  EXPECT_EQ(tool_.onProcessingEvent(7, {CAutotoolStatus::STOPPED, 0, -1, -1}, -1), 0);
  EXPECT_EQ(calls(), (Calls{"state 0 0", "notifyToolIdle"}));
}

TEST_F(CToolObjectTest, TheHostHearsOfIdleOnlyWhenTheToolSaysIdle) {
  tool_.setToolProcessingState(3);
  tool_.reportedState = 3;
  const CAutotoolStatus stopped{CAutotoolStatus::STOPPED, 0, -1, -1};
  EXPECT_EQ(tool_.onToolProcessingStatus(&stopped), 0);
  EXPECT_EQ(calls(), Calls{"state 0 0"});
}

TEST_F(CToolObjectTest, ARenderThatTheHostRefusesDoesNothing) {
  tool_.asksBeforeRendering = true;
  host_.renderPermitted = false;
  for (const int event : {5, 6}) {
    EXPECT_EQ(tool_.startProcessing(event, false), 0);
    EXPECT_EQ(calls(), Calls{"prepareForToolCall"}) << event;
  }
  EXPECT_TRUE(tool_.getStartFlag()) << "a refused request leaves the flag";
  EXPECT_EQ(tool_.startProcessing(3, false), 0);
  EXPECT_EQ(calls(), (Calls{"prepareForToolCall", "process -1", "state 3 0"}))
      << "a preview asks nobody";
  EXPECT_FALSE(tool_.getStartFlag());

  tool_.setToolProcessingState(0);
  host_.renderPermitted = true;
  tool_.startProcessing(5, true);
  EXPECT_EQ(calls(), (Calls{"prepareForToolCall", "process -1", "state 3 1"}));
}

TEST_F(CToolObjectTest, PauseResumeAndStopTellTheMonitor) {
  tool_.setToolProcessingState(3);
  tool_.pauseProcessing();
  EXPECT_EQ(tool_.getToolProcessingState(), 4);
  EXPECT_EQ(monitor_.calls.take(), (Calls{"PushStatusMessage Paused", "StopProgress 0"}));
  tool_.send(-3);
  calls();
  tool_.resumeProcessing(17);
  EXPECT_EQ(calls(), (Calls{"process 17", "state 3 0"}));
  EXPECT_EQ(monitor_.calls.take(), (Calls{"PopStatusMessage", "StartProgress"}));
  tool_.stopProcessing();
  EXPECT_EQ(tool_.getToolProcessingState(), 1);
  EXPECT_EQ(monitor_.calls.take(), (Calls{"SetStatusMessage Stopped", "StopProgress 0"}));
}

TEST_F(CToolObjectTest, MapsInputToCommands) {
  static const SUserInputConfigEntry bindings[] = {{5, " D KeyDown"}, {6, " Ctrl+D KeyDown"}};
  const CUserInputConfiguration configuration(2, bindings);
  CTestTool tool(host_);
  EXPECT_EQ(tool.initBaseToolObject(20, &host_, nullptr, &configuration), 0);
  EXPECT_EQ(tool.getToolName(), "Test");
  EXPECT_EQ(tool.getToolNumber(), 20);
  EXPECT_EQ(tool.getSystemAPI(), &host_);
  CUserInput input;
  input.action = CUserInput::ACTION_KEY_DOWN;
  input.key = 0x44;
  EXPECT_EQ(tool.onUserInput(input), 105);
  input.modifiers = CUserInput::MODIFIER_CTRL;
  EXPECT_EQ(tool.onUserInput(input), 106);
  input.action = CUserInput::ACTION_KEY_UP;
  EXPECT_EQ(tool.onUserInput(input), CToolObject::NOT_HANDLED);
  tool.consumesAll = true;
  EXPECT_EQ(tool.onUserInput(input), CToolObject::CONSUMED);
  EXPECT_EQ(CToolCommand(nullptr, 5).execute(), -1);
}

TEST_F(CToolObjectTest, ABindingThatDoesNotParseEndsTheInitialisation) {
  static const SUserInputConfigEntry bindings[] = {
      {5, " D KeyDown"}, {6, " D pressed"}, {7, " G KeyDown"}};
  const CUserInputConfiguration configuration(3, bindings);
  CTestTool tool(host_);
  EXPECT_EQ(tool.initBaseToolObject(20, &host_, nullptr, &configuration), -5);
  CUserInput input;
  input.parse(" D KeyDown");
  EXPECT_EQ(tool.onUserInput(input), 105) << "what stood before it stays";
  input.parse(" G KeyDown");
  EXPECT_EQ(tool.onUserInput(input), CToolObject::NOT_HANDLED);
}

TEST_F(CToolObjectTest, MarksAreValidWhenInLiesBeforeOut) {
  const struct {
    int in, out;
    bool valid;
  } cases[] = {{0, 1, true}, {-1, 5, false}, {5, 5, false}, {6, 5, false}, {3, -1, false}};
  for (const auto& c : cases) {
    host_.markIn = c.in;
    host_.markOut = c.out;
    EXPECT_EQ(tool_.areMarksValid(), c.valid) << c.in << " " << c.out;
  }
}

TEST_F(CToolObjectTest, ANullMonitorRestoresTheDefaultOne) {
  EXPECT_EQ(tool_.getProgressMonitor(), &monitor_);
  tool_.setProgressMonitor(nullptr);
  EXPECT_NE(dynamic_cast<CDefaultToolProgressMonitor*>(tool_.getProgressMonitor()), nullptr);
}

TEST_F(CToolObjectTest, TheBufferPoolIsUnlockedOnlyWhileIdle) {
  ASSERT_TRUE(tool_.lockBufferPool());
  tool_.setToolProcessingState(3);
  EXPECT_FALSE(tool_.unlockBufferPool());
  tool_.setToolProcessingState(0);
  EXPECT_TRUE(tool_.unlockBufferPool());
  EXPECT_FALSE(QTXunlockPreallocPool(PREALLOC_POOL_BUFFER_HOLDERS)) << "it was locked once";
}

TEST_F(CToolObjectTest, ToolsThatOverrideNothingAnswerNotHandled) {
  CPlainTool tool;
  tool.initBaseToolObject(1, &host_, nullptr, &emptyConfiguration_);
  CUserInput input;
  CPDLEntry entry;
  CToolCommand command(&tool, 5);
  EXPECT_EQ(tool.onMouseMove(input), 1);
  EXPECT_EQ(tool.onMarksChange(), 1);
  EXPECT_EQ(tool.onClipChange(), 1);
  EXPECT_EQ(tool.drawOverlay(), 1);
  EXPECT_EQ(tool.onHeartbeat(), 1);
  EXPECT_EQ(command.execute(), 1);
  EXPECT_EQ(tool.capturePDLEntry(entry), -3000);
  EXPECT_EQ(tool.runPDLEntry(entry), -3000);
  EXPECT_EQ(tool.toolActivate(), 0);
  EXPECT_FALSE(tool.isToolShowing());
  EXPECT_FALSE(tool.onTrackingStart());
  EXPECT_TRUE(tool.toolPrepare());
  EXPECT_EQ(calls(), Calls{"prepareForToolCall"});
}
