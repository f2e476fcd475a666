// How cost grows: a rendered frame with its pixels, a tracked one with its points and with the
// sizes of their boxes, both with threads.
//   growth_bench
// A row's result is checked before its time counts: a picture by the scalar formula, to the bit;
// points by the movement that they were drawn with, none lost and none further off than MOST_ERROR.
// What runs on one thread is measured in its processor time, since other work on the machine does
// not count.

#include <malloc.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <thread>
#include <vector>

#include "render/Resampler.h"
#include "support/Threads.h"
#include "tracker/ShotTracker.h"

namespace {

using Samples = std::vector<std::uint16_t>;

constexpr double MOST_ERROR = 0.25;  // pixels; the noise alone leaves some 0.03 RMS at half size 10
constexpr double NOISE = 0.01;       // of full scale
constexpr int WIDE = 1280;           // of the pictures that points are tracked in
constexpr int HIGH = 720;

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

double Seconds(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Of this thread, on a machine that others use, too; or what several threads took.
enum EClock : clockid_t { PROCESSOR_TIME = CLOCK_THREAD_CPUTIME_ID, TIME = CLOCK_MONOTONIC };

double MicrosecondsOf(EClock clock, const std::function<void()>& work) {
  const double start = Seconds(clock);
  work();
  return 1e6 * (Seconds(clock) - start);
}

// ---- Pictures
// ------------------------------------------------------------------------------------

struct SSize {
  int width;
  int height;
};
constexpr SSize sizes[] = {{1920, 1080}, {2048, 1556}, {4096, 2160}, {7680, 4320}};

struct SMotion {
  const char* name;
  SWarpMap map;
};
const SMotion motions[] = {{"translation", {{3.3F, 1.0F, 0.0F}, {-2.7F, 0.0F, 1.0F}}},
                           {"rotation", {{3.3F, 1.0F, -0.003F}, {-2.7F, 0.003F, 1.0F}}}};

Samples RandomPicture(const SSize& size) {
  Samples samples(3UL * static_cast<unsigned>(size.width) * static_cast<unsigned>(size.height));
  std::mt19937 random(1);
  for (std::uint16_t& sample : samples) sample = static_cast<std::uint16_t>(random());
  return samples;
}

/// Buffers of one picture size, used again and again: fresh memory is not what is measured.
class CPicture {
 public:
  explicit CPicture(const SSize& size)
      : size_(size), source_(RandomPicture(size)), output_(source_.size()) {}

  bool isRight(const SWarpMap& map, int threads) {
    render(*TheResampler(), map, threads);
    const Samples ours = output_;
    render(AllResamplers().back(), map, 1);
    if (ours == output_) return true;
    return std::printf("%d threads: not the scalar formula's picture\n", threads), false;
  }
  void render(const SResampler& resampler, const SWarpMap& map, int threads) {
    SResampleJob job;
    job.source = source_.data();
    job.output = output_.data();
    job.pixelsPerLine = size_.width;
    job.area = {0, 0, size_.width - 1, size_.height - 1};
    job.map = map;
    inParts(threads, [&](int first, int last) { resampler.resampleRows(job, first, last); });
  }
  void copy(int threads) {
    const std::size_t row = 3UL * static_cast<unsigned>(size_.width);
    inParts(threads, [&](int first, int last) {
      const std::size_t at = row * static_cast<unsigned>(first);
      std::memcpy(output_.data() + at, source_.data() + at,
                  row * static_cast<unsigned>(last - first + 1) * sizeof source_[0]);
    });
  }
  double pixels() const { return static_cast<double>(source_.size()) / 3.0; }

 private:
  /// A part of the rows for each thread; this one takes the first.
  void inParts(int threads, const std::function<void(int first, int last)>& work) const {
    const auto start = [&](int part) { return size_.height * part / threads; };
    std::vector<std::thread> others;
    for (int i = 1; i < threads; ++i)
      others.emplace_back([&, i] { work(start(i), start(i + 1) - 1); });
    work(0, start(1) - 1);
    for (std::thread& other : others) other.join();
  }

  SSize size_;
  Samples source_;
  Samples output_;
};

constexpr int ROUNDS = 11;

bool GrowPixels() {
  std::printf("\nA frame rendered, 1 thread, kernel %s\n", TheResampler()->kernel);
  std::printf("%-12s  %11s  %8s  %8s  %6s\n", "motion", "picture", "ms", "ns/pixel", "x copy");
  for (const SSize& size : sizes) {
    CPicture picture(size);
    for (const SMotion& motion : motions) {
      if (!picture.isRight(motion.map, 1)) return false;
      std::vector<double> times;
      std::vector<double> ratios;
      for (int round = 0; round < ROUNDS; ++round) {
        const double copying = MicrosecondsOf(PROCESSOR_TIME, [&] { picture.copy(1); });
        times.push_back(MicrosecondsOf(PROCESSOR_TIME,
                                       [&] { picture.render(*TheResampler(), motion.map, 1); }));
        ratios.push_back(times.back() / copying);
      }
      std::printf("%-12s  %4d x %4d  %8.2f  %8.3f  %6.2f\n", motion.name, size.width, size.height,
                  Median(times) / 1000.0, 1000.0 * Median(times) / picture.pixels(),
                  Median(ratios));
    }
  }
  return true;
}

// ---- Points
// --------------------------------------------------------------------------------------

/// A sum of waves of 6 to 40 pixels in all directions, moved, under fresh noise.
Samples DrawTexture(unsigned seed, const SPoint2& move, unsigned noiseSeed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  std::vector<double> luma(static_cast<std::size_t>(WIDE) * HIGH, 0.45);
  for (int wave = 0; wave < 32; ++wave) {
    const double frequency = 6.2831853 / (6.0 + 34.0 * uniform(random));
    const double angle = 3.14159265 * uniform(random);
    const double wx = frequency * std::cos(angle);
    const double wy = frequency * std::sin(angle);
    const double phase = 6.2831853 * uniform(random) - wx * move.x - wy * move.y;
    // The sine of a sum: a table for each axis in place of a sine for each pixel.
    std::vector<double> sines;
    std::vector<double> cosines;
    for (int x = 0; x < WIDE; ++x) {
      sines.push_back(0.03 * std::sin(wx * x));
      cosines.push_back(0.03 * std::cos(wx * x));
    }
    for (int y = 0; y < HIGH; ++y) {
      const double s = std::sin(wy * y + phase);
      const double c = std::cos(wy * y + phase);
      double* const row = luma.data() + static_cast<std::size_t>(y) * WIDE;
      for (std::size_t x = 0; x < WIDE; ++x) row[x] += sines[x] * c + cosines[x] * s;
    }
  }
  std::mt19937 noise(noiseSeed);
  std::normal_distribution<double> grain(0.0, NOISE);
  Samples samples;
  samples.reserve(3 * luma.size());
  for (const double value : luma)
    samples.insert(samples.end(), 3,
                   static_cast<std::uint16_t>(
                       std::lround(65535.0 * std::clamp(value + grain(noise), 0.0, 1.0))));
  return samples;
}

/// `columns` x `rows` points, spread evenly over the middle of the picture.
std::map<int, SPoint2> Grid(int columns, int rows, int margin) {
  const auto place = [&](int i, int count, int extent) {
    return count == 1 ? extent / 2 : margin + (extent - 1 - 2 * margin) * i / (count - 1);
  };
  std::map<int, SPoint2> points;
  for (int row = 0; row < rows; ++row)
    for (int column = 0; column < columns; ++column)
      points[row * columns + column] = {static_cast<double>(place(column, columns, WIDE)),
                                        static_cast<double>(place(row, rows, HIGH))};
  return points;
}

/// A picture that jumps by most of the search range, and where it jumps.
struct SJump {
  SPoint2 moves[2];
  Samples pictures[2];
};

std::vector<SJump> DrawJumps(int search) {
  std::vector<SJump> jumps;
  for (unsigned texture = 1; texture <= 3; ++texture) {
    const SPoint2 move{0.79 * search + 0.31, -0.83 * search + 0.17 * texture};
    jumps.push_back({{{0.0, 0.0}, move},
                     {DrawTexture(texture, {0.0, 0.0}, 2 * texture),
                      DrawTexture(texture, move, 2 * texture + 1)}});
  }
  return jumps;
}

struct STracking {
  std::vector<double> micros;  ///< of each frame
  std::vector<double> errors;  ///< of each point in each frame, pixels
  bool lost = false;

  double largestError() const { return *std::max_element(errors.begin(), errors.end()); }
  bool isRight() const {
    if (!lost && largestError() <= MOST_ERROR) return true;
    std::printf("%s; largest error %.3f px\n", lost ? "a point was lost" : "a point is off",
                largestError());
    return false;
  }
};

void AddErrors(const std::map<int, SPoint2>& from, const SPoint2& move,
               const std::map<int, STrackedPoint>& found, STracking& result) {
  result.lost = result.lost || found.size() != from.size();
  for (const auto& [index, point] : found) {
    const SPoint2& start = from.at(index);
    result.lost = result.lost || point.state != EPointState::found;
    result.errors.push_back(
        std::hypot(point.position.x - start.x - move.x, point.position.y - start.y - move.y));
  }
}

/// Every picture to and fro.
STracking Track(const std::vector<SJump>& jumps, const std::map<int, SPoint2>& points, int half,
                int search, int threads, EClock clock) {
  constexpr int FRAMES = 6;
  STrackSettings settings;
  settings.trackBoxExtentX = settings.trackBoxExtentY = half;
  settings.searchLeft = settings.searchRight = settings.searchUp = settings.searchDown = search;
  settings.region = {0, 0, WIDE - 1, HIGH - 1};
  settings.threads = threads;
  STracking result;
  Samples arriving(jumps[0].pictures[0].size());
  for (const SJump& jump : jumps) {
    CShotTracker tracker(CImageFormat(WIDE, HIGH), settings, points);
    tracker.begin(jump.pictures[0].data());
    tracker.follow(jump.pictures[0].data());  // buffers are made once per shot
    for (int frame = 1; frame <= FRAMES; ++frame) {
      // As frames come from a reader: into a buffer that was used before, most of it past the
      // caches.
      std::copy(jump.pictures[frame % 2].begin(), jump.pictures[frame % 2].end(), arriving.begin());
      std::map<int, STrackedPoint> found;
      result.micros.push_back(
          MicrosecondsOf(clock, [&] { found = tracker.follow(arriving.data()); }));
      AddErrors(points, jump.moves[frame % 2], found, result);
    }
  }
  return result;
}

bool GrowPoints() {
  std::printf("\nA frame tracked, half size 10, search 20, 1 thread\n");
  std::printf("%6s  %9s  %9s  %8s\n", "points", "us/frame", "us/point", "error px");
  const std::vector<SJump> jumps = DrawJumps(20);
  struct SGrid {
    int columns;
    int rows;
  };
  for (const SGrid& grid : {SGrid{1, 1}, {2, 2}, {4, 4}, {8, 8}, {20, 10}}) {
    const std::map<int, SPoint2> points = Grid(grid.columns, grid.rows, 60);
    const STracking tracking = Track(jumps, points, 10, 20, 1, PROCESSOR_TIME);
    if (!tracking.isRight()) return false;
    const double time = Median(tracking.micros);
    const auto count = static_cast<double>(points.size());
    std::printf("%6zu  %9.1f  %9.2f  %8.3f\n", points.size(), time, time / count,
                tracking.largestError());
  }
  return true;
}

bool GrowExtents() {
  std::printf("\nA point tracked by the sizes of its boxes, 16 points, 1 thread\n");
  std::printf("%4s  %6s  %9s  %6s  %8s\n", "half", "search", "us/point", "ratio", "error px");
  struct SExtents {
    int half;
    int search;
  };
  double first = 0.0;
  for (const SExtents& extents : {SExtents{10, 20}, {10, 50}, {30, 50}, {60, 100}}) {
    const std::map<int, SPoint2> points = Grid(4, 4, 180);
    const STracking tracking =
        Track(DrawJumps(extents.search), points, extents.half, extents.search, 1, PROCESSOR_TIME);
    if (!tracking.isRight()) return false;
    const double time = Median(tracking.micros) / static_cast<double>(points.size());
    if (first == 0.0) first = time;
    std::printf("%4d  %6d  %9.2f  %6.2f  %8.3f\n", extents.half, extents.search, time, time / first,
                tracking.largestError());
  }
  return true;
}

// ---- Threads
// -------------------------------------------------------------------------------------

/// 1, 2, 4, ... and as many as there are cores.
std::vector<int> ThreadCounts() {
  std::vector<int> counts;
  for (int count = 1; count < AvailableProcessorCoreCount(); count *= 2) counts.push_back(count);
  counts.push_back(AvailableProcessorCoreCount());
  return counts;
}

/// The least time that the same work takes with each number of threads: whatever else runs on the
/// machine takes cores from the larger numbers first.
class CByThreads {
 public:
  void add(int threads, double micros) {
    double& least = least_.try_emplace(threads, micros).first->second;
    least = std::min(least, micros);
  }
  void print(const char* work) const {
    const double alone = least_.begin()->second;
    for (const auto& [threads, micros] : least_)
      std::printf("%-22s  %7d  %8.2f  %5.2f\n", work, threads, micros / 1000.0, alone / micros);
  }

 private:
  std::map<int, double> least_;
};

bool GrowThreadsOfPicture() {
  CPicture picture({4096, 2160});
  CByThreads copying;
  for (const SMotion& motion : motions) {
    CByThreads rendering;
    for (const int threads : ThreadCounts())
      if (!picture.isRight(motion.map, threads)) return false;
    for (int round = 0; round < ROUNDS; ++round)
      for (const int threads : ThreadCounts()) {
        copying.add(threads, MicrosecondsOf(TIME, [&] { picture.copy(threads); }));
        rendering.add(threads, MicrosecondsOf(TIME, [&] {
                        picture.render(*TheResampler(), motion.map, threads);
                      }));
      }
    rendering.print(motion.name);
  }
  copying.print("plain copy");
  return true;
}

bool GrowThreadsOfPoints() {
  const std::vector<SJump> jumps = DrawJumps(20);
  const std::map<int, SPoint2> points = Grid(8, 8, 60);
  const STracking alone = Track(jumps, points, 10, 20, 1, TIME);
  if (!alone.isRight()) return false;
  CByThreads tracking;
  for (int round = 0; round < 3; ++round)
    for (const int threads : ThreadCounts()) {
      const STracking now = Track(jumps, points, 10, 20, threads, TIME);
      if (now.lost || now.errors != alone.errors)
        return std::printf("%d threads: other positions than with one\n", threads), false;
      for (const double micros : now.micros) tracking.add(threads, micros);
    }
  tracking.print("64 points tracked");
  return true;
}

bool GrowThreads() {
  std::printf("\nThreads: a frame of 4096 x 2160; points of half size 10, search 20\n");
  std::printf("%-22s  %7s  %8s  %5s\n", "work", "threads", "ms", "gain");
  return GrowThreadsOfPicture() && GrowThreadsOfPoints();
}

}  // namespace

int main() {
  // Temporaries of the pictures must not pay for fresh pages again and again.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  if (!TheResampler()) return std::printf("STABILIZE_KERNEL names no kernel\n"), 1;
  const bool right = GrowPixels() && GrowPoints() && GrowExtents() && GrowThreads();
  return right ? 0 : 1;
}
