#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

/// Threads that are kept between jobs. A job is a number of independent parts; which thread does
/// which part is left open, so a part must not depend on another.
class CWorkerPool {
 public:
  /// Uses the calling thread and threads - 1 others; fewer when no more can be started.
  explicit CWorkerPool(int threads);
  ~CWorkerPool();
  CWorkerPool(const CWorkerPool&) = delete;
  CWorkerPool& operator=(const CWorkerPool&) = delete;

  /// Calls part(0) .. part(count - 1), each once; returns when all have. The first
  /// exception of a part is passed on then.
  /// THREAD: one call at a time.
  void run(int count, const std::function<void(int)>& part);

 private:
  void work();
  /// Takes parts until none is left. REQUIRES: lock holds mutex_.
  void takeParts(std::unique_lock<std::mutex>& lock);

  std::mutex mutex_;
  std::condition_variable started_;
  std::condition_variable finished_;
  // All below: under mutex_.
  const std::function<void(int)>* part_ = nullptr;
  int next_ = 0;
  int count_ = 0;
  int open_ = 0;
  bool quit_ = false;
  std::exception_ptr failure_;

  std::vector<std::thread> threads_;
};
