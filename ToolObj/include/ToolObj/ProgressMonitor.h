#pragma once

#include <string>
#include <vector>

#include "support/HRTimer.h"
#include "support/Threads.h"

/// Sink of a pass' status texts and progress. THREAD: any; implementations lock.
class IToolProgressMonitor {
 public:
  virtual ~IToolProgressMonitor() = default;
  virtual void SetIdle(bool setText) = 0;
  virtual void SetStatusMessage(const std::string& text) = 0;
  virtual void PushStatusMessage(const std::string& text) = 0;
  virtual void PopStatusMessage() = 0;
  virtual void SetToolMessage(const std::string& text) = 0;
  virtual void SetFrameCount(int total, int step) = 0;
  virtual void StartProgress() = 0;
  virtual void BumpProgress(int units) = 0;
  virtual void StopProgress(bool completed) = 0;
};

/// Keeps the values and writes them to the trace as "TPM:" lines (level 2).
class CDefaultToolProgressMonitor : public IToolProgressMonitor {
 public:
  void SetIdle(bool setText) override;
  void SetStatusMessage(const std::string& text) override;
  void PushStatusMessage(const std::string& text) override;
  void PopStatusMessage() override;
  void SetToolMessage(const std::string& text) override;
  void SetFrameCount(int total, int step) override;
  void StartProgress() override;
  void BumpProgress(int units) override;
  void StopProgress(bool completed) override;
  ~CDefaultToolProgressMonitor() override = default;
  /// Writes the report line; nothing while no total is set.
  virtual void ReportProgress();

  int total() const;
  int done() const;
  int pendingUnits() const;
  std::string statusMessage() const;
  std::string toolMessage() const;

 protected:
  /// Both take seconds. `shortForm`: below a minute, "1.500" instead of "0:01".
  static std::string TimeText(double seconds, bool shortForm);

 private:
  bool advance(int items);         // REQUIRES: lock held; true when `done_` grew
  std::string reportLine() const;  // REQUIRES: lock held

  CHRTimer timer_;
  mutable CThreadLock lock_;
  int total_ = 0;
  int step_ = 1;
  int done_ = 0;
  int pendingUnits_ = 0;
  double elapsedSeconds_ = 0.0;
  double secondsPerItem_ = 0.0;
  std::string statusMessage_;
  std::string toolMessage_;
  std::vector<std::string> savedStatusMessages_;
};
