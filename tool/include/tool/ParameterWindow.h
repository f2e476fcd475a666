#pragma once

#include <string>

#include "params/StabilizerPreferences.h"
#include "support/Threads.h"
#include "tool/StabilizerWindow.h"

class CStabilizerTool;

/// A stabiliser window without controls: it holds what a window shows and nothing else. What is
/// shown is what is gathered. Like a window with controls it tells the tool what its settings say
/// whenever it is shown or its settings change. A host without an operator needs no more.
///
/// In front of an operator it also remembers: settings and preferences are read from the tool's
/// settings file when it is made and written there when it goes, and the points are saved beside
/// the clip whenever the window is hidden, the clip is left, or the settings are written. A batch
/// run does none of that: it depends on nothing in a home folder and leaves nothing beside a clip.
class CParameterWindow : public IStabilizerWindow {
 public:
  /// REQUIRES: the tool knows its host. The tool is not told anything before `show`.
  explicit CParameterWindow(CStabilizerTool& tool);
  /// REQUIRES: the tool and its host are still there.
  ~CParameterWindow() override;
  CParameterWindow(const CParameterWindow&) = delete;
  CParameterWindow& operator=(const CParameterWindow&) = delete;

  const CStabilizerPreferences& preferences() const { return preferences_; }
  /// They reach the tool at once while the window is shown, else when it is.
  void setPreferences(const CStabilizerPreferences& preferences);

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
  bool isShowPointsChecked() const override { return preferences_.ShowTrackPoints; }
  void setShowPointsChecked(bool checked) override { preferences_.ShowTrackPoints = checked; }
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
  void sendPreferences();
  bool hasOperator() const;
  void readSettings();
  void writeSettings();
  void saveAutoPoints();

  CStabilizerTool& tool_;
  bool visible_ = false;
  bool remembers_ = false;  ///< the settings are those of the file
  CStabilizerPreferences preferences_;
  bool showMattingBoxChecked_ = true;
  mutable CThreadLock lock_;
  CStabilizerParameters parameters_;
};
