#include <algorithm>
#include <iterator>

#include "ToolObj/ToolObject.h"

/// One row of the state machine: in `state`, on this processor status or event, perform the action
/// and take the new state.
struct CToolObject::SStateRow {
  enum EOn { ON_STATUS, ON_EVENT };
  enum EThen { IF_IT_SUCCEEDED, ALWAYS };
  using Action = int (CToolObject::*)(const SInputOfEvent&);

  int state;
  EOn on;
  int input;
  Action action;  // null: only the state changes
  int newState;
  EThen then = IF_IT_SUCCEEDED;
};

// A status is looked at before the event: the rows of a state name its statuses first.
const CToolObject::SStateRow* CToolObject::findStateRow(int state, int event, int status) {
  using Tool = CToolObject;
  constexpr auto S = SStateRow::ON_STATUS;
  constexpr auto E = SStateRow::ON_EVENT;
  constexpr int STOPPED = CAutotoolStatus::STOPPED;
  static const SStateRow ROWS[] = {
      {STATE_IDLE, E, EVENT_PREVIEW_FRAME, &Tool::startFramePreview, STATE_PREVIEW_FRAME},
      {STATE_IDLE, E, EVENT_PREVIEW_RANGE, &Tool::startRangePreview, STATE_RUNNING},
      {STATE_IDLE, E, EVENT_RENDER_FRAME, &Tool::startFrameRender, STATE_RENDER_FRAME},
      {STATE_IDLE, E, EVENT_RENDER_RANGE, &Tool::startRangeRender, STATE_RUNNING},
      {STATE_IDLE, E, EVENT_PREPROCESS, &Tool::startPreprocessing, STATE_RUNNING},

      {STATE_STOPPING, S, STOPPED, nullptr, STATE_IDLE},

      {STATE_RUNNING, S, CAutotoolStatus::ERROR_STATUS, &Tool::keepError, STATE_STOPPING},
      {STATE_RUNNING, S, STOPPED, nullptr, STATE_IDLE},
      {STATE_RUNNING, E, EVENT_STOP, &Tool::doStop, STATE_STOPPING},
      {STATE_RUNNING, E, EVENT_PAUSE, &Tool::doPause, STATE_PAUSING},

      {STATE_PAUSING, S, STOPPED, nullptr, STATE_IDLE},
      {STATE_PAUSING, S, CAutotoolStatus::PAUSED, nullptr, STATE_PAUSED},
      {STATE_PAUSING, E, EVENT_STOP, &Tool::doStop, STATE_STOPPING},

      {STATE_PAUSED, E, EVENT_STOP, &Tool::doStop, STATE_STOPPING},
      {STATE_PAUSED, E, EVENT_RESUME, &Tool::doResume, STATE_RUNNING},
      {STATE_PAUSED, E, EVENT_PREVIEW_FRAME, &Tool::doPreviewFrame, STATE_PREVIEW_FRAME_PAUSED},
      {STATE_PAUSED, E, EVENT_RENDER_FRAME, &Tool::doRenderFrame, STATE_RENDER_FRAME_PAUSED},

      {STATE_PREVIEW_FRAME, S, STOPPED, nullptr, STATE_IDLE},
      {STATE_PREVIEW_FRAME, E, EVENT_STOP, &Tool::doStopFrame, STATE_STOPPING, SStateRow::ALWAYS},
      {STATE_RENDER_FRAME, S, STOPPED, nullptr, STATE_IDLE},
      {STATE_RENDER_FRAME, E, EVENT_STOP, &Tool::doStopFrame, STATE_STOPPING, SStateRow::ALWAYS},

      {STATE_PREVIEW_FRAME_PAUSED, S, STOPPED, nullptr, STATE_PAUSED},
      {STATE_PREVIEW_FRAME_PAUSED, E, EVENT_STOP, &Tool::doStopFrame, STATE_STOPPING,
       SStateRow::ALWAYS},
      {STATE_RENDER_FRAME_PAUSED, S, STOPPED, nullptr, STATE_PAUSED},
      {STATE_RENDER_FRAME_PAUSED, E, EVENT_STOP, &Tool::doStopFrame, STATE_STOPPING,
       SStateRow::ALWAYS},
  };
  const SStateRow* row = std::find_if(std::begin(ROWS), std::end(ROWS), [=](const SStateRow& r) {
    return r.state == state && r.input == (r.on == S ? status : event);
  });
  return row == std::end(ROWS) ? nullptr : row;
}

int CToolObject::performProcessingEvent(int state, int event, const CAutotoolStatus& status,
                                        int frame, int& newState) {
  newState = state;
  const SStateRow* row = findStateRow(state, event, status.status);
  if (!row) return 0;
  const int result = row->action ? (this->*row->action)({status, frame}) : 0;
  if (result == 0 || row->then == SStateRow::ALWAYS) newState = row->newState;
  return result;
}

void CToolObject::preparePass(bool render) {
  lastProcessingError_ = 0;
  renderFlag_ = render;
}

int CToolObject::startFramePreview(const SInputOfEvent&) {
  preparePass(false);
  return previewDisplayedFrame();
}

int CToolObject::startRangePreview(const SInputOfEvent& input) {
  preparePass(false);
  return RunFramePreview(input.frame);
}

int CToolObject::startFrameRender(const SInputOfEvent&) {
  preparePass(true);
  return renderDisplayedFrame();
}

int CToolObject::startRangeRender(const SInputOfEvent& input) {
  preparePass(true);
  return RunFrameProcessing(input.frame);
}

int CToolObject::startPreprocessing(const SInputOfEvent&) {
  preparePass(false);
  return RunFramePreprocessing();
}

int CToolObject::keepError(const SInputOfEvent& input) {
  lastProcessingError_ = input.status.errorCode;
  return 0;
}
