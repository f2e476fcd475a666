#include <algorithm>
#include <string>
#include <vector>

#include "support/Trace.h"
#include "tool/StabilizerCommands.h"
#include "tool/StabilizerTool.h"
#include "toolkit/Application.h"

int CStabilizerTool::onToolCommand(CToolCommand& command) {
  if (!isToolShowing()) return NOT_HANDLED;
  const int number = command.getCommandNumber();
  TraceAt(3, "Stabilizer Tool command number " + std::to_string(number));
  const int result = performCommand(number);
  refreshExecutionButtons();
  const bool consumed = (result & CONSUMED) != 0;
  if (isColorPickerOn() && consumed && number != STAB_CMD_TURN_COLOR_PICKER_ON) {
    window_->toggleColorPicker();
  }
  return result;
}

int CStabilizerTool::performCommand(int number) {
  if (number > EXEC_BUTTON_NONE && number <= EXEC_BUTTON_SET_RESUME_TC) {
    return window_->runExecutionCommand(number) ? HANDLED : NOT_HANDLED;
  }
  switch (number) {
    case STAB_CMD_TRACK: request(REQUEST_TRACK); return HANDLED;
    case STAB_CMD_TOGGLE_FIX: getSystemAPI()->toggleFix(false); return HANDLED;
    case STAB_CMD_TOGGLE_TRACK_POINT_VISIBILITY: togglePointVisibility(); return HANDLED;
    case STAB_CMD_FOCUS_ON_TRACK_BOX_SIZE: focusOn(EFocusTarget::trackBoxSize); return HANDLED;
    case STAB_CMD_FOCUS_ON_MOTION_SEARCH_AREA:
      focusOn(EFocusTarget::motionSearchArea);
      return HANDLED;
    case STAB_CMD_FOCUS_ON_SMOOTHING: focusOn(EFocusTarget::smoothing); return HANDLED;
    case STAB_CMD_FOCUS_ON_ADD_JITTER: focusOn(EFocusTarget::addJitter); return HANDLED;
    case STAB_CMD_FOCUS_ON_MISSING_DATA_FILL: stepOrFocusFill(); return HANDLED;
    case STAB_CMD_FOCUS_ON_MOTION_GROUP: focusOnChoice(EButtonGroup::motion); return HANDLED;
    case STAB_CMD_FOCUS_ON_ANCHOR_GROUP: focusOnChoice(EButtonGroup::anchor); return HANDLED;
    case STAB_CMD_FOCUS_ON_STABILIZE_GROUP: focusOnChoice(EButtonGroup::stabilize); return HANDLED;
    case STAB_CMD_TURN_COLOR_PICKER_ON:
      if (!isColorPickerOn()) window_->toggleColorPicker();
      return HANDLED;
    case STAB_CMD_TURN_COLOR_PICKER_OFF:
      if (isColorPickerOn()) window_->toggleColorPicker();
      return HANDLED;

    // The host may act on these keys too.
    case STAB_CMD_TOGGLE_PROC_REGION_VISIBILITY: toggleMattingBoxVisibility(); break;
    case STAB_CMD_SHOW_OR_HIDE_HELP: Application()->beep(); break;
    case STAB_CMD_SAVE_TRACKPOINTS: SavePointsWithDialog(); break;
    case STAB_CMD_LOAD_TRACKPOINTS: LoadPointsWithDialog(true); break;
    case STAB_CMD_LOAD_TRACKPOINTS_NOT_MARKS: LoadPointsWithDialog(false); break;
    case STAB_CMD_CLEAR_TRACKPOINTS: clearAllTrackingData(); break;
    case STAB_CMD_SET_MARKS_FROM_TRACK_ARRAY: setMarksFromPoints(); break;
    case STAB_CMD_SHIFT_IS_ON: shiftHeld_ = true; break;
    case STAB_CMD_SHIFT_IS_OFF: shiftHeld_ = false; break;
    default: break;
  }
  return NOT_HANDLED;
}

void CStabilizerTool::togglePointVisibility() {
  if (!window_->isShowPointsEnabled()) return;
  const bool show = !window_->isShowPointsChecked();
  window_->setShowPointsChecked(show);
  setTrackingPointsVisible(show);
}

void CStabilizerTool::toggleMattingBoxVisibility() {
  const bool show = !window_->isShowMattingBoxChecked();
  window_->setShowMattingBoxChecked(show);
  showMattingBox(show);
}

// OUT first: the new IN may lie behind the old OUT. Each mark makes the host tell of a change,
// which may adjust the points, so both ends are taken before.
void CStabilizerTool::setMarksFromPoints() {
  if (tracked_.TrackState() == TRACK_STATE_Untracked) return;
  const int first = tracked_.FirstFrame();
  const int end = tracked_.EndFrame();
  CNavSystemInterface* host = getSystemAPI();
  host->setMarkOut(end);
  host->setMarkIn(first);
  host->goToFrame(host->getMarkIn());
}

void CStabilizerTool::focusOn(EFocusTarget target) {
  if (TControl* control = window_->focusTarget(target)) getSystemAPI()->focusControl(control);
}

void CStabilizerTool::focusOnChoice(EButtonGroup group) {
  const std::vector<TRadioButton*> buttons = window_->buttonsOf(group);
  const auto chosen =
      std::find_if(buttons.begin(), buttons.end(), [](TRadioButton* b) { return b->isChecked(); });
  if (chosen != buttons.end()) getSystemAPI()->focusControl(*chosen);
}

// The same key goes to the choice first and then, with the focus there, from one to the next.
// Zoom is no step among them: it changes every frame of the shot, so it is chosen by hand.
void CStabilizerTool::stepOrFocusFill() {
  enum { BLACK, WHITE, PREVIOUS_FRAME, ZOOM, COUNT };
  constexpr int STEPS = ZOOM;
  const std::vector<TRadioButton*> buttons = window_->buttonsOf(EButtonGroup::fill);
  if (buttons.size() != COUNT) return;
  CNavSystemInterface* host = getSystemAPI();
  const auto endOfSteps = buttons.begin() + STEPS;
  const auto focused = std::find(buttons.begin(), endOfSteps, host->getFocusedControl());
  if (focused != endOfSteps) {
    TRadioButton* next = buttons[(focused - buttons.begin() + 1) % STEPS];
    next->setChecked(true);
    host->focusControl(next);
    return;
  }
  TRadioButton* target = buttons[PREVIOUS_FRAME];
  for (const int choice : {ZOOM, BLACK, WHITE})
    if (buttons[choice]->isChecked()) target = buttons[choice];
  host->focusControl(target);
}
