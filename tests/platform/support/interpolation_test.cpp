#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/Numerics.h"

namespace {

TEST(BiLinear, CornersEdgesAndNegativeFractions) {
  // The corners 10, 20, 30, 70 make 10 + 10 fx + 20 fy + 30 fx fy.
  const struct {
    double x, y, expected;
  } cases[] = {
      {7.0, 3.0, 10.0},     {7.5, 3.0, 15.0},   {7.0, 3.5, 20.0},     {7.5, 3.5, 32.5},
      {0.25, 0.75, 33.125}, {-0.5, 0.0, 5.0},   {-2.5, 0.0, 5.0},     {0.0, -0.25, 5.0},
      {-0.5, -0.5, 2.5},    {-0.0, -0.0, 10.0}, {1e6 + 0.5, 0, 15.0},
  };
  for (const auto& c : cases)
    EXPECT_DOUBLE_EQ(BiLinear(c.x, c.y, 10.0, 20.0, 30.0, 70.0), c.expected) << c.x << ", " << c.y;
}

using Basis = float (*)(float, float, float, float);

TEST(RadialBasis, IsTheNamedFunctionOfTheDistance) {
  const float logarithm = std::log(5.0F);
  EXPECT_FLOAT_EQ(UEuclidean(1.0F, 2.0F, 4.0F, -2.0F), 5.0F);
  EXPECT_FLOAT_EQ(ULogrithmic(1.0F, 2.0F, 4.0F, -2.0F), 5.0F * logarithm);
  EXPECT_FLOAT_EQ(UThinPlate(1.0F, 2.0F, 4.0F, -2.0F), 25.0F * logarithm);
  EXPECT_EQ(UIdenity(1.0F, 2.0F, 4.0F, -2.0F), 0.0F);
}

TEST(RadialBasis, IsFiniteAndSymmetricEverywhere) {
  constexpr float largest = std::numeric_limits<float>::max();
  constexpr float smallest = std::numeric_limits<float>::denorm_min();
  const float values[] = {0.0F, smallest, 1e-30F, 1e-15F, 1.0F, 4096.5F, 1e20F, largest, -largest};
  for (const Basis basis : {UEuclidean, ULogrithmic, UThinPlate, UIdenity}) {
    for (const float x : values) {
      for (const float y : values) {
        const float value = basis(x, 0.0F, y, 1.0F);
        EXPECT_TRUE(std::isfinite(value)) << x << ", " << y;
        EXPECT_EQ(value, basis(y, 1.0F, x, 0.0F)) << x << ", " << y;
      }
      EXPECT_EQ(basis(x, x, x, x), 0.0F) << x;
    }
  }
}

}  // namespace
