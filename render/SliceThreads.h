#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>

#include "support/Threads.h"

/// The threads that render the horizontal bands of a frame. They are kept over a pass: starting
/// eight threads for every frame would cost more than a small frame's work. The last band belongs
/// to the thread that calls Run, so one band needs no thread at all; and so does every band that no
/// thread has taken up by the time that one is done: on a busy machine a woken thread may have to
/// wait for longer than a band takes.
/// THREAD: Start, Stop and Run from one thread.
class CSliceThreads {
 public:
  static constexpr int MOST_SLICES = 8;
  using SliceFunction = std::function<void(int slice)>;

  CSliceThreads() = default;
  ~CSliceThreads() { Stop(); }
  CSliceThreads(const CSliceThreads&) = delete;
  CSliceThreads& operator=(const CSliceThreads&) = delete;

  /// `slices` 1 to MOST_SLICES. Threads that cannot be started are done without.
  void Start(int slices);
  /// Returns when no thread of this object is left in it.
  void Stop();
  int slices() const { return slices_; }

  /// Calls work(0) to work(slices - 1), at the same time, and waits for all. False when one threw:
  /// the frame is not whole.
  bool Run(const SliceFunction& work);

 private:
  struct SSliceThread {
    CSliceThreads* owner = nullptr;
    int slice = 0;
  };
  friend void StabilizerSliceThreadStart(void* argument, BThreadHandle self);
  void serve(int slice);
  void leave();
  bool takeUp(int slice);
  void doSlice(const SliceFunction& work, int slice);

  int slices_ = 1;
  CCountingWait sliceWait_;
  std::atomic<bool> failed_{false};

  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  std::array<bool, MOST_SLICES> pending_{};  // work that nobody has taken up yet
  const SliceFunction* work_ = nullptr;
  int threadsInside_ = 0;
  bool stop_ = false;
};

/// Body of one band thread; `argument` names owner and band and is copied before it registers.
void StabilizerSliceThreadStart(void* argument, BThreadHandle self);
