#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ToolObj/ToolProcessor.h"
#include "doubles/CallLog.h"
#include "doubles/SourceEdge.h"

/// Parameters with a number, which count how many of their kind are alive.
class CNumberedParameters : public CToolParameters {
 public:
  explicit CNumberedParameters(int number) : number(number) { ++alive; }
  ~CNumberedParameters() override { --alive; }
  const int number;
  static inline std::atomic<int> alive{0};
};

/// Output edge that calls back for every frame that was put.
class CSinkEdge : public CToolEdge {
 public:
  std::function<void()> onPut;

 protected:
  void onFramePut() override {
    if (onPut) onPut();
  }
};

/// A processor that copies frame `firstFrame` + i in iteration i and does what a test scripted: it
/// records its operations ("DoProcess 1"), lets the test act in them and returns what it was told.
class CScriptedProcessor : public CToolProcessor {
 public:
  CScriptedProcessor(CNavSystemInterface& host, const CAbortFlag& abort, const CImageFormat& format)
      : CToolProcessor(20, "Scripted", 1, 1, &host, &abort, nullptr) {
    inputPorts()[0].frameCount = 1;
    outputPorts()[0].frameCount = 1;
    outputPorts()[0].imageFormat = std::make_unique<CImageFormat>(format);
    StartProcessThread();
  }

  // Set before RUN.
  CCallLog calls;
  int firstFrame = 100;
  int iterations = 3;
  int outputsPerIteration = 1;
  std::map<std::string, int> results;                   ///< by operation; 0 when missing
  std::function<void(const std::string& call)> onCall;  ///< on the worker thread
  std::function<int(SIterationRecord&)> processing;     ///< in place of copying
  bool copies(SIterationRecord& iteration, bool withSamples = true) {
    return copyInputToOutput(*inputPorts()[0].slots[0], *outputPorts()[0].slots[0], withSamples) ||
           (iteration.done = false);
  }
  SOutPort& output() { return outputPorts()[0]; }
  SInPort& input() { return inputPorts()[0]; }

  void SetIOConfig(const CToolIOConfig&) override {}
  void SetFrameRange(const CToolFrameRange&) override {}
  int SetParameters(CToolParameters* parameters) override {
    return tell("SetParameters", dynamic_cast<CNumberedParameters&>(*parameters).number);
  }
  int BeginProcessing(SIterationRecord& i) override { return tell("BeginProcessing", i.index); }
  int EndProcessing(SIterationRecord& i) override { return tell("EndProcessing", i.index); }
  int BeginIteration(SIterationRecord& i) override {
    const int frame = firstFrame + i.index;
    input().neededFrames = {frame};
    input().releasedFrames = {frame};
    output().frames.assign(static_cast<std::size_t>(outputsPerIteration), frame);
    return tell("BeginIteration", i.index);
  }
  int EndIteration(SIterationRecord& i) override { return tell("EndIteration", i.index); }
  int DoProcess(SIterationRecord& i) override {
    const int result = tell("DoProcess", i.index);
    if (processing) return processing(i);
    if (!output().passThrough) copies(i);
    return result;
  }
  int GetIterationCount() override { return iterations; }

 private:
  int tell(const std::string& operation, int number) {
    const std::string call = CCallLog::text(operation, number);
    calls.add(call);
    if (onCall) onCall(call);
    const auto result = results.find(operation);
    return result == results.end() ? 0 : result->second;
  }
};
