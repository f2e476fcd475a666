#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "support/Numerics.h"

namespace {

using Path = std::vector<double>;

Path smoothed(Path path, int in, int out, double alpha) {
  Smooth3(path, in, out, alpha, nullptr, false);
  return path;
}

// A pan with weave; no random numbers needed.
Path weavingPan(int length) {
  Path path;
  for (int i = 0; i < length; ++i)
    path.push_back(1000.0 + 1.5 * i + 4.0 * std::sin(2.1 * i) + 2.0 * std::cos(0.37 * i * i));
  return path;
}

// The normal equations, dense, with constrained elements as identity rows, in long double.
Path denseSolution(const Path& y, int in, int out, double alpha) {
  const int n = static_cast<int>(y.size());
  const int width = n + 1;
  std::vector<long double> m(static_cast<std::size_t>(n) * width, 0.0L);
  const auto at = [&m, width](int row, int column) -> long double& {
    return m[static_cast<std::size_t>(row) * width + column];
  };
  const long double difference[4] = {-1.0L, 3.0L, -3.0L, 1.0L};
  for (int k = 0; k + 3 < n; ++k)
    for (int i = 0; i < 4; ++i)
      for (int j = 0; j < 4; ++j) at(k + i, k + j) += difference[i] * difference[j];
  for (int i = 0; i < n; ++i) {
    at(i, i) += alpha;
    at(i, n) = static_cast<long double>(alpha) * y[i];
    if (i >= in && i < n - out) continue;
    for (int j = 0; j < n; ++j) at(i, j) = i == j ? 1.0L : 0.0L;
    at(i, n) = y[i];
  }
  for (int k = 0; k < n; ++k) {
    int pivot = k;
    for (int i = k; i < n; ++i)
      if (std::abs(at(i, k)) > std::abs(at(pivot, k))) pivot = i;
    for (int j = 0; j < width; ++j) std::swap(at(k, j), at(pivot, j));
    for (int i = 0; i < n; ++i) {
      if (i == k) continue;
      const long double factor = at(i, k) / at(k, k);
      for (int j = k; j < width; ++j) at(i, j) -= factor * at(k, j);
    }
  }
  Path path;
  for (int i = 0; i < n; ++i) path.push_back(static_cast<double>(at(i, n) / at(i, i)));
  return path;
}

// `alpha` 0 stands for a weight of next to nothing.
void expectMinimum(const Path& path, int in, int out, double alpha, double tolerance) {
  const Path expected = denseSolution(path, in, out, alpha);
  const Path actual = smoothed(path, in, out, alpha > 0.0 ? alpha : 1e-30);
  for (std::size_t i = 0; i < path.size(); ++i)
    ASSERT_NEAR(actual[i], expected[i], tolerance)
        << path.size() << " elements, anchors " << in << "+" << out << ", alpha " << alpha
        << ", element " << i;
}

TEST(Smooth3, MinimisesThePenalisedSquares) {
  for (const int length : {4, 5, 7, 12, 40})
    for (const auto& [in, out] : {std::pair{0, 0}, {1, 0}, {0, 2}, {1, 1}, {2, 3}, {5, 4}}) {
      if (in + out >= length) continue;
      for (const double alpha : {1e3, 1.0, 1e-2, 1e-4, 1e-8})
        expectMinimum(weavingPan(length), in, out, alpha, 1e-7);
    }
}

// Long enough for the rotations to repeat: each alone, in cycles of a few, and of dozens; the
// anchors at the end break into the cycle.
TEST(Smooth3, MinimisesWhereTheRotationsRepeat) {
  for (const auto& [in, out] : {std::pair{0, 0}, {2, 3}})
    for (const double alpha : {500.0, 50.0, 1.0, 0.02, 0.01, 1e-3})
      expectMinimum(weavingPan(180), in, out, alpha, 1e-9);
  expectMinimum(weavingPan(180), 2, 3, 1e-6, 1e-6);
}

TEST(Smooth3, AnchorsKeepTheirValuesExactly) {
  const Path path = weavingPan(200);
  for (const double alpha : {1.0, 1e-4, 1e-30}) {
    const Path actual = smoothed(path, 5, 3, alpha);
    for (int i : {0, 1, 2, 3, 4, 197, 198, 199}) EXPECT_EQ(actual[i], path[i]) << alpha;
    EXPECT_NE(actual[5], path[5]);
    EXPECT_NE(actual[196], path[196]);
  }
}

// No third difference: the motion of a camera that pans with constant acceleration is left alone.
TEST(Smooth3, ParabolasPassThroughAtEveryLengthAndWeight) {
  for (const int length : {4, 100, 100000}) {
    Path path;
    for (int i = 0; i < length; ++i) {
      const double t = static_cast<double>(i) / length;
      path.push_back(2000.0 - 700.0 * t + 900.0 * t * t);
    }
    for (const auto& [in, out] : {std::pair{0, 0}, {1, 1}, {3, 0}}) {
      for (const double alpha : {1.0, 1e-6, 1e-18, 1e-30}) {
        const Path actual = smoothed(path, in, out, alpha);
        double worst = 0.0;
        for (int i = 0; i < length; ++i) worst = std::max(worst, std::abs(actual[i] - path[i]));
        // Three fixed neighbours carry their own rounding on with the square of the distance.
        const double rounding = in == 3 ? 1e-12 * length * static_cast<double>(length) : 1e-7;
        EXPECT_LT(worst, std::max(rounding, 1e-7)) << length << " " << in << " " << alpha;
      }
    }
  }
}

// The path keeps the data's sum, first and second moment, whatever the weight; and with a weight of
// next to nothing no third difference is left.
TEST(Smooth3, VanishingWeightGivesTheLeastSquaresParabola) {
  for (const int length : {10, 300, 20000}) {
    const Path path = weavingPan(length);
    const Path actual = smoothed(path, 0, 0, 1e-30);
    long double moments[3] = {};
    double roughest = 0.0;
    for (int i = 0; i < length; ++i) {
      const long double t = 2.0L * i / length - 1.0L;
      const long double change = static_cast<long double>(actual[i]) - path[i];
      for (int k = 0; k < 3; ++k) moments[k] += change * std::pow(t, k) / length;
      if (i >= 3)
        roughest = std::max(roughest, std::abs(actual[i] - 3.0 * actual[i - 1] +
                                               3.0 * actual[i - 2] - actual[i - 3]));
    }
    for (const long double moment : moments) EXPECT_NEAR(moment, 0.0L, 1e-8L) << length;
    EXPECT_LT(roughest, 1e-10 * length) << length;
  }
}

TEST(Smooth3, VanishingWeightJoinsTheAnchorsWithLeastThirdDifference) {
  expectMinimum(weavingPan(30), 3, 2, 0.0, 1e-6);
}

TEST(Smooth3, OddInputsGiveTheseVeryPaths) {
  const struct {
    const char* name;
    int in, out;
    double alpha;
    Path path, expected;
  } cases[] = {{"hold_without_anchors", 0, 0, 0.0, {1, 2, 6, 3}, {3, 3, 3, 3}},
               {"hold_at_the_start", 2, 0, 0.0, {1, 2, 6, 3}, {1.5, 1.5, 1.5, 1.5}},
               {"hold_at_the_end", 0, 1, 0.0, {1, 2, 6, 3}, {3, 3, 3, 3}},
               {"hold_between_ends", 1, 1, 0.0, {1, 9, -9, 4}, {1, 2, 3, 4}},
               {"hold_between_means", 2, 2, 0.0, {0, 2, 50, 3, 5}, {0.5, 1.5, 2.5, 3.5, 4.5}},
               {"hold_a_single_frame", 1, 1, 0.0, {7}, {7}},
               {"hold_with_too_many_anchors", 9, 9, 0.0, {2, 4}, {3, 3}},
               {"hold_nothing", 1, 1, 0.0, {}, {}},
               {"negative_weight", 0, 0, -1.0, {1, 2, 6, 3, 9}, {1, 2, 6, 3, 9}},
               {"no_number_as_weight", 0, 0, std::nan(""), {1, 2, 6, 3, 9}, {1, 2, 6, 3, 9}},
               {"three_elements", 0, 0, 1e-30, {1, 2, 6}, {1, 2, 6}},
               {"one_element", 0, 0, 1e-4, {5}, {5}},
               {"no_element", 2, 2, 1e-4, {}, {}},
               {"all_anchors", 3, 2, 1e-4, {1, 2, 6, 3, 9}, {1, 2, 6, 3, 9}},
               {"more_anchors_than_elements", 9, 9, 1e-4, {1, 2, 6, 3, 9}, {1, 2, 6, 3, 9}},
               {"negative_anchor_counts", -4, -1, 0.0, {1, 3}, {2, 2}}};
  for (const auto& c : cases) {
    const Path actual = smoothed(c.path, c.in, c.out, c.alpha);
    ASSERT_EQ(actual.size(), c.expected.size()) << c.name;
    for (std::size_t i = 0; i < actual.size(); ++i)
      EXPECT_DOUBLE_EQ(actual[i], c.expected[i]) << c.name << " " << i;
  }
}

}  // namespace
