#pragma once

#include <string>
#include <vector>

#include "ToolObj/ProgressMonitor.h"
#include "params/StabilizerParameters.h"
#include "toolkit/Controls.h"

/// Controls that a key moves the focus to.
enum class EFocusTarget { trackBoxSize, motionSearchArea, smoothing, addJitter };
/// Groups of choices that keys reach. `fill` lists Black, White, Previous Frame, Zoom in this
/// order, the other groups their buttons from top to bottom.
enum class EButtonGroup { motion, anchor, stabilize, fill };

/// What the tool asks of its window. The window holds no settings of its own: its controls are the
/// parameter record. THREAD: the user-interface thread.
class IStabilizerWindow {
 public:
  virtual ~IStabilizerWindow() = default;

  virtual void showControlPanel() = 0;
  virtual void hideControlPanel() = 0;
  /// The panel with the controls is visible.
  virtual bool isControlPanelVisible() const = 0;

  virtual CStabilizerParameters gatherParameters() = 0;
  virtual void showParameters(const CStabilizerParameters& parameters) = 0;

  virtual void updateExecutionButtons(int processingState, bool renderFlag) = 0;
  /// An EExecutionCommand from a key. False: its button is not to be pressed now.
  virtual bool runExecutionCommand(int command) = 0;
  /// As a click on the colour-pick button: the tool's colour picker goes on or off.
  virtual void toggleColorPicker() = 0;
  virtual void updateStatusLine() = 0;
  virtual void updatePointButtons() = 0;
  virtual void updateGraphs() = 0;

  /// The "Show" check boxes of points and matting box. Setting one does not tell the tool.
  virtual bool isShowPointsEnabled() const = 0;
  virtual bool isShowPointsChecked() const = 0;
  virtual void setShowPointsChecked(bool checked) = 0;
  virtual bool isShowMattingBoxChecked() const = 0;
  virtual void setShowMattingBoxChecked(bool checked) = 0;
  virtual bool isUseMattingChecked() const = 0;
  virtual void setUseMattingChecked(bool checked) = 0;

  /// The control that takes the focus; null when the window has none, or when what it belongs to
  /// (the smoothing track bar) is disabled.
  virtual TControl* focusTarget(EFocusTarget target) = 0;
  /// Empty when the window has no such group.
  virtual std::vector<TRadioButton*> buttonsOf(EButtonGroup group) = 0;

  /// Empty when the operator cancelled.
  virtual std::string askPointsFileToSave(const std::string& suggestedName) = 0;
  virtual std::string askPointsFileToLoad(const std::string& suggestedName) = 0;
};
