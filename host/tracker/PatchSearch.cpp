#include "tracker/PatchSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "PatchKernels.h"

namespace {

/// Variance per sample below which a window counts as flat: a contrast of 3 codes in 65535.
constexpr double kFlatVariance = 2.5e-9;
/// Keeps the score of a patch that has no contrast on a coarse level at 0.
constexpr double kLeastEnergy = 1e-20;
/// A coarser level must still show the patch: at least this half width, this share of variance.
constexpr int kCoarseHalfWidth = 5;
constexpr double kCoarseVarianceShare = 0.3;
/// Smaller patches are searched without a pyramid.
constexpr int kPyramidHalfWidth = 8;
/// Candidates this much worse than the best are not followed to finer levels.
constexpr double kFollowShare = 0.3;
constexpr int kPeakDistance = 3;
constexpr int kClimbRadius = 2;
/// Scores are looked through in groups of so many, see FindAbove.
constexpr int kGroup = 16;
/// Rounding of a bound computed in floats.
constexpr double kBoundMargin = 2e-5;

double Correlation(double dot, double var, double norm, int area) {
  if (!(var > kFlatVariance * area) || norm <= 0.0) return 0.0;
  return std::clamp(dot / (norm * std::sqrt(var)), -1.0, 1.0);
}

bool Better(const SPeak& a, const SPeak& b) {
  if (a.correlation != b.correlation) return a.correlation > b.correlation;
  return a.y != b.y ? a.y < b.y : a.x < b.x;
}

bool Near(const SPeak& a, const SPeak& b, int distance) {
  return std::abs(a.x - b.x) < distance && std::abs(a.y - b.y) < distance;
}

/// Inserts into a list that is kept best first and no longer than `limit`.
void InsertPeak(std::vector<SPeak>& list, const SPeak& peak, int limit) {
  const auto at = std::lower_bound(list.begin(), list.end(), peak, Better);
  if (at == list.end() && static_cast<int>(list.size()) >= limit) return;
  list.insert(at, peak);
  if (static_cast<int>(list.size()) > limit) list.pop_back();
}

void Halve(const SPlaneView& in, CPlane& out) {
  out.resize(in.width / 2, in.height / 2);
  for (int y = 0; y < out.height(); ++y) {
    HalveRow(in.row(2 * y), in.row(2 * y + 1), out.width(), out.row(y));
  }
}

/// out(x, y) = sum over the width x height samples from (x, y) on.
void BoxSums(const SPlaneView& in, int width, int height, CPlane& rows, CPlane& out) {
  const int columns = in.width - width + 1;
  out.resize(columns, in.height - height + 1);
  rows.resize(in.width, 1);
  for (int y = 0; y < out.height(); ++y) {
    SumRows(in.row(y), in.stride, height, in.width, rows.row(0));
    SumAlong(rows.row(0), width, columns, out.row(y));
  }
}

}  // namespace

void CPatchSearch::takeLevel(const SPlaneView& patch, SLevel& level) {
  level.width = patch.width;
  level.height = patch.height;
  level.patch.resize(patch.width, patch.height);
  const int stride = level.patch.stride();
  level.mask.assign(static_cast<std::size_t>(stride), 0.0F);
  std::fill(level.mask.begin(), level.mask.begin() + patch.width, 1.0F);
  const double sum = MaskedSum(patch.data, patch.stride, level.mask.data(), stride, patch.height);
  const auto mean = static_cast<float>(sum / (patch.width * patch.height));
  level.norm = std::sqrt(Centre(patch.data, patch.stride, mean, level.mask.data(), stride,
                                patch.height, level.patch.row(0)));
}

void CPatchSearch::setPatch(const SPlaneView& patch) {
  const int half = std::min(patch.width, patch.height) / 2;
  int depth = 0;
  if (half >= kPyramidHalfWidth) {
    depth = 1;
    while ((half >> (depth + 1)) >= kCoarseHalfWidth) ++depth;
  }
  levels_.resize(static_cast<std::size_t>(depth) + 1);
  takeLevel(patch, levels_[0]);
  coarsest_ = std::min(depth, 1);
  const double variance = levels_[0].norm * levels_[0].norm / (patch.width * patch.height);
  for (int l = 1; l <= depth; ++l) {
    SLevel& level = levels_[static_cast<std::size_t>(l)];
    const SLevel& finer = levels_[static_cast<std::size_t>(l) - 1];
    Halve(ViewOf(finer.patch, 0, 0, finer.width, finer.height), scratch_);
    takeLevel(ViewOf(scratch_, 0, 0, scratch_.width(), scratch_.height()), level);
    if (level.norm * level.norm / (level.width * level.height) >= kCoarseVarianceShare * variance) {
      coarsest_ = l;
    } else {
      break;
    }
  }
}

