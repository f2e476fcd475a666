#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

#include "RobustSystem.h"
#include "support/Numerics.h"

namespace {

constexpr double BIWEIGHT_TUNING = 4.685;  // 95 % efficiency on normal errors
constexpr double MAD_TO_SIGMA = 1.4826;
// With 150 subsets of three rows, 40 % of them wrong and a quarter of the subsets singular, the
// chance to meet no clean one is 3e-12.
constexpr int ELEMENTAL_SUBSETS = 150;
constexpr int ABSOLUTE_STEPS = 30;
constexpr int BIWEIGHT_STEPS = 100;
// From here on the scale is held: the loss then only falls, so the steps cannot cycle.
constexpr int SCALE_UPDATES = 10;
// Steps go on until no fitted value moves by more than this part of the tolerance.
constexpr double INNER_TOLERANCE = 1e-3;

class CRobustFit {
 public:
  CRobustFit(const CRobustSystem& system, double tolerance);

  /// True when converged; the scaled coefficients are in `coefficients`.
  bool solve();
  const std::vector<double>& coefficients() const { return z_; }

 private:
  double quantile(std::size_t set);
  double spread(const std::vector<double>& z);
  bool isSpreadBelow(const std::vector<double>& z, double bound);
  void leastSquares();
  void leastAbsolute();
  void weightedMedian();
  void searchElementalSubsets();
  bool solveElemental(const std::vector<std::size_t>& rows, std::vector<double>& z) const;
  void updateScales();
  void biweights();
  bool iterate();
  bool isConverged() const;

  const CRobustSystem& system_;
  const double tolerance_;
  const std::size_t rows_;
  const std::size_t columns_;
  double fraction_ = 0.5;  // of a row set whose residuals a fit is judged by
  double correction_ = 1;  // of the scale for few rows
  double floor_ = 0;       // residuals below it do not count as differences
  std::vector<double> z_, step_, residuals_, weights_, sorted_, setScale_, rowScale_;
};

CRobustFit::CRobustFit(const CRobustSystem& system, double tolerance)
    : system_(system),
      tolerance_(std::max(tolerance, 0.0)),
      rows_(system.rowCount()),
      columns_(system.columnCount()),
      z_(columns_),
      step_(columns_),
      residuals_(rows_),
      weights_(rows_),
      setScale_(system.setCount()),
      rowScale_(rows_) {
  sorted_.reserve(rows_);
  const double n = static_cast<double>(rows_);
  const double p = static_cast<double>(columns_);
  // The optimal quantile (Rousseeuw & Leroy 1987), but never more than the 60 % that must be good.
  fraction_ = std::min((n + p + 1.0) / (2.0 * n), 0.6);
  correction_ = rows_ > columns_ ? 1.0 + 5.0 / (n - p) : 1.0;
  double smallest = std::numeric_limits<double>::max();
  for (std::size_t c = 0; c < columns_; ++c) smallest = std::min(smallest, system.columnScale(c));
  floor_ = tolerance_ * smallest / BIWEIGHT_TUNING;
}

// Of the absolute residuals in `residuals_`.
double CRobustFit::quantile(std::size_t set) {
  const auto members = system_.set(set);
  sorted_.clear();
  for (const std::size_t row : members) sorted_.push_back(std::abs(residuals_[row]));
  const auto count = static_cast<double>(members.size());
  const auto rank = static_cast<std::ptrdiff_t>(std::ceil(fraction_ * count - 1e-9)) - 1;
  const auto nth = sorted_.begin() + std::max<std::ptrdiff_t>(rank, 0);
  std::nth_element(sorted_.begin(), nth, sorted_.end());
  return *nth;
}

// The largest quantile of the row sets; leaves the residuals of z behind.
double CRobustFit::spread(const std::vector<double>& z) {
  system_.residuals(z, residuals_);
  double largest = 0.0;
  for (std::size_t s = 0; s < system_.basicSetCount(); ++s)
    largest = std::max(largest, quantile(s));
  return largest;
}

// Counting is several times cheaper than selecting, and most candidates lose.
bool CRobustFit::isSpreadBelow(const std::vector<double>& z, double bound) {
  system_.residuals(z, residuals_);
  for (std::size_t s = 0; s < system_.basicSetCount(); ++s) {
    const auto members = system_.set(s);
    std::size_t below = 0;
    for (const std::size_t row : members) below += std::abs(residuals_[row]) < bound ? 1 : 0;
    if (static_cast<double>(below) < fraction_ * static_cast<double>(members.size()) - 1e-9)
      return false;
  }
  return true;
}

void CRobustFit::leastSquares() {
  std::fill(weights_.begin(), weights_.end(), 1.0);
  for (int pass = 0; pass < 2; ++pass) {  // the second removes the rounding of the first
    system_.residuals(z_, residuals_);
    system_.weightedStep(weights_, residuals_, z_, step_);
  }
}

void CRobustFit::leastAbsolute() {
  if (columns_ == 1) {
    weightedMedian();
    return;
  }
  for (int pass = 0; pass < ABSOLUTE_STEPS; ++pass) {
    system_.residuals(z_, residuals_);
    const double largest = std::abs(*std::max_element(
        residuals_.begin(), residuals_.end(),
        [](double left, double right) { return std::abs(left) < std::abs(right); }));
    const double least = std::max(1e-6 * largest, floor_);
    if (least == 0.0) return;
    for (std::size_t row = 0; row < rows_; ++row)
      weights_[row] = 1.0 / std::max(std::abs(residuals_[row]), least);
    system_.weightedStep(weights_, residuals_, z_, step_);
    if (isConverged()) return;
  }
}

// One column: the least absolute residuals are reached at the median of the rows' own solutions,
// weighted by the size of their elements.
void CRobustFit::weightedMedian() {
  std::vector<std::pair<double, double>> solutions;
  double total = 0.0;
  for (std::size_t row = 0; row < rows_; ++row) {
    const double element = system_.element(row, 0);
    if (element == 0.0) continue;
    solutions.emplace_back(system_.rightHandSide(row) / element, std::abs(element));
    total += std::abs(element);
  }
  std::sort(solutions.begin(), solutions.end());
  double below = 0.0;
  for (std::size_t i = 0; i < solutions.size(); ++i) {
    below += solutions[i].second;
    if (below < 0.5 * total) continue;
    const bool isTie = below == 0.5 * total && i + 1 < solutions.size();
    z_[0] = isTie ? 0.5 * (solutions[i].first + solutions[i + 1].first) : solutions[i].first;
    return;
  }
}

// Gaussian elimination with row pivoting; false when the rows do not determine the coefficients.
bool CRobustFit::solveElemental(const std::vector<std::size_t>& rows,
                                std::vector<double>& z) const {
  const std::size_t n = columns_;
  std::vector<double> m(n * (n + 1));
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) m[i * (n + 1) + j] = system_.element(rows[i], j);
    m[i * (n + 1) + n] = system_.rightHandSide(rows[i]);
  }
  for (std::size_t k = 0; k < n; ++k) {
    std::size_t best = k;
    for (std::size_t i = k + 1; i < n; ++i)
      if (std::abs(m[i * (n + 1) + k]) > std::abs(m[best * (n + 1) + k])) best = i;
    if (std::abs(m[best * (n + 1) + k]) < 1e-9) return false;
    if (best != k) std::swap_ranges(&m[k * (n + 1)], &m[k * (n + 1)] + n + 1, &m[best * (n + 1)]);
    for (std::size_t i = k + 1; i < n; ++i) {
      const double factor = m[i * (n + 1) + k] / m[k * (n + 1) + k];
      for (std::size_t j = k; j <= n; ++j) m[i * (n + 1) + j] -= factor * m[k * (n + 1) + j];
    }
  }
  for (std::size_t i = n; i-- > 0;) {
    double value = m[i * (n + 1) + n];
    for (std::size_t j = i + 1; j < n; ++j) value -= m[i * (n + 1) + j] * z[j];
    z[i] = value / m[i * (n + 1) + i];
  }
  return true;
}

