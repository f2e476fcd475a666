#pragma once

#include <cstdint>

/// Stop watch. THREAD: one at a time.
class CHRTimer {
 public:
  CHRTimer() { Start(); }
  void Start();
  /// Milliseconds since the last Start.
  double Read() const;

 private:
  std::int64_t startedAt_ = 0;  // microseconds of qtxGetUST
};