double CPatchSearch::correlationAt(const SPlaneView& window, int x, int y) const {
  const SLevel& level = levels_[0];
  double dot = 0.0;
  double var = 0.0;
  const int area = level.width * level.height;
  ScoreOne(level.patch.row(0), level.patch.stride(), area, level.height, level.mask.data(),
           window.row(y) + x, window.stride, dot, var);
  return Correlation(dot, var, level.norm, area);
}

void CPatchSearch::buildWindowLevels(const SPlaneView& window) {
  for (int l = 1; l <= coarsest_; ++l) {
    Halve(windowAt(l - 1, window), levels_[static_cast<std::size_t>(l)].window);
  }
}

SPlaneView CPatchSearch::windowAt(int level, const SPlaneView& window) const {
  if (level == 0) return window;
  const CPlane& plane = levels_[static_cast<std::size_t>(level)].window;
  return ViewOf(plane, 0, 0, plane.width(), plane.height());
}

/// Best of the positions, inclusive; few of them.
SPeak CPatchSearch::bestIn(const SLevel& level, const SPlaneView& window, const SRect& positions) {
  constexpr int kAtOnce = 5;
  const int area = level.width * level.height;
  const int columns = positions.right - positions.left + 1;
  const float* first = window.row(positions.top) + positions.left;
  sums_.resize(level.width + columns - 1, 1);
  squares_.resize(level.width + columns - 1, 1);
  float* sums = sums_.row(0);
  float* squares = squares_.row(0);
  SumColumns(first, window.stride, level.height, sums_.width(), sums, squares);
  SPeak best{positions.left, positions.top, -2.0};
  for (int y = positions.top; y <= positions.bottom; ++y, first += window.stride) {
    const int stride = level.patch.stride();
    double sum = MaskedSum(sums, stride, level.mask.data(), stride, 1);
    double square = MaskedSum(squares, stride, level.mask.data(), stride, 1);
    for (int x = 0; x < columns; x += kAtOnce) {
      double dot[kAtOnce];
      Dot5(level.patch.row(0), stride, level.height, first + x, window.stride, dot);
      for (int i = x; i < std::min(x + kAtOnce, columns); ++i) {
        const double var = square - sum * sum / area;
        const SPeak peak{positions.left + i, y, Correlation(dot[i - x], var, level.norm, area)};
        if (Better(peak, best)) best = peak;
        sum += static_cast<double>(sums[i + level.width]) - sums[i];
        square += static_cast<double>(squares[i + level.width]) - squares[i];
      }
    }
    if (y == positions.bottom) break;
    SlideColumns(first, first + level.height * window.stride, sums_.width(), sums, squares);
  }
  return best;
}

SPeak CPatchSearch::climb(const SPlaneView& window, int x, int y, int radius) {
  const SLevel& level = levels_[0];
  const int lastX = window.width - level.width;
  const int lastY = window.height - level.height;
  return bestIn(level, window,
                {std::clamp(x - radius, 0, lastX), std::clamp(y - radius, 0, lastY),
                 std::clamp(x + radius, 0, lastX), std::clamp(y + radius, 0, lastY)});
}

