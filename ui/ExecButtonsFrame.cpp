#include "ui/ExecButtonsFrame.h"

#include <utility>

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
      ButtonPressedNotifier("ButtonPressedNotifier", this) {}

bool TExecButtonsFrame::runCommand(int) {
  return false;
}
void TExecButtonsFrame::enableButton(int, bool) {}
void TExecButtonsFrame::showButton(int, bool) {}
bool TExecButtonsFrame::isButtonVisibleAndEnabled(int) const {
  return false;
}
void TExecButtonsFrame::setButtonHint(int, const std::string&) {}
void TExecButtonsFrame::highlightButton(int) {}
void TExecButtonsFrame::enableResumeGroup(bool) {}
