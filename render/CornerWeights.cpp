#include "CornerWeights.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

constexpr int HIGH_BITS = 15;
constexpr int MIDDLE_BITS_OF_TWO = 14;
constexpr int MIDDLE_BITS_OF_THREE = 13;
constexpr int MOST_EXACT_BITS = 35;

/// numerator / 2^bits, in lowest terms.
struct SFraction {
  std::int64_t numerator = 0;
  int bits = 0;

  std::int64_t rest() const { return (std::int64_t{1} << bits) - numerator; }
};

/// A fraction of more than MOST_EXACT_BITS is cut off behind one bit more: it is too fine, whatever
/// the other one is.
SFraction fractionOf(float value) {
  SFraction fraction;
  float scaled = value;
  while (scaled != std::floor(scaled) && fraction.bits <= MOST_EXACT_BITS) {
    scaled *= 2.0F;
    ++fraction.bits;
  }
  fraction.numerator = static_cast<std::int64_t>(scaled);
  return fraction;
}

int pairOf(std::int64_t own, std::int64_t next) {
  return static_cast<int>(static_cast<std::uint32_t>(own) | static_cast<std::uint32_t>(next) << 16);
}

}  // namespace

SCornerWeights FindCornerWeights(float fractionX, float fractionY) {
  const SFraction fx = fractionOf(fractionX);
  const SFraction fy = fractionOf(fractionY);
  const int bits = fx.bits + fy.bits;
  SCornerWeights weights;
  if (bits == 0) return weights;
  if (bits > MOST_EXACT_BITS) {
    weights.form = SCornerWeights::EForm::fine;
    return weights;
  }
  const bool two = bits <= HIGH_BITS + MIDDLE_BITS_OF_TWO;
  weights.form = two ? SCornerWeights::EForm::twoParts : SCornerWeights::EForm::threeParts;
  weights.highShift = std::min(bits, HIGH_BITS);
  weights.middleShift =
      std::min(bits - weights.highShift, two ? MIDDLE_BITS_OF_TWO : MIDDLE_BITS_OF_THREE);
  weights.lowShift = bits - weights.highShift - weights.middleShift;

  const std::int64_t rows[2] = {fy.rest(), fy.numerator};
  for (int i = 0; i < 2; ++i) {
    const std::int64_t own = fx.rest() * rows[i];
    const std::int64_t next = fx.numerator * rows[i];
    const auto part = [&](int shift, int width) {
      const std::int64_t mask = (std::int64_t{1} << width) - 1;
      return pairOf(own >> shift & mask, next >> shift & mask);
    };
    weights.high[i] = part(weights.lowShift + weights.middleShift, HIGH_BITS + 1);
    weights.middle[i] = part(weights.lowShift, weights.middleShift);
    weights.low[i] = part(0, weights.lowShift);
  }
  return weights;
}
