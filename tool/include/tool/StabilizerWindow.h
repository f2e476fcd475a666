#pragma once

#include <string>

#include "ToolObj/ProgressMonitor.h"
#include "params/StabilizerParameters.h"

class TControl;

/// What the tool asks of its window. The window holds no settings of its own: its controls are the
/// parameter record. THREAD: the user-interface thread, `gatherParameters` excepted: the smoothing
/// thread calls it too.
class IStabilizerWindow {
 public:
  virtual ~IStabilizerWindow() = default;

  virtual void show() = 0;
  virtual void hide() = 0;
  /// The panel with the controls is visible.
  virtual bool isControlPanelVisible() const = 0;

  virtual CStabilizerParameters gatherParameters() = 0;
  virtual void showParameters(const CStabilizerParameters& parameters) = 0;

  virtual void updateExecutionButtons(int processingState, bool renderFlag) = 0;
  virtual void updateStatusLine() = 0;
  virtual void updatePointButtons() = 0;
  virtual void updateGraphs() = 0;
  virtual void clipChanged() = 0;

  /// The "Show" check boxes of points and matting box.
  virtual bool isShowPointsChecked() const = 0;
  virtual void setShowPointsChecked(bool checked) = 0;
  virtual bool isUseMattingChecked() const = 0;
  virtual void setUseMattingChecked(bool checked) = 0;

  /// Empty when the operator cancelled.
  virtual std::string askPointsFileToSave(const std::string& suggestedName) = 0;
  virtual std::string askPointsFileToLoad(const std::string& suggestedName) = 0;
};
