/// Points per second of CShotTracker against two ways that OpenCV offers, in one run, taking turns
/// on the same pictures: normalised cross-correlation over the whole range with a parabola through
/// its peak, and pyramidal Lucas-Kanade. The movement is known, so each line also says how far each
/// method was off; a fast wrong answer shows. Ours includes reading the 16-bit frame, the others
/// start from a luma plane that is made outside the clock.

#include <malloc.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <opencv2/imgproc.hpp>
#include <opencv2/video/tracking.hpp>
#include <random>
#include <vector>

#include "tracker/FeatureDetector.h"
#include "tracker/ShotTracker.h"

namespace {

struct SWave {
  double x, y, phase;
};

/// Sinusoids of 6 to 40 pixels, contrast 0.12 about 0.45: fine and coarse texture alike.
class CTexture {
 public:
  explicit CTexture(unsigned seed) {
    std::mt19937 random(seed);
    const auto uniform = [&](double a, double b) {
      return a + (b - a) * static_cast<double>(random()) / 4294967296.0;
    };
    for (int i = 0; i < 32; ++i) {
      const double w = 6.2831853 / uniform(6.0, 40.0);
      const double angle = uniform(0.0, 3.14159265);
      waves_.push_back({w * std::cos(angle), w * std::sin(angle), uniform(0.0, 6.28)});
    }
  }
  /// One row of the texture moved by (dx, dy). Along it each wave is a rotating pointer.
  void row(double y, double dx, double dy, std::vector<double>& out) const {
    std::fill(out.begin(), out.end(), 0.45);
    for (const SWave& w : waves_) {
      const double start = -w.x * dx + w.y * (y - dy) + w.phase;
      double s = 0.03 * std::sin(start);
      double c = 0.03 * std::cos(start);
      const double stepSin = std::sin(w.x);
      const double stepCos = std::cos(w.x);
      for (double& v : out) {
        v += s;
        const double next = s * stepCos + c * stepSin;
        c = c * stepCos - s * stepSin;
        s = next;
      }
    }
  }

 private:
  std::vector<SWave> waves_;
};

constexpr int kWidth = 1280;
constexpr int kHeight = 720;
constexpr double kNoise = 0.01;
constexpr int kFrames = 8;  ///< of a round: a tracker runs frame after frame

struct SFrame {
  std::vector<std::uint16_t> samples;
  cv::Mat luma;   ///< float, 0 to 1
  cv::Mat bytes;  ///< 8 bits
};

SFrame Draw(const CTexture& texture, double dx, double dy, unsigned seed) {
  SFrame frame;
  frame.samples.resize(3UL * kWidth * kHeight);
  frame.luma.create(kHeight, kWidth, CV_32F);
  frame.bytes.create(kHeight, kWidth, CV_8U);
  std::mt19937 random(seed);
  std::normal_distribution<double> grain(0.0, kNoise);
  std::size_t at = 0;
  std::vector<double> row(kWidth);
  for (int y = 0; y < kHeight; ++y) {
    texture.row(y, dx, dy, row);
    for (int x = 0; x < kWidth; ++x) {
      const double v = std::clamp(row[static_cast<std::size_t>(x)] + grain(random), 0.0, 1.0);
      const auto code = static_cast<std::uint16_t>(std::lround(v * 65535.0));
      for (int c = 0; c < 3; ++c) frame.samples[at++] = code;
      frame.luma.at<float>(y, x) = static_cast<float>(v);
      frame.bytes.at<std::uint8_t>(y, x) = static_cast<std::uint8_t>(std::lround(v * 255.0));
    }
  }
  return frame;
}

/// Processor time of this thread: every method runs on it alone, and other work on the machine does
/// not count.
double ThreadMicroseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return 1e6 * static_cast<double>(now.tv_sec) + 1e-3 * static_cast<double>(now.tv_nsec);
}

double Median(std::vector<double> v) {
  std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2), v.end());
  return v[v.size() / 2];
}

struct SResult {
  std::vector<double> micros;  ///< per point
  double squares = 0.0;
  int count = 0;
  int lost = 0;

