#include <gtest/gtest.h>

#include <stdexcept>

#include "ScriptedProcessor.h"
#include "doubles/RecordingHost.h"
#include "doubles/TraceCapture.h"

namespace {

using Texts = std::vector<std::string>;
constexpr int STOP = CAutotoolCommand::STOP;
constexpr int RUN = CAutotoolCommand::RUN;
constexpr int PAUSE = CAutotoolCommand::PAUSE;
constexpr int PARAMETERS = CAutotoolCommand::NEW_PARAMETERS;
constexpr int EXIT = CAutotoolCommand::EXIT;
constexpr int ABORT = -1;  // not a command: the abort byte is set

/// Lets a test act when the loop wins memory back.
class CLoopHost : public CRecordingHost {
 public:
  std::function<void()> onEviction;
  CToolFrameCache* getToolFrameCache() override {
    if (onEviction) onEviction();
    return CRecordingHost::getToolFrameCache();
  }
};

/// A processor with its worker thread, one source and one sink. Everything is driven through the
/// queues; the statuses say when the loop has done something. At the end neither frames' memory
/// nor parameters may be left.
class CRig {
 public:
  /// `poolLimit`: frames that fit into the memory; 0 unlimited.
  explicit CRig(int poolLimit = 0)
      : pool((host.frameAllocatorLimit = poolLimit, host.framePool(format.getBytesPerField()))),
        source(format, pool),
        processor(std::make_unique<CScriptedProcessor>(host, abort, format)) {
    processor->node().connectInput(0, &source);
    processor->node().connectOutput(0, &sink);
    EXPECT_EQ(processor->ConfigurePorts(), 0);
    EXPECT_EQ(statusesUntil("6"), Texts{"6"});
    host.calls.clear();
  }
  // The processor is deleted at once after its last status, as hosts do it.
  ~CRig() {
    host.onEviction = nullptr;
    post(EXIT);
    if (!threadEnded_) statusesUntil("7");
    processor.reset();
    BThreadWaitForAll();
    sink.flush();
    host.toolFrameCache.clear();
    EXPECT_EQ(pool.buffersInUse(), 0) << "frames leaked";
    EXPECT_EQ(CNumberedParameters::alive, 0) << "parameters leaked";
  }

  void post(int command, int parameters = 0) {
    if (command == ABORT) {
      abort = 1;
      return;
    }
    CToolParameters* data = command == PARAMETERS ? new CNumberedParameters(parameters) : nullptr;
    processor->commandQueue().Add({command, data});
  }

  /// Posts the command when the call is made, on the worker thread, once.
  void postAt(const std::string& call, int command, int parameters = 0) {
    processor->onCall = [=, this, posted = false](const std::string& made) mutable {
      if (made != call || posted) return;
      posted = true;
      post(command, parameters);
    };
  }

  /// The statuses up to `last`: "2", or "5 -77" with an error code.
  Texts statusesUntil(const std::string& last) {
    Texts texts;
    while (texts.empty() || texts.back() != last) {
      processor->statusQueue().Event().Wait();
      CAutotoolStatus status;
      while (processor->statusQueue().Take(status) == 0) {
        std::string text = std::to_string(status.status);
        if (status.errorCode != 0) text.append(" ").append(std::to_string(status.errorCode));
        texts.push_back(text);
        if (text == "7") threadEnded_ = true;
      }
    }
    return texts;
  }
  Texts run() {
    post(RUN);
    return statusesUntil("1");
  }

  /// The sink's frames in order; "end" for the end-of-material mark.
  Texts sentFrames() {
    Texts frames;
    while (const std::unique_ptr<CToolFrameBuffer> frame{sink.queue().takeOldest()}) {
      frames.push_back(frame->isEndOfMaterial() ? "end" : std::to_string(frame->frameIndex()));
    }
    return frames;
  }

  CLoopHost host;
  const CImageFormat format{8, 4};
  CBufferPool& pool;
  CAbortFlag abort{0};
  CSourceEdge source;
  CSinkEdge sink;
  std::unique_ptr<CScriptedProcessor> processor;

