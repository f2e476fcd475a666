#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

/// Code values of a file and the 16-bit full-range samples inside the system. Every widening is
/// undone exactly by its narrowing; narrowing rounds to the nearest code of the file, so half a
/// code is the largest error of a computed sample. Pure functions. THREAD: any.

/// The 16-bit sample of a code of `bits` bits, 8 to 16: the code's bits, repeated from the top
/// down. 0 becomes 0 and the largest code 65535.
constexpr std::uint16_t WidenCode(unsigned code, int bits) {
  return static_cast<std::uint16_t>((code << (16 - bits)) | (code >> (2 * bits - 16)));
}

/// The nearest code of `bits` bits.
constexpr unsigned NarrowSample(std::uint16_t sample, int bits) {
  const unsigned top = (1u << bits) - 1;
  return (sample * top + 32767u) / 65535u;
}

/// A finite half-precision number that is not negative, as a sample: its bit pattern, times two.
/// The pattern counts the numbers in rising order, so the mapping rises strictly; it is linear
/// within an octave and logarithmic over octaves, so that blending samples blends light within a
/// factor of two linearly and never overshoots. The factor keeps half a step for blended samples.
/// 1.0 becomes 30720, the largest half (65504) 63486.
constexpr std::uint16_t WidenHalf(std::uint16_t bits) {
  return static_cast<std::uint16_t>(bits << 1);
}
/// The nearest half; samples above the largest half's become the largest half.
constexpr std::uint16_t NarrowToHalf(std::uint16_t sample) {
  const unsigned bits = (sample + 1u) >> 1;
  return static_cast<std::uint16_t>(bits > 0x7BFFu ? 0x7BFFu : bits);
}
/// True when the half can be carried: finite and not negative. (Minus zero counts as zero.)
constexpr bool IsCarriedHalf(std::uint16_t bits) {
  return bits < 0x7C00u || bits == 0x8000u;
}

/// Half precision and single precision (IEEE 754 binary16, binary32).
float HalfToFloat(std::uint16_t bits);
/// The half that equals the number exactly; none when there is no such half.
std::optional<std::uint16_t> ExactHalf(float value);

void WidenBytes(const std::uint8_t* codes, std::uint16_t* samples, std::size_t count);
void NarrowToBytes(const std::uint16_t* samples, std::uint8_t* codes, std::size_t count);
/// Rounds each sample to the nearest that a code of `bits` bits has.
void QuantiseSamples(const std::uint16_t* samples, std::uint16_t* rounded, std::size_t count,
                     int bits);
