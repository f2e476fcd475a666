#pragma once

#include <string>
#include <vector>

#include "support/HRTimer.h"
#include "support/Threads.h"

/// Sink of a pass' status texts and progress. THREAD: any; implementations lock.
class IToolProgressMonitor {
 public:
  virtual ~IToolProgressMonitor() = default;
  /// Back to total 0, step 1; with the flag the status text becomes "Idle".
  virtual void SetIdle(bool setText) = 0;
  virtual void SetStatusMessage(const std::string& text) = 0;
  /// Saves the status text, then sets the new one.
  virtual void PushStatusMessage(const std::string& text) = 0;
  /// Restores the text saved last; without one nothing changes.
  virtual void PopStatusMessage() = 0;
  /// The second text.
  virtual void SetToolMessage(const std::string& text) = 0;
  /// `total` items of `step` units each; a step below 1 counts as 1. Counters and times become 0.
  virtual void SetFrameCount(int total, int step) = 0;
  /// Starts the clock; what is done stays done.
  virtual void StartProgress() = 0;
  /// Counts units; every `step` of them are one item done, never more than the total.
  virtual void BumpProgress(int units) = 0;
  /// Ends the pass; completed: everything is done.
  virtual void StopProgress(bool completed) = 0;
};

/// Keeps the values and writes them to the trace as "TPM:" lines (level 2). Every tool owns one.
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

  /// Text of a time of 0 or more seconds: "1:02:05", "1:05", "0:05"; in the short form "1.500" or
  /// "12.35" below a minute.
  static std::string TimeText(double seconds, bool shortForm);

  int total() const;
  int done() const;
  int pendingUnits() const;
  std::string statusMessage() const;
  std::string toolMessage() const;

 private:
  // REQUIRES, all three: the lock is held.
  void resetCounts(int total, int step);
  bool advance(int items);  // true when `done_` grew
  std::string reportLine() const;

  mutable CThreadLock lock_;  // guards everything below
  CHRTimer timer_;
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
