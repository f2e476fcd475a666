#pragma once

#include "support/Threads.h"
#include "tool/StabilizerWindow.h"

class CStabilizerTool;

/// A stabiliser window without controls: it holds what a window shows and nothing else. What is
/// shown is what is gathered. Like a window with controls it tells the tool what its settings say
/// whenever it is shown or its settings change. A host without an operator needs no more.
class CParameterWindow : public IStabilizerWindow {
 public:
  explicit CParameterWindow(CStabilizerTool& tool) : tool_(tool) {}

  void show() override;
  void hide() override;
  bool isControlPanelVisible() const override { return visible_; }

  CStabilizerParameters gatherParameters() override;
  void showParameters(const CStabilizerParameters& parameters) override;

  // Nothing is drawn.
  void updateExecutionButtons(int, bool) override {}
  /// There is no button to press: a host without an operator asks the tool itself.
  bool runExecutionCommand(int) override { return false; }
  void toggleColorPicker() override;
  void updateStatusLine() override {}
  void updatePointButtons() override {}
  void updateGraphs() override {}
  void clipChanged() override {}

  bool isShowPointsEnabled() const override { return true; }
  bool isShowPointsChecked() const override { return showPointsChecked_; }
  void setShowPointsChecked(bool checked) override { showPointsChecked_ = checked; }
  bool isShowMattingBoxChecked() const override { return showMattingBoxChecked_; }
  void setShowMattingBoxChecked(bool checked) override { showMattingBoxChecked_ = checked; }
  bool isUseMattingChecked() const override;
  void setUseMattingChecked(bool checked) override;

  TControl* focusTarget(EFocusTarget) override { return nullptr; }
  std::vector<TRadioButton*> buttonsOf(EButtonGroup) override { return {}; }

  /// Asked through the application: a host without an operator answers from what it was told.
  std::string askPointsFileToSave(const std::string& suggestedName) override;
  std::string askPointsFileToLoad(const std::string& suggestedName) override;

 private:
  void sendBoxExtents();

  CStabilizerTool& tool_;
  bool visible_ = false;
  bool showPointsChecked_ = true;
  bool showMattingBoxChecked_ = true;
  mutable CThreadLock lock_;
  CStabilizerParameters parameters_;
};
