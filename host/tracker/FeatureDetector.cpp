#include "tracker/FeatureDetector.h"

#include <algorithm>
#include <cmath>

#include "Lanes.h"
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

/// One row of squares or windows: sums of the gradient products and of the squared trace. The whole
/// rows of a picture never exist at once.
struct STensorRow {
  enum EPart { XX, XY, YY, POWER, PARTS };

  std::vector<float> values[PARTS];

  /// `pad` more and whole lanes beyond either end; new values are 0.
  void resize(int columns, int pad) {
    for (std::vector<float>& part : values) {
      part.resize(static_cast<std::size_t>(RoundUpToLanes(columns) + 2 * pad + kLanes));
    }
  }
  void clear() {
    for (std::vector<float>& part : values) std::ranges::fill(part, 0.0F);
  }
};

/// sums[i] += the three products from 3 i on.
STAB_CLONES void AddProducts(const float* a, const float* b, int count, float* sums) {
  static_assert(kSquare == 3);
  for (int i = 0; i < count; ++i) {
    sums[i] = ((sums[i] + a[3 * i] * b[3 * i]) + a[3 * i + 1] * b[3 * i + 1]) +
              a[3 * i + 2] * b[3 * i + 2];
  }
}

STAB_CLONES void SquareOfSum(const float* a, const float* b, int count, float* out) {
  for (int i = 0; i < count; ++i) out[i] = (a[i] + b[i]) * (a[i] + b[i]);
}

/// Tensors of squares, a row at a time from the top.
class CSquareRows {
 public:
  CSquareRows(const IPicture& picture, const SRect& region)
      : picture_(picture),
        region_(region),
        columns_((region.right - region.left + 1) / kSquare),
        rows_((region.bottom - region.top + 1) / kSquare) {
    gradients_.resize(columns_ * kSquare, 2);
  }

  int columns() const { return columns_; }
  int rows() const { return rows_; }

  /// Row `row`, the one after the last that was asked for; `pad` zeros before and behind it.
  void next(int row, int pad, STensorRow& tensors) {
    if (row * kSquare % kStripRows == 0) readStrip(row * kSquare);
    tensors.resize(columns_, pad);
    tensors.clear();
    float* const xx = tensors.values[STensorRow::XX].data() + pad;
    float* const xy = tensors.values[STensorRow::XY].data() + pad;
    float* const yy = tensors.values[STensorRow::YY].data() + pad;
    const float* const gx = gradients_.row(0);
    const float* const gy = gradients_.row(1);
    const int width = columns_ * kSquare;
    for (int j = 0; j < kSquare; ++j) {
      const float* centre = luma_.row(row * kSquare % kStripRows + j + kHalo) + kHalo;
      Derivative5(centre, 1, width, gradients_.row(0));
      Derivative5(centre, luma_.stride(), width, gradients_.row(1));
      AddProducts(gx, gx, columns_, xx);
      AddProducts(gx, gy, columns_, xy);
      AddProducts(gy, gy, columns_, yy);
    }
    SquareOfSum(xx, yy, columns_, tensors.values[STensorRow::POWER].data() + pad);
  }

 private:
  void readStrip(int y) {
    const int rows = std::min(kStripRows, rows_ * kSquare - y);
    ExtractLuma(picture_, region_,
                {region_.left - kHalo, region_.top + y - kHalo,
                 region_.left + columns_ * kSquare - 1 + kHalo, region_.top + y + rows - 1 + kHalo},
                0.0F, memory_, luma_);
    SmoothBinomial(luma_, scratch_);
  }

  const IPicture& picture_;
  const SRect region_;
  const int columns_;
  const int rows_;
  std::vector<std::uint16_t> memory_;
  CPlane luma_;
  CPlane scratch_;
  CPlane gradients_;
};

STAB_CLONES void AddRow(const float* in, int count, float* sums) {
  for (int i = 0; i < count; ++i) sums[i] += in[i];
}

/// Sums over windows of 2 * reach + 1 squares a side, a row at a time; windows that reach beyond
/// the picture are cut.
class CWindowRows {
 public:
  CWindowRows(CSquareRows& squares, int reach)
      : squares_(squares), reach_(reach), lines_(static_cast<std::size_t>(2 * reach + 1)) {}

  /// Row `row`, the one after the last that was asked for; valid until the next.
  const STensorRow& next(int row) {
    const int last = std::min(row + reach_, squares_.rows() - 1);
    for (; ready_ <= last; ++ready_) sumAlong(ready_);
    window_.resize(squares_.columns(), 0);
    window_.clear();
    for (int y = std::max(row - reach_, 0); y <= last; ++y) {
      for (int part = 0; part < STensorRow::PARTS; ++part) {
        AddRow(line(y).values[part].data(), squares_.columns(), window_.values[part].data());
      }
    }
    return window_;
  }

