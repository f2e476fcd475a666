#include <algorithm>
#include <utility>

#include "toolkit/Application.h"

TTimer::TTimer(int milliseconds, std::function<void()> handler)
    : onTimer(std::move(handler)), application_(*Application()), interval_(milliseconds) {
  const std::lock_guard lock(application_.timerLock_);
  application_.timers_.push_back(this);
}

TTimer::~TTimer() {
  const std::lock_guard lock(application_.timerLock_);
  std::erase(application_.timers_, this);
}

int TTimer::interval() const {
  const std::lock_guard lock(application_.timerLock_);
  return interval_;
}

void TTimer::setInterval(int milliseconds) {
  const std::lock_guard lock(application_.timerLock_);
  if (interval_ == milliseconds) return;
  interval_ = milliseconds;
  dueTime_ = application_.now_ + interval_;
}

bool TTimer::isEnabled() const {
  const std::lock_guard lock(application_.timerLock_);
  return enabled_;
}

void TTimer::setEnabled(bool enabled) {
  const std::lock_guard lock(application_.timerLock_);
  if (enabled_ == enabled) return;
  enabled_ = enabled;
  dueTime_ = application_.now_ + interval_;
}

void TApplication::advanceClock(int milliseconds) {
  const std::int64_t until = now_ + milliseconds;
  while (TTimer* const timer = takeDueTimer(until)) {
    // Of its own: the handler may destroy the timer.
    const std::function<void()> handler = timer->onTimer;
    if (handler) handler();
  }
  // A handler that shows a dialog may have moved the clock further.
  now_ = std::max<std::int64_t>(now_, until);
}

TTimer* TApplication::takeDueTimer(std::int64_t until) {
  const std::lock_guard lock(timerLock_);
  TTimer* next = nullptr;
  for (TTimer* timer : timers_) {
    if (!timer->enabled_ || timer->dueTime_ > until) continue;
    if (next == nullptr || timer->dueTime_ < next->dueTime_) next = timer;
  }
  if (next == nullptr) return nullptr;
  now_ = std::max<std::int64_t>(now_, next->dueTime_);
  next->dueTime_ += next->interval_;
  return next;
}
