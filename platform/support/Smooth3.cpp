#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <deque>
#include <numeric>
#include <vector>

#include "support/Numerics.h"

namespace {

// The smoothest path is a chain s, d = difference, c = second difference, driven by the third
// difference w: c' = c + w, d' = d + c', s' = s + d'. The penalised least-squares problem is solved
// by orthogonal elimination along this chain (the square-root information filter and smoother,
// Bierman 1977). The normal equations would not do: they join a data weight of 1e-30 to third
// differences whose smallest eigenvalue falls with the sixth power of the length, and their sums
// lose both. Here every row keeps its own scale, and s, d and c each their own precision.

constexpr std::size_t STATES = 3;

struct SRow {
  double noise = 0.0;
  std::array<double, STATES> state{};
};

// A Givens rotation of two rows; none where there was nothing to turn to 0.
struct SRotation {
  bool turns = false;
  double cosine = 1.0;
  double sine = 0.0;

  void turn(double& upper, double& lower) const {
    if (!turns) return;
    const double turned = cosine * upper + sine * lower;
    lower = cosine * lower - sine * upper;
    upper = turned;
  }
};

// Turns `member` of the lower row to 0.
template <typename Member>
SRotation rotate(SRow& upper, SRow& lower, Member&& member) {
  double& low = member(lower);
  if (low == 0.0) return {};
  double& up = member(upper);
  const double length = std::hypot(up, low);
  const SRotation rotation{true, up / length, low / length};
  rotation.turn(upper.noise, lower.noise);
  for (std::size_t i = 0; i < STATES; ++i) rotation.turn(upper.state[i], lower.state[i]);
  low = 0.0;
  up = length;
  return rotation;
}

using SRows = std::array<SRow, STATES>;  // upper triangular in `state`

bool isSame(const SRows& a, const SRows& b) {
  for (std::size_t i = 0; i < STATES; ++i)
    if (a[i].noise != b[i].noise || a[i].state != b[i].state) return false;
  return true;
}

// From one element to the next and its measurement.
struct SStep {
  std::array<SRotation, STATES> eliminating;
  std::array<SRotation, STATES> measuring;
  SRows rows;  // after it
};

// The rotations of the chain. They do not depend on what was measured, only on how precisely. Away
// from the ends they settle: rounding included, the rows come back to what they were some steps ago
// and go round from there, and nothing needs to be calculated or kept any more.
class CElimination {
 public:
  CElimination() { steps_.reserve(LONGEST_CYCLE); }

  /// `weight` is the root of the next measurement's least-squares weight. The step lives until the
  /// next one.
  const SStep& next(double weight) {
    if (isCycle_ && weight == weight_) {
      ++runs_.back().steps;
      at_ = at_ + 1 < steps_.size() ? at_ + 1 : 0;
      return steps_[at_];
    }
    const SRows rows = steps_.empty() ? SRows{} : steps_[at_].rows;
    if (runs_.empty() || isCycle_) runs_.push_back({0, eliminated_.size(), 0});
    if (isCycle_ || weight != weight_ || steps_.size() == LONGEST_CYCLE) {
      steps_.clear();
      start_ = rows;
    }
    weight_ = weight;
    at_ = steps_.size();
    eliminated_.push_back(take(steps_.emplace_back(), rows));
    ++runs_.back().steps;
    ++runs_.back().rows;
    isCycle_ = isSame(steps_.back().rows, start_);
    if (isCycle_) runs_.push_back({0, eliminated_.size() - steps_.size(), steps_.size()});
    return steps_.back();
  }

  /// After the last step.
  const SRows& rows() const { return steps_[at_].rows; }

  /// Calls visit(row) for what every step left behind, the last one first: noise * w + state . x' =
  /// value, with x' the state after the step.
  template <typename Visitor>
  void traceBack(Visitor&& visit) const {
    for (auto run = runs_.rbegin(); run != runs_.rend(); ++run) {
      if (run->steps == 0) continue;
      std::size_t row = (run->steps - 1) % run->rows;
      for (std::size_t left = run->steps; left > 0; --left) {
        visit(eliminated_[run->firstRow + row]);
        row = row > 0 ? row - 1 : run->rows - 1;
      }
    }
  }

 private:
  static constexpr std::size_t LONGEST_CYCLE = 64;

  // So many steps have left these rows behind, over and over.
  struct SRun {
    std::size_t steps;
    std::size_t firstRow;
    std::size_t rows;
  };

  // With x the state before and x' after it, s = s' - d', d = d' - c', c = c' - w.
  SRow take(SStep& step, const SRows& rows) const {
    step.rows = rows;
    SRow noise{1.0, {0.0, 0.0, 0.0}};
    for (std::size_t i = STATES; i-- > 0;) {
      SRow& row = step.rows[i];
      const auto [s, d, c] = row.state;
      row = {-c, {s, d - s, c - d}};
      step.eliminating[i] = rotate(noise, row, [](SRow& r) -> double& { return r.noise; });
    }
    SRow measured{0.0, {weight_, 0.0, 0.0}};
    for (std::size_t i = 0; i < STATES; ++i)
      step.measuring[i] =
          rotate(step.rows[i], measured, [i](SRow& r) -> double& { return r.state[i]; });
    return noise;
  }

