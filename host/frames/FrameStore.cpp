#include "frames/FrameStore.h"

#include <algorithm>
#include <utility>

CFrameStore::CFrameStore(IClipReader& reader, const SFrameStoreSettings& settings)
    : reader_(reader), settings_(settings), pool_(reader.info().format.getBytesPerField(), 0) {
  for (int i = 0; i < std::max(1, settings.threads); ++i)
    threads_.emplace_back([this] { readerThread(); });
}

CFrameStore::~CFrameStore() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    quit_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void CFrameStore::start(int first, int end, EFrameForm form) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    form_ = form;
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

/// The frame's slot once it is ready; null, and reading goes on there, while it is not.
CFrameStore::SSlot* CFrameStore::findLocked(int frame, bool opened) {
  if ((form_ != EFrameForm::samples) != opened) {
    form_ = opened ? EFrameForm::opened : EFrameForm::samples;
    restartLocked(frame, std::max(end_, frame + 1));
    return nullptr;
  }
  auto found = slots_.find(frame);
  if (found == slots_.end()) {
    const bool comes = frame >= nextToRead_ && frame < end_ && mayRead();
    if (!comes) restartLocked(frame, std::max(end_, frame + 1));
    return nullptr;
  }
  if (!found->second.ready) return nullptr;
  const std::exception_ptr error = found->second.error;
  if (error) std::rethrow_exception(error);  // stays: whoever asks again hears it again
  return &found->second;
}

CToolFrameBuffer* CFrameStore::takeLocked(int frame) {
  SSlot* const slot = findLocked(frame, false);
  if (!slot) return nullptr;
  CToolFrameBuffer* const taken = slot->frame.samples.release();
  slots_.erase(frame);
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

SOpenedFrame CFrameStore::waitForOpened(int frame, const std::atomic<bool>& cancelled) {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!cancelled) {
    if (SSlot* const slot = findLocked(frame, true)) {
      SOpenedFrame opened = std::move(slot->frame);
      slots_.erase(frame);
      changed_.notify_all();
      return opened;
    }
    changed_.notify_all();
    changed_.wait(lock);
  }
  return {};
}

void CFrameStore::wake() {
  // Taking the lock orders the caller's flag before the waiter's next look at it.
  { std::lock_guard<std::mutex> lock(mutex_); }
  changed_.notify_all();
}

std::unique_ptr<IClipFrame> CFrameStore::openNow(int frame) {
  if (reader_.isParallel()) return reader_.openFrame(frame, pool_);
  std::lock_guard<std::mutex> lock(readerMutex_);
  return reader_.openFrame(frame, pool_);
}

void CFrameStore::readNow(int frame, std::uint16_t* samples) {
  if (reader_.isParallel()) return reader_.readFrame(frame, samples);
  std::lock_guard<std::mutex> lock(readerMutex_);
  reader_.readFrame(frame, samples);
}

std::unique_ptr<CToolFrameBuffer> CFrameStore::decode(int frame, const IClipFrame& opened) {
  return samplesOf(frame, &opened);
}

/// `opened`: null where the reader decodes at once, which only a parallel one may do here.
std::unique_ptr<CToolFrameBuffer> CFrameStore::samplesOf(int frame, const IClipFrame* opened) {
  auto buffer = std::make_unique<CToolFrameBuffer>(&reader_.info().format, &pool_);
  buffer->setFrameIndex(frame);
  if (!buffer->ensureSamples())
    throw CClipError(reader_.info().path + ": frame " + std::to_string(frame) +
                     ": no memory for the frame");
  if (opened)
    opened->read(buffer->samples());
  else
    reader_.readFrame(frame, buffer->samples());
  return buffer;
}

bool CFrameStore::mayRead() const {
  // A processor asks for two neighbours at once: with room for one only they would chase each
  // other.
  return nextToRead_ < end_ && static_cast<int>(slots_.size()) < std::max(2, settings_.readAhead);
}

void CFrameStore::keep(int frame, std::unique_ptr<IClipFrame> opened) {
  const std::size_t bytes = opened->bytes();
  std::lock_guard<std::mutex> lock(mutex_);
  // What holds no memory holds a file open.
  if (bytes == 0 || kept_.count(frame) != 0 || keptBytes_ + bytes > settings_.keptBytes) return;
  keptBytes_ += bytes;
  kept_[frame] = std::move(opened);
}

/// Opens the frame of a reader that is not parallel, and lets the next thread have the reader.
std::unique_ptr<IClipFrame> CFrameStore::openInTurn(int frame) {
  const auto done = [this] {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      opening_ = false;
    }
    changed_.notify_all();
  };
  try {
    std::unique_ptr<IClipFrame> opened = openNow(frame);
    done();
    return opened;
  } catch (...) {
    done();
    throw;
  }
}

CFrameStore::SSlot CFrameStore::read(int frame, EFrameForm form, std::unique_ptr<IClipFrame> kept) {
  SSlot slot;
  slot.ready = true;
  try {
    std::unique_ptr<IClipFrame> opened = std::move(kept);
    if (!opened && !reader_.isParallel()) opened = openInTurn(frame);
    if (!opened && form != EFrameForm::samples) opened = openNow(frame);
    if (form == EFrameForm::opened && opened->givesParts())
      opened->fetch();
    else
      slot.frame.samples = samplesOf(frame, opened.get());
    if (form != EFrameForm::samples) slot.frame.clipFrame = std::move(opened);
  } catch (const CClipError&) {
    slot.error = std::current_exception();
  } catch (const std::exception& error) {
    slot.error = std::make_exception_ptr(
        CClipError(reader_.info().path + ": frame " + std::to_string(frame) + ": " + error.what()));
  }
  return slot;
}

/// The next frame, from what is kept or from the clip.
void CFrameStore::readNext(std::unique_lock<std::mutex>& lock) {
  const int frame = nextToRead_++;
  const int generation = generation_;
  const EFrameForm form = form_;
  slots_[frame];
  ++decoding_;
  std::unique_ptr<IClipFrame> kept;
  if (const auto found = kept_.find(frame); found != kept_.end()) {
    kept = std::move(found->second);
    keptBytes_ -= kept->bytes();
    kept_.erase(found);
  } else if (!reader_.isParallel()) {
    opening_ = true;
  }
  lock.unlock();
  SSlot slot = read(frame, form, std::move(kept));
  lock.lock();
  --decoding_;
  if (generation == generation_) slots_[frame] = std::move(slot);
  changed_.notify_all();
}

void CFrameStore::readerThread() {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    // Frames of a reader that is not parallel are opened in order, each by whoever takes its turn.
    changed_.wait(lock, [this] { return quit_ || (mayRead() && !opening_); });
    if (quit_) return;
    readNext(lock);
  }
}
