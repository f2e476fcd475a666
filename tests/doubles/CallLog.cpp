#include "doubles/CallLog.h"

#include <algorithm>
#include <charconv>
#include <utility>

void CCallLog::add(const std::string& call) {
  const std::lock_guard lock(mutex_);
  calls_.push_back(call);
}

int CCallLog::count(const std::string& operation) const {
  const std::lock_guard lock(mutex_);
  return static_cast<int>(
      std::count_if(calls_.begin(), calls_.end(), [&operation](const std::string& call) {
        return call == operation || call.starts_with(operation + " ");
      }));
}

bool CCallLog::contains(const std::string& call) const {
  const std::lock_guard lock(mutex_);
  return std::find(calls_.begin(), calls_.end(), call) != calls_.end();
}

std::vector<std::string> CCallLog::texts() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

std::vector<std::string> CCallLog::take() {
  const std::lock_guard lock(mutex_);
  return std::exchange(calls_, {});
}

std::string CCallLog::word(double value) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}
