#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
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
  double value = 0.0;
};

// What is left of one third difference: noise * w + state . x' = value, x' being the state after.
using SEliminated = SRow;

// Givens rotation of two rows; turns `eliminated` of the lower one to 0.
template <typename Member>
void rotate(SRow& upper, SRow& lower, Member&& member) {
  double& low = member(lower);
  if (low == 0.0) return;
  double& up = member(upper);
  const double length = std::hypot(up, low);
  const double cosine = up / length;
  const double sine = low / length;
  const auto turn = [cosine, sine](double& above, double& below) {
    const double turned = cosine * above + sine * below;
    below = cosine * below - sine * above;
    above = turned;
  };
  turn(upper.noise, lower.noise);
  for (std::size_t i = 0; i < STATES; ++i) turn(upper.state[i], lower.state[i]);
  turn(upper.value, lower.value);
  low = 0.0;
  up = length;
}

class CChain {
 public:
  explicit CChain(std::size_t length) { eliminated_.reserve(length); }

  /// The current element was measured as `value`; `weight` is the root of its least-squares weight.
  void measure(double value, double weight) {
    SRow row{0.0, {weight, 0.0, 0.0}, weight * value};
    for (std::size_t i = 0; i < STATES; ++i)
      rotate(rows_[i], row, [i](SRow& r) -> double& { return r.state[i]; });
  }

  /// Goes on to the next element. With x the state before and x' after it, s = s' - d',
  /// d = d' - c', c = c' - w.
  void advance() {
    SRow noise{1.0, {0.0, 0.0, 0.0}, 0.0};
    for (std::size_t i = STATES; i-- > 0;) {
      const auto [s, d, c] = rows_[i].state;
      rows_[i].state = {s, d - s, c - d};
      rows_[i].noise = -c;
      rotate(noise, rows_[i], [](SRow& r) -> double& { return r.noise; });
    }
    eliminated_.push_back(noise);
  }

  /// Writes the smoothed elements, the last measured one at `out.back()`.
  void trace(std::span<double> out) const {
    std::array<double, STATES> x{};
    for (std::size_t i = STATES; i-- > 0;) {
      double value = rows_[i].value;
      for (std::size_t j = i + 1; j < STATES; ++j) value -= rows_[i].state[j] * x[j];
      x[i] = rows_[i].state[i] == 0.0 ? 0.0 : value / rows_[i].state[i];
    }
    out[out.size() - 1] = x[0];
    for (std::size_t k = out.size() - 1; k-- > 0;) {
      const SEliminated& row = eliminated_[k];
      double w = row.value;
      for (std::size_t i = 0; i < STATES; ++i) w -= row.state[i] * x[i];
      w /= row.noise;
      x[0] -= x[1];
      x[1] -= x[2];
      x[2] -= w;
      out[k] = x[0];
    }
  }

 private:
  std::array<SRow, STATES> rows_{};  // upper triangular in `state`
  std::vector<SEliminated> eliminated_;
};

void smooth(std::span<double> sequence, std::size_t anchorsIn, std::size_t anchorsOut,
            double alpha) {
  // A third difference spans four elements: of the anchors only the nearest three matter.
  const std::size_t skipIn = anchorsIn - std::min<std::size_t>(anchorsIn, STATES);
  const std::size_t skipOut = anchorsOut - std::min<std::size_t>(anchorsOut, STATES);
  const auto part = sequence.subspan(skipIn, sequence.size() - skipIn - skipOut);
  const std::size_t firstFree = anchorsIn - skipIn;
  const std::size_t endFree = part.size() - (anchorsOut - skipOut);
  if (part.size() <= STATES || firstFree >= endFree) return;

  const double dataWeight = std::sqrt(alpha);
  // Off by the inverse of its square, so equal to a constraint in double precision.
  const double anchorWeight = 1e12 * std::max(1.0, dataWeight);
  // A shift of the data shifts the path; without it the differences keep more digits.
  const double shift = part[0];
  CChain chain(part.size());
  for (std::size_t i = 0; i < part.size(); ++i) {
    if (i > 0) chain.advance();
    const bool isAnchor = i < firstFree || i >= endFree;
    chain.measure(part[i] - shift, isAnchor ? anchorWeight : dataWeight);
  }
  std::vector<double> path(part.size());
  chain.trace(path);
  for (std::size_t i = firstFree; i < endFree; ++i) part[i] = path[i] + shift;
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
