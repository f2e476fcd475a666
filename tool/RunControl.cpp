#include "smoothing/MotionSmoother.h"
#include "support/Trace.h"
#include "tool/StabilizerTool.h"
#include "toolkit/Application.h"

void CStabilizerTool::request(int number) {
  switch (number) {
    case REQUEST_TRACK_IF_POSSIBLE: return requestTrackIfPossible();
    case REQUEST_TRACK: return requestTracking();
    case REQUEST_PARAMETERS_CHANGED: return requestSmoothing();
    case REQUEST_PREVIEW_FRAME: return requestPass(EVENT_PREVIEW_FRAME);
    case REQUEST_PREVIEW_ALL: return requestPass(EVENT_PREVIEW_RANGE);
    case REQUEST_RENDER_FRAME: return requestPass(EVENT_RENDER_FRAME);
    case REQUEST_RENDER_ALL: return requestPass(EVENT_RENDER_RANGE);
    case REQUEST_PAUSE: pauseProcessing(); return;
    case REQUEST_RESUME: resumeProcessing(resumeFrame_); return;
    case REQUEST_STOP: return stop();
    default: return;
  }
}

void CStabilizerTool::requestTrackIfPossible() {
  if (runState_ == RUN_IDLE && tracked_.NumberOfPoints() >= 1) {
    forgetPendingRequest();
    runState_ = RUN_TRACKING_REQUESTED;
  } else if (runState_ == RUN_SMOOTHING && pendingRequest_ == RUN_IDLE) {
    pendingRequest_ = RUN_TRACKING_REQUESTED;
  }
}

// Only where the new tracking can follow: in the midst of a render it would drop what is tracked
// and put nothing in its place.
void CStabilizerTool::requestTracking() {
  const bool canFollow =
      runState_ == RUN_IDLE || (runState_ == RUN_SMOOTHING && pendingRequest_ == RUN_IDLE);
  if (!canFollow) return;
  editor_.keepFirstFrame();
  needsRetracking_ = true;
  requestTrackIfPossible();
}

void CStabilizerTool::requestSmoothing() {
  if (runState_ == RUN_IDLE && isTracked()) {
    forgetPendingRequest();
    startSmoothing();
  } else if (runState_ == RUN_SMOOTHING && pendingRequest_ == RUN_IDLE) {
    pendingRequest_ = RUN_SMOOTHING_REQUESTED;
  }
}

void CStabilizerTool::requestPass(int event) {
  if (runState_ == RUN_RENDERING) {
    TraceAt(0, "ERROR: Stabilize: received render command while already rendering");
    Application()->beep();
    return;
  }
  pendingRequest_ = RUN_RENDER_REQUESTED;
  pendingArgument_ = event;
  if (runState_ != RUN_IDLE) return;
  if (!isTracked()) {
    runState_ = RUN_TRACKING_REQUESTED;
  } else if (!isSmoothed()) {
    runState_ = RUN_SMOOTHING_REQUESTED;
  } else {
    runState_ = RUN_RENDER_REQUESTED;
  }
}

// A stop also takes back what was waiting for the stopped work.
void CStabilizerTool::stop() {
  forgetPendingRequest();
  deferredRender_ = false;
  if (runState_ == RUN_TRACKING) {
    getSystemAPI()->StopTrackingRun();
  } else {
    stopProcessing();
  }
}

void CStabilizerTool::forgetPendingRequest() {
  pendingRequest_ = RUN_IDLE;
  pendingArgument_ = EVENT_STATUS;
}

int CStabilizerTool::onHeartbeat() {
  if (!isToolShowing()) return NOT_HANDLED;
  doPostponedClear();
  switch (runState_) {
    case RUN_ERROR:
      stopProcessing();
      forgetPendingRequest();
      deferredRender_ = false;
      runState_ = RUN_IDLE;
      refreshExecutionButtons();  // no processor has run that would say that it stopped
      break;
    case RUN_TRACKING_REQUESTED: StartTracking(); break;
    case RUN_TRACKED:
      refreshExecutionButtons();
      runState_ = RUN_SMOOTHING_REQUESTED;
      discardSmoothedPath();
      needsRetracking_ = false;
      startSmoothing();
      break;
    case RUN_SMOOTHING_REQUESTED: startSmoothing(); break;
    case RUN_SMOOTHED: onSmoothingCompleted(); break;
    case RUN_RENDER_REQUESTED: startRequestedPass(); break;
    case RUN_RENDERED: onPassEnded(); break;
    default: break;
  }
  if (pointsChanged_) {
    pointsChanged_ = false;
    pointsChangedHook.notify();
  }
  return 0;
}

void CStabilizerTool::StartTracking() {
  CAutoErrorReporter reporter("CStabilizerTool::StartTracking");
  if (checkMarksAndClip(reporter)) {
    if (!isTracked()) {
      runState_ = RUN_TRACKING;
      getSystemAPI()->StartTrackingRun();
      trackingTimer_.Start();
    } else {
      runState_ = isSmoothed() ? RUN_SMOOTHED : RUN_SMOOTHING_REQUESTED;
    }
  }
  refreshExecutionButtons();
}

