// A whole frame of CStabilizerProc - from its input's arrival to its output's departure: warped,
// filled, handed on - against a plain copy of the same frame by as many threads, in alternating
// rounds of one process:
//   processor_bench [WIDTH HEIGHT]        default: 4096 x 2160
// The last column is what a frame of the whole pass takes: the loop rests a millisecond after each.
// What is timed is compared first: the moved picture with the scalar formula, every fill with what
// one thread makes of it. One wrong sample ends the bench.

#include <algorithm>
#include <barrier>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "doubles/RecordingHost.h"
#include "doubles/RecordingProgressMonitor.h"
#include "doubles/ShotDouble.h"
#include "render/StabilizerProc.h"
#include "render/StabilizerToolParameters.h"
#include "support/Threads.h"

namespace {

using Clock = std::chrono::steady_clock;
using Samples = std::vector<std::uint16_t>;
using Moments = std::map<int, Clock::time_point>;

constexpr int FRAMES = 24;
constexpr int ROUNDS = 5;
constexpr int CHECKED_FRAME = 9;

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

/// The same picture as every frame. It stands in the pool's buffers after their first use, so that
/// fetching a frame costs nothing.
class CStillEdge : public CToolEdge {
 public:
  CStillEdge(const CImageFormat& format, const Samples& picture)
      : picture_(picture), pool_(format.getBytesPerField(), 0) {
    setImageFormat(format);
  }
  Moments fetched;  ///< by frame

 protected:
  CToolFrameBuffer* requestFrame(int frame) override {
    if (frame < 0 || frame >= FRAMES) return nullptr;
    auto buffer = std::make_unique<CToolFrameBuffer>(imageFormat(), &pool_);
    buffer->setFrameIndex(frame);
    if (!buffer->ensureSamples()) std::abort();
    if (filled_.insert(buffer->samples()).second)
      std::copy(picture_.begin(), picture_.end(), buffer->samples());
    fetched[frame] = Clock::now();
    return buffer.release();
  }

 private:
  const Samples& picture_;
  CBufferPool pool_;
  std::set<const std::uint16_t*> filled_;
};

/// Frames leave here in the order of the range.
class CResultEdge : public CToolEdge {
 public:
  std::vector<Clock::time_point> arrived;

 protected:
  void onFramePut() override { arrived.push_back(Clock::now()); }
};

struct SCase {
  const char* name;
  double turn;  // radians a frame
  int fill;
};

const SCase cases[] = {{"translation, white", 0.0, MISSING_DATA_White},
                       {"translation, previous frame", 0.0, MISSING_DATA_Previous_Frame},
                       {"translation, zoom", 0.0, MISSING_DATA_Zoom},
                       {"rotation, white", 0.0002, MISSING_DATA_White},
                       {"rotation, previous frame", 0.0002, MISSING_DATA_Previous_Frame},
                       {"rotation, zoom", 0.0002, MISSING_DATA_Zoom}};

class CPass {
 public:
  CPass(const CImageFormat& format, const Samples& picture, const SCase& c)
      : format_(format), edge_(format, picture) {
    parameters_.UseMatting = false;
    parameters_.MissingDataFill = c.fill;
    parameters_.UFunction = U_Fcn_Euclidean;
    parameters_.RMode = STABMODE_Flat;
    const double corners[3][2] = {{300, 400}, {3000, 400}, {300, 1500}};
    // What a zoom must hide: the path that the operator's point takes.
    shot_.addMovingPoint(0, 0, FRAMES, corners[0][0], corners[0][1], 0.37, -0.29);
    shot_.selected = 0;
    for (int frame = 0; frame < FRAMES; ++frame)
      for (int k = 0; k < 3; ++k) {
        const double x = corners[k][0];
        const double y = corners[k][1];
        const double angle = c.turn * frame;
        shot_.syntheticSmoothed.PointsAt(frame).Point(k) = CTrackPoint(x, y);
        shot_.syntheticOriginal.PointsAt(frame).Point(k) =
            CTrackPoint(std::cos(angle) * x - std::sin(angle) * y + 0.37 * frame,
                        std::sin(angle) * x + std::cos(angle) * y - 0.29 * frame);
      }
  }

