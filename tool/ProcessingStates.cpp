#include "tool/StabilizerTool.h"

// The base class' machine with what a shot adds to it: the run state follows the processor, and a
// tracking pass started by preprocessing ends in a state of its own.
int CStabilizerTool::onProcessingEvent(int event, const CAutotoolStatus& status, int frame) {
  const bool stopped = status.status == CAutotoolStatus::STOPPED;
  const int state = processingState();
  int newState = state;
  bool report = false;
  int result = 0;
  switch (state) {
    case STATE_PREPROCESSED:
      if (event == EVENT_STOP) {
        newState = STATE_IDLE;
        break;
      }
      [[fallthrough]];
    case STATE_IDLE:
      result = startFromIdle(event, frame, newState);
      break;
    case STATE_STOPPING:
    case STATE_PREVIEW_FRAME:
    case STATE_RENDER_FRAME:
      if (stopped) {
        onRunStopped();
        newState = STATE_IDLE;
      }
      break;
    case STATE_RUNNING:
      result = whileRunning(event, status, newState, report);
      break;
    case STATE_PAUSING:
      result = whilePausing(event, status, newState);
      break;
    case STATE_PAUSED:
      result = whilePaused(event, frame, newState);
      break;
    case STATE_PREVIEW_FRAME_PAUSED:
    case STATE_RENDER_FRAME_PAUSED:
      if (stopped) newState = STATE_PAUSED;
      break;
    default:
      break;
  }
  if (newState != state || report) {
    setToolProcessingState(newState);
    onProcessingStateChanged(newState, getRenderFlag());
  }
  return result;
}

int CStabilizerTool::startFromIdle(int event, int frame, int& newState) {
  int result = 0;
  int started = newState;
  switch (event) {
    case EVENT_PREVIEW_FRAME:
      setLastProcessingError(0);
      result = previewDisplayedFrame();
      started = STATE_PREVIEW_FRAME;
      break;
    case EVENT_PREVIEW_RANGE:
      setLastProcessingError(0);
      setRenderFlag(false);
      singleFrame_ = -1;
      result = RunFramePreview(frame);
      started = STATE_RUNNING;
      break;
    case EVENT_RENDER_FRAME:
      setLastProcessingError(0);
      setRenderFlag(true);
      result = renderDisplayedFrame();
      started = STATE_RENDER_FRAME;
      break;
    case EVENT_RENDER_RANGE:
      setLastProcessingError(0);
      setRenderFlag(true);
      singleFrame_ = -1;
      result = RunFrameProcessing(frame);
      started = STATE_RUNNING;
      break;
    case EVENT_PREPROCESS:
      setLastProcessingError(0);
      setRenderFlag(false);
      singleFrame_ = -1;
      result = RunFramePreprocessing();
      started = STATE_RUNNING;
      break;
    default:
      return 0;
  }
  if (result == 0) newState = started;
  return result;
}

int CStabilizerTool::whileRunning(int event, const CAutotoolStatus& status, int& newState,
                                  bool& report) {
  if (status.status == CAutotoolStatus::ERROR_STATUS) {
    setLastProcessingError(status.errorCode);
    newState = STATE_STOPPING;
    return 0;
  }
  if (status.status == CAutotoolStatus::STOPPED) {
    report = runState_ == RUN_TRACKING;
    newState = report ? STATE_PREPROCESSED : STATE_IDLE;
    onRunStopped();
    return 0;
  }
  int result = 0;
  if (event == EVENT_STOP) {
    onRunStopped();
    result = stopRun();
    if (result == 0) newState = STATE_STOPPING;
  } else if (event == EVENT_PAUSE) {
    result = pauseRun();
    if (result == 0) newState = STATE_PAUSING;
  }
  return result;
}

int CStabilizerTool::whilePausing(int event, const CAutotoolStatus& status, int& newState) {
  if (status.status == CAutotoolStatus::STOPPED) {
    onRunStopped();
    newState = STATE_IDLE;
    return 0;
  }
  if (status.status == CAutotoolStatus::PAUSED) {
    newState = STATE_PAUSED;
    return 0;
  }
  const int result = event == EVENT_STOP ? stopRun() : 0;
  if (event == EVENT_STOP && result == 0) newState = STATE_STOPPING;
  return result;
}

int CStabilizerTool::whilePaused(int event, int frame, int& newState) {
  int result = 0;
  int next = newState;
  switch (event) {
    case EVENT_STOP:
      result = stopRun();
      next = STATE_STOPPING;
      break;
    case EVENT_RESUME:
      result = RunFrameProcessing(frame);
      next = STATE_RUNNING;
      break;
    case EVENT_PREVIEW_FRAME:
      result = previewDisplayedFrame();
      next = STATE_PREVIEW_FRAME_PAUSED;
      break;
    case EVENT_RENDER_FRAME:
      result = renderDisplayedFrame();
      next = STATE_RENDER_FRAME_PAUSED;
      break;
    default:
      return 0;
  }
  if (result == 0) newState = next;
  return result;
}

void CStabilizerTool::onRunStopped() {
  int tracking = RUN_TRACKING;
  int rendering = RUN_RENDERING;
  if (!runState_.compare_exchange_strong(tracking, RUN_TRACKED)) {
    runState_.compare_exchange_strong(rendering, RUN_RENDERED);
  }
}
