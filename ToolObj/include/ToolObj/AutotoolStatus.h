#pragma once

#include <deque>
#include <string>
#include <vector>

#include "support/Threads.h"

class CToolParameters;

/// One command to a processor: RUN starts or resumes, EXIT ends its thread. With NEW_PARAMETERS
/// `data` is a heap object that becomes the processor's.
struct CAutotoolCommand {
  enum ECommand { NONE, STOP, RUN, PAUSE, NEW_PARAMETERS, EXIT };
  int command = NONE;
  CToolParameters* data = nullptr;
};

/// One reported status of a processor. `errorCode` is the failing operation's non-zero result and
/// belongs to ERROR_STATUS; frame indices are -1 when unset.
struct CAutotoolStatus {
  enum EStatus {
    NONE,
    STOPPED,
    RUNNING,
    PAUSED,
    END_OF_MATERIAL,
    ERROR_STATUS,
    THREAD_STARTED,
    THREAD_ENDED
  };
  int status = NONE;
  int errorCode = 0;
  int frameA = -1;
  int frameB = -1;
};

/// First-in-first-out queue between threads. When a limit is set and reached, the oldest entry is
/// dropped and counted. The event is set while the queue holds something. THREAD: any.
///
/// A reader that took an entry owns the whole queue if it knows that no other will be added: `Add`
/// touches nothing after the entry can be taken, so the reader may then delete the queue.
template <typename T>
class AutotoolQueue {
 public:
  static constexpr int QUEUE_EMPTY = -3100;

  /// `limit` 0: unlimited.
  AutotoolQueue(std::string name, unsigned limit);
  void Add(const T& entry);
  /// 0 and the oldest entry, or QUEUE_EMPTY (`entry` is left as it is).
  int Take(T& entry);
  /// For waiting: a woken reader takes until the queue is empty.
  CThreadEvent& Event() { return event_; }
  int DroppedCount() const;
  /// A copy of what waits, oldest first.
  std::vector<T> Waiting() const;
  const std::string& Name() const { return name_; }

 private:
  mutable CThreadLock lock_;  // guards the count, the entries and the event's agreement with them
  int droppedCount_ = 0;
  const std::string name_;
  std::deque<T> entries_;
  const unsigned limit_;
  CThreadEvent event_;
};

extern template class AutotoolQueue<CAutotoolCommand>;
extern template class AutotoolQueue<CAutotoolStatus>;

using AutotoolCommandQueue = AutotoolQueue<CAutotoolCommand>;
using AutotoolStatusQueue = AutotoolQueue<CAutotoolStatus>;
