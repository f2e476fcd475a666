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

  /// The same five numbers, drawn twice at the same places: dark on light and, as far as the bar is
  /// filled, light on dark.
  struct SReadouts {
    SReadouts(const std::string& suffix, TControl* parent);
    void layOut(int width);

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

 private:
  enum class ERun { idle, running, stopping };
  /// What a redraw shows.
  struct SProgress {
    std::string statusMessage = "Idle";
    std::string toolMessage;
    int total = 0;
    int step = 1;
    int done = 0;
    int partialSteps = 0;
    double elapsedSeconds = 0.0;
    double secondsPerUnit = 0.0;
  };

  // REQUIRES, these three: the lock is held.
  double timerSeconds() const { return 0.001 * (clock_() - timerStart_); }
  void setCount(int total, int step);
  void advance(int units);

  void requestRedraw();
  void onElapsedTimer();
  void showReadouts(const SProgress& progress);
  void showCounted(const SProgress& progress);
  void layOut();

  const Clock clock_;
  CThreadLock lock_;  // guards everything below
  SProgress progress_;
  ERun run_ = ERun::idle;
  double timerStart_ = 0.0;
  std::vector<std::string> savedStatusMessages_;
};
