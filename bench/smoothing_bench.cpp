// Smoothing of long shots: reduction of tracked points to robust points, the paths, the triangles.
//   smoothing_bench
// prints the time for growing numbers of frames and points; it is checked that the paths came out
// smoother than they went in. Fails when the cost of a frame grows with the number of frames.

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>

#include "doubles/ShotDouble.h"
#include "smoothing/MotionSmoother.h"

namespace {

/// Roughness of the first robust point's path: mean square of its second difference.
double roughness(const CTrackingArray& array, int frames) {
  double sum = 0.0;
  double before = 0.0;
  double last = 0.0;
  int frame = 0;
  for (const auto& [index, points] : array.frames) {
    const double x = points.Entries().at(0).x;
    if (frame >= 2) sum += (x - 2.0 * last + before) * (x - 2.0 * last + before);
    before = last;
    last = x;
    ++frame;
  }
  return frame == frames ? sum / frames : HUGE_VAL;
}

double secondsFor(int frames, int points) {
  CShotDouble shot;
  shot.parameters.HMode = shot.parameters.VMode = STABMODE_Smoothed;
  shot.parameters.RMode = points > 1 ? STABMODE_Smoothed : STABMODE_None;
  std::mt19937 random(7);
  std::normal_distribution<double> weave(0.0, 0.4);
  for (int frame = 0; frame < frames; ++frame) {
    const double x = weave(random);
    const double y = weave(random);
    for (int i = 0; i < points; ++i)
      shot.tracked.PointsAt(frame).Point(i) = CTrackPoint(100.0 * i + x, 77.0 * (i % 5) + y);
  }
  const auto start = std::chrono::steady_clock::now();
  RunSmoothing(shot);
  const double took =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const double before = roughness(shot.syntheticOriginal, frames);
  const double after = roughness(shot.syntheticSmoothed, frames);
  const bool right = shot.runState() == RUN_SMOOTHED && after < 0.1 * before;
  return right ? took : -1.0;
}

/// The median of some rounds; what else the machine's memory is doing is most of the rest. Negative
/// where one of them gave no smooth path.
double typicalSecondsFor(int frames, int points) {
  constexpr int ROUNDS = 5;
  std::array<double, ROUNDS> seconds{};
  for (double& one : seconds) one = secondsFor(frames, points);
  std::sort(seconds.begin(), seconds.end());
  return seconds.front() < 0.0 ? -1.0 : seconds[ROUNDS / 2];
}

}  // namespace

int main() {
  constexpr double MOST_GROWTH = 3.0;  // of the cost of a frame, from the shortest to the longest
  std::printf("smoothing\n  frames  points        s   us/frame\n");
  for (const int points : {1, 2, 16, 200}) {
    double shortest = 0.0;
    for (const int frames : {1000, 10000, 100000}) {
      if (static_cast<long>(frames) * points > 4000000) continue;
      const double seconds = typicalSecondsFor(frames, points);
      const double cost = seconds / frames * 1e6;
      std::printf("  %6d  %6d  %7.4f  %9.3f\n", frames, points, seconds, cost);
      if (seconds < 0.0) return std::printf("the path is not smooth\n"), 1;
      if (shortest == 0.0) shortest = cost;
      if (cost > MOST_GROWTH * shortest) return std::printf("the cost of a frame grows\n"), 1;
    }
  }
  return 0;
}
