#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ToolObj/ProgressMonitor.h"
#include "support/Threads.h"
#include "toolkit/Application.h"

/// The window's progress: status and tool message, elapsed, remaining and total time, seconds a
/// frame, percentage, and a bar.
///
/// THREAD: the nine operations of the monitor any; they change numbers under the frame's lock and
/// ask for a redraw, and touch no control. The redraw happens on the user-interface thread, to
/// which everything else belongs. The monitor's users are gone before the frame goes.
class TExecStatusBarFrame : public TControl, public IToolProgressMonitor {
 public:
  /// Milliseconds from some moment on; any thread asks. Without one the machine's own clock.
  using Clock = std::function<double()>;
  explicit TExecStatusBarFrame(std::string name, TControl* parent = nullptr, Clock clock = {});

  /// The same five numbers, drawn twice: dark on light and, over the bar's filled part, light on
  /// dark.
  struct SReadouts {
    SReadouts(const std::string& suffix, TControl* parent);
    TLabel ElapsedLabel;
    TLabel ElapsedValue;
    TLabel RemainingLabel;
    TLabel RemainingValue;
    TLabel TotalLabel;
    TLabel TotalValue;
    TLabel PerFrameValue;
    TLabel PercentValue;
  };

  TLabel StatusMessageLabel;
  TLabel StatusMessageValue;
  TLabel ToolMessageValue;
  TPanel ReadoutPanel;
  TPanel ProgressPanelLight;
  SReadouts Light;
  TPanel ProgressPanelDark;  ///< as wide as the part that is done
  SReadouts Dark;
  TPanel DisabledPanel;  ///< while there is nothing to count
  SReadouts Disabled;
  TTimer ElapsedTimer;

  void SetIdle(bool setText) override;
  void SetStatusMessage(const std::string& text) override;
  void PushStatusMessage(const std::string& text) override;
  void PopStatusMessage() override;
  void SetToolMessage(const std::string& text) override;
  void SetFrameCount(int total, int step) override;
  void StartProgress() override;
  void BumpProgress(int units) override;
  void StopProgress(bool completed) override;

  /// "1:15" below an hour, "1:02:05" from there on; part seconds are dropped.
  static std::string TimeText(double seconds);
  /// "0.500", "12.25", "123.4", "1234": four digits, cut off, not rounded.
  static std::string SecondsPerFrameText(double seconds);
};
