#include "RobustSystem.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace {

// A pivot that shrinks below this part of its diagonal element is rounding, not information.
constexpr double RANK_TOLERANCE = 1e-12;

// Four sums side by side: one would wait for each addition to finish. The order is fixed.
double weightedProduct(const double* left, const double* weights, const double* right,
                       std::size_t count) {
  double sums[4] = {};
  std::size_t i = 0;
  for (; i + 4 <= count; i += 4)
    for (std::size_t l = 0; l < 4; ++l) sums[l] += left[i + l] * weights[i + l] * right[i + l];
  for (; i < count; ++i) sums[0] += left[i] * weights[i] * right[i];
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

// True when smaller sets, subsets of `whole`, hold all of its rows.
bool isMadeUpOfOthers(const std::vector<std::size_t>& whole,
                      const std::vector<std::vector<std::size_t>>& sets) {
  std::vector<std::size_t> held;
  for (const auto& part : sets) {
    if (part.size() >= whole.size() ||
        !std::includes(whole.begin(), whole.end(), part.begin(), part.end()))
      continue;
    std::vector<std::size_t> joined;
    std::set_union(held.begin(), held.end(), part.begin(), part.end(), std::back_inserter(joined));
    held = std::move(joined);
  }
  return held.size() == whole.size();
}

}  // namespace

CRobustSystem::CRobustSystem(std::span<const double> b, std::span<const double> a,
                             std::size_t columnCount, std::vector<std::size_t> columns,
                             const std::vector<std::size_t>& rows)
    : columns_(std::move(columns)) {
  b_.reserve(rows.size());
  for (const std::size_t row : rows) b_.push_back(b[row]);
  a_.reserve(rows.size() * columns_.size());
  for (const std::size_t column : columns_) {
    double largest = 0.0;
    for (const std::size_t row : rows)
      largest = std::max(largest, std::abs(a[row * columnCount + column]));
    scales_.push_back(largest);
    for (const std::size_t row : rows) a_.push_back(a[row * columnCount + column] / largest);
  }
  findSets();
}

void CRobustSystem::findSets() {
  sets_.clear();
  for (std::size_t c = 0; c < columnCount(); ++c) {
    std::vector<std::size_t> touched;
    for (std::size_t row = 0; row < rowCount(); ++row)
      if (element(row, c) != 0.0) touched.push_back(row);
    if (std::find(sets_.begin(), sets_.end(), touched) == sets_.end())
      sets_.push_back(std::move(touched));
  }
  const auto all = sets_;
  const auto end = std::stable_partition(
      sets_.begin(), sets_.end(), [&all](const auto& set) { return !isMadeUpOfOthers(set, all); });
  basicSets_ = static_cast<std::size_t>(end - sets_.begin());
}

void CRobustSystem::residuals(std::span<const double> z, std::span<double> residuals) const {
  std::copy(b_.begin(), b_.end(), residuals.begin());
  for (std::size_t c = 0; c < columnCount(); ++c) {
    const double coefficient = z[c];
    const double* column = a_.data() + c * rowCount();
    for (std::size_t row = 0; row < rowCount(); ++row) residuals[row] -= column[row] * coefficient;
  }
}

// Cholesky, lower triangle, in place, in the order of the columns: a pivoted order could explain a
// common shift of coinciding points by the last column, a rotation, instead of by a translation.
std::vector<bool> CRobustSystem::factorise(std::vector<double>& normal) const {
  const std::size_t n = columnCount();
  std::vector<bool> kept(n, true);
  for (std::size_t j = 0; j < n; ++j) {
    const double diagonal = normal[j * n + j];
    double pivot = diagonal;
    for (std::size_t k = 0; k < j; ++k) pivot -= normal[j * n + k] * normal[j * n + k];
    kept[j] = diagonal > 0.0 && pivot > RANK_TOLERANCE * diagonal;
    const double root = kept[j] ? std::sqrt(pivot) : 0.0;
    normal[j * n + j] = root;
    for (std::size_t i = j + 1; i < n; ++i) {
      double value = normal[i * n + j];
      for (std::size_t k = 0; k < j; ++k) value -= normal[i * n + k] * normal[j * n + k];
      normal[i * n + j] = kept[j] ? value / root : 0.0;
    }
  }
  return kept;
}

void CRobustSystem::weightedStep(std::span<const double> weights, std::span<const double> residuals,
                                 std::span<double> z, std::span<double> step) const {
  const std::size_t n = columnCount();
  std::vector<double> normal(n * n, 0.0);
  for (std::size_t i = 0; i < n; ++i) {
    const double* left = a_.data() + i * rowCount();
    step[i] = weightedProduct(left, weights.data(), residuals.data(), rowCount());
    for (std::size_t j = 0; j <= i; ++j)
      normal[i * n + j] =
          weightedProduct(left, weights.data(), a_.data() + j * rowCount(), rowCount());
  }
  const std::vector<bool> kept = factorise(normal);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t k = 0; k < i; ++k) step[i] -= normal[i * n + k] * step[k];
    step[i] = kept[i] ? step[i] / normal[i * n + i] : 0.0;
  }
  for (std::size_t i = n; i-- > 0;) {
    for (std::size_t k = i + 1; k < n; ++k) step[i] -= normal[k * n + i] * step[k];
    step[i] = kept[i] ? step[i] / normal[i * n + i] : 0.0;
  }
  for (std::size_t i = 0; i < n; ++i) z[i] += step[i];
}

void CRobustSystem::dropDependentColumns() {
  const std::size_t n = columnCount();
  std::vector<double> normal(n * n, 0.0);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j <= i; ++j)
      for (std::size_t row = 0; row < rowCount(); ++row)
        normal[i * n + j] += element(row, i) * element(row, j);
  const std::vector<bool> kept = factorise(normal);
  std::size_t target = 0;
  for (std::size_t c = 0; c < n; ++c) {
    if (!kept[c]) continue;
    columns_[target] = columns_[c];
    scales_[target] = scales_[c];
    std::copy_n(a_.begin() + static_cast<std::ptrdiff_t>(c * rowCount()), rowCount(),
                a_.begin() + static_cast<std::ptrdiff_t>(target * rowCount()));
    ++target;
  }
  columns_.resize(target);
  scales_.resize(target);
  a_.resize(target * rowCount());
  findSets();
}
