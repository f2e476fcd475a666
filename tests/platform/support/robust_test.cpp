#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "support/Numerics.h"

namespace {

struct SSystem {
  std::vector<double> a;
  std::vector<double> b;
  std::size_t columns = 0;
};

struct SMotion {
  double tx = 0.0;
  double ty = 0.0;
  double theta = 0.0;
};

struct SPoint {
  double x = 0.0;
  double y = 0.0;
};

double uniform(std::mt19937& random) {
  return random() / 4294967296.0 - 0.5;
}

// Roughly normal with standard deviation 1; the same on every system.
double noise(std::mt19937& random) {
  double sum = 0.0;
  for (int i = 0; i < 12; ++i) sum += uniform(random);
  return sum;
}

std::vector<SPoint> scatteredPoints(int count, std::mt19937& random) {
  std::vector<SPoint> points;
  for (int i = 0; i < count; ++i)
    points.push_back({4000.0 + 8000.0 * uniform(random), 3000.0 + 6000.0 * uniform(random)});
  return points;
}

// All x rows, then all y rows, the way tracked points are fitted.
SSystem motionSystem(const std::vector<SPoint>& points, const SMotion& motion, bool rotates) {
  SSystem system;
  system.columns = rotates ? 3 : 2;
  for (const SPoint& p : points) {
    system.a.insert(system.a.end(), {1.0, 0.0});
    if (rotates) system.a.push_back(-p.y);
    system.b.push_back(motion.tx - motion.theta * p.y);
  }
  for (const SPoint& p : points) {
    system.a.insert(system.a.end(), {0.0, 1.0});
    if (rotates) system.a.push_back(p.x);
    system.b.push_back(motion.ty + motion.theta * p.x);
  }
  return system;
}

std::vector<double> fit(const SSystem& system, bool expectConverged = true) {
  std::vector<double> x(system.columns, 0.0);
  EXPECT_EQ(robust(system.b, system.a, 0.001, x), expectConverged);
  return x;
}

TEST(Robust, MotionIsRecovered) {
  const struct {
    const char* name;
    int points;
    bool rotates;
    double noise;
    int wrong;            // points with gross errors
    bool wrongOnesAgree;  // on one other motion, far out where they have leverage
    double translationError, thetaError;
  } cases[] = {{"exact_translation", 3, false, 0.0, 0, false, 1e-10, 0},
               {"exact_rotation", 3, true, 0.0, 0, false, 1e-9, 1e-12},
               {"two_of_five_wrong", 5, false, 0.0, 2, false, 1e-9, 0},
               {"two_of_six_wrong_and_rotation", 6, true, 0.0, 2, false, 1e-8, 1e-11},
               {"noise_alone", 50, true, 0.05, 0, false, 0.12, 2e-5},
               {"forty_percent_wrong", 50, false, 0.05, 20, false, 0.06, 0},
               {"forty_percent_wrong_alike", 50, false, 0.05, 20, true, 0.06, 0},
               {"forty_percent_wrong_and_rotation", 50, true, 0.05, 20, false, 0.12, 3e-5},
               {"forty_percent_wrong_alike_and_rotation", 50, true, 0.05, 20, true, 0.12, 3e-5},
               {"many_exact_points_and_wrong_ones", 200, true, 0.0, 80, true, 1e-9, 1e-12}};
  for (const auto& c : cases) {
    for (unsigned seed = 1; seed <= 50; ++seed) {
      std::mt19937 random(seed);
      const auto points = scatteredPoints(c.points, random);
      const SMotion motion{12.25, -7.5, c.rotates ? 0.0123 : 0.0};
      SSystem system = motionSystem(points, motion, c.rotates);
      for (double& value : system.b) value += c.noise * noise(random);
      for (int i = 0; i < c.wrong; ++i) {
        const double far = c.wrongOnesAgree ? 1.0 + points[i].x / 4000.0 : 4.0 * uniform(random);
        system.b[i] += c.wrongOnesAgree ? 60.0 * far : 20.0 + 500.0 * std::abs(far);
        system.b[i + c.points] -= c.wrongOnesAgree ? 45.0 * far : 20.0 + 100.0 * std::abs(far);
      }
      const auto x = fit(system);
      EXPECT_NEAR(x[0], motion.tx, c.translationError) << c.name << ", seed " << seed;
      EXPECT_NEAR(x[1], motion.ty, c.translationError) << c.name << ", seed " << seed;
      if (!c.rotates) continue;
      EXPECT_NEAR(x[2], motion.theta, c.thetaError) << c.name << ", seed " << seed;
    }
  }
}

// Film on a pin-registered scanner: x fits exactly, y weaves. One scale for both would be 0.
TEST(Robust, ExactHorizontalRowsLeaveNoisyVerticalRowsTheirSay) {
  std::mt19937 random(7);
  const auto points = scatteredPoints(41, random);
  for (const bool rotates : {false, true}) {
    SSystem system = motionSystem(points, {3.0, 5.0, 0.0}, rotates);
    for (std::size_t i = points.size(); i < system.b.size(); ++i) system.b[i] += noise(random);
    const auto x = fit(system);
    // The rotation is seen by all rows, so there the vertical noise has a part in it.
    EXPECT_NEAR(x[0], 3.0, rotates ? 0.5 : 1e-6);
    EXPECT_NEAR(x[1], 5.0, 0.5);  // three standard errors of the mean
  }
}

TEST(Robust, FarOutWrongRowsHaveNoLeverage) {
  // A line through 30 points; 20 more lie together far along the line's abscissa, and far off it.
  SSystem system;
  system.columns = 2;
  std::mt19937 random(3);
  for (int i = 0; i < 50; ++i) {
    const bool isWrong = i >= 30;
    const double at = isWrong ? 1000.0 + i : i;
    system.a.insert(system.a.end(), {1.0, at});
    system.b.push_back(isWrong ? -400.0 : 2.0 + 0.5 * at + 0.01 * noise(random));
  }
  const auto x = fit(system);
  EXPECT_NEAR(x[0], 2.0, 0.02);
  EXPECT_NEAR(x[1], 0.5, 0.001);
}

TEST(Robust, RowOrderAndSignDoNotMatter) {
  std::mt19937 random(11);
  const auto points = scatteredPoints(20, random);
  SSystem system = motionSystem(points, {1.0, 2.0, 0.001}, true);
  for (double& value : system.b) value += 0.1 * noise(random);
  for (int i = 0; i < 6; ++i) system.b[i] += 80.0;
  SSystem turned = system;
  for (std::size_t i = 0; i < system.b.size(); ++i) {
    const std::size_t from = system.b.size() - 1 - i;
    const double sign = i % 2 == 0 ? 1.0 : -1.0;
    turned.b[i] = sign * system.b[from];
    for (std::size_t c = 0; c < 3; ++c) turned.a[i * 3 + c] = sign * system.a[from * 3 + c];
  }
  const auto straight = fit(system);
  const auto reversed = fit(turned);
  for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(straight[c], reversed[c], c == 2 ? 1e-9 : 1e-5);
}

TEST(Robust, CoincidingPointsAreATranslationNotARotation) {
  const std::vector<SPoint> points(5, {1500.0, 900.0});
  const auto x = fit(motionSystem(points, {4.0, -6.0, 0.0}, true));
  EXPECT_NEAR(x[0], 4.0, 1e-9);
  EXPECT_NEAR(x[1], -6.0, 1e-9);
  EXPECT_EQ(x[2], 0.0);
}

TEST(Robust, OddSystemsAreAnswered) {
  constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
  const struct {
    const char* name;
    SSystem system;
    bool converges;
    std::vector<double> expected;
  } cases[] = {{"no_rows", {{}, {}, 2}, false, {99.0, 99.0}},
               {"one_row", {{2.0}, {6.0}, 1}, true, {3.0}},
               {"column_of_zeros", {{1, 0, 1, 0, 1, 0}, {5, 5, 5}, 2}, true, {5, 0}},
               {"equal_columns", {{1, 1, 1, 1, 1, 1}, {5, 5, 5}, 2}, true, {5, 0}},
               {"all_zero_rows", {{0, 0}, {5, 6}, 1}, true, {0.0}},
               {"row_without_a_value", {{1, 1, 1, 1}, {7, NOT_A_NUMBER, 7, 7}, 1}, true, {7.0}},
               {"majority_is_exact", {{1, 1, 1, 1, 1}, {7, 7, 7, 7.5, 900}, 1}, true, {7.0}},
               {"four_columns",
                {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 1, 1, 1, 1,
                  2, 1, 0, 0, 0, 2, 1, 0, 0, 0, 2, 1, 1, 0, 0, 2, 1, 1, 0, 0},
                 {1, 2, 3, 4, 10, 4, 7, 10, 9, 3},
                 4},
                true,
                {1, 2, 3, 4}}};
  for (const auto& c : cases) {
    std::vector<double> x(c.system.columns, 99.0);
    EXPECT_EQ(robust(c.system.b, c.system.a, 0.001, x), c.converges) << c.name;
    for (std::size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(x[i], c.expected[i], 1e-9) << c.name;
  }
}

}  // namespace
