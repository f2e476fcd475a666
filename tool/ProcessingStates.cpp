#include "tool/StabilizerTool.h"

// The base class' machine with what a shot adds to it: the run state follows the processor, a
// tracking pass started by preprocessing ends in a state of its own, and a one-frame pass is over
// too soon to be stopped.
int CStabilizerTool::onProcessingEvent(int event, const CAutotoolStatus& status, int frame) {
  const int state = processingState();
  const bool stopped = status.status == CAutotoolStatus::STOPPED;
  const bool trackingStopped = stopped && state == STATE_RUNNING && runState_ == RUN_TRACKING;
  int newState = state;
  const int result = performShotEvent(event, status, frame, newState);
  if (trackingStopped) newState = STATE_PREPROCESSED;
  if (newState != state || trackingStopped) {
    setToolProcessingState(newState);
    onProcessingStateChanged(newState, getRenderFlag());
  }
  return result;
}

int CStabilizerTool::performShotEvent(int event, const CAutotoolStatus& status, int frame,
                                      int& newState) {
  const int state = newState;
  const bool stopped = status.status == CAutotoolStatus::STOPPED;
  switch (state) {
    case STATE_PREPROCESSED:
      if (event == EVENT_STOP) {
        newState = STATE_IDLE;
        return 0;
      }
      [[fallthrough]];
    case STATE_IDLE: return startPass(event, status, frame, newState);
    case STATE_RUNNING:
      if (stopped || (event == EVENT_STOP && status.status != CAutotoolStatus::ERROR_STATUS)) {
        onRunStopped();
      }
      break;
    case STATE_STOPPING:
    case STATE_PAUSING:
      if (stopped) onRunStopped();
      break;
    case STATE_PREVIEW_FRAME:
    case STATE_RENDER_FRAME:
      if (!stopped) return 0;
      onRunStopped();
      break;
    case STATE_PREVIEW_FRAME_PAUSED:
    case STATE_RENDER_FRAME_PAUSED:
      if (!stopped) return 0;
      break;
    default: break;
  }
  return performProcessingEvent(state, event, status, frame, newState);
}

// From idle, or from a preprocessed shot, which takes the same events.
int CStabilizerTool::startPass(int event, const CAutotoolStatus& status, int frame, int& newState) {
  if (event == EVENT_PREVIEW_FRAME) {  // leaves the render flag of the last pass as it is
    setLastProcessingError(0);
    const int result = previewDisplayedFrame();
    if (result == 0) newState = STATE_PREVIEW_FRAME;
    return result;
  }
  if (event == EVENT_PREVIEW_RANGE || event == EVENT_RENDER_RANGE || event == EVENT_PREPROCESS) {
    singleFrame_ = -1;
  }
  int started = STATE_IDLE;
  const int result = performProcessingEvent(STATE_IDLE, event, status, frame, started);
  if (started != STATE_IDLE) newState = started;
  return result;
}

void CStabilizerTool::onRunStopped() {
  int tracking = RUN_TRACKING;
  int rendering = RUN_RENDERING;
  if (!runState_.compare_exchange_strong(tracking, RUN_TRACKED)) {
    runState_.compare_exchange_strong(rendering, RUN_RENDERED);
  }
}
