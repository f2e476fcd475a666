#include "setups/ToolSetups.h"

#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <set>

#include "doubles/RecordingHost.h"
#include "hostdoubles/ScriptedClip.h"
#include "support/Threads.h"

namespace {

/// Adds 1000 to every sample.
class CAddingProc final : public CToolProcessor {
 public:
  CAddingProc(CNavSystemInterface* host, const CAbortFlag* abortFlag, IToolProgressMonitor* monitor)
      : CToolProcessor(20, "adding", 1, 1, host, abortFlag, monitor) {
    StartProcessThread();
  }
  void SetIOConfig(const CToolIOConfig&) override {
    inputPorts()[0].frameCount = 1;
    outputPorts()[0].frameCount = 1;
    outputPorts()[0].imageFormat = std::make_unique<CImageFormat>(*node().input(0)->imageFormat());
  }
  void SetFrameRange(const CToolFrameRange& range) override { range_ = range.inputs[0]; }
  int SetParameters(CToolParameters*) override { return 0; }
  int BeginProcessing(SIterationRecord&) override { return 0; }
  int EndProcessing(SIterationRecord&) override { return 0; }
  int BeginIteration(SIterationRecord& iteration) override {
    const int frame = range_.firstFrame + iteration.index;
    inputPorts()[0].neededFrames = {frame};
    inputPorts()[0].slots = {nullptr};
    inputPorts()[0].releasedFrames = {frame};
    outputPorts()[0].frames = {frame};
    outputPorts()[0].slots = {nullptr};
    return 0;
  }
  int EndIteration(SIterationRecord&) override { return 0; }
  int DoProcess(SIterationRecord&) override {
    const CToolFrameBuffer& in = *inputPorts()[0].slots[0];
    CToolFrameBuffer& out = *outputPorts()[0].slots[0];
    const std::size_t count = in.imageFormat()->getBytesPerField() / 2;
    for (std::size_t i = 0; i < count; ++i)
      out.samples()[i] = static_cast<std::uint16_t>(in.samples()[i] + 1000);
    return 0;
  }
  int GetIterationCount() override { return range_.endFrame - range_.firstFrame; }

 private:
  CToolFrameRange::SFrameRange range_;
};

class CAddingTool : public CToolObject {
 public:
  CAddingTool() : CToolObject("Adding") {}
  int toolInitialize(CNavSystemInterface* host) override {
    return initBaseToolObject(20, host, nullptr, &noBindings_);
  }
  int toolShutdown() override { return 0; }
  CToolProcessor* makeToolProcessorInstance(const CAbortFlag* abortFlag) override {
    return new CAddingProc(getSystemAPI(), abortFlag, getProgressMonitor());
  }
  int onToolProcessingStatus(const CAutotoolStatus* status) override {
    seen.insert(status->status);
    return 0;
  }
  int stopProcessing() override {
    ++stops;
    if (setups) setups->stop();
    return 0;
  }

  std::set<int> seen;
  int stops = 0;
  CToolSetups* setups = nullptr;

 private:
  CUserInputConfiguration noBindings_{0, nullptr};
};

class ToolSetups : public ::testing::Test {
 protected:
  ~ToolSetups() override { close(); }
  void open(int first, int end, bool parallel) {
    close();
    reader_ = std::make_unique<CScriptedReader>(first, end);
    writer_ = std::make_unique<CScriptedWriter>(parallel);
    store_ = std::make_unique<CFrameStore>(*reader_, SFrameStoreSettings{4, 1});
    setups_ = std::make_unique<CToolSetups>(*store_, CToolSetups::SSettings{2, 2});
    tool_.toolInitialize(&host_);
    tool_.setups = setups_.get();
    setups_->setTool(&tool_);
    setups_->setWriter(writer_.get());
    setups_->setRenderMode(1);
    ASSERT_EQ(setups_->activate(setups_->make(2, CToolIOConfig(1, 1, 1))), 0);
  }
  void close() {
    setups_.reset();
    host_.toolFrameCache.clear();  // its frames' memory is the store's
  }
  void run(int first, int end, bool oneFrame = false) {
    CToolFrameRange range(1, 1);
    range.inputs[0] = {oneFrame, first, end};
    ASSERT_EQ(setups_->setFrameRange(range), 0);
    setups_->run();
  }
  void pumpUntil(int status) {
    tool_.seen.clear();
    while (!tool_.seen.contains(status)) {
      setups_->pump();
      QTXmillisleep(1);
    }
  }

