// The renderer's kernel against a plain copy of the same frame and against cv::warpAffine, all in
// one process. Rounds are interleaved, so that the ratios hold on a machine that others use too:
//   resample_bench
// prints per case the median time and the medians of the ratios. The result is compared with the
// scalar formula first; one wrong sample ends the bench.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "render/Resampler.h"

namespace {

constexpr int WIDTH = 4096;
constexpr int HEIGHT = 2160;
constexpr int ROUNDS = 15;

using Frame = std::vector<std::uint16_t>;

struct SMotion {
  const char* name;
  SWarpMap map;
};

const std::array<SMotion, 2> motions{{
    {"translation", {{3.3F, 1.0F, 0.0F}, {-2.7F, 0.0F, 1.0F}}},
    {"rotation 0.003", {{3.3F, 1.0F, -0.003F}, {-2.7F, 0.003F, 1.0F}}},
}};

Frame picture() {
  Frame samples(static_cast<std::size_t>(WIDTH) * HEIGHT * 3);
  std::mt19937 random(1);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = static_cast<std::uint16_t>((i * 7 % 50000) + random() % 15000);
  }
  return samples;
}

SResampleJob jobOf(const Frame& source, Frame& output, const SWarpMap& map) {
  SResampleJob job;
  job.source = source.data();
  job.output = output.data();
  job.pixelsPerLine = WIDTH;
  job.area = {0, 0, WIDTH - 1, HEIGHT - 1};
  job.map = map;
  return job;
}

/// Two halves, the second one on a thread of its own; both sides of a comparison pay for it alike.
void inHalves(int threads, const std::function<void(int first, int last)>& work) {
  if (threads == 1) {
    work(0, HEIGHT - 1);
    return;
  }
  std::thread second([&] { work(HEIGHT / 2, HEIGHT - 1); });
  work(0, HEIGHT / 2 - 1);
  second.join();
}

double milliseconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                   values.end());
  return values[values.size() / 2];
}

void checkAgainstScalar(const SResampler& resampler, const SMotion& motion, const Frame& source) {
  Frame expected(source.size());
  Frame actual(source.size());
  AllResamplers().back().resampleRows(jobOf(source, expected, motion.map), 0, HEIGHT - 1);
  resampler.resampleRows(jobOf(source, actual, motion.map), 0, HEIGHT - 1);
  if (expected == actual) return;
  std::fprintf(stderr, "%s differs from the scalar formula: %s\n", resampler.kernel, motion.name);
  std::exit(1);
}

void resampleCase(benchmark::State& state) {
  const SMotion& motion = motions[static_cast<std::size_t>(state.range(0))];
  const int threads = static_cast<int>(state.range(1));
  const SResampler* resampler = TheResampler();
  if (!resampler) {
    std::fprintf(stderr, "STABILIZE_KERNEL names no kernel\n");
    std::exit(1);
  }
  static const Frame source = picture();
  static Frame output(source.size());
  checkAgainstScalar(*resampler, motion, source);

  const SResampleJob job = jobOf(source, output, motion.map);
  const std::size_t rowSamples = WIDTH * 3;
  const auto copy = [&](int first, int last) {
    const std::size_t from = static_cast<std::size_t>(first) * rowSamples;
    std::memcpy(output.data() + from, source.data() + from,
                static_cast<std::size_t>(last - first + 1) * rowSamples * sizeof(std::uint16_t));
  };
  const cv::Mat in(HEIGHT, WIDTH, CV_16UC3, const_cast<std::uint16_t*>(source.data()));
  cv::Mat out(HEIGHT, WIDTH, CV_16UC3, output.data());
  const cv::Matx23d matrix(motion.map.wx[1], motion.map.wx[2], motion.map.wx[0], motion.map.wy[1],
                           motion.map.wy[2], motion.map.wy[0]);
  cv::setNumThreads(threads);

  for (auto _ : state) {
    std::vector<double> ours, perCopy, perPeer;
    for (int round = 0; round < ROUNDS; ++round) {
      const double copyTime = milliseconds([&] { inHalves(threads, copy); });
      const double time = milliseconds(
          [&] { inHalves(threads, [&](int a, int b) { resampler->resampleRows(job, a, b); }); });
      const double peerTime = milliseconds([&] {
        cv::warpAffine(in, out, matrix, out.size(), cv::INTER_LINEAR | cv::WARP_INVERSE_MAP);
      });
      ours.push_back(time);
      perCopy.push_back(time / copyTime);
      perPeer.push_back(peerTime / time);
    }
    state.SetIterationTime(median(ours) / 1000.0);
    state.counters["x_memcpy"] = median(perCopy);
    state.counters["faster_than_warpAffine"] = median(perPeer);
  }
  state.SetLabel(std::string(motion.name) + ", " + std::to_string(threads) + " thread(s), " +
                 resampler->kernel);
}

BENCHMARK(resampleCase)
    ->ArgsProduct({{0, 1}, {1, 2}})
    ->ArgNames({"motion", "threads"})
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
