#include "smoothing/LinearAlgebra.h"

namespace {

/// Stands in for a pivot of exactly 0.
constexpr long double TINY_PIVOT = 1.0e-20L;

/// Reciprocal of each row's largest absolute element; false for a row of zeros.
bool RowScales(const matrix<long double>& a, mvector<long double>& scales) {
  for (int i = 0; i < a.rows(); ++i) {
    long double largest = 0.0L;
    for (int j = 0; j < a.cols(); ++j) largest = std::max(largest, std::fabs(a[i][j]));
    if (largest == 0.0L) return false;
    scales[i] = 1.0L / largest;
  }
  return true;
}

/// Reduces column j by the columns before it and returns the row to pivot on. On equal weights the
/// later row wins.
int ReduceColumn(matrix<long double>& a, const mvector<long double>& scales, int j) {
  const int n = a.rows();
  int pivotRow = j;
  long double heaviest = 0.0L;
  for (int i = 0; i < n; ++i) {
    long double sum = a[i][j];
    for (int k = 0; k < std::min(i, j); ++k) sum -= a[i][k] * a[k][j];
    a[i][j] = sum;
    if (i < j) continue;
    const long double weight = scales[i] * std::fabs(sum);
    if (weight >= heaviest) {
      heaviest = weight;
      pivotRow = i;
    }
  }
  return pivotRow;
}

}  // namespace

bool LUDecompose(matrix<long double>& a, mvector<int>& permutation, double& sign, int* progress,
                 std::atomic<bool>* abort) {
  const int n = a.rows();
  sign = 1.0;
  mvector<long double> scales(n);
  if (!RowScales(a, scales)) return false;
  for (int j = 0; j < n; ++j) {
    if (abort != nullptr && abort->exchange(false)) return false;
    const int pivotRow = ReduceColumn(a, scales, j);
    if (pivotRow != j) {
      a[pivotRow].swap(a[j]);
      sign = -sign;
      std::swap(scales[pivotRow], scales[j]);
    }
    permutation[j] = pivotRow;
    if (a[j][j] == 0.0L) a[j][j] = TINY_PIVOT;
    const long double reciprocal = 1.0L / a[j][j];
    for (int i = j + 1; i < n; ++i) a[i][j] *= reciprocal;
    if (progress != nullptr) *progress = j * 100 / n;
  }
  if (progress != nullptr) *progress = 100;
  return true;
}

void LUSolve(const matrix<long double>& a, const mvector<int>& permutation,
             mvector<long double>& b) {
  const int n = a.rows();
  for (int i = 0; i < n; ++i) {
    long double sum = b[permutation[i]];
    b[permutation[i]] = b[i];
    for (int k = 0; k < i; ++k) sum -= a[i][k] * b[k];
    b[i] = sum;
  }
  for (int i = n - 1; i >= 0; --i) {
    long double sum = b[i];
    for (int k = i + 1; k < n; ++k) sum -= a[i][k] * b[k];
    b[i] = sum / a[i][i];
  }
}
