#include "WorkerPool.h"

#include <system_error>

CWorkerPool::CWorkerPool(int threads) {
  for (int i = 1; i < threads; ++i) {
    try {
      threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
      break;
    }
  }
}

CWorkerPool::~CWorkerPool() {
  {
    const std::lock_guard lock(mutex_);
    quit_ = true;
  }
  started_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void CWorkerPool::takeParts(std::unique_lock<std::mutex>& lock) {
  while (next_ < count_) {
    const int mine = next_++;
    const std::function<void(int)>& part = *part_;
    lock.unlock();
    std::exception_ptr failure;
    try {
      part(mine);
    } catch (...) {
      failure = std::current_exception();
    }
    lock.lock();
    if (failure && !failure_) failure_ = failure;
    if (--open_ == 0) finished_.notify_one();
  }
}

void CWorkerPool::run(int count, const std::function<void(int)>& part) {
  if (threads_.empty() || count < 2) {
    for (int i = 0; i < count; ++i) part(i);
    return;
  }
  std::unique_lock lock(mutex_);
  part_ = &part;
  next_ = 0;
  count_ = count;
  open_ = count;
  failure_ = nullptr;
  started_.notify_all();
  takeParts(lock);
  finished_.wait(lock, [this] { return open_ == 0; });
  if (failure_) std::rethrow_exception(failure_);
}

void CWorkerPool::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    started_.wait(lock, [this] { return quit_ || next_ < count_; });
    if (quit_) return;
    takeParts(lock);
  }
}
