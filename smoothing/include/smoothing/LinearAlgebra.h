#pragma once

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>

/// Small dense linear algebra: the warp solve (6 x 6, 80-bit) and the per-frame regressions
/// (2m x 3, 64-bit). Sizes are signed, indices are not checked, and the operations rely on their
/// callers for matching dimensions. Plain values: copies are deep. THREAD: any, one at a time.

/// A vector of `size()` elements that start out uninitialised.
template <typename T>
class mvector {
 public:
  explicit mvector(int size = 2) : size_(size), elements_(allocate(size)) {}
  mvector(const mvector& other) : size_(other.size_), elements_(allocate(other.size_)) {
    std::copy_n(other.data(), size_, data());
  }
  mvector(mvector&& other) noexcept : size_(other.size_), elements_(std::move(other.elements_)) {
    other.size_ = 0;
  }
  mvector& operator=(const mvector& other) {
    if (this != &other) *this = mvector(other);
    return *this;
  }
  mvector& operator=(mvector&& other) noexcept {
    swap(other);
    return *this;
  }
  void swap(mvector& other) noexcept {
    std::swap(size_, other.size_);
    elements_.swap(other.elements_);
  }

  int size() const { return size_; }
  T* data() { return elements_.get(); }
  const T* data() const { return elements_.get(); }
  T& operator[](int index) { return elements_[index]; }
  const T& operator[](int index) const { return elements_[index]; }
  /// Every element 0.
  void Zero() { std::fill_n(data(), size_, T{}); }

 private:
  static std::unique_ptr<T[]> allocate(int size) {
    return std::make_unique_for_overwrite<T[]>(static_cast<std::size_t>(size));
  }

  int size_;
  std::unique_ptr<T[]> elements_;
};

/// `rows()` vectors of `cols()` uninitialised elements; indexed by row, then column.
template <typename T>
class matrix {
 public:
  matrix(int rows, int cols)
      : rows_(rows), cols_(cols), row_(std::make_unique<mvector<T>[]>(std::size_t(rows))) {
    for (int i = 0; i < rows_; ++i) row_[i] = mvector<T>(cols);
  }
  matrix(const matrix& other)
      : rows_(other.rows_),
        cols_(other.cols_),
        row_(std::make_unique<mvector<T>[]>(std::size_t(other.rows_))) {
    for (int i = 0; i < rows_; ++i) row_[i] = other.row_[i];
  }
  matrix(matrix&& other) noexcept = default;
  matrix& operator=(const matrix& other) {
    if (this != &other) *this = matrix(other);
    return *this;
  }
  matrix& operator=(matrix&& other) noexcept = default;

  int rows() const { return rows_; }
  int cols() const { return cols_; }
  mvector<T>& operator[](int row) { return row_[row]; }
  const mvector<T>& operator[](int row) const { return row_[row]; }

 private:
  int rows_;
  int cols_;
  std::unique_ptr<mvector<T>[]> row_;
};

/// A v: element i is the sum over j of A[i][j] v[j], accumulated in extended precision.
/// REQUIRES: v.size() == a.cols().
template <typename T>
mvector<T> operator*(const matrix<T>& a, const mvector<T>& v) {
  mvector<T> product(a.rows());
  for (int i = 0; i < a.rows(); ++i) {
    long double sum = 0.0L;
    for (int j = 0; j < a.cols(); ++j) sum += static_cast<long double>(a[i][j]) * v[j];
    product[i] = static_cast<T>(sum);
  }
  return product;
}

/// REQUIRES: b has at least a.size() elements; so has the result.
template <typename T>
mvector<T> operator+(const mvector<T>& a, const mvector<T>& b) {
  mvector<T> sum(a.size());
  for (int i = 0; i < a.size(); ++i) sum[i] = a[i] + b[i];
  return sum;
}

/// LU decomposition in place by Crout's method with implicit partial pivoting (Golub & Van Loan,
/// Matrix Computations, chapter 3): L (unit diagonal) below, U on and above the diagonal.
/// `permutation`[j] is the row that was swapped into row j; `sign` is +1 or -1 for an even or odd
/// number of swaps.
///
/// Returns false, leaving `a` and the outputs half done, for a row of zeros and for an abort. A
/// pivot that comes out exactly 0 is replaced by 1e-20 and does not fail: a caller that must know
/// looks at the size of its solution.
/// `progress` (optional): 0 to 100. `abort` (optional): when set it is cleared and the
/// decomposition stops before its next column.
/// REQUIRES: `a` is square and `permutation` has as many elements as it has rows.
bool LUDecompose(matrix<long double>& a, mvector<int>& permutation, double& sign,
                 int* progress = nullptr, std::atomic<bool>* abort = nullptr);

/// Solves A x = b with the outcome of LUDecompose; `b` is overwritten by x.
void LUSolve(const matrix<long double>& a, const mvector<int>& permutation,
             mvector<long double>& b);