  /// A frame, of `points` points.
  template <class Work>
  void time(std::size_t points, Work work) {
    const double start = ThreadMicroseconds();
    work();
    micros.push_back((ThreadMicroseconds() - start) / static_cast<double>(points));
  }
  void add(double ex, double ey) {
    if (std::hypot(ex, ey) > 1.0) {
      ++lost;
      return;
    }
    squares += ex * ex + ey * ey;
    count += 2;
  }
  void print(const char* name, double reference) const {
    const double median = Median(micros);
    std::printf("  %-28s %9.1f us/point %10.0f points/s  x%-6.2f rms %.4f px  lost %d of %d\n",
                name, median, 1e6 / median, reference / median,
                count > 0 ? std::sqrt(squares / count) : 0.0, lost, lost + count / 2);
  }
};

SPoint2 Parabola(const cv::Mat& scores, const cv::Point& peak) {
  const auto vertex = [](float a, float b, float c) {
    const double bend = a - 2.0 * b + c;
    return bend < 0.0 ? 0.5 * (a - c) / bend : 0.0;
  };
  SPoint2 p{static_cast<double>(peak.x), static_cast<double>(peak.y)};
  if (peak.x > 0 && peak.x + 1 < scores.cols) {
    p.x += vertex(scores.at<float>(peak.y, peak.x - 1), scores.at<float>(peak),
                  scores.at<float>(peak.y, peak.x + 1));
  }
  if (peak.y > 0 && peak.y + 1 < scores.rows) {
    p.y += vertex(scores.at<float>(peak.y - 1, peak.x), scores.at<float>(peak),
                  scores.at<float>(peak.y + 1, peak.x));
  }
  return p;
}

void RunMatch(const SFrame& a, const SFrame& b, const std::map<int, SPoint2>& points, int half,
              int search, double dx, double dy, SResult& result) {
  std::vector<SPoint2> found;
  cv::Mat scores;
  const auto run = [&] {
    found.clear();
    for (const auto& [index, p] : points) {
      const int x = static_cast<int>(p.x);
      const int y = static_cast<int>(p.y);
      const int side = 2 * half + 1;
      const cv::Mat patch = a.luma(cv::Rect(x - half, y - half, side, side));
      const cv::Mat area = b.luma(
          cv::Rect(x - half - search, y - half - search, side + 2 * search, side + 2 * search));
      cv::matchTemplate(area, patch, scores, cv::TM_CCOEFF_NORMED);
      cv::Point peak;
      cv::minMaxLoc(scores, nullptr, nullptr, nullptr, &peak);
      const SPoint2 best = Parabola(scores, peak);
      found.push_back({best.x - search, best.y - search});
    }
  };
  for (int frame = 0; frame < kFrames; ++frame) result.time(points.size(), run);
  for (const SPoint2& move : found) result.add(move.x - dx, move.y - dy);
}

void RunFlow(const SFrame& a, const SFrame& b, const std::map<int, SPoint2>& points, int half,
             int search, double dx, double dy, SResult& result) {
  std::vector<cv::Point2f> from;
  for (const auto& [index, p] : points) {
    from.emplace_back(static_cast<float>(p.x), static_cast<float>(p.y));
  }
  int levels = 0;
  while ((half << levels) < search) ++levels;
  std::vector<cv::Point2f> to;
  std::vector<std::uint8_t> status;
  std::vector<float> error;
  for (int frame = 0; frame < kFrames; ++frame)
    result.time(points.size(), [&] {
      cv::calcOpticalFlowPyrLK(a.bytes, b.bytes, from, to, status, error,
                               cv::Size(2 * half + 1, 2 * half + 1), levels);
    });
  for (std::size_t i = 0; i < to.size(); ++i) {
    result.add(to[i].x - from[i].x - dx, to[i].y - from[i].y - dy);
  }
}

