#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

/// Threads in the shape that the tool framework works with: a function, an argument block that the
/// spawner may reuse as soon as the spawn returns, and a handle that the new thread registers with.

struct SBThread;

/// Registered by the thread itself. Opaque.
using BThreadHandle = SBThread*;

/// Body of a spawned thread: receives the spawner's block and its own handle.
using BThreadFunction = void (*)(void* argument, BThreadHandle self);

/// Starts `function(argument, handle)` on a new thread that nobody joins by hand. Returns the
/// handle, or null when no thread could be started. Returns only after the new thread has called
/// `BThreadBegin` (or ended without it), so whatever the thread copied from `argument` before that
/// call is safe and the block may be reused. An exception that leaves `function` ends the thread
/// with a trace line. THREAD: any.
BThreadHandle BThreadSpawn(BThreadFunction function, void* argument);

/// Called by the new thread after copying its argument; releases the spawner. 0 on success, -1 for
/// a null handle.
int BThreadBegin(BThreadHandle self);

/// Called by the thread as its last act; the handle is void afterwards. 0 on success, -1 for a null
/// handle.
int BThreadEnd(BThreadHandle self);

/// Blocks until every spawned thread has ended, its last instruction included. Called before a
/// library that holds thread functions is unloaded, and by tests; never by a spawned thread.
void BThreadWaitForAll();

/// Joins a known number of workers: SetCount(n), n times ReleaseOne, Wait returns.
class CCountingWait {
 public:
  void SetCount(int count);
  void ReleaseOne();
  void Wait();

 private:
  std::mutex mutex_;
  std::condition_variable released_;
  int count_ = 0;
};

/// A plain lock whose holder may name itself; the tag is kept for a debugger and for traces.
class CThreadLock {
 public:
  void Lock(const char* tag = "");
  void UnLock();

 private:
  std::mutex mutex_;
  const char* tag_ = "";
};

/// Scoped holder of a CThreadLock.
class CAutoThreadLock {
 public:
  explicit CAutoThreadLock(CThreadLock& lock, const char* tag = "") : lock_(lock) {
    lock_.Lock(tag);
  }
  ~CAutoThreadLock() { lock_.UnLock(); }
  CAutoThreadLock(const CAutoThreadLock&) = delete;
  CAutoThreadLock& operator=(const CAutoThreadLock&) = delete;

 private:
  CThreadLock& lock_;
};

/// Manual-reset event.
class CThreadEvent {
 public:
  void Set();
  void Reset();
  bool IsSet();
  void Wait();

 private:
  std::mutex mutex_;
  std::condition_variable set_;
  bool isSet_ = false;
};

/// Cores this process may use; at least 1.
int AvailableProcessorCoreCount();
/// Makes AvailableProcessorCoreCount answer `count` from now on: a host's own choice of how many
/// threads shall work. 0 goes back to counting.
void SetAvailableProcessorCoreCount(int count);

/// Monotonic time counter, microseconds.
std::int64_t qtxGetUST();

void QTXmillisleep(int milliseconds);
