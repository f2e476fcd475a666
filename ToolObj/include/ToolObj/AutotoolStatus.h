#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "support/Threads.h"

class CToolParameters;

/// One command to a processor. With NEW_PARAMETERS `data` is a heap object that becomes the
/// processor's.
struct CAutotoolCommand {
  enum ECommand { NONE, STOP, RUN, PAUSE, NEW_PARAMETERS, EXIT };
  int command = NONE;
  CToolParameters* data = nullptr;
};

/// One reported status of a processor.
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
/// dropped and counted. The event is set while the queue holds something.
template <typename T>
class AutotoolQueue {
 public:
  static constexpr int QUEUE_EMPTY = -3100;

  /// `limit` 0: unlimited.
  AutotoolQueue(std::string name, unsigned limit);
  void Add(const T& entry);
  /// 0 and the oldest entry, or QUEUE_EMPTY.
  int Take(T& entry);
  CThreadEvent& Event() { return event_; }
  int DroppedCount() const { return droppedCount_; }

 private:
  int droppedCount_ = 0;
  std::string name_;
  std::deque<T> entries_;
  unsigned limit_;
  CThreadLock lock_;
  CThreadEvent event_;
};

using AutotoolCommandQueue = AutotoolQueue<CAutotoolCommand>;
using AutotoolStatusQueue = AutotoolQueue<CAutotoolStatus>;
