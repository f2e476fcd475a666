#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "ToolObj/ProgressMonitor.h"
#include "support/HRTimer.h"

/// Shows a pass' progress on standard error: one line that renews itself on a terminal, a plain
/// line every tenth of the way elsewhere. THREAD: any.
class CConsoleMonitor : public IToolProgressMonitor {
 public:
  CConsoleMonitor(bool quiet, bool terminal) : quiet_(quiet), terminal_(terminal) {}
  ~CConsoleMonitor() override;

  void SetIdle(bool setText) override;
  void SetStatusMessage(const std::string& text) override;
  void PushStatusMessage(const std::string& text) override;
  void PopStatusMessage() override;
  void SetToolMessage(const std::string&) override {}
  void SetFrameCount(int total, int step) override;
  void StartProgress() override;
  void BumpProgress(int units) override;
  void StopProgress(bool completed) override;

  /// A remark between the lines of progress.
  void note(const std::string& text);

 private:
  void show(bool last);  // REQUIRES: mutex_ held
  void clearLine();      // REQUIRES: mutex_ held
  std::string lineText() const;

  const bool quiet_;
  const bool terminal_;
  std::mutex mutex_;  // guards everything below
  std::string status_;
  std::vector<std::string> saved_;
  int total_ = 0;
  int step_ = 1;
  int units_ = 0;
  int tenthsShown_ = 0;
  double shownAt_ = 0.0;
  bool running_ = false;
  bool lineOpen_ = false;
  CHRTimer timer_;
};
