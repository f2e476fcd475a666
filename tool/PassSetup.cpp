#include "render/StabilizerProc.h"
#include "render/StabilizerToolParameters.h"
#include "tool/StabilizerTool.h"

namespace {

// The two kinds of pass have always named themselves differently in their messages.
constexpr const char* RANGE_PASS = "Stabilizer";
constexpr const char* SINGLE_FRAME_PASS = "Stabilization";

CToolFrameRange oneInputRange(bool flag, int firstFrame, int endFrame) {
  CToolFrameRange range(1, 1);
  range.inputs[0].flag = flag;
  range.inputs[0].firstFrame = firstFrame;
  range.inputs[0].endFrame = endFrame;
  return range;
}

}  // namespace

bool CStabilizerTool::ValidateMarks(int markIn, int markOut, int frame) {
  CAutoErrorReporter reporter("CStabilizerTool::ValidateMarks");
  if (markIn < 0 || markOut < 0) {
    reporter.set(-1, "Set marks to designate the material to be processed");
  } else if (markOut <= markIn) {
    reporter.set(-1, "Mark IN must be earlier than mark OUT");
  } else if (frame >= 0 && (frame < markIn || frame >= markOut)) {
    reporter.set(-1, "Frame must be between the marks");
  } else {
    return true;
  }
  return false;
}

bool CStabilizerTool::checkMarksAndClip(CAutoErrorReporter& reporter) {
  if (!areMarksValid()) {
    failPass(reporter, -1, "Marks are invalid!    ");
    return false;
  }
  if (!getSystemAPI()->isClipAvailable()) {
    failPass(reporter, -1, "No clip is open   ");
    return false;
  }
  return true;
}

int CStabilizerTool::RunFramePreprocessing() {
  CAutoErrorReporter reporter("CStabilizerTool::RunFramePreprocessing");
  if (!checkMarksAndClip(reporter)) return -1;
  if (!isTracked()) {
    runState_ = RUN_TRACKING;
    getSystemAPI()->StartTrackingRun();
  } else {
    stopProcessing();
    runState_ = isSmoothed() ? RUN_SMOOTHED : RUN_SMOOTHING_REQUESTED;
  }
  return 0;
}

int CStabilizerTool::RunFrameProcessing(int frame) {
  CAutoErrorReporter reporter("CStabilizerTool::RunFrameProcessing");
  CNavSystemInterface* host = getSystemAPI();
  const int markIn = host->getMarkIn();
  const int markOut = host->getMarkOut();
  if (!ValidateMarks(markIn, markOut, frame >= 0 ? frame : singleFrame_)) {
    reporter.repeat();
    runState_ = RUN_ERROR;
    return -1;
  }
  if (!host->isClipAvailable()) return failPass(reporter, -1, "No clip open");
  runState_ = RUN_RENDERING;
  if (const int result = activateRangeSetup(reporter); result != 0) return result;

  int first = markIn;
  int end = markOut;
  if (frame >= 0) {
    first = frame;
  } else if (singleFrame_ != -1) {
    first = singleFrame_;
    end = singleFrame_ + 1;
  }
  const CToolFrameRange range = oneInputRange(false, first, end);
  if (const int result = sendFrameRange(range, RANGE_PASS, reporter); result != 0) return result;
  host->setRenderMode(getRenderFlag() ? 1 : 0);
  if (const int result = sendParameters(RANGE_PASS, reporter); result != 0) return result;
  singleFrameRun_ = false;
  const bool oneFrame = frame < 0 && singleFrame_ != -1;
  if (oneFrame && !(first == markIn && end == markOut))
    passEnd_ = NO_FRAME;
  else
    countFrom(first);
  host->RunActiveToolSetup();
  return 0;
}

/// A pass up to mark OUT begins: at mark IN, or where a pause left one.
void CStabilizerTool::countFrom(int first) {
  const int markIn = getSystemAPI()->getMarkIn();
  passEnd_ = getSystemAPI()->getMarkOut();
  if (first == markIn)
    renderedFrom_ = renderedUpTo_ = first;
  else if (renderedFrom_ != markIn)  // that was another range
    renderedUpTo_ = NO_FRAME;
}

int CStabilizerTool::previewDisplayedFrame() {
  singleFrame_ = getSystemAPI()->getDisplayedFrame();
  return RunFrameProcessing(-1);
}