void CStabilizerTool::startSmoothing() {
  if (!isTracked()) {
    runState_ = RUN_ERROR;
    return;
  }
  editor_.setMotionArrays(nullptr, nullptr);
  smoothedPathStale_ = false;
  clearPostponed_ = false;
  takePassCopies();
  smoothingEnded_.Reset();
  StartSmoothing(*this);
}

void CStabilizerTool::onSmoothingCompleted() {
  refreshExecutionButtons();
  if (smoothedPathStale_) return onStalePathCompleted();
  editor_.setMotionArrays(&syntheticOriginal_, &syntheticSmoothed_);
  runState_ = pendingRequest_;
  if (pendingRequest_ == RUN_IDLE) {
    onProcessingStateChanged(STATE_IDLE, false);
    getProgressMonitor()->SetStatusMessage("Tracking Complete");
  }
  pendingRequest_ = RUN_IDLE;
}

// Whatever is pending wants the path of the settings and points as they are now. Points that were
// loaded meanwhile may have to be tracked first.
void CStabilizerTool::onStalePathCompleted() {
  discardSmoothedPath();
  if (pendingRequest_ == RUN_SMOOTHING_REQUESTED) forgetPendingRequest();
  if (isTracked()) {
    runState_ = RUN_SMOOTHING_REQUESTED;
  } else if (pendingRequest_ == RUN_RENDER_REQUESTED) {
    runState_ = RUN_TRACKING_REQUESTED;
  } else {
    runState_ = pendingRequest_;
    pendingRequest_ = RUN_IDLE;
    refreshExecutionButtons();
  }
}

void CStabilizerTool::startRequestedPass() {
  const int event = pendingArgument_;
  forgetPendingRequest();
  runState_ = RUN_RENDERING;
  if (event == EVENT_STATUS) {
    runState_ = RUN_ERROR;
    return;
  }
  startProcessing(event, false);
  // A render that the host does not permit starts nothing.
  const bool started = processingState() != STATE_IDLE && processingState() != STATE_PREPROCESSED;
  if (started || runState_ != RUN_RENDERING) return;
  runState_ = RUN_IDLE;
  refreshExecutionButtons();
}

void CStabilizerTool::onPassEnded() {
  // A stopped processor may still be at its last frame, with the shot's arrays in its hands.
  if (processingState() == STATE_STOPPING) return;
  if (getRenderFlag() && !singleFrameRun_) {
    if (window_) window_->setShowPointsChecked(false);
    setTrackingPointsVisible(false);
    getSystemAPI()->goToFrame(getSystemAPI()->getMarkIn());
    renderCompleted_ = true;
  }
  runState_ = RUN_IDLE;
}

// A run that has ended, but whose path was not taken yet, made it for the old settings too.
void CStabilizerTool::discardSmoothedPath() {
  const int state = runState_;
  if (state == RUN_SMOOTHING || state == RUN_SMOOTHED) smoothedPathStale_ = true;
  smoothed_ = false;
  editor_.setMotionArrays(nullptr, nullptr);
}

bool CStabilizerTool::evaluateRetracking() {
  const int* e = boxExtents_;
  needsRetracking_ = needsRetracking_ || !isTracked() ||
                     tracked_.BoxExtentsDiffer(e[0], e[1], e[2], e[3], e[4], e[5]);
  return needsRetracking_;
}

int CStabilizerTool::startProcessing(int command, bool flag) {
  if (getSystemAPI()->isBatchRun()) {
    const bool retrack = evaluateRetracking();
    if (!deferredRender_ && (retrack || lacksPath())) {
      deferPass(command, retrack);
      return 0;
    }
  }
  deferredRender_ = false;
  return CToolObject::startProcessing(command, flag);
}

// Points that were loaded tracked are rendered by the path that is made of them, never by none.
bool CStabilizerTool::lacksPath() {
  return !isSmoothed() && (runState_ == RUN_SMOOTHING || !areArraysInUse());
}

void CStabilizerTool::deferPass(int event, bool retrack) {
  deferredRender_ = true;
  pendingRequest_ = RUN_RENDER_REQUESTED;
  pendingArgument_ = event;
  if (retrack) {
    runState_ = RUN_TRACKING_REQUESTED;
  } else if (runState_ != RUN_SMOOTHING && runState_ != RUN_SMOOTHED) {
    runState_ = RUN_SMOOTHING_REQUESTED;
  }
}

int CStabilizerTool::getToolProcessingState() {
  const int state = runState_;
  if (state >= RUN_TRACKING_REQUESTED && state <= RUN_RENDERING) return STATE_RUNNING;
  return processingState();
}

bool CStabilizerTool::areArraysInUse() {
  return runState_ == RUN_SMOOTHING ||
         (processingState() != STATE_IDLE && processingState() != STATE_PREPROCESSED);
}

void CStabilizerTool::doPostponedClear() {
  if (!clearPostponed_ || areArraysInUse()) return;
  clearPostponed_ = false;
  syntheticOriginal_.Clear();
}
