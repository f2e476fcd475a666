#include "SliceThreads.h"

#include <algorithm>
#include <utility>

#include "support/Trace.h"

void StabilizerSliceThreadStart(void* argument, BThreadHandle self) {
  const auto thread = *static_cast<const CSliceThreads::SSliceThread*>(argument);
  if (BThreadBegin(self) != 0) {
    TraceAt(0, "StabilizerSliceThreadStart: BThreadBegin failed");
    thread.owner->leave();
    return;
  }
  thread.owner->serve(thread.slice);
  thread.owner->leave();
  if (BThreadEnd(self) != 0) TraceAt(0, "StabilizerSliceThreadStart: BThreadEnd failed");
}

void CSliceThreads::Start(int slices) {
  Stop();
  slices_ = std::clamp(slices, 1, MOST_SLICES);
  for (int slice = 0; slice < slices_ - 1; ++slice) {
    SSliceThread thread{this, slice};
    {
      const std::lock_guard lock(mutex_);
      stop_ = false;
      ++threadsInside_;
    }
    if (!BThreadSpawn(&StabilizerSliceThreadStart, &thread)) leave();
  }
}

void CSliceThreads::Stop() {
  std::unique_lock lock(mutex_);
  stop_ = true;
  changed_.notify_all();
  changed_.wait(lock, [this] { return threadsInside_ == 0; });
  slices_ = 1;
}

bool CSliceThreads::Run(const SliceFunction& work) {
  failed_ = false;
  const int others = slices_ - 1;
  sliceWait_.SetCount(others);
  {
    const std::lock_guard lock(mutex_);
    work_ = &work;
    std::fill_n(pending_.begin(), others, true);
  }
  changed_.notify_all();

  doSlice(work, others);
  for (int slice = 0; slice < others; ++slice) {
    if (!takeUp(slice)) continue;
    doSlice(work, slice);
    sliceWait_.ReleaseOne();
  }
  sliceWait_.Wait();
  return !failed_;
}

bool CSliceThreads::takeUp(int slice) {
  const std::lock_guard lock(mutex_);
  return std::exchange(pending_[static_cast<std::size_t>(slice)], false);
}

void CSliceThreads::serve(int slice) {
  bool& pending = pending_[static_cast<std::size_t>(slice)];
  for (;;) {
    const SliceFunction* work = nullptr;
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [&] { return stop_ || pending; });
      if (!pending) return;
      pending = false;
      work = work_;
    }
    doSlice(*work, slice);
    sliceWait_.ReleaseOne();
  }
}

void CSliceThreads::leave() {
  const std::lock_guard lock(mutex_);
  --threadsInside_;
  changed_.notify_all();  // under the lock: nobody destroys this object before we are out of it
}

void CSliceThreads::doSlice(const SliceFunction& work, int slice) {
  try {
    work(slice);
  } catch (...) {
    failed_ = true;
    TraceFromHandler(0, "StabilizerSliceThreadStart: Stabilizer Slice created major error");
  }
}
