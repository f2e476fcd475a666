#include "support/ErrorReport.h"
#include "tool/StabilizerTool.h"
#include "ui/StabilizerForm.h"

namespace {

constexpr int NO_POINTS = -8505;
constexpr const char* NO_POINTS_TEXT = "You must set at least one tracking point!    ";

// Run-control requests that are no request of their own: the next frame, then one of these.
constexpr int PREVIEW_NEXT_FRAME = 5;
constexpr int RENDER_NEXT_FRAME = 8;

}  // namespace

void TStabilizerForm::updateExecutionButtons(int processingState, bool renderFlag) {
  switch (processingState) {
    case CToolObject::STATE_IDLE: showIdle(); break;
    case CToolObject::STATE_STOPPING:
    case CToolObject::STATE_PAUSING:
    case CToolObject::STATE_PREVIEW_FRAME:
    case CToolObject::STATE_PREVIEW_FRAME_PAUSED:
    case CToolObject::STATE_RENDER_FRAME:
    case CToolObject::STATE_RENDER_FRAME_PAUSED: showStopping(processingState, renderFlag); break;
    case CToolObject::STATE_RUNNING: showRunning(renderFlag); break;
    case CToolObject::STATE_PAUSED: showPaused(); break;
    default: break;
  }
  updateStatusLine();
}

void TStabilizerForm::showIdle() {
  TExecButtonsFrame& buttons = ExecButtonsToolbar;
  restoreCursor();
  buttons.enableButton(EXEC_BUTTON_PREVIEW_FRAME, false);
  buttons.enableButton(EXEC_BUTTON_RENDER_FRAME, false);
  showAvailablePasses();
  buttons.showButton(EXEC_BUTTON_PAUSE, true);
  buttons.enableButton(EXEC_BUTTON_PAUSE, false);
  buttons.showButton(EXEC_BUTTON_RESUME, false);
  buttons.enableButton(EXEC_BUTTON_RESUME, false);
  buttons.enableButton(EXEC_BUTTON_STOP, false);
  buttons.highlightButton(EXEC_BUTTON_NONE);
  buttons.enableResumeGroup(true);
  setResumeFrame(host().getMarkIn());
  updateGraphs();
}

void TStabilizerForm::showAvailablePasses() {
  struct SAvailability {
    bool passes;
    bool capture;
    const char* preview;
    const char* render;
    const char* captureHint;
  };
  const int in = host().getMarkIn();
  SAvailability shown = {true, true, "Preview marked range", "Render marked range",
                         "Capture to PDL"};
  if (!tool_.isTracked()) {
    const bool hasPoints = TrackButton.isEnabled();
    shown = {false, hasPoints, "Can't preview - invalid tracking data",
             "Can't render - invalid tracking data",
             hasPoints ? "Capture to PDL" : "Can't capture - no tracking points"};
  } else if (in < 0 || in >= host().getMarkOut()) {
    shown = {false, false, "Can't preview - marks are invalid", "Can't render - marks are invalid",
             "Can't capture - marks are invalid"};
  }
  TExecButtonsFrame& buttons = ExecButtonsToolbar;
  buttons.enableButton(EXEC_BUTTON_PREVIEW_ALL, shown.passes);
  buttons.setButtonHint(EXEC_BUTTON_PREVIEW_ALL, shown.preview);
  buttons.enableButton(EXEC_BUTTON_RENDER_ALL, shown.passes);
  buttons.setButtonHint(EXEC_BUTTON_RENDER_ALL, shown.render);
  buttons.enableButton(EXEC_BUTTON_CAPTURE_PDL, shown.capture);
  buttons.setButtonHint(EXEC_BUTTON_CAPTURE_PDL, shown.captureHint);
}

void TStabilizerForm::enablePasses(bool enabled) {
  for (const int command : {EXEC_BUTTON_PREVIEW_FRAME, EXEC_BUTTON_PREVIEW_ALL,
                            EXEC_BUTTON_RENDER_FRAME, EXEC_BUTTON_RENDER_ALL})
    ExecButtonsToolbar.enableButton(command, enabled);
}

// Stopping, pausing, and the passes of one frame, which are over before one could stop them.
void TStabilizerForm::showStopping(int processingState, bool renderFlag) {
  TExecButtonsFrame& buttons = ExecButtonsToolbar;
  enablePasses(false);
  buttons.enableButton(EXEC_BUTTON_STOP, false);
  buttons.enableButton(EXEC_BUTTON_CAPTURE_PDL, false);
  buttons.showButton(EXEC_BUTTON_PAUSE, true);
  buttons.enableButton(EXEC_BUTTON_PAUSE, false);
  buttons.showButton(EXEC_BUTTON_RESUME, false);
  buttons.enableButton(EXEC_BUTTON_RESUME, false);
  if (processingState == CToolObject::STATE_STOPPING ||
      processingState == CToolObject::STATE_PAUSING)
    return;
  buttons.highlightButton(renderFlag ? EXEC_BUTTON_RENDER_FRAME : EXEC_BUTTON_PREVIEW_FRAME);
}

