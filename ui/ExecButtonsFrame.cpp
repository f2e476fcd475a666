#include "ui/ExecButtonsFrame.h"

#include <utility>

namespace {

void prepare(TToolButton& button, int command, const char* caption, const char* hint) {
  button.setTag(command);
  button.setCaption(caption);
  button.setHint(hint);
}

}  // namespace

TExecButtonsFrame::TExecButtonsFrame(std::string name, TControl* parent)
    : TControl(std::move(name), parent),
      PreviewFrameButtonPanel("PreviewFrameButtonPanel", this),
      PreviewFrameButton("PreviewFrameButton", &PreviewFrameButtonPanel),
      PreviewAllButtonPanel("PreviewAllButtonPanel", this),
      PreviewAllButton("PreviewAllButton", &PreviewAllButtonPanel),
      RenderFrameButtonPanel("RenderFrameButtonPanel", this),
      RenderFrameButton("RenderFrameButton", &RenderFrameButtonPanel),
      RenderAllButtonPanel("RenderAllButtonPanel", this),
      RenderAllButton("RenderAllButton", &RenderAllButtonPanel),
      PauseButton("PauseButton", this),
      ResumeButton("ResumeButton", this),
      StopButton("StopButton", this),
      CapturePDLButton("CapturePDLButton", this),
      ResumeGroupBox("ResumeGroupBox", this),
      GotoTCButton("GotoTCButton", &ResumeGroupBox),
      ResumeTCEdit("ResumeTCEdit", &ResumeGroupBox),
      SetStartTCButton("SetStartTCButton", &ResumeGroupBox),
      ButtonPressedNotifier("ButtonPressedNotifier", this) {
  prepare(PreviewFrameButton, EXEC_BUTTON_PREVIEW_FRAME, "\u25B7 1", "Preview Frame");
  prepare(PreviewAllButton, EXEC_BUTTON_PREVIEW_ALL, "Preview", "Preview Marked Range");
  prepare(RenderFrameButton, EXEC_BUTTON_RENDER_FRAME, "\u25CF 1", "Render Frame");
  prepare(RenderAllButton, EXEC_BUTTON_RENDER_ALL, "Render", "Render Marked Frame");
  prepare(PauseButton, EXEC_BUTTON_PAUSE, "Pause", "Pause");
  prepare(ResumeButton, EXEC_BUTTON_RESUME, "Resume", "Continue");
  prepare(StopButton, EXEC_BUTTON_STOP, "Stop", "Stop");
  prepare(CapturePDLButton, EXEC_BUTTON_CAPTURE_PDL, "+PDL", "Capture to PDL");
  prepare(GotoTCButton, EXEC_BUTTON_GO_TO_RESUME_TC, "\u2192", "Go to this timecode");
  prepare(SetStartTCButton, EXEC_BUTTON_SET_RESUME_TC, "\u2190", "Set to displayed timecode");
  ResumeGroupBox.setCaption("Resume");
  for (TPanel* panel : highlightPanels()) panel->setTag(panel->children().front()->tag());
  for (TToolButton* button : buttons()) {
    const int command = button->tag();
    button->onClick = [this, command] { press(command); };
  }
  PauseButton.setEnabled(false);
  ResumeButton.setEnabled(false);
  ResumeButton.setVisible(false);
  StopButton.setEnabled(false);
  ButtonPressedNotifier.setVisible(false);
  ButtonPressedNotifier.setTabStop(false);
  onResize = [this] { layOut(); };
  layOut();
}

std::vector<TToolButton*> TExecButtonsFrame::buttons() {
  return {&PreviewFrameButton, &PreviewAllButton, &RenderFrameButton, &RenderAllButton,
          &PauseButton,        &ResumeButton,     &StopButton,        &CapturePDLButton,
          &GotoTCButton,       &SetStartTCButton};
}

std::vector<TPanel*> TExecButtonsFrame::highlightPanels() {
  return {&PreviewFrameButtonPanel, &PreviewAllButtonPanel, &RenderFrameButtonPanel,
          &RenderAllButtonPanel};
}

// Where a key and a click meet.
void TExecButtonsFrame::press(int command) {
  lastCommand_ = command;
  ResumeTCEdit.commit();
  ButtonPressedNotifier.click();
}

bool TExecButtonsFrame::runCommand(int command) {
  lastCommand_ = command;
  const int accepted = acceptedCommand(command);
  if (accepted == EXEC_BUTTON_NONE) return false;
  press(accepted);
  return true;
}

