#include "session/ClipCopy.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace {

class CCopying {
 public:
  CCopying(IClipReader& reader, IClipWriter& writer, int first, int end,
           const SJobObserver& observer)
      : reader_(reader), writer_(writer), observer_(observer), next_(first), end_(end) {}

  void run(int threads) {
    std::vector<std::thread> helpers;
    for (int i = 1; i < threads; ++i) helpers.emplace_back([this] { work(); });
    work();
    for (std::thread& helper : helpers) helper.join();
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  void work() {
    try {
      std::vector<std::uint16_t> samples(reader_.info().format.getBytesPerField() / 2);
      for (int frame = next_++; frame < end_; frame = next_++) copy(frame, samples.data());
    } catch (...) {
      std::lock_guard<std::mutex> lock(mutex_);
      if (!failure_) failure_ = std::current_exception();
      next_ = end_;
    }
  }
  void copy(int frame, std::uint16_t* samples) {
    if (observer_.isInterrupted()) throw CInterrupted();
    reader_.readFrame(frame, samples);
    writer_.writeFrame(frame, samples);
    if (observer_.monitor) observer_.monitor->BumpProgress(1);
  }

  IClipReader& reader_;
  IClipWriter& writer_;
  const SJobObserver& observer_;
  std::atomic<int> next_;
  const int end_;
  std::mutex mutex_;
  std::exception_ptr failure_;  // guarded by mutex_ while threads run
};

}  // namespace

void CopyClip(IClipReader& reader, IClipWriter& writer, int first, int end, int threads,
              const std::string& stage, const SJobObserver& observer) {
  if (observer.monitor) {
    observer.monitor->SetStatusMessage(stage);
    observer.monitor->SetFrameCount(end - first, 1);
    observer.monitor->StartProgress();
  }
  const bool parallel = reader.isParallel() && writer.isParallel();
  CCopying(reader, writer, first, end, observer).run(parallel ? std::max(1, threads) : 1);
  writer.finish();
  if (observer.monitor) observer.monitor->StopProgress(true);
}
