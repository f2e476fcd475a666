#include "support/HRTimer.h"

#include "support/Threads.h"

void CHRTimer::Start() {
  startedAt_ = qtxGetUST();
}

double CHRTimer::Read() const {
  return static_cast<double>(qtxGetUST() - startedAt_) / 1000.0;
}
