#include <cmath>

#include "support/Numerics.h"

double BiLinear(double x, double y, double topLeft, double topRight, double bottomLeft,
                double bottomRight) {
  const double fx = x - std::trunc(x);
  const double fy = y - std::trunc(y);
  return topLeft + (topRight - topLeft) * fx + (bottomLeft - topLeft) * fy +
         (topLeft - topRight - bottomLeft + bottomRight) * fx * fy;
}
