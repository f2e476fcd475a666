#pragma once

#include <string>
#include <vector>

#include "tool/StabilizerCommands.h"
#include "toolkit/Controls.h"

/// The row of buttons that run, pause and stop passes, and the timecode to resume at. A click and a
/// key become the same thing: one last command (an EExecutionCommand), told to the owner by a click
/// of `ButtonPressedNotifier`. Every button carries its command as its tag. THREAD: the
/// user-interface thread.
class TExecButtonsFrame : public TControl {
 public:
  explicit TExecButtonsFrame(std::string name, TControl* parent = nullptr);

  TPanel PreviewFrameButtonPanel;
  TToolButton PreviewFrameButton;
  TPanel PreviewAllButtonPanel;
  TToolButton PreviewAllButton;
  TPanel RenderFrameButtonPanel;
  TToolButton RenderFrameButton;
  TPanel RenderAllButtonPanel;
  TToolButton RenderAllButton;
  TToolButton PauseButton;
  TToolButton ResumeButton;  ///< in the place of Pause
  TToolButton StopButton;
  TToolButton CapturePDLButton;
  TGroupBox ResumeGroupBox;
  TToolButton GotoTCButton;
  VTimeCodeEdit ResumeTCEdit;
  TToolButton SetStartTCButton;
  TButton ButtonPressedNotifier;  ///< hidden; its click handler is the owner's

  /// A command from a key. False: its button cannot be pressed now, or no button has it.
  bool runCommand(int command);
  int lastCommand() const { return lastCommand_; }

  /// These do nothing for a number that no button has.
  void enableButton(int command, bool enabled);
  void showButton(int command, bool visible);
  bool isButtonVisibleAndEnabled(int command) const;
  void setButtonHint(int command, const std::string& hint);
  /// One of the four preview and render commands; EXEC_BUTTON_NONE highlights none.
  void highlightButton(int command);
  void enableResumeGroup(bool enabled);
  void setResumeTimecode(const CTimecode& timecode) { ResumeTCEdit.setTimecode(timecode); }
  const CTimecode& resumeTimecode() const { return ResumeTCEdit.timecode(); }

 private:
  std::vector<TToolButton*> buttons();
  std::vector<TPanel*> highlightPanels();
  void press(int command);
  int acceptedCommand(int command) const;
  void layOut();

  int lastCommand_ = EXEC_BUTTON_NONE;
};
