#include "tracker/FeatureDetector.h"

#include <algorithm>
#include <cmath>

#include "PatchKernels.h"
#include "tracker/Plane.h"

namespace {

/// The tensor is gathered in small squares first, windows are made of squares: positions are known
/// to a square's width, which is all that choosing a patch needs.
constexpr int kSquare = 3;
/// Variance that smoothing and the five-point derivative leave of white noise.
constexpr double kGradientNoiseGain = 0.0853;
/// The largest eigenvalue by chance in a large frame of noise stays below twice the mean one.
constexpr double kOverNoise = 2.5;
/// A fifth of an 8-bit code per pixel: less is not worth following even without noise.
constexpr double kLeastStrength = 5e-7;
/// Texture should come from at least this share of the window's squares: a corner's two edges cross
/// a fifth of them, a speck a tenth. Below it strength falls steeply.
constexpr double kLeastSpread = 0.2;
constexpr int kSpreadPower = 8;
constexpr int kStripRows = 16 * kSquare;
constexpr int kHalo = 4;

/// Sums over squares: gradient products and the square of their trace.
struct STensor {
  float xx = 0.0F;
  float xy = 0.0F;
  float yy = 0.0F;
  float power = 0.0F;
};

struct SGrid {
  int columns = 0;
  int rows = 0;
  std::vector<STensor> squares;
  STensor& at(int x, int y) {
    return squares[static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) +
                   static_cast<std::size_t>(x)];
  }
};

void GatherRow(const float* gx, const float* gy, STensor* squares, int columns) {
  for (int i = 0; i < columns; ++i) {
    STensor& s = squares[i];
    for (int k = i * kSquare; k < (i + 1) * kSquare; ++k) {
      s.xx += gx[k] * gx[k];
      s.xy += gx[k] * gy[k];
      s.yy += gy[k] * gy[k];
    }
  }
}

SGrid GatherTensors(const IPicture& picture, const SRect& region) {
  SGrid grid;
  grid.columns = (region.right - region.left + 1) / kSquare;
  grid.rows = (region.bottom - region.top + 1) / kSquare;
  grid.squares.resize(static_cast<std::size_t>(grid.columns) * static_cast<std::size_t>(grid.rows));
  std::vector<std::uint16_t> memory;
  CPlane luma;
  CPlane scratch;
  const int width = grid.columns * kSquare;
  CPlane gradients;
  gradients.resize(width, 2);
  for (int y = 0; y < grid.rows * kSquare; y += kStripRows) {
    const int rows = std::min(kStripRows, grid.rows * kSquare - y);
    ExtractLuma(picture, region,
                {region.left - kHalo, region.top + y - kHalo, region.left + width - 1 + kHalo,
                 region.top + y + rows - 1 + kHalo},
                0.0F, memory, luma);
    SmoothBinomial(luma, scratch);
    for (int j = 0; j < rows; ++j) {
      const float* centre = luma.row(j + kHalo) + kHalo;
      Derivative5(centre, 1, width, gradients.row(0));
      Derivative5(centre, luma.stride(), width, gradients.row(1));
      GatherRow(gradients.row(0), gradients.row(1), &grid.at(0, (y + j) / kSquare), grid.columns);
    }
  }
  for (STensor& s : grid.squares) s.power = (s.xx + s.yy) * (s.xx + s.yy);
  return grid;
}

void Add(STensor& sum, const STensor& s, float sign) {
  sum.xx += sign * s.xx;
  sum.xy += sign * s.xy;
  sum.yy += sign * s.yy;
  sum.power += sign * s.power;
}

/// Every square becomes the sum over the window of 2 * reach + 1 squares a side around it; windows
/// that reach beyond the grid are cut.
void SumWindows(SGrid& grid, int reach) {
  std::vector<STensor> line;
  const auto slide = [&](int count, auto&& element) {
    line.resize(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) line[static_cast<std::size_t>(i)] = element(i);
    for (int i = 0; i < count; ++i) {
      STensor sum;
      for (int k = std::max(i - reach, 0); k <= std::min(i + reach, count - 1); ++k) {
        Add(sum, line[static_cast<std::size_t>(k)], 1.0F);
      }
      element(i) = sum;
    }
  };
  for (int y = 0; y < grid.rows; ++y) {
    slide(grid.columns, [&](int i) -> STensor& { return grid.at(i, y); });
  }
  for (int x = 0; x < grid.columns; ++x) {
    slide(grid.rows, [&](int i) -> STensor& { return grid.at(x, i); });
  }
}

double StrengthOf(const STensor& s, int side, double noise) {
  const double area = static_cast<double>(side) * side * kSquare * kSquare;
  const double trace = s.xx + s.yy;
  const double split =
      std::hypot(static_cast<double>(s.xx) - s.yy, 2.0 * static_cast<double>(s.xy));
  const double smaller = 0.5 * (trace - split) / area;
  const double floor = kGradientNoiseGain * noise * noise;
  if (smaller < kOverNoise * floor + kLeastStrength) return 0.0;
  const double carriers = trace * trace / s.power;
  const double spread = std::min(1.0, carriers / (kLeastSpread * side * side));
  return (smaller - floor) * std::pow(spread, kSpreadPower);
}