  /// Medians over the frames, in milliseconds, the first ones (anchors, cold buffers) left out.
  struct SFrameTime {
    double processing;  // from the input's arrival to the output's departure
    double pass;        // from one output to the next
  };

  SFrameTime run(int threads, Samples* checked) {
    CAbortFlag abort{0};
    CResultEdge results;
    edge_.fetched.clear();
    CStabilizerProc processor(20, "Stabilize", &host_, &abort, &monitor_);
    processor.node().connectInput(0, &edge_);
    processor.node().connectOutput(0, &results);
    processor.SetIOConfig(CToolIOConfig(1, 1, threads));
    CToolFrameRange range(1, 1);
    range.inputs[0] = {false, 0, FRAMES};
    processor.SetFrameRange(range);
    if (processor.ConfigurePorts() != 0) std::abort();
    processor.commandQueue().Add(
        {CAutotoolCommand::NEW_PARAMETERS,
         std::make_unique<CStabilizerToolParameters>(0, shot_, parameters_).release()});
    processor.commandQueue().Add({CAutotoolCommand::RUN, nullptr});
    waitFor(processor, CAutotoolStatus::STOPPED, results, checked);
    processor.commandQueue().Add({CAutotoolCommand::EXIT, nullptr});
    waitFor(processor, CAutotoolStatus::THREAD_ENDED, results, checked);
    BThreadWaitForAll();
    constexpr int COLD = 4;
    using Milliseconds = std::chrono::duration<double, std::milli>;
    std::vector<double> processing, pass;
    for (int frame = COLD; frame < FRAMES; ++frame) {
      const auto i = static_cast<std::size_t>(frame);
      processing.push_back(Milliseconds(results.arrived[i] - edge_.fetched[frame]).count());
      pass.push_back(Milliseconds(results.arrived[i] - results.arrived[i - 1]).count());
    }
    return {median(processing), median(pass)};
  }

  SWarpMap mapOf(int frame) {
    mvector<long double> vx;
    mvector<long double> vy;
    if (!SolveWarp(shot_.syntheticSmoothed.PointsAt(frame), shot_.syntheticOriginal.PointsAt(frame),
                   vx, vy))
      std::abort();
    return PrepareWarpMap(vx, vy, parameters_, format_.getLinesPerFrame() - 1);
  }

 private:
  void waitFor(CStabilizerProc& processor, int status, CToolEdge& results, Samples* checked) {
    for (CAutotoolStatus got; got.status != status;) {
      while (const auto frame = std::unique_ptr<CToolFrameBuffer>(results.queue().takeOldest()))
        if (checked && !frame->isEndOfMaterial() && frame->frameIndex() == CHECKED_FRAME) {
          const std::uint16_t* const samples = std::as_const(*frame).samples();
          checked->assign(samples, samples + format_.getBytesPerField() / 2);
        }
      if (processor.statusQueue().Take(got) != 0) QTXmillisleep(1);
      if (got.status == CAutotoolStatus::ERROR_STATUS) std::abort();
    }
  }

  CImageFormat format_;
  CStillEdge edge_;
  CStabilizerParameters parameters_;
  CShotDouble shot_;
  CRecordingHost host_;
  CRecordingProgressMonitor monitor_;
};

/// A plain copy, between buffers of the kind that the frames have.
class CCopy {
 public:
  explicit CCopy(const Samples& picture)
      : bytes_(picture.size() * sizeof picture[0]), pool_(bytes_, 0) {
    if (!from_ || !to_) std::abort();
    std::memcpy(from_, picture.data(), bytes_);
  }
  CCopy(const CCopy&) = delete;
  CCopy& operator=(const CCopy&) = delete;
  ~CCopy() {
    pool_.freeBuffer(from_);
    pool_.freeBuffer(to_);
  }