 private:
  bool threadEnded_ = false;
};

class CProcessLoopTest : public testing::Test, protected CRig {};

}  // namespace

TEST_F(CProcessLoopTest, RunsEveryIterationThroughItsPhases) {
  processor->iterations = 2;
  post(PARAMETERS, 1);
  post(PARAMETERS, 2);  // the older ones are dropped
  EXPECT_EQ(run(), (Texts{"2", "4", "1"}));
  EXPECT_EQ(processor->calls.texts(),
            (Texts{"SetParameters 2", "BeginProcessing 0", "BeginIteration 0", "DoProcess 0",
                   "EndIteration 0", "BeginIteration 1", "DoProcess 1", "EndIteration 1",
                   "EndProcessing 2"}));
  EXPECT_EQ(source.requests.texts(), (Texts{"request 100", "request 101", "request -2000"}));
  EXPECT_EQ(host.calls.texts(),
            (Texts{"frameOutputHook 100 20 Scripted 1", "frameOutputHook 101 20 Scripted 1"}));
  EXPECT_EQ(sentFrames(), (Texts{"100", "101", "end"}));
  EXPECT_TRUE(host.toolFrameCache.isEmpty()) << "copied inputs are not cached";

  processor->calls.clear();
  EXPECT_EQ(run(), (Texts{"2", "4", "1"})) << "a second run";
  EXPECT_EQ(processor->calls.texts().front(), "BeginProcessing 0") << "no new parameters";
}

TEST_F(CProcessLoopTest, ARunWithoutIterationsOnlySendsTheEnd) {
  processor->iterations = 0;
  const CTraceCapture trace(3);
  EXPECT_EQ(run(), (Texts{"2", "4", "1"}));
  EXPECT_EQ(source.requests.texts(), Texts{"request -2000"});
  EXPECT_EQ(sentFrames(), Texts{"end"});
  EXPECT_TRUE(trace.lines.contains(" <<<<<<< in ToolObject: EOM -> STOPPED >>>>>>>"));
}

TEST_F(CProcessLoopTest, ReportsWhicheverOperationFailed) {
  const struct {
    const char* operation;
    Texts statuses;
    const char* trace;  // what the loop says it was doing; null: nothing
    bool ends;
  } cases[] = {
      {"SetParameters", {"5 -31", "1"}, "Startup", false},
      {"BeginProcessing", {"5 -31", "1"}, "Startup", false},
      {"BeginIteration", {"2", "5 -31", "1"}, "Processing", true},
      {"DoProcess", {"2", "5 -31", "1"}, "Processing", true},
      {"EndIteration", {"2", "5 -31", "1"}, "Processing", true},
      {"EndProcessing", {"2", "4", "5 -31", "1"}, nullptr, true},
  };
  for (const auto& c : cases) {
    processor->calls.clear();
    processor->results = {{c.operation, -31}};
    const CTraceCapture trace(0);
    post(PARAMETERS, 1);
    EXPECT_EQ(run(), c.statuses) << c.operation;
    EXPECT_EQ(processor->calls.count("EndProcessing"), c.ends ? 1 : 0) << c.operation;
    Texts lines;
    if (c.trace) {
      lines.push_back(std::string("ERROR: CToolProcessor::ProcessLoop ") + c.trace + " Error -31");
    }
    EXPECT_EQ(trace.lines.texts(), lines) << c.operation;
  }
  processor->results.clear();
  EXPECT_EQ(run(), (Texts{"2", "4", "1"})) << "an error is over when the next run starts";
}

TEST_F(CProcessLoopTest, WhateverThrowsFailsTheRunOnly) {
  const CTraceCapture trace(0);
  processor->processing = [](SIterationRecord&) -> int { throw std::runtime_error("no"); };
  EXPECT_EQ(run(), (Texts{"2", "5 -1", "1"}));
  EXPECT_TRUE(trace.lines.contains("ERROR: CToolProcessor::ProcessLoop caught no"));
  processor->processing = nullptr;
  source.onFrame = [](CToolFrameBuffer&) { throw std::runtime_error("unreadable"); };
  EXPECT_EQ(run(), (Texts{"2", "5 -1", "1"}));
  source.onFrame = nullptr;
  EXPECT_EQ(run(), (Texts{"2", "4", "1"}));
}