/// The command that a key's command stands for now; EXEC_BUTTON_NONE: none.
int TExecButtonsFrame::acceptedCommand(int command) const {
  const auto ifEnabled = [command](const TToolButton& button) {
    return button.isEnabled() ? command : static_cast<int>(EXEC_BUTTON_NONE);
  };
  switch (command) {
    case EXEC_BUTTON_PREVIEW_FRAME:
    case EXEC_BUTTON_PREVIEW_NEXT_FRAME: return ifEnabled(PreviewFrameButton);
    case EXEC_BUTTON_PREVIEW_ALL: return ifEnabled(PreviewAllButton);
    case EXEC_BUTTON_RENDER_FRAME:
    case EXEC_BUTTON_RENDER_NEXT_FRAME: return ifEnabled(RenderFrameButton);
    case EXEC_BUTTON_RENDER_ALL: return ifEnabled(RenderAllButton);
    case EXEC_BUTTON_PAUSE_OR_RESUME:
      if (isButtonVisibleAndEnabled(EXEC_BUTTON_PAUSE)) return EXEC_BUTTON_PAUSE;
      if (isButtonVisibleAndEnabled(EXEC_BUTTON_RESUME)) return EXEC_BUTTON_RESUME;
      return EXEC_BUTTON_NONE;
    case EXEC_BUTTON_STOP: return ifEnabled(StopButton);
    case EXEC_BUTTON_CAPTURE_PDL: return ifEnabled(CapturePDLButton);
    case EXEC_BUTTON_CAPTURE_PDL_ALL_EVENTS: return command;
    case EXEC_BUTTON_GO_TO_RESUME_TC: return ifEnabled(GotoTCButton);
    case EXEC_BUTTON_SET_RESUME_TC: return ifEnabled(SetStartTCButton);
    default: return EXEC_BUTTON_NONE;
  }
}

void TExecButtonsFrame::enableButton(int command, bool enabled) {
  for (TPanel* panel : highlightPanels())
    if (panel->tag() == command) panel->setEnabled(enabled);
  for (TToolButton* button : buttons())
    if (button->tag() == command) button->setEnabled(enabled);
}

void TExecButtonsFrame::showButton(int command, bool visible) {
  for (TToolButton* button : buttons())
    if (button->tag() == command) button->setVisible(visible);
}

bool TExecButtonsFrame::isButtonVisibleAndEnabled(int command) const {
  for (const TToolButton* button : const_cast<TExecButtonsFrame*>(this)->buttons())
    if (button->tag() == command) return button->isVisible() && button->isEnabled();
  return false;
}

void TExecButtonsFrame::setButtonHint(int command, const std::string& hint) {
  for (TToolButton* button : buttons())
    if (button->tag() == command) button->setHint(hint);
}

void TExecButtonsFrame::highlightButton(int command) {
  for (TPanel* panel : highlightPanels())
    panel->setInnerBevel(panel->tag() == command ? EBevel::raised : EBevel::none);
}

void TExecButtonsFrame::enableResumeGroup(bool enabled) {
  ResumeGroupBox.setEnabled(enabled);
  for (TControl* control : ResumeGroupBox.children()) control->setEnabled(enabled);
}

// Seven places as wide as their captions ask for, Pause and Resume in one of them; the timecode has
// the rest.
void TExecButtonsFrame::layOut() {
  constexpr int ONE_FRAME = 36;
  constexpr int WORD = 58;
  constexpr int SHORT_WORD = 46;
  constexpr int GAP = 2;
  constexpr int TOOL = 22;
  constexpr int CAPTION = 16;
  const int height = bounds().height;
  const int buttonHeight = height - 16;
  int left = 0;
  const auto place = [&](int width) {
    const SBounds bounds = {left, 8, width, buttonHeight};
    left += width + GAP;
    return bounds;
  };
  bool oneFrame = true;  // it and the range take turns
  for (TPanel* panel : highlightPanels()) {
    const int width = oneFrame ? ONE_FRAME : WORD;
    panel->setBounds(place(width));
    panel->children().front()->setBounds({2, 2, width - 4, buttonHeight - 4});
    oneFrame = !oneFrame;
  }
  PauseButton.setBounds(place(WORD));
  ResumeButton.setBounds(PauseButton.bounds());
  StopButton.setBounds(place(SHORT_WORD - 6));
  CapturePDLButton.setBounds(place(SHORT_WORD));
  const int groupLeft = left + 4;
  const int groupWidth = bounds().width - groupLeft;
  ResumeGroupBox.setBounds({groupLeft, 0, groupWidth, height});
  GotoTCButton.setBounds({6, CAPTION, TOOL, TOOL});
  ResumeTCEdit.setBounds({6 + TOOL + 4, CAPTION, groupWidth - 2 * (6 + TOOL + 4), TOOL});
  SetStartTCButton.setBounds({groupWidth - 6 - TOOL, CAPTION, TOOL, TOOL});
}
