/// How near CShotTracker comes to what is possible, on shots whose movement is known: error over
/// the Cramer-Rao bound with noise, bias without it, drift over a long shot. Fails when a point is
/// lost or a figure is beyond its limit.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <vector>

#include "TestShot.h"

namespace {

constexpr double kMostOverBound = 1.10;
constexpr double kMostBias = 0.002;  // pixels
constexpr double kMostDrift = 0.03;  // pixels

/// True when every figure so far was within its limit.
class CVerdict {
 public:
  void check(double value, double limit) {
    if (!(value <= limit)) fail("beyond the limit");
  }
  void fail(const char* why) {
    std::printf("  FAILED: %s\n", why);
    passed_ = false;
  }
  bool passed() const { return passed_; }

 private:
  bool passed_ = true;
};

double Dot(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

void RemoveShare(const std::vector<double>& of, std::vector<double>& from) {
  const double share = Dot(of, from) / Dot(of, of);
  for (std::size_t i = 0; i < from.size(); ++i) from[i] -= share * of[i];
}

/// The least squared error that any method can have, both axes together: shift is known from the
/// gradients as far as gain and offset do not explain them, with white noise in both frames.
double BoundSquared(const CTexture& texture, const SPoint2& at, int half, double noise) {
  constexpr double kStep = 1e-3;
  std::vector<double> gx;
  std::vector<double> gy;
  std::vector<double> value;
  for (int j = -half; j <= half; ++j) {
    for (int i = -half; i <= half; ++i) {
      const double x = at.x + i;
      const double y = at.y + j;
      gx.push_back((texture(x + kStep, y) - texture(x - kStep, y)) / (2.0 * kStep));
      gy.push_back((texture(x, y + kStep) - texture(x, y - kStep)) / (2.0 * kStep));
      value.push_back(texture(x, y));
    }
  }
  const std::vector<double> one(value.size(), 1.0);
  RemoveShare(one, value);
  for (std::vector<double>* gradient : {&gx, &gy}) {
    RemoveShare(one, *gradient);
    RemoveShare(value, *gradient);
  }
  const double xx = Dot(gx, gx);
  const double yy = Dot(gy, gy);
  const double xy = Dot(gx, gy);
  return 2.0 * noise * noise * (xx + yy) / (xx * yy - xy * xy);
}

/// Where the point at `from` is found after the texture has moved, minus where it is.
SPoint2 ErrorOf(const CTexture& texture, CTestShot& shot, int half, SPoint2 from, SPoint2 move,
                double noise, CVerdict& verdict) {
  CShotTracker tracker(shot.format(), shot.settings(half, 8), {{0, from}});
  if (!tracker.begin(shot.draw(texture, {}, noise)).empty()) {
    verdict.fail("point has no texture");
    return {};
  }
  const STrackedPoint to = tracker.follow(shot.draw(texture, move, noise)).at(0);
  if (to.state != EPointState::found) verdict.fail("point lost");
  return {to.position.x - from.x - move.x, to.position.y - from.y - move.y};
}

void CompareWithBound(int half, double noise, int trials, CVerdict& verdict) {
  const int size = 2 * half + 41;
  CEven even(7);
  double error = 0.0;
  double bound = 0.0;
  for (int trial = 0; trial < trials; ++trial) {
    const auto seed = static_cast<unsigned>(trial);
    const CTexture texture(1000U + seed, 6.0, 0.12, size);
    CTestShot shot(size, size, seed);
    const SPoint2 from = {size / 2 + even(0.5), size / 2 + even(0.5)};
    const SPoint2 move = {even(6.0), even(6.0)};
    const SPoint2 off = ErrorOf(texture, shot, half, from, move, noise, verdict);
    error += off.x * off.x + off.y * off.y;
    bound += BoundSquared(texture, from, half, noise);
  }
  const double ratio = std::sqrt(error / bound);
  std::printf("half %2d, noise %.0f %%: rms %.4f px per axis, bound %.4f, ratio %.3f\n", half,
              100.0 * noise, std::sqrt(error / (2.0 * trials)), std::sqrt(bound / (2.0 * trials)),
              ratio);
  verdict.check(ratio, kMostOverBound);
}

void MeasureBias(int half, CVerdict& verdict) {
  const int size = 2 * half + 41;
  CTestShot shot(size, size);
  const SPoint2 from = {size / 2.0, size / 2.0};
  double worst = 0.0;
  double squares = 0.0;
  int count = 0;
  for (unsigned seed = 1; seed <= 5; ++seed) {
    const CTexture texture(seed, 6.0, 0.12, size);
    for (int tenth = -10; tenth <= 10; ++tenth) {
      const SPoint2 move = {2.0 + 0.1 * tenth, -1.0 - 0.07 * tenth};
      const SPoint2 off = ErrorOf(texture, shot, half, from, move, 0.0, verdict);
      worst = std::max({worst, std::abs(off.x), std::abs(off.y)});
      squares += off.x * off.x + off.y * off.y;
      count += 2;
    }
  }
  std::printf("half %2d, no noise: bias rms %.5f px, worst %.5f px\n", half,
              std::sqrt(squares / count), worst);
  verdict.check(worst, kMostBias);
}

/// Sixteen points of half width 15 through 300 frames that walk 1.5 pixels (rms) per frame.
void MeasureDrift(int runs, CVerdict& verdict) {
  constexpr double kNoise = 0.01;
  std::map<int, SPoint2> points;
  for (int i = 0; i < 16; ++i) points[i] = {46.0 + 56.0 * (i % 4), 46.0 + 56.0 * (i / 4)};
  double sum = 0.0;
  for (int run = 0; run < runs; ++run) {
    const auto seed = static_cast<unsigned>(run);
    const CTexture texture(13U + seed, 6.0, 0.12, 260);
    CTestShot shot(260, 260, 5U + seed);
    CEven even(3U + seed);
    CShotTracker tracker(shot.format(), shot.settings(15, 8), points);
    if (!tracker.begin(shot.draw(texture, {}, kNoise)).empty()) verdict.fail("point refused");
    SPoint2 shift;
    std::map<int, STrackedPoint> last;
    for (int frame = 1; frame <= 300; ++frame) {
      shift.x = std::clamp(shift.x + even(2.6), -20.0, 20.0);
      shift.y = std::clamp(shift.y + even(2.6), -20.0, 20.0);
      last = tracker.follow(shot.draw(texture, shift, kNoise));
    }
    for (const auto& [index, point] : last) {
      if (point.state != EPointState::found) verdict.fail("point lost");
      const double ex = point.position.x - points.at(index).x - shift.x;
      const double ey = point.position.y - points.at(index).y - shift.y;
      sum += 0.5 * (ex * ex + ey * ey);
    }
  }
  const double drift = std::sqrt(sum / (runs * static_cast<double>(points.size())));
  std::printf("half 15, noise 1 %%: %.4f px per axis off after 300 frames (%d runs of 16 points)\n",
              drift, runs);
  verdict.check(drift, kMostDrift);
}

}  // namespace

int main() {
  CVerdict verdict;
  for (const double noise : {0.01, 0.03}) {
    CompareWithBound(10, noise, 480, verdict);
    CompareWithBound(30, noise, 240, verdict);
  }
  for (const int half : {10, 30}) MeasureBias(half, verdict);
  MeasureDrift(4, verdict);
  return verdict.passed() ? 0 : 1;
}