int CStabilizerTool::ProcessSingleFrame(int kind) {
  CAutoErrorReporter reporter("CStabilizerTool::ProcessSingleFrame");
  CNavSystemInterface* host = getSystemAPI();
  const int displayed = host->getDisplayedFrame();
  const bool outside = displayed < host->getMarkIn() || displayed >= host->getMarkOut();
  if (outside || host->getDisplayedFrameStatus() == 2) {
    runState_ = RUN_ERROR;
    return -1;
  }
  int& setup =
      kind == CNavSystemInterface::SETUP_RENDER_FRAME ? renderFrameSetup_ : previewFrameSetup_;
  if (setup < 0) setup = host->MakeSimpleToolSetup("Stabilize", kind, CToolIOConfig(1, 1, 1));
  if (setup < 0) {
    return failPass(reporter, -1, "Stabilize internal error: MakeSimpleToolSetup failed");
  }
  if (const int result = activateSetup(setup, reporter); result != 0) return result;
  const CToolFrameRange range = oneInputRange(true, displayed - 1, displayed + 2);
  if (const int result = sendFrameRange(range, SINGLE_FRAME_PASS, reporter); result != 0) {
    return result;
  }
  if (const int result = sendParameters(SINGLE_FRAME_PASS, reporter); result != 0) return result;
  singleFrameRun_ = true;
  passEnd_ = NO_FRAME;
  host->RunActiveToolSetup();
  return 0;
}

CToolProcessor* CStabilizerTool::makeToolProcessorInstance(const CAbortFlag* abortFlag) {
  return new CStabilizerProc(getToolNumber(), getToolName(), getSystemAPI(), abortFlag,
                             getProgressMonitor());
}

// Frames come in their order; where one is left out the chain ends.
void CStabilizerTool::frameRendered(int frame) {
  int next = frame;
  if (passEnd_ != NO_FRAME) renderedUpTo_.compare_exchange_strong(next, frame + 1);
}

// The processor finishes its range on its own thread and reports "stopped" after that, so what it
// finished is entered here, before the run state moves on. Points that were edited meanwhile are
// not the ones that were rendered.
int CStabilizerTool::onToolProcessingStatus(const CAutotoolStatus* status) {
  if (status->status == CAutotoolStatus::STOPPED) editor_.setZoomSource(passZoomSource_);
  if (status->status == CAutotoolStatus::STOPPED && passCompleted_.exchange(false) &&
      passEnd_ != NO_FRAME && renderedUpTo_ == passEnd_ && isTracked()) {
    editor_.setRendered();
  }
  return CToolObject::onToolProcessingStatus(status);
}

void CStabilizerTool::releaseToolSetups(bool keepRunning) {
  CNavSystemInterface* host = getSystemAPI();
  const int active = host->getActiveToolSetup();
  const bool running =
      keepRunning && rangeSetup_ >= 0 &&
      host->getToolSetupStatus(rangeSetup_) == CNavSystemInterface::SETUP_STATUS_RUNNING;
  if (rangeSetup_ >= 0 && !running) {
    if (rangeSetup_ == active) host->SetActiveToolSetup(-1);
    host->destroyToolSetup(rangeSetup_);
    rangeSetup_ = -1;
  }
  QTXresetPreallocPool(PREALLOC_POOL_BUFFER_HOLDERS);
}

int CStabilizerTool::failPass(CAutoErrorReporter& reporter, int code, const std::string& text) {
  reporter.set(code, text);
  runState_ = RUN_ERROR;
  return code;
}

int CStabilizerTool::activateRangeSetup(CAutoErrorReporter& reporter) {
  if (rangeSetup_ < 0) {
    const CToolIOConfig config(1, 1, AvailableProcessorCoreCount());
    rangeSetup_ =
        getSystemAPI()->MakeSimpleToolSetup("Stabilize", CNavSystemInterface::SETUP_RANGE, config);
  }
  if (rangeSetup_ < 0) {
    rangeSetup_ = -1;
    return failPass(reporter, -1,
                    "Stabilizer internal error: CNavSystemInterface::MakeSimpleToolSetup failed");
  }
  return activateSetup(rangeSetup_, reporter);
}

int CStabilizerTool::activateSetup(int handle, CAutoErrorReporter& reporter) {
  const int result = getSystemAPI()->SetActiveToolSetup(handle);
  if (result == 0) return 0;
  return failPass(reporter, result,
                  "Stabilizer internal error: SetActiveToolSetup(" + std::to_string(handle) +
                      ") failed with return code " + std::to_string(result));
}

int CStabilizerTool::sendFrameRange(const CToolFrameRange& range, const char* who,
                                    CAutoErrorReporter& reporter) {
  const int result = getSystemAPI()->SetToolFrameRange(range);
  if (result == 0) return 0;
  return failPass(reporter, result,
                  std::string(who) + " internal error: SetToolFrameRange failed with return code " +
                      std::to_string(result));
}

int CStabilizerTool::sendParameters(const char* who, CAutoErrorReporter& reporter) {
  takePassCopies();
  passCompleted_ = false;
  passZoomSource_ = {};
  const int hostValue = getSystemAPI()->getParameterValue();
  const int result = getSystemAPI()->SetToolParameters(
      new CStabilizerToolParameters(hostValue, *this, pass_.parameters));
  if (result == 0) return 0;
  return failPass(reporter, result,
                  std::string(who) + " internal error: SetToolParameters failed with return code " +
                      std::to_string(result));
}