  double weight_ = 0.0;
  bool isCycle_ = false;  // after the last of the steps the first one follows
  std::size_t at_ = 0;    // the step taken last
  SRows start_{};         // before the first of the steps
  std::vector<SStep> steps_;
  std::vector<SRun> runs_;
  std::deque<SRow> eliminated_;  // grows without moving: a chain may never settle
};

// Smooths in place: a value that has been measured makes room for what elimination leaves of it.
class CChain {
 public:
  /// Goes on to the next element, which was measured as `value`; `weight` is the root of its
  /// least-squares weight. `value` becomes what trace needs.
  void measure(double& value, double weight) {
    const SStep& step = elimination_.next(weight);
    double noise = 0.0;
    for (std::size_t i = STATES; i-- > 0;) step.eliminating[i].turn(noise, values_[i]);
    double measured = weight * value;
    for (std::size_t i = 0; i < STATES; ++i) step.measuring[i].turn(values_[i], measured);
    value = noise;
  }

  /// From what `measure` left in the elements to the smoothed ones.
  void trace(std::span<double> elements) const {
    std::array<double, STATES> x{};
    for (std::size_t i = STATES; i-- > 0;) {
      const SRow& row = elimination_.rows()[i];
      double value = values_[i];
      for (std::size_t j = i + 1; j < STATES; ++j) value -= row.state[j] * x[j];
      x[i] = row.state[i] == 0.0 ? 0.0 : value / row.state[i];
    }
    double* element = elements.data() + elements.size();
    elimination_.traceBack([&](const SRow& row) {  // the step that led to the element
      double w = *--element;
      *element = x[0];
      for (std::size_t i = 0; i < STATES; ++i) w -= row.state[i] * x[i];
      w /= row.noise;
      x[0] -= x[1];
      x[1] -= x[2];
      x[2] -= w;
    });
  }

 private:
  CElimination elimination_;
  std::array<double, STATES> values_{};  // of the rows
};

void smooth(std::span<double> sequence, std::size_t anchorsIn, std::size_t anchorsOut,
            double alpha) {
  // A third difference spans four elements: of the anchors only the nearest three matter.
  const std::size_t heldIn = std::min<std::size_t>(anchorsIn, STATES);
  const std::size_t heldOut = std::min<std::size_t>(anchorsOut, STATES);
  const auto part = sequence.subspan(anchorsIn - heldIn,
                                     sequence.size() - anchorsIn + heldIn - anchorsOut + heldOut);
  const std::size_t endFree = part.size() - heldOut;
  if (part.size() <= STATES || heldIn >= endFree) return;

  const double dataWeight = std::sqrt(alpha);
  // Off by the inverse of its square, so equal to a constraint in double precision.
  const double anchorWeight = 1e12 * std::max(1.0, dataWeight);
  // A shift of the data shifts the path; without it the differences keep more digits.
  const double shift = part[0];
  std::array<double, 2 * STATES> anchors;
  const auto lastAnchors = std::copy_n(part.begin(), heldIn, anchors.begin());
  std::copy_n(part.end() - static_cast<std::ptrdiff_t>(heldOut), heldOut, lastAnchors);
  CChain chain;
  for (std::size_t i = 0; i < part.size(); ++i) {
    const bool isAnchor = i < heldIn || i >= endFree;
    part[i] -= shift;
    chain.measure(part[i], isAnchor ? anchorWeight : dataWeight);
  }
  chain.trace(part);
  for (std::size_t i = heldIn; i < endFree; ++i) part[i] += shift;
  std::copy_n(anchors.begin(), heldIn, part.begin());
  std::copy_n(lastAnchors, heldOut, part.end() - static_cast<std::ptrdiff_t>(heldOut));
}

double mean(std::span<const double> values) {
  const double first = values[0];
  double sum = 0.0;
  for (const double value : values) sum += value - first;
  return first + sum / static_cast<double>(values.size());
}

void holdStill(std::span<double> sequence, std::size_t anchorsIn, std::size_t anchorsOut) {
  const std::size_t n = sequence.size();
  if (anchorsIn == 0 || anchorsOut == 0) {
    const auto held = anchorsIn > 0    ? sequence.first(anchorsIn)
                      : anchorsOut > 0 ? sequence.last(anchorsOut)
                                       : sequence;
    const double position = mean(held);
    std::fill(sequence.begin(), sequence.end(), position);
    return;
  }
  const double start = mean(sequence.first(anchorsIn));
  const double end = mean(sequence.last(anchorsOut));
  const double startAt = 0.5 * static_cast<double>(anchorsIn - 1);
  const double endAt = static_cast<double>(n - 1) - 0.5 * static_cast<double>(anchorsOut - 1);
  const double slope = endAt > startAt ? (end - start) / (endAt - startAt) : 0.0;
  for (std::size_t i = 0; i < n; ++i)
    sequence[i] = start + slope * (static_cast<double>(i) - startAt);
}

}  // namespace

void Smooth3(std::span<double> sequence, int anchorsIn, int anchorsOut, double alpha,
             const void* /*reserved*/, bool /*reservedFlag*/) {
  if (sequence.empty() || !(alpha >= 0.0) || std::isinf(alpha)) return;
  const std::size_t n = sequence.size();
  const auto in = std::min(static_cast<std::size_t>(std::max(anchorsIn, 0)), n);
  const auto out = std::min(static_cast<std::size_t>(std::max(anchorsOut, 0)), n);
  if (alpha == 0.0)
    holdStill(sequence, in, out);
  else if (in + out < n)
    smooth(sequence, in, out, alpha);
}
