#include "ExactMath.h"

#include <cmath>

SCosSin CosSinOfTurns(double turns) {
  const double quarters = std::floor(turns * 4.0 + 0.5);
  const double x = (turns * 4.0 - quarters) * 1.57079632679489661923;  // |x| <= pi / 4
  const double x2 = x * x;
  // Taylor's series, nested; the first term left out is below 1e-17.
  double sine = 1.0, cosine = 1.0;
  for (int n = 16; n >= 2; n -= 2) {
    sine = 1.0 - sine * x2 / (n * (n + 1.0));
    cosine = 1.0 - cosine * x2 / (n * (n - 1.0));
  }
  sine *= x;
  switch (static_cast<int>(quarters - 4.0 * std::floor(quarters / 4.0))) {
    case 0: return {cosine, sine};
    case 1: return {-sine, cosine};
    case 2: return {-cosine, -sine};
    default: return {sine, -cosine};
  }
}