  /// Milliseconds that `threads` threads take, which are there before: starting one takes as long
  /// as its part. The first time is left out: a pass gives back memory, and the first to touch
  /// memory again pays for that.
  double time(int threads) {
    constexpr int TIMES = 9;
    const std::size_t part = bytes_ / static_cast<std::size_t>(threads);
    std::barrier together(threads);
    std::vector<double> times;
    const auto work = [&](std::size_t at) {
      for (int i = 0; i <= TIMES; ++i) {
        together.arrive_and_wait();
        const auto start = Clock::now();
        std::memcpy(to_ + at, from_ + at, part);
        together.arrive_and_wait();
        if (at == 0 && i > 0)
          times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
      }
    };
    std::vector<std::thread> others;
    for (int i = 1; i < threads; ++i) others.emplace_back(work, part * static_cast<std::size_t>(i));
    work(0);
    for (std::thread& other : others) other.join();
    return median(times);
  }

 private:
  std::size_t bytes_;
  CBufferPool pool_;
  char* from_ = static_cast<char*>(pool_.allocateBuffer());
  char* to_ = static_cast<char*>(pool_.allocateBuffer());
};

Samples expectedOf(CPass& pass, const CImageFormat& format, const Samples& picture) {
  Samples expected(picture.size());
  SResampleJob job;
  job.source = picture.data();
  job.output = expected.data();
  job.pixelsPerLine = format.getPixelsPerLine();
  job.area = {0, 0, format.getPixelsPerLine() - 1, format.getLinesPerFrame() - 1};
  job.map = pass.mapOf(CHECKED_FRAME);
  std::fill_n(job.fillColor, 3, std::uint16_t{65535});
  AllResamplers().back().resampleRows(job, job.area.top, job.area.bottom);
  return expected;
}

bool measure(const SCase& c, const CImageFormat& format, const Samples& picture, CCopy& copy) {
  CPass pass(format, picture, c);
  Samples alone;
  Samples together;
  pass.run(1, &alone);
  pass.run(2, &together);
  const bool right = alone == together &&
                     (c.fill != MISSING_DATA_White || alone == expectedOf(pass, format, picture));
  if (!right) {
    std::printf("%s: wrong samples\n", c.name);
    return false;
  }
  std::map<int, std::vector<double>> times;
  std::map<int, std::vector<double>> passes;
  std::map<int, std::vector<double>> ratios;
  for (int round = 0; round < ROUNDS; ++round)
    for (const int threads : {1, 2}) {
      const double copying = copy.time(threads);
      const CPass::SFrameTime frame = pass.run(threads, nullptr);
      times[threads].push_back(frame.processing);
      passes[threads].push_back(frame.pass);
      ratios[threads].push_back(frame.processing / copying);
    }
  std::printf(
      "%-28s  1 thread %6.2f ms %5.2f x copy   2 threads %6.2f ms %5.2f x copy   gain %.2f   "
      "pass %6.2f ms\n",
      c.name, median(times[1]), median(ratios[1]), median(times[2]), median(ratios[2]),
      median(times[1]) / median(times[2]), median(passes[2]));
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const int width = argc > 2 ? std::atoi(argv[1]) : 4096;
  const int height = argc > 2 ? std::atoi(argv[2]) : 2160;
  if (width < 64 || height < 64) return 1;
  CImageFormat format(width, height);
  format.setBlackWhite({0, 0, 0}, {65535, 65535, 65535});
  Samples picture(format.getBytesPerField() / 2);
  std::mt19937 random(1);
  for (std::uint16_t& sample : picture) sample = static_cast<std::uint16_t>(random());
  CCopy copy(picture);
  std::printf("a frame of %d x %d through CStabilizerProc, kernel %s\n", width, height,
              TheResampler() ? TheResampler()->kernel : "none");
  bool good = TheResampler() != nullptr;
  for (const SCase& c : cases) good = good && measure(c, format, picture, copy);
  return good ? 0 : 1;
}