// Least absolute residuals give way when wrong rows sit far out, where they have leverage. Exact
// fits through as many rows as there are columns, judged by a quantile, do not (Rousseeuw 1984).
// Such a fit is noisy, so it takes over only where it says that the other is broken.
void CRobustFit::searchElementalSubsets() {
  const double started = spread(z_);
  double best = started;
  std::vector<double> bestZ = z_;
  std::vector<double> candidate(columns_);
  std::vector<std::size_t> order(rows_);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::uint64_t state = 0x9E3779B97F4A7C15U;  // fixed: equal systems give equal results
  for (int draw = 0; draw < ELEMENTAL_SUBSETS && best > floor_; ++draw) {
    for (std::size_t k = 0; k < columns_; ++k) {
      state = state * 6364136223846793005U + 1442695040888963407U;  // Knuth's MMIX generator
      const std::size_t pick = k + static_cast<std::size_t>((state >> 33) % (rows_ - k));
      std::swap(order[k], order[pick]);
    }
    if (!solveElemental(order, candidate) || !isSpreadBelow(candidate, best)) continue;
    best = spread(candidate);
    bestZ = candidate;
  }
  if (started > 2.0 * correction_ * std::max(best, floor_)) z_ = bestZ;
}

// Of the residuals in `residuals_`. A row takes the widest scale of the row sets it is in: it is
// wrong only when it is wrong by the standard of all coefficients that it speaks for.
void CRobustFit::updateScales() {
  for (std::size_t s = 0; s < system_.setCount(); ++s)
    setScale_[s] = std::max(MAD_TO_SIGMA * correction_ * quantile(s), floor_);
  std::fill(rowScale_.begin(), rowScale_.end(), 0.0);
  for (std::size_t s = 0; s < system_.setCount(); ++s)
    for (const std::size_t row : system_.set(s))
      rowScale_[row] = std::max(rowScale_[row], setScale_[s]);
}