void CPatchSearch::scoreCoarsest(const SPlaneView& coarse) {
  const SLevel& level = levels_[static_cast<std::size_t>(coarsest_)];
  const int area = level.width * level.height;
  const SScoreScale scale{1.0F / static_cast<float>(area),
                          static_cast<float>(std::max(level.norm * level.norm, kLeastEnergy)),
                          static_cast<float>(kFlatVariance * area)};
  map_.resize(coarse.width - level.width + 1, coarse.height - level.height + 1);
  sums_.resize(coarse.width, SStrip::kRows);
  squares_.resize(coarse.width, SStrip::kRows);
  for (int y = 0; y < map_.height(); y += SStrip::kRows) {
    const int rows = std::min(SStrip::kRows, map_.height() - y);
    // From the samples again for each strip: sums that slide for long gather rounding.
    SumColumns(coarse.row(y), coarse.stride, level.height, coarse.width, sums_.row(0),
               squares_.row(0));
    for (int j = 1; j < rows; ++j) {
      std::copy(sums_.row(j - 1), sums_.row(j - 1) + sums_.stride(), sums_.row(j));
      std::copy(squares_.row(j - 1), squares_.row(j - 1) + squares_.stride(), squares_.row(j));
      SlideColumns(coarse.row(y + j - 1), coarse.row(y + j - 1 + level.height), coarse.width,
                   sums_.row(j), squares_.row(j));
    }
    ScoreStrip(level.patch.row(0), level.patch.stride(), level.width, level.height, coarse.row(y),
               coarse.stride, scale,
               {rows, map_.width(), sums_.row(0), squares_.row(0), sums_.stride(), map_.row(y),
                map_.stride()});
  }
}

/// The best local maxima of the map.
void CPatchSearch::pickCandidates() {
  const int columns = map_.width();
  const int rows = map_.height();
  candidates_.clear();
  for (int y = 0; y < rows; ++y) {
    const float* here = map_.row(y);
    const float* above = map_.row(std::max(y - 1, 0));
    const float* below = map_.row(std::min(y + 1, rows - 1));
    const auto isPeak = [&](int x) {
      const int l = std::max(x - 1, 0);
      const int r = std::min(x + 1, columns - 1);
      const float v = here[x];
      return v >= here[l] && v >= here[r] && v >= above[l] && v >= above[x] && v >= above[r] &&
             v >= below[l] && v >= below[x] && v >= below[r];
    };
    for (int group = 0; group < columns; group += kGroup) {
      const bool full = static_cast<int>(candidates_.size()) == kPeaks;
      const float least = full ? static_cast<float>(candidates_.back().correlation) : -2.0F;
      group = FindAbove(here, group, columns, least);
      for (int x = group; x < std::min(group + kGroup, columns); ++x) {
        if (here[x] > least && isPeak(x)) InsertPeak(candidates_, {x, y, here[x]}, kPeaks);
      }
    }
  }
  for (SPeak& c : candidates_) {
    c.correlation = std::copysign(std::sqrt(std::abs(c.correlation)), c.correlation);
  }
}

const std::vector<SPeak>& CPatchSearch::findPeaks(const SPlaneView& window) {
  buildWindowLevels(window);
  scoreCoarsest(windowAt(coarsest_, window));
  pickCandidates();
  for (int l = coarsest_ - 1; l >= 0; --l) {
    const SLevel& level = levels_[static_cast<std::size_t>(l)];
    const SPlaneView view = windowAt(l, window);
    const int lastX = view.width - level.width;
    const int lastY = view.height - level.height;
    const double leastWorthwhile = candidates_[0].correlation - kFollowShare;
    peaks_.clear();
    for (const SPeak& c : candidates_) {
      if (c.correlation < leastWorthwhile) break;
      const int x = std::min(2 * c.x, lastX);
      const int y = std::min(2 * c.y, lastY);
      const SPeak peak =
          bestIn(level, view,
                 {std::max(x - kClimbRadius, 0), std::max(y - kClimbRadius, 0),
                  std::min(x + kClimbRadius, lastX), std::min(y + kClimbRadius, lastY)});
      // Candidates that have met need not be followed twice.
      const auto same = [&](const SPeak& p) { return Near(p, peak, 1); };
      if (std::none_of(peaks_.begin(), peaks_.end(), same)) InsertPeak(peaks_, peak, kPeaks);
    }
    candidates_ = peaks_;
  }
  peaks_.clear();
  for (const SPeak& c : candidates_) {
    const auto same = [&](const SPeak& p) { return Near(p, c, kPeakDistance); };
    if (std::none_of(peaks_.begin(), peaks_.end(), same)) peaks_.push_back(c);
  }
  return peaks_;
}

