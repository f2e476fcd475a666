#include "ToolObj/AutotoolStatus.h"

#include <utility>

template <typename T>
AutotoolQueue<T>::AutotoolQueue(std::string name, unsigned limit)
    : name_(std::move(name)), limit_(limit) {}

template <typename T>
void AutotoolQueue<T>::Add(const T& entry) {
  const CAutoThreadLock lock(lock_, "AutotoolQueue::Add");
  if (limit_ != 0 && entries_.size() >= limit_) {
    entries_.pop_front();
    ++droppedCount_;
  }
  // Signalled inside the lock: whoever takes the last entry may delete the queue at once.
  event_.Set();
  entries_.push_back(entry);
}

template <typename T>
int AutotoolQueue<T>::Take(T& entry) {
  const CAutoThreadLock lock(lock_, "AutotoolQueue::Take");
  if (entries_.empty()) return QUEUE_EMPTY;
  entry = entries_.front();
  entries_.pop_front();
  if (entries_.empty()) event_.Reset();
  return 0;
}

template <typename T>
int AutotoolQueue<T>::DroppedCount() const {
  const CAutoThreadLock lock(lock_, "AutotoolQueue::DroppedCount");
  return droppedCount_;
}

template <typename T>
std::vector<T> AutotoolQueue<T>::Waiting() const {
  const CAutoThreadLock lock(lock_, "AutotoolQueue::Waiting");
  return {entries_.begin(), entries_.end()};
}

template class AutotoolQueue<CAutotoolCommand>;
template class AutotoolQueue<CAutotoolStatus>;
