#include "PatchModel.h"

#include <algorithm>
#include <cmath>

#include "Lanes.h"
#include "PatchKernels.h"

namespace {

/// Samples around the patch that its gradients need.
constexpr int kBorder = 2;
constexpr int kMaxSteps = 15;
constexpr double kConverged = 2e-5;
/// A last step of this size still counts: the shift is known far better than its noise.
constexpr double kSettled = 5e-3;
/// Ridge on rotation and scale, relative to their scale: a patch that cannot tell them (a round
/// spot turns into itself) must not fail.
constexpr double kRidge = 1e-4;
/// Pivot of the normal equations below which a direction has no texture.
constexpr double kSingular = 1e-9;
constexpr double kLeastGain = 0.1;
constexpr double kMostGain = 10.0;

constexpr int kSize = 6;
using Matrix6 = std::array<std::array<double, kSize>, kSize>;

/// Inverse by Cholesky; false when not clearly positive definite.
bool Invert(const Matrix6& m, Matrix6& inverse) {
  Matrix6 l{};
  for (std::size_t i = 0; i < kSize; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      double sum = m[i][j];
      for (std::size_t k = 0; k < j; ++k) sum -= l[i][k] * l[j][k];
      if (i == j) {
        if (!(sum > kSingular * m[i][i])) return false;
        l[i][i] = std::sqrt(sum);
      } else {
        l[i][j] = sum / l[j][j];
      }
    }
  }
  for (std::size_t c = 0; c < kSize; ++c) {
    std::array<double, kSize> v{};
    for (std::size_t i = 0; i < kSize; ++i) {
      double sum = i == c ? 1.0 : 0.0;
      for (std::size_t k = 0; k < i; ++k) sum -= l[i][k] * v[k];
      v[i] = sum / l[i][i];
    }
    for (std::size_t i = kSize; i-- > 0;) {
      for (std::size_t k = i + 1; k < kSize; ++k) v[i] -= l[k][i] * v[k];
      v[i] /= l[i][i];
    }
    for (std::size_t i = 0; i < kSize; ++i) inverse[i][c] = v[i];
  }
  return true;
}

/// Weights of the polynomial through samples -2 .. 3 at t in [0, 1).
std::array<float, 6> LagrangeWeights(double t) {
  std::array<float, 6> weights{};
  for (int k = 0; k < 6; ++k) {
    double weight = 1.0;
    for (int m = 0; m < 6; ++m) {
      if (m != k) weight *= (t + 2.0 - m) / (k - m);
    }
    weights[static_cast<std::size_t>(k)] = static_cast<float>(weight);
  }
  return weights;
}

int SampleCount(const CPlane& plane) {
  return plane.stride() * plane.height();
}

void Clear(CPlane& plane) {
  std::fill(plane.row(0), plane.row(0) + SampleCount(plane), 0.0F);
}

SRect Intersect(const SRect& a, const SRect& b) {
  return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
          std::min(a.bottom, b.bottom)};
}

STAB_CLONES void ProductRow(const float* a, const float* b, int count, float* out) {
  for (int x = 0; x < count; ++x) out[x] = a[x] * b[x];
}

STAB_CLONES void TurnRows(const float* gx, const float* gy, const float* along, float down,
                          int count, float* rotation, float* scale) {
  for (int x = 0; x < count; ++x) {
    rotation[x] = along[x] * gy[x] - down * gx[x];
    scale[x] = along[x] * gx[x] + down * gy[x];
  }
}

STAB_CLONES void AddScaled(const float* in, float weight, int count, float* out) {
  for (int x = 0; x < count; ++x) out[x] += in[x] * weight;
}

STAB_CLONES void DifferenceRow(const float* picture, const float* patch, const float* mask,
                               float level, int count, float* out) {
  for (int x = 0; x < count; ++x) out[x] = (picture[x] - level) * mask[x] - patch[x];
}

STAB_CLONES void MixRow(const float* picture, float gain, float offset, float share, int count,
                        float* patch) {
  for (int x = 0; x < count; ++x) {
    patch[x] += ((picture[x] - offset) * gain - patch[x]) * share;
  }
}

/// Sum of squares of a plane after another binomial smoothing: the noise of a smoothed picture
/// that weights like these let through, per unit of white noise before smoothing.
double SmoothedEnergy(const CPlane& weights, CPlane& padded, CPlane& scratch) {
  padded.resize(weights.width() + 2, weights.height() + 2);
  Clear(padded);
  for (int y = 0; y < weights.height(); ++y) {
    std::copy(weights.row(y), weights.row(y) + weights.width(), padded.row(y + 1) + 1);
  }
  SmoothBinomial(padded, scratch);
  double energy = 0.0;
  for (int y = 0; y < padded.height(); ++y) {
    float* row = padded.row(y);
    std::fill(row + padded.width(), row + padded.stride(), 0.0F);
    energy += Dot3(row, row, row, row, padded.stride()).a;
  }
  return energy;
}

}  // namespace

