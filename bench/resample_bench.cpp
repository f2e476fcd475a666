// Every kernel of the renderer that this machine can use, against a plain copy of the same frame
// and against cv::warpAffine, all in one process. Rounds are interleaved, so that the ratios hold
// on a machine that others use too:
//   resample_bench [ROUNDS]        default: 15
// prints one table: median times (of one thread: processor time), medians of the ratios within a
// round. Each kernel's result is
// compared with the scalar formula first; one wrong sample ends the bench.

#include <time.h>

#include <algorithm>
#include <array>
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
#include "support/Kernels.h"
#include "support/Memory.h"

namespace {

constexpr int WIDTH = 4096;
constexpr int HEIGHT = 2160;
constexpr std::size_t ROW_SAMPLES = std::size_t{WIDTH} * 3;
constexpr std::size_t SAMPLES = ROW_SAMPLES * HEIGHT;
constexpr std::size_t BYTES = SAMPLES * sizeof(std::uint16_t);

struct SMotion {
  const char* name;
  SWarpMap map;
};

const std::array<SMotion, 2> motions{{
    {"translation", {{3.3F, 1.0F, 0.0F}, {-2.7F, 0.0F, 1.0F}}},
    {"rotation 0.003", {{3.3F, 1.0F, -0.003F}, {-2.7F, 0.003F, 1.0F}}},
}};

/// In memory as the product has it: from the pool, on huge pages where there are any.
struct SFrames {
  CBufferPool pool{BYTES, 0};
  std::uint16_t* source = static_cast<std::uint16_t*>(pool.allocateBuffer());
  std::uint16_t* output = static_cast<std::uint16_t*>(pool.allocateBuffer());
  std::uint16_t* expected = static_cast<std::uint16_t*>(pool.allocateBuffer());

  SFrames() {
    if (!source || !output || !expected) std::abort();
    std::mt19937 random(1);
    for (std::size_t i = 0; i < SAMPLES; ++i)
      source[i] = static_cast<std::uint16_t>((i * 7 % 50000) + random() % 15000);
    std::memset(output, 0, BYTES);
    std::memset(expected, 0, BYTES);
  }
  SFrames(const SFrames&) = delete;
  SFrames& operator=(const SFrames&) = delete;
  ~SFrames() {
    for (std::uint16_t* frame : {source, output, expected}) pool.freeBuffer(frame);
  }

  SResampleJob job(const SWarpMap& map, std::uint16_t* to) const {
    SResampleJob job;
    job.source = source;
    job.output = to;
    job.pixelsPerLine = WIDTH;
    job.area = {0, 0, WIDTH - 1, HEIGHT - 1};
    job.map = map;
    return job;
  }
};

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

/// Of one thread what the processor spent on it, which leaves out when others had the processor.
double now(int threads) {
  timespec time{};
  if (clock_gettime(threads == 1 ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC, &time) != 0)
    std::abort();
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double milliseconds(int threads, const std::function<void()>& work) {
  const double start = now(threads);
  work();
  return now(threads) - start;
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                   values.end());
  return values[values.size() / 2];
}

std::vector<SResampler> usableResamplers() {
  std::vector<SResampler> usable;
  for (const SResampler& resampler : AllResamplers())
    if (FindKernel(resampler.kernel)) usable.push_back(resampler);
  return usable;
}

bool givesTheScalarBits(const SFrames& frames, const std::vector<SResampler>& resamplers,
                        const SMotion& motion) {
  AllResamplers().back().resampleRows(frames.job(motion.map, frames.expected), 0, HEIGHT - 1);
  bool good = true;
  for (const SResampler& resampler : resamplers) {
    std::memset(frames.output, 0x5A, BYTES);
    resampler.resampleRows(frames.job(motion.map, frames.output), 0, HEIGHT - 1);
    if (std::memcmp(frames.expected, frames.output, BYTES) == 0) continue;
    std::fprintf(stderr, "%s differs from the scalar formula: %s\n", resampler.kernel, motion.name);
    good = false;
  }
  return good;
}

struct STimes {
  std::vector<double> own;
  std::vector<double> perCopy;
  std::vector<double> perPeer;
};

void printRow(const SMotion& motion, int threads, const std::string& kernel, const STimes& times) {
  std::printf("| %-14s | %d | %-10s | %7.2f | %6.2f | %6.2f |\n", motion.name, threads,
              kernel.c_str(), median(times.own), median(times.perCopy), median(times.perPeer));
}

void measure(const SFrames& frames, const std::vector<SResampler>& resamplers,
             const SMotion& motion, int threads, int rounds) {
  const auto copy = [&](int first, int last) {
    const std::size_t from = static_cast<std::size_t>(first) * ROW_SAMPLES;
    const std::size_t count = static_cast<std::size_t>(last - first + 1) * ROW_SAMPLES;
    std::memcpy(frames.output + from, frames.source + from, count * sizeof(std::uint16_t));
  };
  const auto copyTime = [&] { return milliseconds(threads, [&] { inHalves(threads, copy); }); };
  const cv::Mat in(HEIGHT, WIDTH, CV_16UC3, frames.source);
  cv::Mat out(HEIGHT, WIDTH, CV_16UC3, frames.output);
  const cv::Matx23d matrix(motion.map.wx[1], motion.map.wx[2], motion.map.wx[0], motion.map.wy[1],
                           motion.map.wy[2], motion.map.wy[0]);
  cv::setNumThreads(threads);

  STimes peer;
  std::vector<STimes> ours(resamplers.size());
  for (int round = 0; round < rounds; ++round) {
    const double copied = copyTime();
    const double peerTime = milliseconds(threads, [&] {
      cv::warpAffine(in, out, matrix, out.size(), cv::INTER_LINEAR | cv::WARP_INVERSE_MAP);
    });
    peer.own.push_back(peerTime);
    peer.perCopy.push_back(peerTime / copied);
    peer.perPeer.push_back(1.0);
    for (std::size_t i = 0; i < resamplers.size(); ++i) {
      const SResampleJob job = frames.job(motion.map, frames.output);
      const double before = copyTime();
      const double time = milliseconds(threads, [&] {
        inHalves(threads, [&](int a, int b) { resamplers[i].resampleRows(job, a, b); });
      });
      ours[i].own.push_back(time);
      ours[i].perCopy.push_back(time / before);
      ours[i].perPeer.push_back(peerTime / time);
    }
  }
  for (std::size_t i = 0; i < resamplers.size(); ++i)
    printRow(motion, threads, resamplers[i].kernel, ours[i]);
  printRow(motion, threads, "warpAffine", peer);
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 15;
  if (rounds < 1) return 1;
  const SFrames frames;
  const std::vector<SResampler> resamplers = usableResamplers();
  for (const SMotion& motion : motions)
    if (!givesTheScalarBits(frames, resamplers, motion)) return 1;
  std::printf("%d x %d, 3 x 16 bit, medians of %d rounds\n\n", WIDTH, HEIGHT, rounds);
  std::printf("| motion | threads | kernel | ms | x memcpy | x faster than warpAffine |\n");
  std::printf("|---|---|---|---|---|---|\n");
  for (const SMotion& motion : motions)
    for (const int threads : {1, 2}) measure(frames, resamplers, motion, threads, rounds);
  return 0;
}