TEST_F(CProcessLoopTest, CommandsInTheMiddleOfARun) {
  postAt("DoProcess 1", STOP);
  EXPECT_EQ(run(), (Texts{"2", "1"}));
  EXPECT_EQ(processor->calls.texts().back(), "EndProcessing 1");
  EXPECT_EQ(sentFrames(), Texts{}) << "what was sent is flushed";

  postAt("DoProcess 1", PAUSE);
  post(RUN);
  EXPECT_EQ(statusesUntil("3"), (Texts{"2", "3"}));
  EXPECT_EQ(pool.buffersInUse(), host.toolFrameCache.count()) << "nothing is held while paused";
  processor->onCall = nullptr;
  processor->calls.clear();
  post(PARAMETERS, 5);
  EXPECT_EQ(run(), (Texts{"2", "4", "1"}));
  const Texts resumed = processor->calls.texts();
  EXPECT_EQ(resumed[0], "SetParameters 5") << "resuming does not begin processing again";
  EXPECT_EQ(resumed[1], "BeginIteration 0");
  EXPECT_EQ(sentFrames(), (Texts{"100", "101", "102", "end"}));
}

TEST_F(CProcessLoopTest, APauseEndsTheIterationWhoseFrameIsOnItsWay) {
  sink.onPut = [this] { post(PAUSE); };
  post(RUN);
  statusesUntil("3");
  sink.onPut = nullptr;
  EXPECT_EQ(processor->calls.texts().back(), "EndIteration 0");
}

TEST_F(CProcessLoopTest, WaysOutOfAPause) {
  for (const int command : {STOP, ABORT}) {
    postAt("DoProcess 0", PAUSE);
    post(RUN);
    statusesUntil("3");
    processor->calls.clear();
    post(command);
    EXPECT_EQ(statusesUntil("1"), Texts{"1"}) << command;
    EXPECT_EQ(processor->calls.texts(), Texts{"EndProcessing 0"}) << command;
    abort = 0;
  }
  postAt("DoProcess 0", PAUSE);
  post(RUN);
  statusesUntil("3");
  const CTraceCapture trace(0);
  processor->results = {{"SetParameters", -32}};
  post(PARAMETERS, 1);
  EXPECT_EQ(run(), (Texts{"5 -32", "1"}));
  EXPECT_EQ(trace.lines.texts(), Texts{"ERROR: CToolProcessor::ProcessLoop Resume Error -32"});
}

TEST_F(CProcessLoopTest, ParametersSentWhileRunningComeBetweenIterations) {
  postAt("DoProcess 0", PARAMETERS, 9);
  processor->iterations = 2;
  run();
  EXPECT_EQ(processor->calls.texts(),
            (Texts{"BeginProcessing 0", "BeginIteration 0", "DoProcess 0", "EndIteration 0",
                   "SetParameters 9", "BeginIteration 1", "DoProcess 1", "EndIteration 1",
                   "EndProcessing 2"}));
}

TEST_F(CProcessLoopTest, RunIsIgnoredWhileAborted) {
  abort = 1;
  post(RUN);
  post(PARAMETERS, 3);
  post(EXIT);
  EXPECT_EQ(statusesUntil("7"), Texts{"7"});
  EXPECT_EQ(processor->calls.texts(), Texts{});
  post(PARAMETERS, 4);  // too late, and still the processor's to delete
}

