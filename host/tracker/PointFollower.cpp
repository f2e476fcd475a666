#include "PointFollower.h"

#include <algorithm>
#include <cmath>

namespace {

/// Below this a match is none. Right matches stay above 0.8 unless grain outweighs texture; the
/// exact search is asked before a point is given up.
constexpr double kLeastCorrelation = 0.6;
/// Samples beyond the patch that its fit reads: smoothing, six-point interpolation, one of slack.
constexpr int kSupport = 5;
constexpr double kTemplateShare = 0.1;
/// Bound on the worst-direction error in the first frame, pixels.
constexpr double kWorstSigma = 0.5;
/// Variance that smoothing and the five-point derivative leave of white noise.
constexpr double kGradientNoiseGain = 0.0853;
/// Structure of a noisy patch must be this many times that of noise alone.
constexpr double kTextureOverNoise = 2.0;
/// Mean square gradient that counts as texture without noise: a tenth of an 8-bit code per pixel.
constexpr double kLeastTexture = 1e-7;
/// A second place is as good when what it leaves unexplained is this little more.
constexpr double kRivalFactor = 1.25;
constexpr double kRivalSlack = 0.01;
/// Peaks are compared at whole pixels first, where fine texture has lost part of its correlation.
constexpr double kPeakFactor = 3.0;
constexpr double kPeakSlack = 0.05;
constexpr double kHistoryShare = 0.1;
constexpr double kHistoryShareInDoubt = 0.02;

int Round(double value) {
  return static_cast<int>(std::floor(value + 0.5));
}

double Rest(double correlation) {
  return 1.0 - correlation * std::abs(correlation);
}

}  // namespace

CPointFollower::CPointFollower(const STrackSettings& settings, const SPoint2& position)
    : settings_(settings),
      fraction_{position.x - Round(position.x), position.y - Round(position.y)},
      centre_{static_cast<double>(Round(position.x)), static_cast<double>(Round(position.y))},
      model_(settings.trackBoxExtentX, settings.trackBoxExtentY) {}

SPoint2 CPointFollower::position() const {
  return {centre_.x + fraction_.x, centre_.y + fraction_.y};
}

bool CPointFollower::isInside(const SPoint2& position, int margin) const {
  const int x = Round(position.x - fraction_.x);
  const int y = Round(position.y - fraction_.y);
  const SRect& region = settings_.region;
  return x - settings_.trackBoxExtentX - margin >= region.left &&
         x + settings_.trackBoxExtentX + margin <= region.right &&
         y - settings_.trackBoxExtentY - margin >= region.top &&
         y + settings_.trackBoxExtentY + margin <= region.bottom;
}

SRect CPointFollower::validAt(int x, int y) const {
  const SRect& region = settings_.region;
  const int left = x - settings_.trackBoxExtentX;
  const int top = y - settings_.trackBoxExtentY;
  return {std::max(0, region.left + kSupport - left), std::max(0, region.top + kSupport - top),
          std::min(2 * settings_.trackBoxExtentX, region.right - kSupport - left),
          std::min(2 * settings_.trackBoxExtentY, region.bottom - kSupport - top)};
}

bool CPointFollower::openWindow(const IPicture& picture) {
  const int x = Round(centre_.x);
  const int y = Round(centre_.y);
  const int reachX = settings_.trackBoxExtentX;
  const int reachY = settings_.trackBoxExtentY;
  const SRect& region = settings_.region;
  range_ = {std::max(x - settings_.searchLeft, region.left + reachX),
            std::max(y - settings_.searchUp, region.top + reachY),
            std::min(x + settings_.searchRight, region.right - reachX),
            std::min(y + settings_.searchDown, region.bottom - reachY)};
  if (range_.left > range_.right || range_.top > range_.bottom) return false;
  constexpr int kGuard = CPatchModel::kGuard;
  const SRect area = {range_.left - reachX - kGuard, range_.top - reachY - kGuard,
                      range_.right + reachX + kGuard, range_.bottom + reachY + kGuard};
  ExtractLuma(picture, region, area, pivot_, part_, window_);
  SmoothBinomial(window_, scratch_);
  return true;
}