void CRobustFit::biweights() {
  for (std::size_t row = 0; row < rows_; ++row) {
    const double cutoff = BIWEIGHT_TUNING * rowScale_[row];
    const double size = std::abs(residuals_[row]);
    // Where the majority fits exactly the cutoff may be 0, and only exact rows count.
    const double ratio = cutoff > 0.0 ? size / cutoff : (size > 0.0 ? 1.0 : 0.0);
    const double rest = 1.0 - ratio * ratio;
    weights_[row] = ratio < 1.0 ? rest * rest : 0.0;
  }
}

bool CRobustFit::isConverged() const {
  double largest = 0.0;
  double magnitude = 0.0;
  double finest = std::numeric_limits<double>::max();
  for (std::size_t c = 0; c < columns_; ++c) {
    largest = std::max(largest, std::abs(step_[c]));
    magnitude = std::max(magnitude, std::abs(z_[c]));
    finest = std::min(finest, system_.columnScale(c));
  }
  return largest <= std::max(INNER_TOLERANCE * tolerance_ * finest, 1e-14 * magnitude);
}

bool CRobustFit::iterate() {
  for (int pass = 0; pass < BIWEIGHT_STEPS; ++pass) {
    system_.residuals(z_, residuals_);
    if (pass < SCALE_UPDATES) updateScales();
    biweights();
    system_.weightedStep(weights_, residuals_, z_, step_);
    if (isConverged()) return true;
  }
  for (std::size_t c = 0; c < columns_; ++c)
    if (!(std::abs(step_[c]) <= tolerance_ * system_.columnScale(c))) return false;
  return true;
}

bool CRobustFit::solve() {
  leastSquares();
  if (rows_ <= columns_) return true;
  leastAbsolute();
  if (columns_ > 1) searchElementalSubsets();
  return iterate();
}

// Splits the columns into groups that no row ties together, such as the horizontal and the vertical
// part of a translation: each is fitted by itself, with its own scale.
std::vector<std::vector<std::size_t>> independentColumns(std::span<const double> a,
                                                         const std::vector<std::size_t>& rows,
                                                         std::size_t columnCount) {
  std::vector<std::size_t> group(columnCount);
  std::iota(group.begin(), group.end(), std::size_t{0});
  std::vector<bool> isUsed(columnCount, false);
  for (const std::size_t row : rows) {
    std::size_t first = columnCount;
    for (std::size_t c = 0; c < columnCount; ++c) {
      if (a[row * columnCount + c] == 0.0) continue;
      isUsed[c] = true;
      if (first == columnCount) first = c;
      const std::size_t from = std::max(group[c], group[first]);
      const std::size_t into = std::min(group[c], group[first]);
      if (from != into) std::replace(group.begin(), group.end(), from, into);
    }
  }
  std::vector<std::vector<std::size_t>> groups(columnCount);
  for (std::size_t c = 0; c < columnCount; ++c)
    if (isUsed[c]) groups[group[c]].push_back(c);
  std::erase_if(groups, [](const auto& columns) { return columns.empty(); });
  return groups;
}

std::vector<std::size_t> finiteRows(std::span<const double> b, std::span<const double> a,
                                    std::size_t columnCount) {
  std::vector<std::size_t> rows;
  for (std::size_t row = 0; row < b.size(); ++row) {
    bool isFinite = std::isfinite(b[row]);
    for (std::size_t c = 0; c < columnCount; ++c)
      isFinite = isFinite && std::isfinite(a[row * columnCount + c]);
    if (isFinite) rows.push_back(row);
  }
  return rows;
}

std::vector<std::size_t> rowsTouching(std::span<const double> a,
                                      const std::vector<std::size_t>& rows, std::size_t columnCount,
                                      const std::vector<std::size_t>& columns) {
  std::vector<std::size_t> touching;
  for (const std::size_t row : rows) {
    const bool touches = std::any_of(columns.begin(), columns.end(), [&](std::size_t c) {
      return a[row * columnCount + c] != 0.0;
    });
    if (touches) touching.push_back(row);
  }
  return touching;
}

}  // namespace

bool robust(std::span<const double> b, std::span<const double> a, double tolerance,
            std::span<double> x) {
  const std::size_t columnCount = x.size();
  const std::vector<std::size_t> rows = finiteRows(b, a, columnCount);
  if (rows.empty() || columnCount == 0) return false;
  std::fill(x.begin(), x.end(), 0.0);
  bool converged = true;
  for (auto& columns : independentColumns(a, rows, columnCount)) {
    const auto touching = rowsTouching(a, rows, columnCount, columns);
    CRobustSystem system(b, a, columnCount, columns, touching);
    system.dropDependentColumns();
    CRobustFit fit(system, tolerance);
    converged = fit.solve() && converged;
    for (std::size_t c = 0; c < system.columnCount(); ++c)
      x[system.columnIndex(c)] = fit.coefficients()[c] / system.columnScale(c);
  }
  return converged;
}
