#include "setups/WriterEdge.h"

#include <algorithm>

CWriterEdge::CWriterEdge(int limit) {
  queue().raiseLimit(std::max(1, limit));
}

CWriterEdge::~CWriterEdge() {
  endThreads();
}

void CWriterEdge::endThreads() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    quit_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
  threads_.clear();
}

void CWriterEdge::open(IClipWriter* writer, int threads, int onlyFrame) {
  endThreads();
  quit_ = false;
  writer_ = writer;
  onlyFrame_ = onlyFrame;
  written_.clear();
  failure_.clear();
  const int count = writer && writer->isParallel() ? std::max(1, threads) : 1;
  for (int i = 0; i < count; ++i) threads_.emplace_back([this] { writerThread(); });
}

void CWriterEdge::onFramePut() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    ++queued_;
  }
  changed_.notify_all();
}

// Without a writer nothing is worth the wait.
void CWriterEdge::onFlush() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!writer_) return;
  }
  drain();
}

void CWriterEdge::drain() {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait(lock, [this] { return threads_.empty() || (queued_ == 0 && writing_ == 0); });
}

int CWriterEdge::framesWritten() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<int>(written_.size());
}

int CWriterEdge::firstUnwritten(int first, int end) const {
  std::lock_guard<std::mutex> lock(mutex_);
  while (first < end && written_.count(first) != 0) ++first;
  return first;
}

std::string CWriterEdge::failure() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return failure_;
}

bool CWriterEdge::isWanted(const CToolFrameBuffer& frame, const IClipWriter& writer) const {
  if (frame.isEndOfMaterial()) return false;
  std::lock_guard<std::mutex> lock(mutex_);
  if (onlyFrame_ != EVERY_FRAME && onlyFrame_ != frame.frameIndex()) return false;
  return writer.isParallel() || written_.count(frame.frameIndex()) == 0;
}

void CWriterEdge::write(const CToolFrameBuffer& frame, IClipWriter* writer) {
  std::string failure;
  try {
    writer->writeFrame(frame.frameIndex(), frame.samples());
  } catch (const std::exception& error) {
    failure = error.what();
  }
  std::lock_guard<std::mutex> lock(mutex_);
  if (failure.empty())
    written_.insert(frame.frameIndex());
  else if (failure_.empty())
    failure_ = failure;
}

void CWriterEdge::writerThread() {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return quit_ || queued_ > 0; });
    if (quit_) return;
    --queued_;
    ++writing_;
    IClipWriter* writer = failure_.empty() ? writer_ : nullptr;
    lock.unlock();
    {
      // A flush may have emptied the queue since the count was taken.
      const std::unique_ptr<CToolFrameBuffer> frame(queue().takeOldest());
      if (frame && writer && isWanted(*frame, *writer)) write(*frame, writer);
    }
    lock.lock();
    --writing_;
    changed_.notify_all();
  }
}