bool CPointFollower::begin(const IPicture& picture, double noise) {
  const int x = Round(centre_.x);
  const int y = Round(centre_.y);
  const int reachX = settings_.trackBoxExtentX;
  const int reachY = settings_.trackBoxExtentY;
  constexpr int kGuard = CPatchModel::kGuard;
  const SRect area = {x - reachX - kGuard, y - reachY - kGuard, x + reachX + kGuard,
                      y + reachY + kGuard};
  ExtractLuma(picture, settings_.region, area, 0.0F, part_, window_);
  pivot_ = window_.row(window_.height() / 2)[window_.width() / 2];
  ExtractLuma(picture, settings_.region, area, pivot_, part_, window_);
  SmoothBinomial(window_, scratch_);
  model_.take(window_, kGuard, kGuard, validAt(x, y));
  const double gradientNoise = kGradientNoiseGain * noise * noise;
  if (!model_.prepare(validAt(x, y)) ||
      model_.texture() < kLeastTexture + kTextureOverNoise * gradientNoise ||
      model_.noiseGain() * noise * std::sqrt(2.0) > kWorstSigma) {
    return false;
  }
  search_.setPatch(model_.patch());
  const double residual = 2.0 * kBinomialNoiseGain * noise * noise;
  history_.rest = 0.01 + std::min(0.3, residual / std::max(model_.variance(), 1e-12));
  history_.residual = residual + 0.01 * model_.variance();
  return true;
}

SPatchFit CPointFollower::refineAt(const SPeak& peak) {
  if (!model_.prepare(validAt(range_.left + peak.x, range_.top + peak.y))) return {};
  return model_.refine(window_, peak.x + CPatchModel::kGuard, peak.y + CPatchModel::kGuard);
}

SPoint2 CPointFollower::centreOf(const SPatchFit& fit) const {
  return {range_.left + fit.x - CPatchModel::kGuard, range_.top + fit.y - CPatchModel::kGuard};
}

bool CPointFollower::hasRival(const SPatchFit& fit, const std::vector<SPeak>& peaks,
                              std::size_t chosen) {
  const double limit = kPeakFactor * Rest(peaks[chosen].correlation) + kPeakSlack;
  for (std::size_t i = 0; i < peaks.size(); ++i) {
    if (i == chosen || Rest(peaks[i].correlation) > limit) continue;
    const SPatchFit other = refineAt(peaks[i]);
    if (!other.converged ||
        Rest(other.correlation) > kRivalFactor * Rest(fit.correlation) + kRivalSlack) {
      continue;
    }
    const double distance = std::hypot(other.x - fit.x, other.y - fit.y);
    if (distance < 1.0) continue;
    attempt_.rivalDistance =
        attempt_.rivalDistance == 0.0 ? distance : std::min(distance, attempt_.rivalDistance);
  }
  return attempt_.rivalDistance > 0.0;
}

const SAttempt& CPointFollower::search(const IPicture& picture) {
  attempt_ = {};
  attempt_.reason = ELossReason::noMatch;
  if (!openWindow(picture)) {
    attempt_.reason = ELossReason::leftPicture;
    return attempt_;
  }
  const SPlaneView view =
      ViewOf(window_, CPatchModel::kGuard, CPatchModel::kGuard,
             window_.width() - 2 * CPatchModel::kGuard, window_.height() - 2 * CPatchModel::kGuard);
  std::vector<SPeak> peaks = search_.findPeaks(view);
  if (peaks[0].correlation < kLeastCorrelation) {
    constexpr int kApart = 4;
    peaks.assign(1, search_.findBest(view));
    if (peaks[0].correlation < kLeastCorrelation) return attempt_;
    peaks.push_back(search_.findBest(view, &peaks[0], kApart));
  }

  // The best whole-pixel peak may lose to its neighbour once both are fitted.
  SPatchFit best;
  std::size_t chosen = 0;
  const double limit = kPeakFactor * Rest(peaks[0].correlation) + kPeakSlack;
  for (std::size_t i = 0; i < peaks.size(); ++i) {
    if (Rest(peaks[i].correlation) > limit) break;
    const SPatchFit fit = refineAt(peaks[i]);
    if (fit.converged && (!best.converged || fit.correlation > best.correlation)) {
      best = fit;
      chosen = i;
    }
  }
  if (!best.converged) return attempt_;
  judge(best);
  if (attempt_.reason == ELossReason::none && hasRival(best, peaks, chosen)) {
    attempt_.reason = ELossReason::ambiguous;
  }
  return attempt_;
}

