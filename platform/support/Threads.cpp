#include "support/Threads.h"

#include <sched.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/Trace.h"

struct SBThread {
  BThreadFunction function = nullptr;
  void* argument = nullptr;
  CThreadEvent spawnerMayGo;
  std::thread thread;  // under the registry's lock until it is joined
};

namespace {

std::atomic<int> chosenCoreCount{0};  // 0: as many as the process may use

/// Every thread that has not been joined yet. Threads are joined rather than detached, so that
/// after BThreadWaitForAll not one instruction of theirs is left to run.
struct SThreadRegistry {
  std::mutex mutex;
  std::condition_variable ended;
  std::vector<std::shared_ptr<SBThread>> running;
  std::vector<std::shared_ptr<SBThread>> finished;
};

// Never destroyed: threads may still run while the process leaves main.
SThreadRegistry& registry() {
  static auto* const theRegistry = new SThreadRegistry;
  return *theRegistry;
}

void reportEscape(const char* what) {
  TraceFromHandler(0, "ERROR: BThread: an exception left the thread function: ", what);
}

void callGuarded(SBThread* self) {
  try {
    self->function(self->argument, self);
  } catch (const std::exception& problem) {
    reportEscape(problem.what());
  } catch (...) {
    reportEscape("unknown");
  }
}

void runThread(SBThread* self) {
  callGuarded(self);
  self->spawnerMayGo.Set();

  SThreadRegistry& threads = registry();
  std::lock_guard lock(threads.mutex);
  const auto mine = std::find_if(threads.running.begin(), threads.running.end(),
                                 [self](const auto& entry) { return entry.get() == self; });
  threads.finished.push_back(std::move(*mine));
  threads.running.erase(mine);
  threads.ended.notify_all();
}

void joinAll(std::vector<std::shared_ptr<SBThread>> threads) {
  for (const auto& entry : threads) entry->thread.join();
}

void joinFinished() {
  SThreadRegistry& threads = registry();
  std::vector<std::shared_ptr<SBThread>> finished;
  {
    std::lock_guard lock(threads.mutex);
    finished.swap(threads.finished);
  }
  joinAll(std::move(finished));
}

/// Throws when the system gives no thread or no memory for one; nothing is registered then.
std::shared_ptr<SBThread> startRegistered(BThreadFunction function, void* argument) {
  auto entry = std::make_shared<SBThread>();
  entry->function = function;
  entry->argument = argument;

  SThreadRegistry& threads = registry();
  // Started under the lock: the thread cannot retire before its std::thread object is in place.
  std::lock_guard lock(threads.mutex);
  threads.finished.reserve(threads.finished.size() + threads.running.size() + 1);
  threads.running.push_back(entry);
  try {
    entry->thread = std::thread(runThread, entry.get());
  } catch (...) {
    threads.running.pop_back();
    throw;
  }
  return entry;
}

}  // namespace

BThreadHandle BThreadSpawn(BThreadFunction function, void* argument) {
  if (function == nullptr) return nullptr;
  joinFinished();
  try {
    const std::shared_ptr<SBThread> entry = startRegistered(function, argument);
    entry->spawnerMayGo.Wait();
    return entry.get();
  } catch (const std::exception& problem) {
    // Whoever spawns has other threads at work on its own data: it must not be unwound.
    TraceFromHandler(0, "ERROR: BThread: no thread: ", problem.what());
    return nullptr;
  }
}

int BThreadBegin(BThreadHandle self) {
  if (self == nullptr) return -1;
  self->spawnerMayGo.Set();
  return 0;
}

int BThreadEnd(BThreadHandle self) {
  return BThreadBegin(self);  // a thread that ends without having begun must not hold its spawner
}

void BThreadWaitForAll() {
  SThreadRegistry& threads = registry();
  {
    std::unique_lock lock(threads.mutex);
    threads.ended.wait(lock, [&threads] { return threads.running.empty(); });
  }
  joinFinished();
}

void CCountingWait::SetCount(int count) {
  std::lock_guard lock(mutex_);
  count_ = count;
  if (count_ <= 0) released_.notify_all();
}

void CCountingWait::ReleaseOne() {
  std::lock_guard lock(mutex_);
  // Notified under the lock: the waiter may destroy this object as soon as it can see the count.
  if (--count_ <= 0) released_.notify_all();
}

void CCountingWait::Wait() {
  std::unique_lock lock(mutex_);
  released_.wait(lock, [this] { return count_ <= 0; });
}

void CThreadLock::Lock(const char* tag) {
  mutex_.lock();
  tag_ = tag;
}

void CThreadLock::UnLock() {
  tag_ = "";
  mutex_.unlock();
}

void CThreadEvent::Set() {
  std::lock_guard lock(mutex_);
  isSet_ = true;
  set_.notify_all();
}

void CThreadEvent::Reset() {
  std::lock_guard lock(mutex_);
  isSet_ = false;
}

bool CThreadEvent::IsSet() {
  std::lock_guard lock(mutex_);
  return isSet_;
}

void CThreadEvent::Wait() {
  std::unique_lock lock(mutex_);
  set_.wait(lock, [this] { return isSet_; });
}

void SetAvailableProcessorCoreCount(int count) {
  chosenCoreCount = std::max(0, count);
}

int AvailableProcessorCoreCount() {
  if (const int chosen = chosenCoreCount) return chosen;
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) return std::max(1, CPU_COUNT(&allowed));
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

std::int64_t qtxGetUST() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

void QTXmillisleep(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(std::max(0, milliseconds)));
}