void CPatchSearch::boundAll(const SPlaneView& window) {
  const SLevel& level = levels_[0];
  const int columns = window.width - level.width + 1;
  const int rows = window.height - level.height + 1;
  const int area = level.width * level.height;
  // Large blocks stop bounding on fine texture, small ones cost.
  const int side = std::min(level.width, level.height) < 33 ? 3 : 6;
  const int across = level.width / side;
  const int down = level.height / side;
  const int blockArea = side * side;

  CPlane squares;
  CPlane line;
  CPlane sums;
  CPlane energy;
  squares.resize(window.width, window.height);
  for (int y = 0; y < window.height; ++y) SquareRow(window.row(y), window.width, squares.row(y));
  BoxSums(ViewOf(squares, 0, 0, window.width, window.height), level.width, level.height, line,
          energy);
  BoxSums(window, level.width, level.height, line, sums);
  BoxSums(window, side, side, line, scratch_);

  std::vector<float> means(static_cast<std::size_t>(across) * static_cast<std::size_t>(down));
  double meanSum = 0.0;
  double projected = 0.0;
  for (int j = 0; j < down; ++j) {
    for (int i = 0; i < across; ++i) {
      double sum = 0.0;
      for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) sum += level.patch.row(j * side + y)[i * side + x];
      }
      const double mean = sum / blockArea;
      means[static_cast<std::size_t>(j * across + i)] = static_cast<float>(mean);
      meanSum += mean;
      projected += mean * mean * blockArea;
    }
  }
  const double rest = std::sqrt(std::max(level.norm * level.norm - projected, 0.0));

  map_.resize(columns, rows);
  CPlane work;
  work.resize(columns, 3);
  for (int y = 0; y < rows; ++y) {
    float* tw = work.row(0);
    float* ww = work.row(1);
    float* bs = work.row(2);
    std::fill(tw, tw + 3 * static_cast<std::ptrdiff_t>(work.stride()), 0.0F);
    for (int j = 0; j < down; ++j) {
      for (int i = 0; i < across; ++i) {
        AccumulateBlocks(scratch_.row(y + j * side) + i * side,
                         means[static_cast<std::size_t>(j * across + i)], columns, tw, ww, bs);
      }
    }
    for (int x = 0; x < columns; ++x) {
      const double mean = sums.row(y)[x] / static_cast<double>(area);
      const double var = energy.row(y)[x] - mean * mean * area;
      if (!(var > kFlatVariance * area)) {
        map_.row(y)[x] = 0.0F;
        continue;
      }
      const double inner = tw[x] - blockArea * mean * meanSum;
      const double kept = (ww[x] - 2.0 * blockArea * mean * bs[x]) / blockArea +
                          across * down * blockArea * mean * mean;
      const double left = std::sqrt(std::max(var - kept, 0.0));
      map_.row(y)[x] =
          static_cast<float>((inner + rest * left) / (level.norm * std::sqrt(var)) + kBoundMargin);
    }
  }
}

SPeak CPatchSearch::findBest(const SPlaneView& window, const SPeak* excluded, int distance) {
  boundAll(window);
  const auto allowed = [&](int x, int y) {
    return excluded == nullptr || !Near({x, y, 0.0}, *excluded, distance);
  };
  SPeak first;
  for (int y = 0; y < map_.height(); ++y) {
    for (int x = 0; x < map_.width(); ++x) {
      const SPeak bound{x, y, map_.row(y)[x]};
      if (allowed(x, y) && Better(bound, first)) first = bound;
    }
  }
  if (first.correlation <= -1.0) return first;

  SPeak best{first.x, first.y, correlationAt(window, first.x, first.y)};
  std::vector<SPeak> open;
  for (int y = 0; y < map_.height(); ++y) {
    for (int x = 0; x < map_.width(); ++x) {
      if (map_.row(y)[x] >= best.correlation && allowed(x, y))
        open.push_back({x, y, map_.row(y)[x]});
    }
  }
  std::sort(open.begin(), open.end(), Better);
  for (const SPeak& bound : open) {
    if (bound.correlation < best.correlation) break;
    const SPeak peak{bound.x, bound.y, correlationAt(window, bound.x, bound.y)};
    if (Better(peak, best)) best = peak;
  }
  return best;
}
