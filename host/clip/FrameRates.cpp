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

std::optional<CTimecode> DecodeTimecode(std::uint32_t code, int rate, bool flags) {
  const auto decimal = [](std::uint32_t byte) { return (byte >> 4) * 10 + (byte & 15); };
  const unsigned frames = decimal(code & (flags ? 0x3F : 0xFF));
  const unsigned seconds = decimal(code >> 8 & 0x7F), minutes = decimal(code >> 16 & 0x7F);
  const unsigned hours = decimal(code >> 24 & 0x3F);
  if (frames >= static_cast<unsigned>(rate) || seconds > 59 || minutes > 59 || hours > 23)
    return std::nullopt;
  const bool drop = flags && (code & 0x40) != 0 && (rate == 30 || rate == 60);
  char text[24];  // what the numbers might need, for all the compiler knows
  std::snprintf(text, sizeof text, "%02u:%02u:%02u%c%02u", hours, minutes, seconds,
                drop ? ';' : ':', frames);
  CTimecode timecode(0, rate, drop);
  if (!timecode.fromText(text)) return std::nullopt;
  return timecode;
}
