#pragma once

#include <memory>
#include <string>
#include <vector>

#include "params/StabilizerPreferences.h"
#include "tool/StabilizerWindow.h"
#include "ui/QTXForm.h"
#include "ui/StabilizationControls.h"

class CNavSystemInterface;
class CSavedEnables;
class CStabilizerTool;
class TStabilizerPreferencesForm;
struct SRect;

/// The stabiliser's window. Its controls are a view of the tool's settings: it holds none of its
/// own, tells the tool what the operator does, and shows what the tool says. While it is shown it
/// is connected to the tool: four notifications and the update timer.
///
/// In front of an operator it remembers. Settings are read when the window is made, and read and
/// written when a host asks for it by message (EFormMessage): a host asks for both, settings and
/// geometry, before it shuts the tool down. The points are saved beside the clip when the window is
/// hidden, when the clip is left and when the settings are written. A batch run does none of that:
/// it depends on nothing in a home folder and leaves nothing beside a clip.
/// THREAD: the user-interface thread.
class TStabilizerForm : public TQTXForm, public TStabilizationControls, public IStabilizerWindow {
 public:
  /// Hands the control panel to the host and the progress display to the tool.
  /// REQUIRES: the tool knows its host.
  explicit TStabilizerForm(CStabilizerTool& tool);
  /// REQUIRES: the tool and its host are still there.
  ~TStabilizerForm() override;

  // Life (StabilizerForm.cpp).
  void showControlPanel() override;
  void hideControlPanel() override;
  bool isControlPanelVisible() const override { return StabilizationControlPanel.isVisible(); }
  void updateStatusLine() override;
  void updatePointButtons() override;
  void updateGraphs() override;
  TControl* focusTarget(EFocusTarget target) override;
  std::vector<TRadioButton*> buttonsOf(EButtonGroup group) override;

  // Controls as a view of the parameter record (ParameterMapping.cpp).
  CStabilizerParameters gatherParameters() override;
  /// Beyond what has a control of its own: a reference frame between the marks is shown too, and
  /// while the window is shown, the tool learns the box sizes.
  void showParameters(const CStabilizerParameters& record) override;

  // Passes (PassControl.cpp).
  void updateExecutionButtons(int processingState, bool renderFlag) override;
  bool runExecutionCommand(int command) override { return ExecButtonsToolbar.runCommand(command); }
  /// Below 0: the clip's first. Nothing without a clip.
  void setResumeFrame(int frame);

  // The processing region (MattingControl.cpp).
  void toggleColorPicker() override;
  bool isShowPointsEnabled() const override { return ShowPointCBox.isEnabled(); }
  bool isShowPointsChecked() const override { return ShowPointCBox.isChecked(); }
  void setShowPointsChecked(bool checked) override { ShowPointCBox.setChecked(checked); }
  bool isShowMattingBoxChecked() const override { return ShowMattingBoxCBox.isChecked(); }
  void setShowMattingBoxChecked(bool checked) override { ShowMattingBoxCBox.setChecked(checked); }
  bool isUseMattingChecked() const override { return UseMattingCBox.isChecked(); }
  void setUseMattingChecked(bool checked) override;

  // Files and preferences (WindowSettings.cpp).
  std::string askPointsFileToSave(const std::string& suggestedName) override;
  std::string askPointsFileToLoad(const std::string& suggestedName) override;
  /// Asks for the mark-in preference; no control of the panel leads here.
  void PreferencesMenuItemClick();
  int markInMovePreference() const { return markInMovePreference_; }

  SFileDialog OpenTrackingPointsDialog;
  SFileDialog SaveTrackingPointsDialog;
  TTimer UpdateTimer;
  TTimer DownTimer;
  TTimer ColorPickerStateTimer;

 protected:
  bool onReadSettings(CIniFile& file, const std::string& section) override;
  bool onWriteSettings(CIniFile& file, const std::string& section) override;

 private:
  enum class EMotionChoice { none = -1, smooth = 0, removeAll = 1, matchReference = 2 };

  CNavSystemInterface& host() const;
  bool hasOperator() const;

  void setUp();
  void wirePointControls();
  void wireSettings();
  void wireMatting();
  void connect();
  void tellSwitches();
  void disconnect();
  void onPointsChanged();
  void onNewClip();
  void onMarksChanged();
  void onUpdateTimer();
  bool isIdle() const;
  void fitRangesToPicture();
  void sendBoxSizes();

  EMotionChoice motionChoice() const;
  void gatherModes(CStabilizerParameters& record) const;
  void gatherWarpFunction(CStabilizerParameters& record) const;
  int gatherReferenceFrame() const;
  EMotionChoice showAxes(CStabilizerParameters& record);
  void showMotionChoice(EMotionChoice choice);
  void showAnchors();
  void showReferenceFrame(int frame);
  void HowToStabilizeRadioButtonClick();
  void AnchorRadioButtonClick();
  void AtMarkCheckBoxClick();
  void RefFrameTimeCodeEditExit();
  void applyAnchorChoice();
  void setReferenceFrame(int frame);
  void goToReferenceFrame();
  void enableReferenceControls(bool enabled);
  void enableAnchors(bool first, bool last, bool both, bool none);
  void parametersChanged();

  void showIdle();
  void showStopping(int processingState, bool renderFlag);
  void showRunning(bool renderFlag);
  void showPaused();
  void showAvailablePasses();
  void enablePasses(bool enabled);
  void restoreCursor();
  void onExecutionCommand(int command);
  void requestPass(int kind);
  int stepBeforePass(int kind);
  void pauseOrResume();
  void goToResumeTimecode();
  bool hasPointsAtMarkIn() const;

  void pressMattingButton(TToolButton& button);
  void onDownTimer();
  void releaseMattingButton();
  void moveMattingBox();
  void selectWholeFrame();
  void applyUseMatting();
  void enableMattingGroup();
  void releaseColorPickButton();

  CStabilizerPreferences preferences() const;
  std::string autoPointsFile() const;
  void setDialogFolders();
  void autoLoadPoints();
  void saveAutoPoints();

  CStabilizerTool& tool_;
  std::unique_ptr<TStabilizerPreferencesForm> preferencesForm_;
  std::unique_ptr<CSavedEnables> smoothingEnables_;
  std::unique_ptr<CSavedEnables> mattingEnables_;
  TToolButton* heldButton_ = nullptr;
  int lastRunState_ = 0;
  int markInMovePreference_ = MARK_IN_MOVE_Prompt;
  int warpFunction_;        ///< of the record shown last
  bool remembers_ = false;  ///< the settings are those of the file
};

/// The one window there is; null: none.
extern TStabilizerForm* StabilizerForm;
/// Its preferences dialog; null: none.
extern TStabilizerPreferencesForm* StabilizerPreferencesForm;
