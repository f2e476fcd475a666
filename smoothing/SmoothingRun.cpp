// One smoothing run from its start to its published result.

#include <exception>
#include <memory>
#include <utility>

#include "SmoothingErrors.h"
#include "smoothing/MotionSmoother.h"
#include "support/ErrorReport.h"
#include "support/Trace.h"

namespace {

class CSmoothingRun {
 public:
  /// THREAD: the user-interface thread. Even drawing a point may touch the live array there, so the
  /// run works on a copy.
  explicit CSmoothingRun(IStabilizerShot& shot) : shot_(shot) {
    motion_.tracked = shot.trackedArray();
  }

  void Run();

 private:
  bool MakeMotion();
  void PutInPlace();
  void SetTexts(const char* text);

  IStabilizerShot& shot_;
  SMotionArrays motion_;
};

void CSmoothingRun::SetTexts(const char* text) {
  shot_.setStatusMessage(text);
  if (IToolProgressMonitor* monitor = shot_.progressMonitor()) monitor->SetStatusMessage(text);
}

bool CSmoothingRun::MakeMotion() {
  SetTexts("Smoothing");
  const CStabilizerParameters parameters = shot_.gatherParameters();
  if (!ComputeRobustPoints(shot_, motion_, parameters.RefFrameIndex, parameters.RMode) ||
      !SmoothRobustPoints(shot_, motion_, parameters.GoodFramesIn, parameters.GoodFramesOut,
                          parameters.RefFrameIndex, parameters.Alpha2, parameters.HMode,
                          parameters.VMode)) {
    return false;
  }
  CompleteSyntheticPoints(motion_);
  return true;
}

void CSmoothingRun::PutInPlace() {
  std::swap(shot_.syntheticOriginalArray(), motion_.original);
  std::swap(shot_.syntheticSmoothedArray(), motion_.smoothed);
  SetTexts("Smoothing complete");
  shot_.setSmoothedFlag(true);
  shot_.setRunState(RUN_SMOOTHED);
}

void CSmoothingRun::Run() {
  {
    CAutoErrorReporter reporter("CStabilizerTool::DoSmoothing_trampoline");
    theError.clear();
    bool made = false;
    try {
      made = MakeMotion();
    } catch (const std::exception& failure) {
      theError.set(SMOOTHING_EXCEPTION, failure.what());
    }
    if (made) {
      PutInPlace();
      return;
    }
    reporter.set(theError.getError(), "Smoothing failed:" + theError.getMessage());
  }
  shot_.setRunState(RUN_ERROR);
}

/// Thread function of a run; owns the run. Once it has registered it never lets the run state
/// stand at smoothing.
void SmoothingThread(void* argument, BThreadHandle self) {
  std::unique_ptr<CSmoothingRun> run(static_cast<CSmoothingRun*>(argument));
  if (BThreadBegin(self) != 0) TraceAt(0, "DoSmoothing_trampoline: BThreadBegin failed");
  run->Run();
  run.reset();
  if (BThreadEnd(self) != 0) TraceAt(0, "DoSmoothing_trampoline: BThreadEnd failed");
}

}  // namespace

int StartSmoothing(IStabilizerShot& shot) {
  CAutoErrorReporter reporter("CStabilizerTool::DoSmoothing");
  auto run = std::make_unique<CSmoothingRun>(shot);
  shot.setRunState(RUN_SMOOTHING);
  if (BThreadSpawn(SmoothingThread, run.get()) == nullptr) {
    reporter.set(SMOOTHING_NO_THREAD, SMOOTHING_NO_THREAD_TEXT);
    shot.setRunState(RUN_ERROR);
    return SMOOTHING_NO_THREAD;
  }
  // The thread owns it now.
  static_cast<void>(run.release());
  return 0;
}

void RunSmoothing(IStabilizerShot& shot) {
  CSmoothingRun(shot).Run();
}
