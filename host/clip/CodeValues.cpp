#include "CodeValues.h"

#include <cmath>
#include <limits>

#include "support/TargetClones.h"

namespace {

template <int Bits>
void Quantise(const std::uint16_t* samples, std::uint16_t* rounded, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    rounded[i] = WidenCode(NarrowSample(samples[i], Bits), Bits);
}

}  // namespace

float HalfToFloat(std::uint16_t bits) {
  const int exponent = bits >> 10 & 31, fraction = bits & 0x3FF;
  float magnitude = exponent == 0 ? std::ldexp(static_cast<float>(fraction), -24)
                                  : std::ldexp(static_cast<float>(fraction | 0x400), exponent - 25);
  if (exponent == 31)
    magnitude = fraction == 0 ? std::numeric_limits<float>::infinity()
                              : std::numeric_limits<float>::quiet_NaN();
  return (bits & 0x8000) != 0 ? -magnitude : magnitude;
}

std::optional<std::uint16_t> ExactHalf(float value) {
  const unsigned sign = std::signbit(value) ? 0x8000u : 0u;
  const float magnitude = std::fabs(value);
  if (!(magnitude <= 65504.0f)) return std::nullopt;
  int exponent = 0;
  std::frexp(magnitude, &exponent);
  // Numbers below 2^-14 share the step 2^-24; above, a half has 11 significant bits.
  const int step = magnitude < 0x1p-14f ? -24 : exponent - 11;
  const float steps = std::ldexp(magnitude, -step);
  if (steps != std::floor(steps)) return std::nullopt;
  const unsigned count = static_cast<unsigned>(steps);
  if (step == -24 && count < 0x400) return static_cast<std::uint16_t>(sign | count);
  return static_cast<std::uint16_t>(sign |
                                    ((static_cast<unsigned>(step + 25) << 10) + count - 0x400));
}

STAB_CLONES void WidenBytes(const std::uint8_t* codes, std::uint16_t* samples, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) samples[i] = WidenCode(codes[i], 8);
}

STAB_CLONES void NarrowToBytes(const std::uint16_t* samples, std::uint8_t* codes,
                               std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    codes[i] = static_cast<std::uint8_t>(NarrowSample(samples[i], 8));
}

void QuantiseSamples(const std::uint16_t* samples, std::uint16_t* rounded, std::size_t count,
                     int bits) {
  switch (bits) {
    case 8: return Quantise<8>(samples, rounded, count);
    case 10: return Quantise<10>(samples, rounded, count);
    case 12: return Quantise<12>(samples, rounded, count);
    default: break;
  }
  for (std::size_t i = 0; i < count; ++i) rounded[i] = samples[i];
}