CPatchModel::CPatchModel(int halfX, int halfY)
    : halfX_(halfX), halfY_(halfY), width_(2 * halfX + 1), height_(2 * halfY + 1) {}

void CPatchModel::take(const CPlane& plane, int x, int y, const SRect& valid) {
  patch_.resize(width_ + 2 * kBorder, height_ + 2 * kBorder);
  for (int j = 0; j < patch_.height(); ++j) {
    const float* in = plane.row(y - kBorder + j) + x - kBorder;
    std::copy(in, in + patch_.width(), patch_.row(j));
  }
  taken_ = valid;
  stale_ = true;
}

SPlaneView CPatchModel::patch() const {
  return ViewOf(patch_, kBorder, kBorder, width_, height_);
}

bool CPatchModel::prepare(const SRect& valid) {
  const SRect wanted = Intersect(Intersect(valid, taken_), {0, 0, width_ - 1, height_ - 1});
  if (stale_ || !(wanted == ready_)) {
    ready_ = wanted;
    stale_ = false;
    usable_ = false;
    if (ready_.right - ready_.left >= 4 && ready_.bottom - ready_.top >= 4) {
      fillColumns();
      usable_ = solve();
    }
  }
  return usable_;
}

void CPatchModel::fillColumns() {
  for (CPlane* plane : {&core_, &mask_, &difference_}) plane->resize(width_, height_);
  Clear(difference_);
  for (CPlane& column : columns_) column.resize(width_, height_);
  Clear(mask_);
  for (int y = ready_.top; y <= ready_.bottom; ++y) {
    std::fill(mask_.row(y) + ready_.left, mask_.row(y) + ready_.right + 1, 1.0F);
  }
  Clear(core_);
  samples_ = 0.0;
  double sum = 0.0;
  for (int y = 0; y < height_; ++y) {
    std::copy(patch_.row(y + kBorder) + kBorder, patch_.row(y + kBorder) + kBorder + width_,
              core_.row(y));
    const SDot3 dots = Dot3(mask_.row(y), core_.row(y), mask_.row(y), mask_.row(y), mask_.stride());
    sum += dots.a;
    samples_ += dots.b;
  }
  mean_ = sum / samples_;
  const auto mean = static_cast<float>(mean_);
  std::vector<float> along(static_cast<std::size_t>(core_.stride()));
  const double reach = std::max(halfX_, halfY_);
  for (int x = 0; x < width_; ++x) {
    along[static_cast<std::size_t>(x)] = static_cast<float>((x - halfX_) / reach);
  }
  for (CPlane& column : columns_) Clear(column);
  for (int y = 0; y < height_; ++y) {
    const float* centre = patch_.row(y + kBorder) + kBorder;
    float* gx = columns_[0].row(y);
    float* gy = columns_[1].row(y);
    Derivative5(centre, 1, width_, gx);
    Derivative5(centre, patch_.stride(), width_, gy);
    ProductRow(gx, mask_.row(y), width_, gx);
    ProductRow(gy, mask_.row(y), width_, gy);
    for (int x = 0; x < width_; ++x) core_.row(y)[x] = (core_.row(y)[x] - mean) * mask_.row(y)[x];
    std::copy(core_.row(y), core_.row(y) + width_, columns_[2].row(y));
    std::copy(mask_.row(y), mask_.row(y) + width_, columns_[3].row(y));
    TurnRows(gx, gy, along.data(), static_cast<float>((y - halfY_) / reach), width_,
             columns_[4].row(y), columns_[5].row(y));
  }
}

bool CPatchModel::solve() {
  const int count = SampleCount(core_);
  Matrix6 normal{};
  for (std::size_t i = 0; i < kSize; ++i) {
    for (std::size_t j = i; j < kSize; j += 3) {
      const auto column = [&](std::size_t k) {
        return columns_[std::min<std::size_t>(k, kSize - 1)].row(0);
      };
      const SDot3 dots = Dot3(columns_[i].row(0), column(j), column(j + 1), column(j + 2), count);
      const double values[3] = {dots.a, dots.b, dots.c};
      for (std::size_t k = 0; k < 3 && j + k < kSize; ++k) {
        normal[i][j + k] = normal[j + k][i] = values[k];
      }
    }
  }
  const double trace = normal[0][0] + normal[1][1];
  const double split = std::hypot(normal[0][0] - normal[1][1], 2.0 * normal[0][1]);
  texture_ = 0.5 * (trace - split) / samples_;
  variance_ = normal[2][2] / samples_;
  noiseGain_ = 0.0;
  if (!(texture_ > 0.0)) return false;
  normal[4][4] += kRidge * trace;
  normal[5][5] += kRidge * trace;
  Matrix6 inverse{};
  if (!Invert(normal, inverse)) return false;

  for (std::size_t i = 0; i < solver_.size(); ++i) {
    solver_[i].resize(width_, height_);
    Clear(solver_[i]);
    for (std::size_t j = 0; j < kSize; ++j) {
      AddScaled(columns_[j].row(0), static_cast<float>(inverse[i][j]), count, solver_[i].row(0));
    }
  }
  CPlane padded;
  const double energyX = SmoothedEnergy(solver_[0], padded, rows_);
  const double energyY = SmoothedEnergy(solver_[1], padded, rows_);
  noiseGain_ = std::sqrt(std::max(energyX, energyY));
  sigmaGain_ = std::sqrt(0.5 * (energyX + energyY));
  return true;
}