// Wherever a run is interrupted, by whatever, no frame is held afterwards and none is lost (see the
// rig).
TEST(ProcessLoop, GivesEveryFrameBackWhereverItIsInterrupted) {
  enum EWhere { BEGIN, NO_INPUT, NO_MEMORY, COPY, PROCESS, OUTPUT_HOOK, FULL, END };
  const char* names[] = {"begin",   "no input",    "no memory", "copy",
                         "process", "output hook", "full",      "end"};
  const std::pair<int, const char*> ways[] = {{STOP, "1"}, {PAUSE, "3"}, {ABORT, "1"}, {EXIT, "7"}};
  for (int where = BEGIN; where <= END; ++where) {
    for (const auto& [command, lastStatus] : ways) {
      SCOPED_TRACE(CCallLog::text(names[where], command));
      CRig rig(where == NO_MEMORY ? 2 : where == COPY ? 3 : 0);
      rig.processor->outputsPerIteration = where == COPY ? 1 : 2;
      const auto act = [&rig, command = command] { rig.post(command); };
      if (where == BEGIN) rig.postAt("BeginIteration 0", command);
      if (where == PROCESS) rig.postAt("DoProcess 0", command);
      if (where == END) rig.postAt("EndIteration 0", command);
      if (where == NO_INPUT) rig.postAt("BeginIteration 1", command);
      if (where == NO_INPUT) rig.source.withheldFrame = 101;
      if (where == NO_MEMORY || where == COPY) rig.host.onEviction = act;
      if (where == COPY)
        rig.source.onFrame = [](CToolFrameBuffer& frame) {
          frame.invisibleFields().push_back({nullptr, 0, 2});  // needs a fourth buffer in the copy
          EXPECT_TRUE(frame.ensureSamples());
        };
      if (where == OUTPUT_HOOK) rig.host.onCall = [&](const std::string&) { act(); };
      if (where == FULL) rig.sink.queue().raiseLimit(1);
      if (where == FULL) rig.sink.onPut = act;
      rig.post(RUN);
      EXPECT_EQ(rig.statusesUntil(lastStatus), (Texts{"2", lastStatus}));
      const int buffersPerFrame = where == COPY ? 2 : 1;
      EXPECT_EQ(rig.pool.buffersInUse(), buffersPerFrame * rig.host.toolFrameCache.count());
      if (where == COPY) {
        EXPECT_EQ(rig.processor->calls.count("DoProcess"), 1) << "it was the copy that waited";
      }
      if (command == EXIT) {
        EXPECT_EQ(rig.processor->calls.count("EndProcessing"), 0);
        EXPECT_EQ(rig.sentFrames(), Texts{});
      }
    }
  }
}

TEST_F(CProcessLoopTest, WaitsForRoomInTheOutput) {
  sink.queue().raiseLimit(1);
  CThreadEvent put;
  sink.onPut = [&put] { put.Set(); };
  post(RUN);
  Texts frames;
  while (frames.empty() || frames.back() != "end") {
    put.Wait();
    put.Reset();
    for (const std::string& frame : sentFrames()) frames.push_back(frame);
  }
  EXPECT_EQ(frames, (Texts{"100", "101", "102", "end"}));
  EXPECT_EQ(statusesUntil("1"), (Texts{"2", "4", "1"}));
}

TEST(ProcessLoop, WinsMemoryBackFromTheOldestCachedFrame) {
  CRig rig(3);
  CSourceEdge filler(rig.format, rig.pool);
  for (const int frame : {900, 901}) rig.host.toolFrameCache.CacheFrame(filler.getFrame(frame));
  rig.processor->iterations = 1;
  rig.processor->processing = [&rig](SIterationRecord&) {
    EXPECT_NE(rig.processor->output().slots[0]->samples(), nullptr);
    rig.processor->input().slots[0]->setNotCacheable(true);
    return 0;
  };
  EXPECT_EQ(rig.run(), (Texts{"2", "4", "1"}));
  EXPECT_EQ(rig.sentFrames(), (Texts{"100", "end"}));
  const std::unique_ptr<CToolFrameBuffer> kept(rig.host.toolFrameCache.takeOldest());
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(kept->frameIndex(), 901);
  EXPECT_TRUE(rig.host.toolFrameCache.isEmpty());
}

