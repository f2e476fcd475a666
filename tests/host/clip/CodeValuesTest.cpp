#include "CodeValues.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

TEST(CodeValues, EveryCodeComesBackAndKeepsItsOrder) {
  for (const int bits : {8, 10, 12, 16}) {
    const unsigned top = (1u << bits) - 1;
    EXPECT_EQ(WidenCode(0, bits), 0);
    EXPECT_EQ(WidenCode(top, bits), 65535);
    for (unsigned code = 0; code <= top; ++code) {
      ASSERT_EQ(NarrowSample(WidenCode(code, bits), bits), code) << bits << " bits";
      if (code > 0) {
        ASSERT_GT(WidenCode(code, bits), WidenCode(code - 1, bits)) << bits << " bits";
      }
    }
  }
}

TEST(CodeValues, NarrowingIsToTheNearestCode) {
  for (const int bits : {8, 10, 12}) {
    const unsigned top = (1u << bits) - 1;
    for (unsigned sample = 0; sample <= 65535; ++sample) {
      const double exact = sample * static_cast<double>(top) / 65535.0;
      const unsigned code = NarrowSample(static_cast<std::uint16_t>(sample), bits);
      ASSERT_LE(std::fabs(code - exact), 0.5 + 1e-9) << sample << " to " << bits << " bits";
    }
  }
}

TEST(CodeValues, RowsAreConvertedLikeSingleSamples) {
  std::vector<std::uint16_t> samples(65536), rounded(65536);
  std::vector<std::uint8_t> bytes(65536);
  for (unsigned i = 0; i < 65536; ++i) samples[i] = static_cast<std::uint16_t>(i);
  NarrowToBytes(samples.data(), bytes.data(), samples.size());
  for (unsigned i = 0; i < 65536; ++i) ASSERT_EQ(bytes[i], NarrowSample(samples[i], 8));
  WidenBytes(bytes.data(), rounded.data(), bytes.size());
  for (unsigned i = 0; i < 65536; ++i) ASSERT_EQ(rounded[i], bytes[i] * 257);
  for (const int bits : {8, 10, 12, 16}) {
    QuantiseSamples(samples.data(), rounded.data(), samples.size(), bits);
    for (unsigned i = 0; i < 65536; ++i)
      ASSERT_EQ(rounded[i], WidenCode(NarrowSample(samples[i], bits), bits)) << bits;
  }
}

TEST(CodeValues, CarriedHalvesComeBackInOrderAndOthersAreKnown) {
  int carried = 0;
  for (unsigned bits = 0; bits < 65536; ++bits) {
    const std::uint16_t half = static_cast<std::uint16_t>(bits);
    const float value = HalfToFloat(half);
    ASSERT_EQ(IsCarriedHalf(half), std::isfinite(value) && value >= 0.0f) << bits;
    if (!IsCarriedHalf(half)) continue;
    ++carried;
    ASSERT_EQ(HalfToFloat(NarrowToHalf(WidenHalf(half))), value) << bits;
    if (bits > 0 && bits < 0x7C00) {
      ASSERT_GT(HalfToFloat(half), HalfToFloat(static_cast<std::uint16_t>(bits - 1)));
    }
  }
  EXPECT_EQ(carried, 0x7C00 + 1);
  EXPECT_EQ(NarrowToHalf(65535), 0x7BFF);
}

TEST(CodeValues, FloatsThatAreHalvesAreFoundAndOthersAreNot) {
  for (unsigned bits = 0; bits < 65536; ++bits) {
    const float value = HalfToFloat(static_cast<std::uint16_t>(bits));
    if (!std::isfinite(value)) {
      ASSERT_FALSE(ExactHalf(value)) << bits;
      continue;
    }
    ASSERT_EQ(ExactHalf(value), static_cast<std::uint16_t>(bits)) << value;
    if (value != 0.0f) {
      ASSERT_FALSE(ExactHalf(std::nextafter(value, 1e9f))) << value;
    }
  }
  EXPECT_EQ(HalfToFloat(0x3C00), 1.0f);
  EXPECT_EQ(HalfToFloat(0x7BFF), 65504.0f);
  EXPECT_EQ(HalfToFloat(0x0001), 0x1p-24f);
  for (const float value : {65505.0f, 1e6f, 0x1p-25f, 0.1f})
    EXPECT_FALSE(ExactHalf(value)) << value;
}
