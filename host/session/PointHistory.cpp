#include "session/PointHistory.h"

#include <utility>

std::size_t SPointsState::entryCount() const {
  std::size_t count = 0;
  for (const auto& [frame, points] : frames) count += static_cast<std::size_t>(points.Count());
  return count;
}

void CPointHistory::record(const std::string& text, State before) {
  undone_.clear();
  const std::size_t entries = before->entryCount();
  done_.push_back({text, std::move(before), entries});
  dropOldest();
}

CPointHistory::State CPointHistory::undo(State now) {
  return step(done_, undone_, std::move(now));
}

CPointHistory::State CPointHistory::redo(State now) {
  return step(undone_, done_, std::move(now));
}

CPointHistory::State CPointHistory::step(Steps& from, Steps& to, State now) {
  SStep taken = std::move(from.back());
  from.pop_back();
  const std::size_t entries = now->entryCount();
  to.push_back({std::move(taken.text), std::move(now), entries});
  dropOldest();
  return taken.state;
}

void CPointHistory::clear() {
  done_.clear();
  undone_.clear();
}

void CPointHistory::dropOldest() {
  std::size_t entries = 0;
  for (const Steps* steps : {&done_, &undone_})
    for (const SStep& step : *steps) entries += step.entries;
  while (entries > mostEntries_ || done_.size() + undone_.size() > MOST_STEPS) {
    Steps& oldest = done_.empty() ? undone_ : done_;
    entries -= oldest.front().entries;
    oldest.pop_front();
  }
}