struct SCells {
  SCells(const SRect& region, int count) {
    const double width = region.right - region.left + 1;
    const double height = region.bottom - region.top + 1;
    columns =
        std::clamp(static_cast<int>(std::lround(std::sqrt(count * width / height))), 1, count);
    rows = (count + columns - 1) / columns;
    cellWidth = width / columns;
    cellHeight = height / rows;
    left = region.left;
    top = region.top;
  }
  std::size_t of(const SFeature& f) const {
    const int x = std::clamp(static_cast<int>((f.x - left) / cellWidth), 0, columns - 1);
    const int y = std::clamp(static_cast<int>((f.y - top) / cellHeight), 0, rows - 1);
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) +
           static_cast<std::size_t>(x);
  }
  int columns = 1;
  int rows = 1;
  double cellWidth = 1.0;
  double cellHeight = 1.0;
  double left = 0.0;
  double top = 0.0;
};

bool Stronger(const SFeature& a, const SFeature& b) {
  if (a.strength != b.strength) return a.strength > b.strength;
  return a.y != b.y ? a.y < b.y : a.x < b.x;
}

/// Strongest first; each cell gives one a round.
std::vector<SFeature> Spread(const std::vector<SFeature>& sorted, const SRect& region, int count,
                             double distance) {
  const SCells cells(region, count);
  std::vector<std::vector<SFeature>> queues(static_cast<std::size_t>(cells.columns) *
                                            static_cast<std::size_t>(cells.rows));
  for (const SFeature& f : sorted) queues[cells.of(f)].push_back(f);
  std::vector<std::size_t> heads(queues.size(), 0);
  std::vector<SFeature> chosen;
  const auto isFree = [&](const SFeature& f) {
    return std::none_of(chosen.begin(), chosen.end(), [&](const SFeature& c) {
      return std::hypot(c.x - f.x, c.y - f.y) < distance;
    });
  };
  for (bool any = true; any && static_cast<int>(chosen.size()) < count;) {
    any = false;
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < queues.size(); ++i) {
      if (heads[i] < queues[i].size()) order.push_back(i);
    }
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
      return Stronger(queues[a][heads[a]], queues[b][heads[b]]);
    });
    for (const std::size_t i : order) {
      while (heads[i] < queues[i].size() && !isFree(queues[i][heads[i]])) ++heads[i];
      if (heads[i] == queues[i].size() || static_cast<int>(chosen.size()) == count) continue;
      chosen.push_back(queues[i][heads[i]++]);
      any = true;
    }
  }
  std::sort(chosen.begin(), chosen.end(), Stronger);
  return chosen;
}

/// Local maxima of strength inside the margin, strongest first.
std::vector<SFeature> FindPeaks(SGrid& grid, const SFeatureSettings& settings, int reach,
                                double noise) {
  const SRect& region = settings.region;
  std::vector<double> strength(grid.squares.size());
  for (std::size_t i = 0; i < strength.size(); ++i) {
    strength[i] = StrengthOf(grid.squares[i], 2 * reach + 1, noise);
  }
  const auto at = [&](int x, int y) {
    return strength[static_cast<std::size_t>(y) * static_cast<std::size_t>(grid.columns) +
                    static_cast<std::size_t>(x)];
  };
  std::vector<SFeature> peaks;
  for (int j = 0; j < grid.rows; ++j) {
    for (int i = 0; i < grid.columns; ++i) {
      const double value = at(i, j);
      if (value <= 0.0) continue;
      const int x = region.left + i * kSquare + kSquare / 2;
      const int y = region.top + j * kSquare + kSquare / 2;
      if (x - settings.margin < region.left || x + settings.margin > region.right ||
          y - settings.margin < region.top || y + settings.margin > region.bottom) {
        continue;
      }
      bool isPeak = true;
      for (int b = std::max(j - 1, 0); b <= std::min(j + 1, grid.rows - 1) && isPeak; ++b) {
        for (int a = std::max(i - 1, 0); a <= std::min(i + 1, grid.columns - 1); ++a) {
          if (at(a, b) > value) isPeak = false;
        }
      }
      if (isPeak) peaks.push_back({static_cast<double>(x), static_cast<double>(y), value});
    }
  }
  std::sort(peaks.begin(), peaks.end(), Stronger);
  return peaks;
}

}  // namespace

std::vector<SFeature> DetectFeatures(const std::uint16_t* samples, const CImageFormat& format,
                                     const SFeatureSettings& settings) {
  const SRect& region = settings.region;
  const int width = region.right - region.left + 1;
  const int height = region.bottom - region.top + 1;
  if (settings.count <= 0 || width < 3 * kSquare || height < 3 * kSquare) return {};
  const CWholePicture picture(samples, format);
  const double noise = EstimateNoise(picture, region);
  const int reach = std::max(1, settings.window / kSquare);
  SGrid grid = GatherTensors(picture, region);
  SumWindows(grid, reach);
  const std::vector<SFeature> peaks = FindPeaks(grid, settings, reach, noise);
  const double distance =
      settings.minDistance > 0.0
          ? settings.minDistance
          : 0.5 * std::sqrt(static_cast<double>(width) * height / settings.count);
  return Spread(peaks, region, settings.count, distance);
}
