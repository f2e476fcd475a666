#pragma once

#include <cstdint>

/// Arithmetic with the same result on every machine: only correctly rounded operations, no
/// mathematical library. Pure functions. THREAD: any.

struct SCosSin {
  double cosine;
  double sine;
};
/// Of an angle in turns (1 = full circle). Error below 1e-15.
SCosSin CosSinOfTurns(double turns);

/// A hash of up to four numbers with every bit depending on every other (the finaliser of
/// Steele, Lea, Flood: Fast Splittable Pseudorandom Number Generators, 2014).
constexpr std::uint64_t MixBits(std::uint64_t x) {
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
  return x ^ (x >> 31);
}
constexpr std::uint64_t HashOf(std::uint64_t a, std::uint64_t b, std::uint64_t c = 0,
                               std::uint64_t d = 0) {
  std::uint64_t hash = MixBits(a + 0x9E3779B97F4A7C15u);
  hash = MixBits(hash + b * 0x9E3779B97F4A7C15u + 1);
  hash = MixBits(hash + c * 0x9E3779B97F4A7C15u + 2);
  return MixBits(hash + d * 0x9E3779B97F4A7C15u + 3);
}

/// Sum of the four 16-bit parts of a hash, centred and scaled to variance 1: normal to the fourth
/// moment's beginning, never beyond 3.47.
constexpr float NormalOf(std::uint64_t hash) {
  const int sum = static_cast<int>((hash & 0xFFFF) + (hash >> 16 & 0xFFFF) + (hash >> 32 & 0xFFFF) +
                                   (hash >> 48));
  return static_cast<float>(sum - 131070) * (1.0f / 37837.0f);
}

/// A stream of random numbers.
class CRandomStream {
 public:
  explicit CRandomStream(std::uint64_t seed) : seed_(seed) {}
  std::uint64_t bits() { return HashOf(seed_, ++count_); }
  /// In [low, high).
  double uniform(double low, double high) {
    return low + (high - low) * (static_cast<double>(bits() >> 11) * 0x1p-53);
  }
  double normal() { return NormalOf(bits()); }

 private:
  std::uint64_t seed_;
  std::uint64_t count_ = 0;
};
