#include "PatchModel.h"

#include <algorithm>
#include <cmath>

#include "Lanes.h"
#include "PatchKernels.h"

namespace {

/// Samples around the patch that its gradients need.
constexpr int kBorder = 2;
constexpr int kMaxSteps = 15;
/// Each step is a small part of the one before: what is left after this one is far below noise.
constexpr double kConverged = 5e-4;
/// A last step of this size still counts: the shift is known far better than its noise.
constexpr double kSettled = 5e-3;
/// Ridge on rotation and scale, relative to their scale: a patch that cannot tell them (a round
/// spot turns into itself) must not fail.
constexpr double kRidge = 1e-4;
/// Pivot of the normal equations below which a direction has no texture.
constexpr double kSingular = 1e-9;
constexpr double kLeastGain = 0.1;
constexpr double kMostGain = 10.0;

using Matrix6 = double[kFitColumns][kFitColumns];

/// Rows 0 to 2 of the inverse by Cholesky, of a matrix that is given by its upper triangle; false
/// when it is not clearly positive definite.
bool InvertTop(const Matrix6& m, double (&inverse)[3][kFitColumns]) {
  Matrix6 l{};
  for (int i = 0; i < kFitColumns; ++i) {
    for (int j = 0; j <= i; ++j) {
      double sum = m[j][i];
      for (int k = 0; k < j; ++k) sum -= l[i][k] * l[j][k];
      if (i == j) {
        if (!(sum > kSingular * m[i][i])) return false;
        l[i][i] = std::sqrt(sum);
      } else {
        l[i][j] = sum / l[j][j];
      }
    }
  }
  for (int c = 0; c < 3; ++c) {
    double(&v)[kFitColumns] = inverse[c];
    for (int i = 0; i < kFitColumns; ++i) {
      v[i] = i == c ? 1.0 : 0.0;
      for (int k = 0; k < i; ++k) v[i] -= l[i][k] * v[k];
      v[i] /= l[i][i];
    }
    for (int i = kFitColumns; i-- > 0;) {
      for (int k = i + 1; k < kFitColumns; ++k) v[i] -= l[k][i] * v[k];
      v[i] /= l[i][i];
    }
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

SRect Intersect(const SRect& a, const SRect& b) {
  return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
          std::min(a.bottom, b.bottom)};
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

SPatchPlanes CPatchModel::planes() {
  const int top = ready_.top;
  return {core_.stride(), ready_.bottom - top + 1, mask_.data(),        along_.data(),
          down_.data(),   gradientX_.row(top),     gradientY_.row(top), core_.row(top)};
}

void CPatchModel::fillColumns() {
  for (CPlane* plane : {&core_, &gradientX_, &gradientY_}) plane->resize(width_, height_);
  const auto stride = static_cast<std::size_t>(core_.stride());
  mask_.assign(stride, 0.0F);
  std::fill(mask_.begin() + ready_.left, mask_.begin() + ready_.right + 1, 1.0F);
  along_.assign(stride, 0.0F);
  const double reach = std::max(halfX_, halfY_);
  for (int x = 0; x < width_; ++x) {
    along_[static_cast<std::size_t>(x)] = static_cast<float>((x - halfX_) / reach);
  }
  down_.clear();
  for (int y = ready_.top; y <= ready_.bottom; ++y) {
    down_.push_back(static_cast<float>((y - halfY_) / reach));
  }
  const SPatchPlanes p = planes();
  const float* patch = patch_.row(ready_.top + kBorder) + kBorder;
  samples_ = (ready_.right - ready_.left + 1) * p.height;
  mean_ = MaskedSum(patch, patch_.stride(), p.mask, p.stride, p.height) / samples_;
  FillGradients(patch, patch_.stride(), static_cast<float>(mean_), p);
}

bool CPatchModel::solve() {
  const SPatchPlanes p = planes();
  Matrix6 normal;
  SumProducts(p, normal);
  normal[3][3] = samples_;
  energy_ = normal[2][2];
  const double trace = normal[0][0] + normal[1][1];
  const double split = std::hypot(normal[0][0] - normal[1][1], 2.0 * normal[0][1]);
  texture_ = 0.5 * (trace - split) / samples_;
  variance_ = energy_ / samples_;
  noiseGain_ = 0.0;
  if (!(texture_ > 0.0)) return false;
  normal[4][4] += kRidge * trace;
  normal[5][5] += kRidge * trace;
  double inverse[3][kFitColumns];
  if (!InvertTop(normal, inverse)) return false;
  for (std::size_t i = 0; i < solver_.size(); ++i) {
    solver_[i].resize(width_, height_);
    WeightColumns(p, inverse[i], solver_[i].row(ready_.top));
  }
  measureNoiseGain();
  return true;
}

/// The noise of a smoothed picture that the solver's weights let through, per unit of white noise
/// before smoothing.
void CPatchModel::measureNoiseGain() {
  const SPatchPlanes p = planes();
  zeros_.assign(static_cast<std::size_t>(p.stride), 0.0F);
  line_.assign(static_cast<std::size_t>(p.stride) + 2 * kLanes, 0.0F);
  double energy[2];
  for (std::size_t i = 0; i < 2; ++i) {
    energy[i] =
        SmoothedEnergy(solver_[i].row(ready_.top), p.stride, p.height, zeros_.data(), line_.data());
  }
  noiseGain_ = std::sqrt(std::max(energy[0], energy[1]));
  sigmaGain_ = std::sqrt(0.5 * (energy[0] + energy[1]));
}

void CPatchModel::resample(const CPlane& plane, double x, double y, int border) {
  const double floorX = std::floor(x);
  const double floorY = std::floor(y);
  const std::array<float, 6> across = LagrangeWeights(x - floorX);
  const std::array<float, 6> down = LagrangeWeights(y - floorY);
  const int left = static_cast<int>(floorX) - border - 2;
  const int top = static_cast<int>(floorY) - border - 2;
  const int width = width_ + 2 * border;
  const int height = height_ + 2 * border;
  rows_.resize(width, height + 5);
  picture_.resize(width, height);
  Resample6x6(plane.row(top) + left, plane.stride(), across.data(), down.data(), width, height,
              rows_.row(0), picture_.row(0), picture_.stride());
}

SPatchFit CPatchModel::refine(const CPlane& plane, double x, double y) {
  SPatchFit fit;
  fit.x = x;
  fit.y = y;
  const SPatchPlanes p = planes();
  const float* const solver[3] = {solver_[0].row(ready_.top), solver_[1].row(ready_.top),
                                  solver_[2].row(ready_.top)};
  SFitSums sums{};
  double step = 1.0;
  for (int i = 0; i < kMaxSteps && step > kConverged; ++i) {
    resample(plane, fit.x, fit.y, 0);
    sums = SumDifferences(picture_.row(ready_.top), p, solver, static_cast<float>(mean_));
    const double gain = std::clamp(1.0 + sums.weighted[2], kLeastGain, kMostGain);
    const double stepX = sums.weighted[0] / gain;
    const double stepY = sums.weighted[1] / gain;
    step = std::max(std::abs(stepX), std::abs(stepY));
    if (!(step <= kMaxMove)) return fit;
    fit.x -= stepX;
    fit.y -= stepY;
    if (std::abs(fit.x - x) > kMaxMove || std::abs(fit.y - y) > kMaxMove) return fit;
  }
  if (step > kSettled) return fit;
  judge(sums, fit);
  fit.converged = fit.gain > kLeastGain && fit.gain < kMostGain;
  return fit;
}

/// Judges by the picture before the last step, which is too small to matter here.
void CPatchModel::judge(const SFitSums& sums, SPatchFit& fit) {
  const SPatchPlanes p = planes();
  const double level = mean_ + sums.sum / samples_;
  fit.gain = 1.0 + sums.cross / energy_;
  fit.offset = level - fit.gain * mean_;
  double total = 0.0;
  for (int j = 0; j < 3; ++j) {
    const int top = std::max((j * height_ + 2) / 3, ready_.top);
    const int bottom = std::min(((j + 1) * height_ + 2) / 3 - 1, ready_.bottom);
    line_.assign(static_cast<std::size_t>(p.stride), 0.0F);
    AddResiduals(picture_.row(ready_.top), p, top - ready_.top, bottom - ready_.top,
                 static_cast<float>(fit.gain), static_cast<float>(level), line_.data());
    for (int i = 0; i < 3; ++i) {
      const int left = std::max((i * width_ + 2) / 3, ready_.left);
      const int right = std::min(((i + 1) * width_ + 2) / 3 - 1, ready_.right);
      double squares = 0.0;
      for (int x = left; x <= right; ++x) squares += line_[static_cast<std::size_t>(x)];
      total += squares;
      const double area =
          static_cast<double>(std::max(right - left + 1, 0)) * std::max(bottom - top + 1, 0);
      const bool enough = area >= width_ * height_ / 36.0;
      fit.ninths[static_cast<std::size_t>(3 * j + i)] = enough ? squares / area : -1.0;
    }
  }
  // What gain and offset leave is orthogonal to what they explain.
  const double explained = fit.gain * fit.gain * energy_;
  const double all = explained + total;
  fit.correlation = all > 0.0 ? std::copysign(std::sqrt(explained / all), fit.gain) : 0.0;
  fit.residual = total / std::max(samples_ - kFitColumns, 1.0);
  const double gain = std::max(std::abs(fit.gain), kLeastGain);
  fit.sigma = std::sqrt(fit.residual / kBinomialNoiseGain) * sigmaGain_ / gain;
}

void CPatchModel::blend(const CPlane& plane, const SPatchFit& fit, double share) {
  resample(plane, fit.x, fit.y, kBorder);
  MixPicture(picture_.row(0), static_cast<float>(fit.gain), static_cast<float>(fit.offset),
             static_cast<float>(share), patch_.stride() * patch_.height(), patch_.row(0));
  stale_ = true;
}
