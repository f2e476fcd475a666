#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "doubles/CallLog.h"
#include "doubles/RecordingProgressMonitor.h"
#include "smoothing/StabilizerShot.h"

/// A shot without a tool: arrays and settings that a test fills, changes that it reads back.
/// `calls` records what smoother and renderer change: "setRunState 9", "setSmoothedFlag 1",
/// "setRendered", "setStatusMessage Smoothing", "setTimeMessage ...", "gatherParameters". THREAD:
/// as IStabilizerShot says; the plain members before a run starts and after it ended.
class CShotDouble : public IStabilizerShot {
 public:
  CCallLog calls;
  CTrackingArray tracked;
  CTrackingArray syntheticOriginal;
  CTrackingArray syntheticSmoothed;
  CStabilizerParameters parameters;
  SRect box;
  int selected = -1;
  CRecordingProgressMonitor monitor;
  std::atomic<bool> smoothed{false};
  std::vector<int> framesRendered;
  std::atomic<bool> rendered{false};
  SRectD zoomSource;

  /// A tracked point that moves: frame `first` + i holds the point at (x + i * dx, y + i * dy).
  void addMovingPoint(int point, int first, int count, double x, double y, double dx, double dy);

  CTrackingArray& trackedArray() override { return tracked; }
  CTrackingArray& syntheticOriginalArray() override { return syntheticOriginal; }
  CTrackingArray& syntheticSmoothedArray() override { return syntheticSmoothed; }
  SRect mattingBox() override { return box; }
  int selectedPoint() override { return selected; }
  void frameRendered(int frame) override { framesRendered.push_back(frame); }
  void setRendered() override;
  void setZoomSource(const SRectD& source) override { zoomSource = source; }

  int runState() override { return runState_; }
  void setRunState(int state) override;
  void setSmoothedFlag(bool flag) override;

  std::string getStatusMessage() override;
  void setStatusMessage(const std::string& text) override;
  std::string getTimeMessage() override;
  void setTimeMessage(const std::string& text) override;
  IToolProgressMonitor* progressMonitor() override { return &monitor; }

  CStabilizerParameters gatherParameters() override;
  CCountingWait& smoothingWait() override { return smoothingWait_; }

 private:
  std::atomic<int> runState_{RUN_IDLE};
  std::mutex textsMutex_;
  std::string statusMessage_;
  std::string timeMessage_;
  CCountingWait smoothingWait_;
};