 private:
  STensorRow& line(int row) { return lines_[static_cast<std::size_t>(row) % lines_.size()]; }

  void sumAlong(int row) {
    squares_.next(row, reach_, square_);
    line(row).resize(squares_.columns(), 0);
    for (int part = 0; part < STensorRow::PARTS; ++part) {
      SumAlong(square_.values[part].data(), 2 * reach_ + 1, squares_.columns(),
               line(row).values[part].data());
    }
  }

  CSquareRows& squares_;
  const int reach_;
  int ready_ = 0;
  STensorRow square_;
  STensorRow window_;
  std::vector<STensorRow> lines_;  // the last ones, each at its row's place round the ring
};

void StrengthsOf(const STensorRow& windows, int count, int side, double noise, double* strength) {
  const double inverseArea = 1.0 / (static_cast<double>(side) * side * kSquare * kSquare);
  const double floor = kGradientNoiseGain * noise * noise;
  const double least = kOverNoise * floor + kLeastStrength;
  const double fewest = kLeastSpread * side * side;
  const auto& [xx, xy, yy, power] = windows.values;
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    const double trace = xx[i] + yy[i];
    const double difference = static_cast<double>(xx[i]) - yy[i];
    const double mixed = 2.0 * static_cast<double>(xy[i]);
    const double split = std::sqrt(difference * difference + mixed * mixed);
    const double smaller = 0.5 * (trace - split) * inverseArea;
    strength[i] = 0.0;
    if (smaller < least) continue;
    strength[i] = smaller - floor;
    if (trace * trace >= fewest * power[i]) continue;
    static_assert(kSpreadPower == 8);
    const double spread = trace * trace / (fewest * power[i]);
    const double spread2 = spread * spread;
    strength[i] *= (spread2 * spread2) * (spread2 * spread2);
  }
}

STAB_CLONES void LargestOf3(const double* a, const double* b, const double* c, int count,
                            double* out) {
  for (int i = 0; i < count; ++i) {
    const double larger = a[i] > b[i] ? a[i] : b[i];
    out[i] = larger > c[i] ? larger : c[i];
  }
}

bool Stronger(const SFeature& a, const SFeature& b) {
  if (a.strength != b.strength) return a.strength > b.strength;
  return a.y != b.y ? a.y < b.y : a.x < b.x;
}

/// Local maxima of strength inside the margin, strongest first.
std::vector<SFeature> FindPeaks(const IPicture& picture, const SFeatureSettings& settings,
                                int reach, double noise) {
  const SRect& region = settings.region;
  CSquareRows squares(picture, region);
  CWindowRows windows(squares, reach);
  const int columns = squares.columns();
  const int rows = squares.rows();
  // Nothing is stronger than a peak beyond the picture's ends.
  std::vector<double> strengths[3];
  for (auto& row : strengths) row.assign(static_cast<std::size_t>(columns) + 2, 0.0);
  const auto strengthsOf = [&](int row) { return strengths[(row + 3) % 3].data(); };
  const auto prepare = [&](int row) {
    if (row < rows) {
      StrengthsOf(windows.next(row), columns, 2 * reach + 1, noise, strengthsOf(row) + 1);
    } else {
      std::fill_n(strengthsOf(row), columns + 2, 0.0);
    }
  };
  std::vector<double> down(strengths[0]);  // largest of the three rows
  std::vector<double> largest(strengths[0]);
  std::vector<SFeature> peaks;
  prepare(0);
  for (int j = 0; j < rows; ++j) {
    prepare(j + 1);
    const int y = region.top + j * kSquare + kSquare / 2;
    if (y - settings.margin < region.top || y + settings.margin > region.bottom) continue;
    LargestOf3(strengthsOf(j - 1), strengthsOf(j), strengthsOf(j + 1), columns + 2, down.data());
    LargestOf3(down.data(), down.data() + 1, down.data() + 2, columns, largest.data());
    const double* here = strengthsOf(j) + 1;
    for (int i = 0; i < columns; ++i) {
      if (here[i] < largest[static_cast<std::size_t>(i)] || here[i] <= 0.0) continue;
      const int x = region.left + i * kSquare + kSquare / 2;
      if (x - settings.margin < region.left || x + settings.margin > region.right) continue;
      peaks.push_back({static_cast<double>(x), static_cast<double>(y), here[i]});
    }
  }
  std::sort(peaks.begin(), peaks.end(), Stronger);
  return peaks;
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
  const std::vector<SFeature> peaks = FindPeaks(picture, settings, reach, noise);
  const double distance =
      settings.minDistance > 0.0
          ? settings.minDistance
          : 0.5 * std::sqrt(static_cast<double>(width) * height / settings.count);
  return Spread(peaks, region, settings.count, distance);
}
