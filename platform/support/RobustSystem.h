#pragma once

#include <cstddef>
#include <span>
#include <vector>

/// One part of a linear system that shares no column with the rest, prepared for robust fitting:
/// columns scaled to a largest element of 1, stored one after another. Private to `robust`.
///
/// Rows are also kept in row sets, one for every distinct set of rows that a column touches.
/// A coefficient is only as trustworthy as the majority of the rows that touch it, so residual
/// scales are taken per row set: where all horizontal rows fit exactly and the vertical ones are
/// noisy, one common scale would be 0 and throw away all but one of the noisy rows.
class CRobustSystem {
 public:
  /// `columns` and `rows` index into the whole system `a` (row-major, `columnCount` columns).
  CRobustSystem(std::span<const double> b, std::span<const double> a, std::size_t columnCount,
                std::vector<std::size_t> columns, const std::vector<std::size_t>& rows);

  std::size_t rowCount() const { return b_.size(); }
  std::size_t columnCount() const { return columns_.size(); }
  /// Index of column c in the whole system.
  std::size_t columnIndex(std::size_t c) const { return columns_[c]; }
  /// Scaled coefficient = coefficient * columnScale.
  double columnScale(std::size_t c) const { return scales_[c]; }
  double element(std::size_t row, std::size_t c) const { return a_[c * rowCount() + row]; }
  double rightHandSide(std::size_t row) const { return b_[row]; }

  std::size_t setCount() const { return sets_.size(); }
  std::span<const std::size_t> set(std::size_t s) const { return sets_[s]; }
  /// The first of the sets, up to this number, are not made up of smaller ones: where a share of
  /// the rows of each of these fits, the same share of the rows of every other set does.
  std::size_t basicSetCount() const { return basicSets_; }

  /// residuals = b - A z.
  void residuals(std::span<const double> z, std::span<double> residuals) const;

  /// One weighted least-squares step: z moves by the solution of the normal equations, which is
  /// written to `step`. A column that the weighted rows do not determine keeps its value.
  void weightedStep(std::span<const double> weights, std::span<const double> residuals,
                    std::span<double> z, std::span<double> step) const;

  /// Takes out the columns that depend on earlier ones, so that what is left has full rank.
  void dropDependentColumns();

 private:
  std::vector<bool> factorise(std::vector<double>& normal) const;
  void findSets();

  std::vector<std::size_t> columns_;
  std::vector<double> scales_;
  std::vector<double> a_;  // column-major
  std::vector<double> b_;
  std::vector<std::vector<std::size_t>> sets_;  // rows in rising order
  std::size_t basicSets_ = 0;
};
