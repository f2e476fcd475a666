#include "FrameRates.h"

#include <cmath>
#include <numeric>

SFrameRate FrameRateFromValue(double value) {
  const int whole = static_cast<int>(std::lround(value));
  if (std::abs(value - whole) < 0.0005) return {whole, 1};
  const int companion = static_cast<int>(std::lround(value * 1.001));
  if (std::abs(value - companion / 1.001) < 0.006) return {companion * 1000, 1001};
  const int thousandths = static_cast<int>(std::lround(value * 1000.0));
  const int divisor = std::gcd(thousandths, 1000);
  return {thousandths / divisor, 1000 / divisor};
}

CTimecode AdvanceTimecode(const CTimecode& start, int frames) {
  const int rate = start.framesPerSecond();
  int day = rate * 86400;
  // Drop-frame counting skips 2 (4 at 60) numbers in 54 minutes of every hour.
  if (start.isDropFrame()) day -= 24 * 54 * (rate >= 50 ? 4 : 2);
  const int count = day > 0 ? ((start.frameCount() + frames) % day + day) % day : frames;
  return CTimecode(count, rate, start.isDropFrame());
}

int TimecodeRate(const SFrameRate& rate) {
  return std::max(1, static_cast<int>(std::lround(rate.value())));
}
