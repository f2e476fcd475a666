#include "frames/FrameStore.h"

#include <algorithm>

CFrameStore::CFrameStore(IClipReader& reader, const SFrameStoreSettings& settings)
    : reader_(reader), settings_(settings), pool_(reader.info().format.getBytesPerField(), 0) {
  const int threads = reader.isParallel() ? std::max(1, settings.threads) : 1;
  for (int i = 0; i < threads; ++i) threads_.emplace_back([this] { readerThread(); });
}

CFrameStore::~CFrameStore() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    quit_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void CFrameStore::start(int first, int end) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    restartLocked(first, end);
  }
  changed_.notify_all();
}

void CFrameStore::stop() {
  std::unique_lock<std::mutex> lock(mutex_);
  restartLocked(0, 0);
  changed_.notify_all();
  changed_.wait(lock, [this] { return decoding_ == 0; });
}

void CFrameStore::restartLocked(int first, int end) {
  ++generation_;
  slots_.clear();
  nextToRead_ = first;
  end_ = end;
}

CToolFrameBuffer* CFrameStore::takeLocked(int frame) {
  auto found = slots_.find(frame);
  if (found == slots_.end()) {
    const bool comes = frame >= nextToRead_ && frame < end_ && mayRead();
    if (!comes) restartLocked(frame, std::max(end_, frame + 1));
    return nullptr;
  }
  if (!found->second.ready) return nullptr;
  const std::exception_ptr error = found->second.error;
  if (error) std::rethrow_exception(error);  // stays: whoever asks again hears it again
  CToolFrameBuffer* taken = found->second.frame.release();
  slots_.erase(found);
  return taken;
}

CToolFrameBuffer* CFrameStore::take(int frame) {
  CToolFrameBuffer* taken = nullptr;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    taken = takeLocked(frame);
  }
  changed_.notify_all();
  return taken;
}

CToolFrameBuffer* CFrameStore::waitFor(int frame, const std::atomic<bool>& cancelled) {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!cancelled) {
    if (CToolFrameBuffer* taken = takeLocked(frame)) {
      changed_.notify_all();
      return taken;
    }
    changed_.notify_all();
    changed_.wait(lock);
  }
  return nullptr;
}

void CFrameStore::wake() {
  // Taking the lock orders the caller's flag before the waiter's next look at it.
  { std::lock_guard<std::mutex> lock(mutex_); }
  changed_.notify_all();
}

void CFrameStore::readLocked(int frame, std::uint16_t* samples) {
  if (reader_.isParallel()) {
    reader_.readFrame(frame, samples);
    return;
  }
  std::lock_guard<std::mutex> lock(readerMutex_);
  reader_.readFrame(frame, samples);
}

void CFrameStore::readNow(int frame, std::uint16_t* samples) {
  readLocked(frame, samples);
}

std::unique_ptr<CToolFrameBuffer> CFrameStore::decode(int frame) {
  auto buffer = std::make_unique<CToolFrameBuffer>(&reader_.info().format, &pool_);
  buffer->setFrameIndex(frame);
  if (!buffer->ensureSamples())
    throw CClipError(info().path + ": frame " + std::to_string(frame) +
                     ": no memory for the frame");
  readLocked(frame, buffer->samples());
  return buffer;
}

bool CFrameStore::mayRead() const {
  // A processor asks for two neighbours at once: with room for one only they would chase each
  // other.
  return nextToRead_ < end_ && static_cast<int>(slots_.size()) < std::max(2, settings_.readAhead);
}

void CFrameStore::keep(std::unique_ptr<CToolFrameBuffer> frame) {
  const std::size_t bytes = info().format.getBytesPerField();
  std::lock_guard<std::mutex> lock(mutex_);
  if ((kept_.size() + 1) * bytes > settings_.keptBytes) return;
  const int index = frame->frameIndex();
  kept_[index] = std::move(frame);
}

/// The next frame, from what is kept or from the clip.
void CFrameStore::readNext(std::unique_lock<std::mutex>& lock) {
  const int frame = nextToRead_++;
  const int generation = generation_;
  SSlot read;
  read.ready = true;
  if (const auto found = kept_.find(frame); found != kept_.end()) {
    read.frame = std::move(found->second);
    kept_.erase(found);
  } else {
    slots_[frame];
    ++decoding_;
    lock.unlock();
    try {
      read.frame = decode(frame);
    } catch (...) {
      read.error = std::current_exception();
    }
    lock.lock();
    --decoding_;
  }
  if (generation == generation_) slots_[frame] = std::move(read);
  changed_.notify_all();
}

void CFrameStore::readerThread() {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return quit_ || mayRead(); });
    if (quit_) return;
    readNext(lock);
  }
}