  CRecordingHost host_;
  CAddingTool tool_;
  std::unique_ptr<CScriptedReader> reader_;
  std::unique_ptr<CScriptedWriter> writer_;
  std::unique_ptr<CFrameStore> store_;
  std::unique_ptr<CToolSetups> setups_;
};

TEST_F(ToolSetups, EveryFrameOfTheRangeIsProcessedAndWrittenInEachRun) {
  for (const bool parallel : {false, true}) {
    open(100, 140, parallel);
    for (int pass = 1; pass <= 2; ++pass) {
      writer_->order.clear();
      writer_->firstSample.clear();
      run(105, 130);
      pumpUntil(CAutotoolStatus::STOPPED);
      EXPECT_EQ(setups_->finishWriting(), 25);
      for (int frame = 105; frame < 130; ++frame)
        EXPECT_EQ(writer_->firstSample[frame], frame + 1000);
      EXPECT_EQ(writer_->order.size(), 25u);
      EXPECT_EQ(writer_->firstSample.size(), 25u);
      if (!parallel) {
        EXPECT_TRUE(std::is_sorted(writer_->order.begin(), writer_->order.end()));
      }
      EXPECT_EQ(setups_->failure(), "");
    }
    setups_->clear();
  }
}

TEST_F(ToolSetups, AFrameThatCannotBeReadStopsThePassAndIsNamed) {
  open(0, 20, false);
  reader_->failingFrame = 7;
  run(0, 20);
  pumpUntil(CAutotoolStatus::STOPPED);
  EXPECT_EQ(tool_.stops, 1);
  EXPECT_NE(setups_->failure().find("frame 7"), std::string::npos);
  EXPECT_FALSE(writer_->firstSample.contains(7));
}

// Tools do not listen to stopping in passes of one frame: such a pass must end by itself.
TEST_F(ToolSetups, APassOfOneFrameEndsWhereANeighbourCannotBeRead) {
  for (const int kind :
       {CNavSystemInterface::SETUP_RENDER_FRAME, CNavSystemInterface::SETUP_FRAME_3}) {
    open(0, 20, false);
    reader_->failingFrame = 7;
    tool_.setups = nullptr;
    ASSERT_EQ(setups_->activate(setups_->make(kind, CToolIOConfig(1, 1, 1))), 0);
    run(5, 8, true);
    pumpUntil(CAutotoolStatus::STOPPED);
    EXPECT_NE(setups_->failure().find("frame 7"), std::string::npos);
  }
}

TEST_F(ToolSetups, AFrameThatCannotBeWrittenStopsThePassAndEarlierOnesStay) {
  open(0, 200, false);
  writer_->failingFrame = 7;
  run(0, 200);
  pumpUntil(CAutotoolStatus::STOPPED);
  setups_->finishWriting();
  EXPECT_NE(setups_->failure().find("frame 7"), std::string::npos);
  std::vector<int> expected(7);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(writer_->order, expected);
}

TEST_F(ToolSetups, PreviewWritesNothing) {
  open(0, 20, false);
  setups_->setRenderMode(0);
  run(0, 20);
  pumpUntil(CAutotoolStatus::STOPPED);
  EXPECT_EQ(setups_->finishWriting(), 0);
  EXPECT_TRUE(writer_->order.empty());
}

// One-frame passes process the frame's neighbours too, and no render mode is set for them.
TEST_F(ToolSetups, OnlyARenderedFrameOfTheOneFramePassesIsWritten) {
  struct {
    const char* name;
    int kind, renderMode, frame;
    std::vector<int> written;
  } const cases[] = {
      {"render", CNavSystemInterface::SETUP_RENDER_FRAME, 0, 5, {5}},
      {"render at the clip's start", CNavSystemInterface::SETUP_RENDER_FRAME, 0, 0, {0}},
      {"render at the clip's end", CNavSystemInterface::SETUP_RENDER_FRAME, 1, 19, {19}},
      {"preview after a render", CNavSystemInterface::SETUP_FRAME_3, 1, 5, {}},
      {"other preview", CNavSystemInterface::SETUP_FRAME_4, 1, 5, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    open(0, 20, false);
    ASSERT_EQ(setups_->activate(setups_->make(c.kind, CToolIOConfig(1, 1, 1))), 0);
    setups_->setRenderMode(c.renderMode);
    run(c.frame - 1, c.frame + 2, true);
    pumpUntil(CAutotoolStatus::STOPPED);
    EXPECT_EQ(setups_->finishWriting(), static_cast<int>(c.written.size()));
    EXPECT_EQ(writer_->order, c.written);
  }
}

TEST_F(ToolSetups, AStartedRunIsRunningAtOnceAndUntilItStopped) {
  open(0, 20, false);
  const int running = CNavSystemInterface::SETUP_STATUS_RUNNING;
  EXPECT_NE(setups_->status(setups_->active()), running);
  run(0, 20);
  EXPECT_EQ(setups_->status(setups_->active()), running);
  pumpUntil(CAutotoolStatus::STOPPED);
  EXPECT_NE(setups_->status(setups_->active()), running);
}

TEST_F(ToolSetups, ASetupMayBeDestroyedInTheMiddleOfARun) {
  open(0, 1000, true);
  run(0, 1000);
  pumpUntil(CAutotoolStatus::RUNNING);
  const int handle = setups_->active();
  setups_->destroy(handle);
  EXPECT_EQ(setups_->active(), -1);
  EXPECT_LT(setups_->activate(handle), 0);
}

TEST_F(ToolSetups, WhatDoesNotExistIsRefused) {
  open(0, 20, false);
  EXPECT_LT(setups_->activate(99), 0);
  EXPECT_LT(setups_->status(99), 0);
  ASSERT_EQ(setups_->activate(-1), 0);
  EXPECT_LT(setups_->setFrameRange(CToolFrameRange(1, 1)), 0);
  EXPECT_LT(setups_->setParameters(new CToolParameters), 0);
  EXPECT_LT(setups_->make(2, CToolIOConfig(2, 1, 1)), 0);
}

}  // namespace
