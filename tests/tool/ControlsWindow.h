#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "ToolFixture.h"

/// A window with the controls that keys reach. Every choice has one checked button or none, as the
/// test says; an execution command is accepted when the test lists it.
class CControlsWindow : public CRecordingWindow {
 public:
  explicit CControlsWindow(CStabilizerTool& tool) : CRecordingWindow(tool) {
    addChoice(EButtonGroup::motion, {"Smooth", "RemoveAll", "MatchReference"});
    addChoice(EButtonGroup::anchor, {"FirstFrame", "LastFrame", "Both", "None"});
    addChoice(EButtonGroup::stabilize, {"Horizontal", "Vertical", "HorizVert", "Rotation"});
    addChoice(EButtonGroup::fill, {"Black", "White", "PreviousFrame", "Zoom"});
  }

  std::set<int> acceptedCommands;
  bool showPointsEnabled = true;
  bool smoothingEnabled = true;
  TControl trackBoxSize{"TrackBoxSize"};
  TControl motionSearchArea{"MotionSearchArea"};
  TControl smoothing{"Smoothing"};
  TControl addJitter{"AddJitter"};

  TRadioButton& button(EButtonGroup group, int index) { return *choices_[group].buttons.at(index); }

  bool runExecutionCommand(int command) override {
    calls.add(CCallLog::text("execute", command));
    return acceptedCommands.contains(command);
  }
  void toggleColorPicker() override {
    calls.add("toggleColorPicker");
    CRecordingWindow::toggleColorPicker();
  }
  bool isShowPointsEnabled() const override { return showPointsEnabled; }
  // The operator of these tests cancels every file dialog.
  std::string askPointsFileToSave(const std::string&) override { return ""; }
  std::string askPointsFileToLoad(const std::string&) override { return ""; }

  TControl* focusTarget(EFocusTarget target) override {
    switch (target) {
      case EFocusTarget::trackBoxSize: return &trackBoxSize;
      case EFocusTarget::motionSearchArea: return &motionSearchArea;
      case EFocusTarget::smoothing: return smoothingEnabled ? &smoothing : nullptr;
      case EFocusTarget::addJitter: return &addJitter;
    }
    return nullptr;
  }
  std::vector<TRadioButton*> buttonsOf(EButtonGroup group) override {
    std::vector<TRadioButton*> buttons;
    for (const auto& button : choices_[group].buttons) buttons.push_back(button.get());
    return buttons;
  }

 private:
  struct SChoice {
    std::unique_ptr<TControl> box;
    std::vector<std::unique_ptr<TRadioButton>> buttons;
  };

  void addChoice(EButtonGroup group, const std::vector<std::string>& names) {
    SChoice& choice = choices_[group];
    choice.box = std::make_unique<TControl>("GroupBox");
    for (const std::string& name : names)
      choice.buttons.push_back(std::make_unique<TRadioButton>(name, choice.box.get()));
  }

  std::map<EButtonGroup, SChoice> choices_;
};