TEST_F(CProcessLoopTest, AnIterationMayTakeSeveralCalls) {
  processor->iterations = 1;
  int calls = 0;
  processor->processing = [&calls](SIterationRecord& iteration) {
    iteration.done = ++calls == 3;
    return 0;
  };
  EXPECT_EQ(run(), (Texts{"2", "4", "1"}));
  EXPECT_EQ(processor->calls.count("DoProcess"), 3);
  EXPECT_EQ(processor->calls.count("BeginIteration"), 1);
  EXPECT_EQ(host.toolFrameCache.count(), 1) << "an input that was only looked at is cached";
}

TEST_F(CProcessLoopTest, PassesInputFramesThrough) {
  processor->output().passThrough = true;
  processor->output().passThroughInput = 0;
  EXPECT_EQ(run(), (Texts{"2", "4", "1"}));
  EXPECT_EQ(pool.buffersInUse(), 3) << "the very frames";
  EXPECT_TRUE(host.toolFrameCache.isEmpty());
  EXPECT_EQ(sentFrames(), (Texts{"100", "101", "102", "end"}));

  processor->output().keep = true;
  EXPECT_EQ(run(), (Texts{"2", "4", "1"}));
  EXPECT_EQ(host.toolFrameCache.count(), 3) << "kept frames are released by their input";
  const std::unique_ptr<CToolFrameBuffer> copy(sink.queue().takeOldest());
  EXPECT_EQ(copy->frameIndex(), 100);
  EXPECT_EQ(copy->samples()[0], 100);
  EXPECT_EQ(sentFrames(), (Texts{"101", "102", "end"}));
}

TEST_F(CProcessLoopTest, PortsAskTheHostForTheirMemory) {
  const std::string request = CCallLog::text("getFrameAllocator", format.getBytesPerField());
  processor->output().allocatorValueA = 7;
  processor->output().allocatorValueB = 8;
  EXPECT_EQ(processor->ConfigurePorts(), 0);
  EXPECT_EQ(host.calls.take(), Texts{request + " 1 0 0"}) << "the output has its allocator";
  processor->output().allocator = nullptr;
  processor->output().passThrough = true;
  EXPECT_EQ(processor->ConfigurePorts(), 0);
  EXPECT_EQ(host.calls.take(), Texts{request + " 1 0 0"}) << "passing through needs none";
  processor->output().keep = true;
  EXPECT_EQ(processor->ConfigurePorts(), 0);
  EXPECT_EQ(host.calls.take(), (Texts{request + " 1 0 0", request + " 1 7 8"}));
  host.hasFrameAllocator = false;
  EXPECT_EQ(processor->ConfigurePorts(), -3108);
  EXPECT_EQ(host.calls.take(), Texts{request + " 1 0 0"}) << "the first failure ends it";
  processor->output() = {};
  EXPECT_EQ(run(), (Texts{"2", "5 -3108", "1"})) << "a run without memory does not hang";
}

TEST_F(CProcessLoopTest, AnnouncesThePortsThatHaveFramesAndAFormat) {
  class CAnnounced : public CToolEdge {
   public:
    Texts texts;
    void announceFormat(const CImageFormat& format, int count, double value) override {
      texts.push_back(CCallLog::text("format", format.getPixelsPerLine(), count, value));
    }
  };
  CAnnounced in;
  CAnnounced out;
  processor->node().connectInput(0, &in);
  processor->node().connectOutput(0, &out);
  processor->output().formatValue = 2.5;
  processor->AnnounceOutputFormats();
  EXPECT_EQ(in.texts, Texts{}) << "no format yet";
  EXPECT_EQ(out.texts, Texts{"format 8 1 2.5"});
  in.setImageFormat(format);
  processor->output().frameCount = -1;
  processor->AnnounceOutputFormats();
  EXPECT_EQ(in.texts, Texts{"format 8 1 0"});
  EXPECT_EQ(out.texts.size(), 1u) << "no frames";
  processor->node().connectInput(0, &source);  // edges outlive the worker thread
  processor->node().connectOutput(0, &sink);
}
