#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "frames/FrameStore.h"
#include "tracker/ShotTracker.h"

/// Follows points through [in, out) of a clip on a thread of its own. Results wait until they are
/// taken, so that the tracking data itself is touched on the taker's thread only.
/// THREAD: construction and taking on one thread; the store is the run's until it has finished.
class CTrackingRun {
 public:
  struct SFrameResult {
    int frame = 0;
    std::map<int, STrackedPoint> points;
  };

  CTrackingRun(CFrameStore& store, const STrackSettings& settings,
               const std::map<int, SPoint2>& points, int in, int out);
  /// Cancels and waits.
  ~CTrackingRun();
  CTrackingRun(const CTrackingRun&) = delete;
  CTrackingRun& operator=(const CTrackingRun&) = delete;

  void cancel();
  /// Frames that were tracked since the last call, in order; the first frame is among them.
  std::vector<SFrameResult> takeResults();
  /// True once no more results will come.
  bool isFinished() const { return finished_; }
  bool wasCancelled() const { return cancelled_; }

  // After isFinished: what came of it.

  /// Empty when every frame was tracked; else why not, naming the frame.
  const std::string& failure() const { return failure_; }
  const std::map<int, SPointSummary>& summary() const { return summary_; }
  /// Points that were left out because their patch has no texture.
  const std::vector<int>& withoutTexture() const { return withoutTexture_; }

 private:
  void body();
  void trackShot();
  EFrameForm form() const;
  void trackFirstFrame(CShotTracker& tracker);
  bool trackFrame(CShotTracker& tracker, int frame);
  void add(SFrameResult result);

  CFrameStore& store_;
  const STrackSettings settings_;
  const std::map<int, SPoint2> points_;
  const int in_;
  const int out_;
  std::atomic<bool> cancelled_{false};
  std::atomic<bool> finished_{false};  // publishes the three below
  std::string failure_;
  std::map<int, SPointSummary> summary_;
  std::vector<int> withoutTexture_;
  std::mutex mutex_;
  std::vector<SFrameResult> results_;  // guarded by mutex_
  std::thread thread_;                 // last: starts when the rest stands
};