void TStabilizerForm::showRunning(bool renderFlag) {
  TExecButtonsFrame& buttons = ExecButtonsToolbar;
  application().setCursor(ECursor::appStarting);
  enablePasses(false);
  buttons.showButton(EXEC_BUTTON_PAUSE, true);
  buttons.enableButton(EXEC_BUTTON_PAUSE,
                       tool_.singleFrame() < 0 && tool_.runState() == RUN_RENDERING);
  buttons.showButton(EXEC_BUTTON_RESUME, false);
  buttons.enableButton(EXEC_BUTTON_STOP, true);
  buttons.enableButton(EXEC_BUTTON_CAPTURE_PDL, false);
  buttons.highlightButton(renderFlag ? EXEC_BUTTON_RENDER_ALL : EXEC_BUTTON_PREVIEW_ALL);
}

void TStabilizerForm::showPaused() {
  TExecButtonsFrame& buttons = ExecButtonsToolbar;
  restoreCursor();
  enablePasses(false);
  buttons.showButton(EXEC_BUTTON_RESUME, true);
  buttons.enableButton(EXEC_BUTTON_RESUME, true);
  buttons.showButton(EXEC_BUTTON_PAUSE, false);
  buttons.enableButton(EXEC_BUTTON_STOP, true);
  buttons.enableButton(EXEC_BUTTON_CAPTURE_PDL, false);
  setResumeFrame(host().getDisplayedFrame());
}

void TStabilizerForm::restoreCursor() {
  if (!tool_.isColorPickerOn()) application().setCursor(ECursor::normal);
}

void TStabilizerForm::onExecutionCommand(int command) {
  switch (command) {
    case EXEC_BUTTON_PREVIEW_FRAME: return requestPass(REQUEST_PREVIEW_FRAME);
    case EXEC_BUTTON_PREVIEW_NEXT_FRAME: return requestPass(PREVIEW_NEXT_FRAME);
    case EXEC_BUTTON_PREVIEW_ALL: return requestPass(REQUEST_PREVIEW_ALL);
    case EXEC_BUTTON_RENDER_FRAME: return requestPass(REQUEST_RENDER_FRAME);
    case EXEC_BUTTON_RENDER_NEXT_FRAME: return requestPass(RENDER_NEXT_FRAME);
    case EXEC_BUTTON_RENDER_ALL: return requestPass(REQUEST_RENDER_ALL);
    case EXEC_BUTTON_PAUSE: return requestPass(REQUEST_PAUSE);
    case EXEC_BUTTON_RESUME: return requestPass(REQUEST_RESUME);
    case EXEC_BUTTON_PAUSE_OR_RESUME: return pauseOrResume();
    case EXEC_BUTTON_STOP: return tool_.request(REQUEST_STOP);
    case EXEC_BUTTON_CAPTURE_PDL: return host().capturePDL(application().isShiftDown());
    case EXEC_BUTTON_CAPTURE_PDL_ALL_EVENTS: return host().capturePDL(true);
    case EXEC_BUTTON_GO_TO_RESUME_TC: return goToResumeTimecode();
    case EXEC_BUTTON_SET_RESUME_TC: return setResumeFrame(host().getDisplayedFrame());
    default: return;
  }
}

void TStabilizerForm::pauseOrResume() {
  if (ExecButtonsToolbar.isButtonVisibleAndEnabled(EXEC_BUTTON_PAUSE)) {
    requestPass(REQUEST_PAUSE);
  } else if (ExecButtonsToolbar.isButtonVisibleAndEnabled(EXEC_BUTTON_RESUME)) {
    requestPass(REQUEST_RESUME);
  }
}

void TStabilizerForm::requestPass(int kind) {
  if (!hasPointsAtMarkIn()) {
    theError.set(NO_POINTS, NO_POINTS_TEXT);
    _QTXErrorDialog(NO_POINTS_TEXT);
    return;
  }
  if (kind == REQUEST_RESUME) goToResumeTimecode();
  kind = stepBeforePass(kind);
  tool_.evaluateRetracking();
  tool_.request(kind);
}

bool TStabilizerForm::hasPointsAtMarkIn() const {
  const CTrackingArray& points = tool_.livePoints();
  const int in = host().getMarkIn();
  return points.HasFrame(in) && points.FindPoints(in).ValidCount() > 0;
}

/// What is left to ask for: on the last frame before mark OUT there is no next one, and the tool
/// ignores the kind.
int TStabilizerForm::stepBeforePass(int kind) {
  if (kind != PREVIEW_NEXT_FRAME && kind != RENDER_NEXT_FRAME) return kind;
  const int displayed = host().getDisplayedFrame();
  if (displayed >= host().getMarkOut() - 1) return kind;
  host().goToFrame(displayed + 1);
  setResumeFrame(host().getDisplayedFrame() + 1);  // it may have ended elsewhere
  return kind == PREVIEW_NEXT_FRAME ? REQUEST_PREVIEW_FRAME : REQUEST_RENDER_FRAME;
}

void TStabilizerForm::setResumeFrame(int frame) {
  const IClip* const clip = host().getClip();
  if (clip == nullptr) return;
  if (frame < 0) frame = clip->firstFrame();
  tool_.setResumeFrame(frame);
  ExecButtonsToolbar.setResumeTimecode(clip->timecodeOfFrame(frame));
}

void TStabilizerForm::goToResumeTimecode() {
  const IClip* const clip = host().getClip();
  if (clip == nullptr) return;
  const int frame = clip->frameOfTimecode(ExecButtonsToolbar.resumeTimecode());
  host().goToFrame(frame < 0 ? clip->firstFrame() : frame);
  setResumeFrame(host().getDisplayedFrame());
}