void RunOurs(const SFrame& a, const SFrame& b, const std::map<int, SPoint2>& points, int half,
             int search, double dx, double dy, SResult& result) {
  STrackSettings settings;
  settings.trackBoxExtentX = settings.trackBoxExtentY = half;
  settings.searchLeft = settings.searchRight = settings.searchUp = settings.searchDown = search;
  settings.region = {0, 0, kWidth - 1, kHeight - 1};
  CShotTracker tracker(CImageFormat(kWidth, kHeight), settings, points);
  tracker.begin(a.samples.data());
  tracker.follow(a.samples.data());  // buffers are made once per shot
  std::map<int, STrackedPoint> found;
  result.time(points.size(), [&] { found = tracker.follow(b.samples.data()); });
  // On through the shot, to and fro: the other methods have no memory, so the same frame does for
  // them.
  for (int frame = 1; frame < kFrames; ++frame)
    result.time(points.size(), [&] { tracker.follow((frame % 2 ? a : b).samples.data()); });
  for (const auto& [index, point] : found) {
    const SPoint2& from = points.at(index);
    result.add(point.position.x - from.x - dx, point.position.y - from.y - dy);
  }
}

void Compare(int half, int search, int rounds) {
  SResult ours;
  SResult match;
  SResult flow;
  std::mt19937 random(static_cast<unsigned>(half * 1000 + search));
  const auto uniform = [&](double reach) {
    return (static_cast<double>(random()) / 2147483648.0 - 1.0) * reach;
  };
  std::map<int, SPoint2> points;
  for (int i = 0; i < 16; ++i) {
    points[i] = {200.0 + 290.0 * (i % 4), 180.0 + 120.0 * (i / 4)};
  }
  for (int round = 0; round < rounds; ++round) {
    const CTexture texture(static_cast<unsigned>(round + 1));
    const double dx = uniform(search - 1.0);
    const double dy = uniform(search - 1.0);
    const SFrame a = Draw(texture, 0.0, 0.0, 2U * static_cast<unsigned>(round));
    const SFrame b = Draw(texture, dx, dy, 2U * static_cast<unsigned>(round) + 1U);
    RunMatch(a, b, points, half, search, dx, dy, match);
    RunOurs(a, b, points, half, search, dx, dy, ours);
    RunFlow(a, b, points, half, search, dx, dy, flow);
  }
  std::printf("half %d, search %d; 16 points, 1 thread, %d rounds, noise %.0f %%\n", half, search,
              rounds, 100.0 * kNoise);
  const double reference = Median(match.micros);
  match.print("matchTemplate + parabola", reference);
  flow.print("calcOpticalFlowPyrLK", reference);
  ours.print("CShotTracker::follow", reference);
  if (ours.lost > 0) std::exit(1);
}

void Detect() {
  constexpr int kWide = 4096;
  constexpr int kHigh = 2160;
  const CTexture texture(5);
  std::vector<std::uint16_t> samples(3UL * kWide * kHigh);
  std::vector<double> row(kWide);
  for (std::size_t y = 0; y < kHigh; ++y) {
    texture.row(static_cast<double>(y), 0.0, 0.0, row);
    for (std::size_t i = 0; i < 3UL * kWide; ++i) {
      samples[3UL * kWide * y + i] = static_cast<std::uint16_t>(65535.0 * row[i / 3]);
    }
  }
  SFeatureSettings settings;
  settings.region = {0, 0, kWide - 1, kHigh - 1};
  std::vector<double> times;
  std::size_t found = 0;
  for (int i = 0; i < 5; ++i) {
    const double start = ThreadMicroseconds();
    found = DetectFeatures(samples.data(), CImageFormat(kWide, kHigh), settings).size();
    times.push_back((ThreadMicroseconds() - start) / 1000.0);
  }
  std::printf("DetectFeatures 4096 x 2160: %.0f ms, %zu features\n", Median(times), found);
}

}  // namespace

int main() {
  // Large temporaries of either side must not pay for fresh pages in each call.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  cv::setNumThreads(1);
  Compare(10, 20, 15);
  Compare(10, 50, 15);
  Compare(30, 50, 15);
  Compare(60, 100, 9);
  Detect();
  return 0;
}
