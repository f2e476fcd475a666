#include <cmath>
#include <mutex>
#include <random>

#include "support/Numerics.h"

namespace {

// Natural logarithm from plain arithmetic: the mathematical library may round its own differently
// from one system to the next. ln(m 2^e) = e ln 2 + 2 atanh((m - 1) / (m + 1)) with m between
// sqrt(1/2) and sqrt(2), where 12 terms of the series reach double precision.
double portableLog(double value) {
  constexpr double ln2 = 0.693147180559945309417;
  constexpr double rootHalf = 0.707106781186547524401;
  int exponent = 0;
  double mantissa = std::frexp(value, &exponent);
  if (mantissa < rootHalf) {
    mantissa *= 2.0;
    --exponent;
  }
  const double t = (mantissa - 1.0) / (mantissa + 1.0);
  const double square = t * t;
  double sum = 0.0;
  for (int k = 12; k >= 0; --k) sum = sum * square + 1.0 / (2 * k + 1);
  return exponent * ln2 + 2.0 * t * sum;
}

class CNormalGenerator {
 public:
  void seed(std::uint64_t value) {
    const std::lock_guard guard(mutex_);
    engine_.seed(value);
    hasSpare_ = false;
  }

  double next() {
    const std::lock_guard guard(mutex_);
    if (hasSpare_) {
      hasSpare_ = false;
      return spare_;
    }
    double u = 0.0;
    double v = 0.0;
    double s = 0.0;
    do {
      u = uniform();
      v = uniform();
      s = u * u + v * v;
    } while (s >= 1.0 || s == 0.0);
    const double factor = std::sqrt(-2.0 * portableLog(s) / s);
    spare_ = v * factor;
    hasSpare_ = true;
    return u * factor;
  }

 private:
  // In [-1, 1), from the upper 53 bits.
  double uniform() { return static_cast<double>(engine_() >> 11) * 0x1.0p-52 - 1.0; }

  std::mutex mutex_;
  std::mt19937_64 engine_;  // guarded by mutex_, as are the two below
  double spare_ = 0.0;
  bool hasSpare_ = false;
};

CNormalGenerator& generator() {
  static CNormalGenerator instance;
  return instance;
}

}  // namespace

void setRandSeed(std::uint64_t seed) {
  generator().seed(seed);
}

double getRandNormal() {
  return generator().next();
}
