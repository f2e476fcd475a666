#include "SliceThreads.h"

#include <algorithm>

#include "support/Trace.h"

void StabilizerSliceThreadStart(void* argument, BThreadHandle self) {
  const auto thread = *static_cast<const CSliceThreads::SSliceThread*>(argument);
  if (BThreadBegin(self) != 0) {
    TraceAt(0, "StabilizerSliceThreadStart: BThreadBegin failed");
    thread.owner->leave(thread.slice);
    return;
  }
  thread.owner->serve(thread.slice);
  thread.owner->leave(thread.slice);
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
      states_[static_cast<std::size_t>(slice)] = {true, false};
      ++threadsInside_;
    }
    if (!BThreadSpawn(&StabilizerSliceThreadStart, &thread)) leave(slice);
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
  sliceWait_.SetCount(slices_ - 1);
  std::array<bool, MOST_SLICES> unserved{};
  {
    const std::lock_guard lock(mutex_);
    work_ = &work;
    for (std::size_t i = 0; i + 1 < static_cast<std::size_t>(slices_); ++i) {
      states_[i].pending = states_[i].served;
      unserved[i] = !states_[i].served;
    }
  }
  changed_.notify_all();

  doSlice(work, slices_ - 1);
  for (int slice = 0; slice < slices_ - 1; ++slice) {
    if (!unserved[static_cast<std::size_t>(slice)]) continue;
    doSlice(work, slice);
    sliceWait_.ReleaseOne();
  }
  sliceWait_.Wait();
  return !failed_;
}

void CSliceThreads::serve(int slice) {
  SState& state = states_[static_cast<std::size_t>(slice)];
  for (;;) {
    const SliceFunction* work = nullptr;
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [&] { return stop_ || state.pending; });
      if (!state.pending) return;
      state.pending = false;
      work = work_;
    }
    doSlice(*work, slice);
    sliceWait_.ReleaseOne();
  }
}

/// A thread that goes before it took up its work fails the frame, but never blocks it.
void CSliceThreads::leave(int slice) {
  SState& state = states_[static_cast<std::size_t>(slice)];
  bool wasPending = false;
  {
    const std::lock_guard lock(mutex_);
    wasPending = state.pending;
    state = {};
  }
  if (wasPending) {
    failed_ = true;
    sliceWait_.ReleaseOne();
  }
  const std::lock_guard lock(mutex_);
  --threadsInside_;
  changed_.notify_all();  // under the lock: nobody destroys this object before we are out of it
}

void CSliceThreads::doSlice(const SliceFunction& work, int slice) {
  try {
    work(slice);
  } catch (...) {
    TraceAt(0, "StabilizerSliceThreadStart: Stabilizer Slice created major error");
    failed_ = true;
  }
}
