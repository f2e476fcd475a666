#include "smoothing/LinearAlgebra.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <random>
#include <utility>
#include <vector>

namespace {

using LongMatrix = matrix<long double>;
using LongVector = mvector<long double>;

LongMatrix Matrix(const std::vector<std::vector<long double>>& rows) {
  LongMatrix result(static_cast<int>(rows.size()), static_cast<int>(rows[0].size()));
  for (int i = 0; i < result.rows(); ++i) {
    for (int j = 0; j < result.cols(); ++j) result[i][j] = rows[i][j];
  }
  return result;
}

LongMatrix Random(int n, std::mt19937_64& generator) {
  std::uniform_real_distribution<double> element(-3.0, 3.0);
  LongMatrix a(n, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) a[i][j] = element(generator);
  }
  return a;
}

/// The 6 x 6 system of three points with the distance as radial basis.
LongMatrix WarpSystem(const double (&p)[3][2]) {
  LongMatrix a(6, 6);
  for (int i = 0; i < 6; ++i) a[i].Zero();
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) a[i][j] = std::hypot(p[i][0] - p[j][0], p[i][1] - p[j][1]);
    a[i][3] = a[3][i] = 1.0L;
    a[i][4] = a[4][i] = p[i][0];
    a[i][5] = a[5][i] = p[i][1];
  }
  return a;
}

/// A decomposed matrix with what came out beside it.
struct SDecomposed {
  explicit SDecomposed(LongMatrix matrix) : a(std::move(matrix)), permutation(a.rows()) {
    succeeded = LUDecompose(a, permutation, sign);
  }
  LongMatrix a;
  mvector<int> permutation;
  double sign = 0.0;
  bool succeeded = false;
};

TEST(LinearAlgebra, CopiesAreDeep) {
  LongMatrix a = Matrix({{1, 2}, {3, 4}});
  LongMatrix b = a;
  b[0][1] = 9;
  EXPECT_EQ(a[0][1], 2);
  a = b;
  b[1][0] = 7;
  EXPECT_EQ(a[1][0], 3);
  const LongMatrix& itself = a;
  a = itself;
  EXPECT_EQ(a[0][1], 9);

  mvector<int> v(3);
  v.Zero();
  mvector<int> w;
  EXPECT_EQ(w.size(), 2);
  w = v;
  w[2] = 5;
  EXPECT_EQ(w.size(), 3);
  EXPECT_EQ(v[2], 0);
  const mvector<int> taken = std::move(w);
  EXPECT_EQ(taken[2], 5);
}

TEST(LinearAlgebra, ProductsAreSummedInExtendedPrecision) {
  matrix<double> a(2, 3);
  mvector<double> v(3);
  const double huge = 1e17;
  for (int j = 0; j < 3; ++j) {
    a[0][j] = j == 1 ? 1.0 : (j == 0 ? huge : -huge);
    a[1][j] = j + 1.0;
    v[j] = 1.0;
  }
  const mvector<double> product = a * v;
  ASSERT_EQ(product.size(), 2);
  EXPECT_EQ(product[0], 1.0) << "a 64-bit sum loses the middle term";
  EXPECT_EQ((product + product)[1], 12.0);
}

TEST(LUDecompose, FactorsMultiplyToTheMatrix) {
  const SDecomposed lu(Matrix({{0, 2, 1}, {4, 0, 2}, {2, 3, 0}}));
  ASSERT_TRUE(lu.succeeded);
  long double determinant = lu.sign;
  for (int i = 0; i < 3; ++i) determinant *= lu.a[i][i];
  EXPECT_NEAR(static_cast<double>(determinant), 20.0, 1e-15);
}

TEST(LUDecompose, OnEqualWeightsTheLaterRowBecomesThePivot) {
  const SDecomposed lu(Matrix({{2, 1, 0}, {4, 0, 4}, {1, 1, 1}}));
  ASSERT_TRUE(lu.succeeded);
  EXPECT_EQ(lu.permutation[0], 2);
}

TEST(LUDecompose, ARowKeepsItsScaleWhenItIsSwapped) {
  const SDecomposed lu(Matrix({{1, 1e6L, 0}, {1, 1, 0.5L}, {0, 3, 0}}));
  ASSERT_TRUE(lu.succeeded);
  EXPECT_EQ(lu.permutation[0], 1);
  EXPECT_EQ(lu.permutation[1], 2)
      << "measured against its own size the row of 1e6 is the lighter one";
}

TEST(LUSolve, FindsTheSolutionOfRandomSystems) {
  std::mt19937_64 generator(7);
  std::uniform_real_distribution<double> exponent(-6.0, 6.0);
  for (const int n : {1, 2, 3, 6, 20}) {
    for (int round = 0; round < 50; ++round) {
      LongMatrix a = Random(n, generator);
      LongVector x(n);
      for (int i = 0; i < n; ++i) {
        const long double scale = std::pow(10.0L, exponent(generator));
        for (int j = 0; j < n; ++j) a[i][j] *= scale;  // rows of very different size
        x[i] = i - 2.5L;
      }
      LongVector b = a * x;
      const SDecomposed lu(a);
      ASSERT_TRUE(lu.succeeded);
      LUSolve(lu.a, lu.permutation, b);
      for (int i = 0; i < n; ++i) ASSERT_NEAR(static_cast<double>(b[i] - x[i]), 0.0, 1e-12) << n;
    }
  }
}

TEST(LUDecompose, FailsForARowOfZerosOnly) {
  struct SCase {
    const char* name;
    double points[3][2];
    bool succeeds;
  };
  const SCase cases[] = {
      {"triangle", {{0, 0}, {100, 0}, {0, 100}}, true},
      {"all x 0", {{0, 1}, {0, 50}, {0, 90}}, false},
      {"all y 0", {{1, 0}, {50, 0}, {90, 0}}, false},
      {"on another line", {{10, 10}, {20, 20}, {30, 30}}, true},
      {"one point thrice", {{10, 10}, {10, 10}, {10, 10}}, true},
  };
  for (const SCase& c : cases) {
    const SDecomposed lu(WarpSystem(c.points));
    EXPECT_EQ(lu.succeeded, c.succeeds) << c.name;
    if (!c.succeeds) continue;
    for (int i = 0; i < 6; ++i) EXPECT_NE(lu.a[i][i], 0.0L) << c.name;
  }
}

TEST(LUDecompose, AZeroPivotBecomesTinyAndDoesNotFail) {
  const SDecomposed lu(Matrix({{1, 2}, {2, 4}}));
  ASSERT_TRUE(lu.succeeded);
  EXPECT_EQ(lu.a[1][1], 1.0e-20L);
}

TEST(LUDecompose, ProgressEndsAtHundredAndAnAbortStopsBeforeTheNextColumn) {
  LongMatrix a = WarpSystem({{0, 0}, {100, 0}, {0, 100}});
  const LongMatrix before = a;
  mvector<int> permutation(6);
  double sign = 0.0;
  int progress = -1;
  std::atomic<bool> abort{true};
  EXPECT_FALSE(LUDecompose(a, permutation, sign, &progress, &abort));
  EXPECT_FALSE(abort) << "the request was taken";
  EXPECT_EQ(progress, -1);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(a[i][5], before[i][5]);
  EXPECT_TRUE(LUDecompose(a, permutation, sign, &progress, &abort));
  EXPECT_EQ(progress, 100);
}

}  // namespace
