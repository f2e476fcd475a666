#include "params/SmoothingScale.h"

#include <algorithm>
#include <cmath>

double SmoothingWeight(int position) {
  if (position <= LEAST_SMOOTHING) return -1.0;
  if (position >= MOST_SMOOTHING) return 0.0;
  return std::pow(10.0, (position - 1) * -0.75);
}

int SmoothingPosition(double weight) {
  if (weight == 0.0) return MOST_SMOOTHING;
  if (!(weight > 0.0)) return LEAST_SMOOTHING;
  const double position = std::trunc(1.5 - 4.0 / 3.0 * std::log10(weight));
  return static_cast<int>(std::clamp<double>(position, LEAST_SMOOTHING, MOST_SMOOTHING));
}