void CPatchModel::resample(const CPlane& plane, double x, double y, int border, CPlane& out) {
  const double floorX = std::floor(x);
  const double floorY = std::floor(y);
  const std::array<float, 6> acrossWeights = LagrangeWeights(x - floorX);
  const std::array<float, 6> downWeights = LagrangeWeights(y - floorY);
  const int left = static_cast<int>(floorX) - border - 2;
  const int top = static_cast<int>(floorY) - border - 2;
  const int width = width_ + 2 * border;
  const int height = height_ + 2 * border;
  rows_.resize(width, height + 5);
  out.resize(width, height);
  for (int j = 0; j < rows_.height(); ++j) {
    Filter6(plane.row(top + j) + left, 1, acrossWeights.data(), width, rows_.row(j));
  }
  for (int j = 0; j < height; ++j) {
    Filter6(rows_.row(j), rows_.stride(), downWeights.data(), width, out.row(j));
  }
}

SPatchFit CPatchModel::refine(const CPlane& plane, double x, double y) {
  SPatchFit fit;
  fit.x = x;
  fit.y = y;
  const int count = SampleCount(core_);
  double step = 1.0;
  for (int i = 0; i < kMaxSteps && step > kConverged; ++i) {
    resample(plane, fit.x, fit.y, 0, picture_);
    for (int j = 0; j < height_; ++j) {
      DifferenceRow(picture_.row(j), core_.row(j), mask_.row(j), static_cast<float>(mean_), width_,
                    difference_.row(j));
    }
    const SDot3 delta =
        Dot3(difference_.row(0), solver_[0].row(0), solver_[1].row(0), solver_[2].row(0), count);
    const double gain = std::clamp(1.0 + delta.c, kLeastGain, kMostGain);
    const double stepX = delta.a / gain;
    const double stepY = delta.b / gain;
    step = std::max(std::abs(stepX), std::abs(stepY));
    if (!(step <= kMaxMove)) return fit;
    fit.x -= stepX;
    fit.y -= stepY;
    if (std::abs(fit.x - x) > kMaxMove || std::abs(fit.y - y) > kMaxMove) return fit;
  }
  if (step > kSettled) return fit;
  resample(plane, fit.x, fit.y, 0, picture_);
  judge(fit);
  fit.converged = fit.gain > kLeastGain && fit.gain < kMostGain;
  return fit;
}

void CPatchModel::judge(SPatchFit& fit) const {
  double sum = 0.0;
  double squares = 0.0;
  double cross = 0.0;
  double energy = 0.0;
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x) {
      const double m = mask_.row(y)[x];
      const double v = (picture_.row(y)[x] - mean_) * m;
      const double t = core_.row(y)[x];
      sum += v;
      squares += v * v;
      cross += v * t;
      energy += t * t;
    }
  }
  const double var = squares - sum * sum / samples_;
  fit.gain = cross / energy;
  fit.offset = sum / samples_ + mean_ - fit.gain * mean_;
  fit.correlation = var > 0.0 ? cross / std::sqrt(energy * var) : 0.0;

  std::array<double, 9> area{};
  fit.ninths.fill(0.0);
  double total = 0.0;
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x) {
      const double m = mask_.row(y)[x];
      const double e =
          (picture_.row(y)[x] - fit.offset - fit.gain * mean_) * m - fit.gain * core_.row(y)[x];
      const auto ninth = static_cast<std::size_t>(3 * (3 * y / height_) + 3 * x / width_);
      fit.ninths[ninth] += e * e;
      area[ninth] += m;
      total += e * e;
    }
  }
  const double least = width_ * height_ / 36.0;
  for (std::size_t i = 0; i < area.size(); ++i) {
    fit.ninths[i] = area[i] >= least ? fit.ninths[i] / area[i] : -1.0;
  }
  fit.residual = total / std::max(samples_ - kColumns, 1.0);
  const double gain = std::max(std::abs(fit.gain), kLeastGain);
  fit.sigma = std::sqrt(fit.residual / kBinomialNoiseGain) * sigmaGain_ / gain;
}

void CPatchModel::blend(const CPlane& plane, const SPatchFit& fit, double share) {
  CPlane picture;
  resample(plane, fit.x, fit.y, kBorder, picture);
  for (int y = 0; y < patch_.height(); ++y) {
    MixRow(picture.row(y), static_cast<float>(1.0 / fit.gain), static_cast<float>(fit.offset),
           static_cast<float>(share), patch_.width(), patch_.row(y));
  }
  stale_ = true;
}
