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
  written_ = 0;
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

void CWriterEdge::drain() {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait(lock, [this] { return threads_.empty() || (queued_ == 0 && writing_ == 0); });
}

int CWriterEdge::framesWritten() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return written_;
}

std::string CWriterEdge::failure() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return failure_;
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
    ++written_;
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
    const int onlyFrame = onlyFrame_;
    lock.unlock();
    {
      // A flush may have emptied the queue since the count was taken.
      const std::unique_ptr<CToolFrameBuffer> frame(queue().takeOldest());
      const bool wanted = frame && !frame->isEndOfMaterial() &&
                          (onlyFrame == EVERY_FRAME || onlyFrame == frame->frameIndex());
      if (wanted && writer) write(*frame, writer);
    }
    lock.lock();
    --writing_;
    changed_.notify_all();
  }
}
