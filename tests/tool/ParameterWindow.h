#pragma once

#include <string>
#include <vector>

#include "tool/StabilizerTool.h"
#include "toolkit/Application.h"

/// A window that holds parameters and switches and nothing else: what is shown is what is gathered.
/// Like one with controls it tells the tool its box sizes when it is shown or they change.
class CParameterWindow : public IStabilizerWindow {
 public:
  explicit CParameterWindow(CStabilizerTool& tool) : tool_(tool) {}

  void showControlPanel() override {
    visible_ = true;
    tool_.showMattingBox(showMattingBox_ && parameters_.UseMatting);
    tool_.setTrackingPointsVisible(showPoints_);
    tool_.setClearOnShotChange(true);
    sendBoxExtents();
  }
  void hideControlPanel() override {
    visible_ = false;
    tool_.showMattingBox(false);
    tool_.setTrackingPointsVisible(false);
  }
  bool isControlPanelVisible() const override { return visible_; }

  CStabilizerParameters gatherParameters() override { return parameters_; }
  void showParameters(const CStabilizerParameters& parameters) override {
    parameters_ = parameters;
    sendBoxExtents();
  }

  void updateExecutionButtons(int, bool) override {}
  bool runExecutionCommand(int) override { return false; }
  void toggleColorPicker() override { tool_.setColorPickerOn(!tool_.isColorPickerOn()); }
  void updateStatusLine() override {}
  void updatePointButtons() override {}
  void updateGraphs() override {}

  bool isShowPointsEnabled() const override { return true; }
  bool isShowPointsChecked() const override { return showPoints_; }
  void setShowPointsChecked(bool checked) override { showPoints_ = checked; }
  bool isShowMattingBoxChecked() const override { return showMattingBox_; }
  void setShowMattingBoxChecked(bool checked) override { showMattingBox_ = checked; }
  bool isUseMattingChecked() const override { return parameters_.UseMatting; }
  void setUseMattingChecked(bool checked) override { parameters_.UseMatting = checked; }

  TControl* focusTarget(EFocusTarget) override { return nullptr; }
  std::vector<TRadioButton*> buttonsOf(EButtonGroup) override { return {}; }

  std::string askPointsFileToSave(const std::string& suggestedName) override {
    return askFile(SFileDialog::EKind::save, suggestedName);
  }
  std::string askPointsFileToLoad(const std::string& suggestedName) override {
    return askFile(SFileDialog::EKind::open, suggestedName);
  }

 private:
  static std::string askFile(SFileDialog::EKind kind, const std::string& suggestedName) {
    SFileDialog dialog;
    dialog.kind = kind;
    dialog.fileName = suggestedName;
    return Application()->chooseFile(dialog);
  }
  void sendBoxExtents() {
    const CStabilizerParameters& p = parameters_;
    tool_.setBoxExtents(p.TrackBoxExtentX, p.TrackBoxExtentY, p.SearchBoxExtentLeft,
                        p.SearchBoxExtentRight, p.SearchBoxExtentUp, p.SearchBoxExtentDown);
  }

  CStabilizerTool& tool_;
  CStabilizerParameters parameters_;
  bool visible_ = false;
  bool showPoints_ = true;
  bool showMattingBox_ = true;
};