const SAttempt& CPointFollower::settle(const SPoint2& predicted) {
  const SPatchFit best = attempt_.fit;
  const double rival = attempt_.rivalDistance;
  const double x = predicted.x - fraction_.x;
  const double y = predicted.y - fraction_.y;
  const SPlaneView view =
      ViewOf(window_, CPatchModel::kGuard, CPatchModel::kGuard,
             window_.width() - 2 * CPatchModel::kGuard, window_.height() - 2 * CPatchModel::kGuard);
  const int radius = std::max(1, static_cast<int>(0.5 * rival));
  const SPatchFit fit = refineAt(
      search_.climb(view, Round(x) - range_.left, Round(y) - range_.top, std::min(radius, 3)));
  if (!fit.converged ||
      Rest(fit.correlation) > kRivalFactor * Rest(best.correlation) + kRivalSlack) {
    return attempt_;
  }
  const SPoint2 centre = centreOf(fit);
  if (std::hypot(centre.x - x, centre.y - y) < 0.35 * rival) judge(fit);
  return attempt_;
}

void CPointFollower::judge(const SPatchFit& fit) {
  attempt_.fit = fit;
  attempt_.centre = centreOf(fit);
  attempt_.reason = ELossReason::noMatch;
  const double moveX = attempt_.centre.x - centre_.x;
  const double moveY = attempt_.centre.y - centre_.y;
  const SPoint2 position = {attempt_.centre.x + fraction_.x, attempt_.centre.y + fraction_.y};
  if (!isInside(position, 0)) {
    attempt_.reason = ELossReason::leftPicture;
    return;
  }
  // The ends of the range are meant to half a pixel.
  constexpr double kEnd = 0.5;
  if (fit.correlation < kLeastCorrelation || moveX < -settings_.searchLeft - kEnd ||
      moveX > settings_.searchRight + kEnd || moveY < -settings_.searchUp - kEnd ||
      moveY > settings_.searchDown + kEnd) {
    return;
  }
  attempt_.reason = ELossReason::none;
  attempt_.doubt = doubtOf(fit);
}

EDoubt CPointFollower::doubtOf(const SPatchFit& fit) const {
  const double rest = Rest(fit.correlation);
  const double bad =
      std::max(9.0 * history_.residual, 0.05 * model_.variance() * fit.gain * fit.gain);
  int badNinths = 0;
  int goodNinths = 0;
  for (const double value : fit.ninths) {
    if (value > bad) ++badNinths;
    if (value >= 0.0 && value < 3.0 * history_.residual) ++goodNinths;
  }
  const bool covered = goodNinths >= 2;
  if (rest > std::min(8.0 * history_.rest + 0.1, history_.rest + 0.35) ||
      (covered && badNinths >= 3)) {
    return EDoubt::strong;
  }
  if (rest > std::min(3.0 * history_.rest + 0.03, history_.rest + 0.2) ||
      (covered && badNinths >= 1)) {
    return EDoubt::mild;
  }
  return EDoubt::none;
}

void CPointFollower::accept(bool learn) {
  centre_ = attempt_.centre;
  const SPatchFit& fit = attempt_.fit;
  const double share = learn ? kHistoryShare : kHistoryShareInDoubt;
  history_.rest += share * (Rest(fit.correlation) - history_.rest);
  history_.residual += share * (fit.residual - history_.residual);
  const SRect whole = {0, 0, 2 * settings_.trackBoxExtentX, 2 * settings_.trackBoxExtentY};
  const SRect valid = validAt(Round(centre_.x), Round(centre_.y));
  if (!learn || !(valid == whole)) return;
  model_.blend(window_, fit, kTemplateShare);
  if (model_.prepare(whole)) search_.setPatch(model_.patch());
}

void CPointFollower::moveTo(const SPoint2& position) {
  centre_ = {position.x - fraction_.x, position.y - fraction_.y};
}
