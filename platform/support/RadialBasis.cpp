#include <algorithm>
#include <cmath>
#include <limits>

#include "support/Numerics.h"

namespace {

// Distances up to this one share one logarithm, so that ln r stays bounded as r goes to 0.
constexpr double SMALLEST_DISTANCE = 1e-29;

float toFiniteFloat(double value) {
  constexpr double largest = std::numeric_limits<float>::max();
  return static_cast<float>(std::clamp(value, -largest, largest));
}

// In double: the square of any float difference is representable there.
double distance(float x0, float y0, float x1, float y1) {
  const double dx = static_cast<double>(x0) - x1;
  const double dy = static_cast<double>(y0) - y1;
  return std::sqrt(dx * dx + dy * dy);
}

}  // namespace

float UEuclidean(float x0, float y0, float x1, float y1) {
  return toFiniteFloat(distance(x0, y0, x1, y1));
}

float ULogrithmic(float x0, float y0, float x1, float y1) {
  const double r = distance(x0, y0, x1, y1);
  if (r == 0.0) return 0.0F;
  const double bounded = std::max(r, SMALLEST_DISTANCE);
  return toFiniteFloat(std::log(bounded) * bounded);
}

float UThinPlate(float x0, float y0, float x1, float y1) {
  const double r = distance(x0, y0, x1, y1);
  if (r == 0.0) return 0.0F;
  const double bounded = std::max(r, SMALLEST_DISTANCE);
  return toFiniteFloat(std::log(bounded) * (bounded * bounded));
}

float UIdenity(float, float, float, float) {
  return 0.0F;
}
