#include "render/StabilizerProc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "Faults.h"
#include "doubles/RecordingHost.h"
#include "doubles/RecordingProgressMonitor.h"
#include "doubles/ShotDouble.h"
#include "doubles/SourceEdge.h"
#include "doubles/TraceCapture.h"
#include "render/StabilizerToolParameters.h"
#include "support/Threads.h"
#include "support/ZoomFractional.h"

namespace {

using Samples = std::vector<std::uint16_t>;

constexpr int FIRST = 100;
constexpr int MISSING = -1;
constexpr int WHITE = 65535;
constexpr int BLACK = 64;

int sourceSample(int frame, int x, int y, int component) {
  return (frame * 911 + x * 37 + y * 401 + component * 13) % 60000 + 100;
}

Samples sourceFrame(const CImageFormat& format, int frame) {
  Samples samples;
  for (int y = 0; y < format.getLinesPerFrame(); ++y) {
    for (int i = 0; i < format.getPixelsPerLine() * 3; ++i) {
      samples.push_back(static_cast<std::uint16_t>(sourceSample(frame, i / 3, y, i % 3)));
    }
  }
  return samples;
}

struct SOutput {
  Samples samples;
  bool renderFlag = false;
  std::size_t regions = 0;
};

/// A host's part in one pass. Settings first, then run(); the results stay to be looked at.
class CPass {
 public:
  CImageFormat format;
  CStabilizerParameters parameters;
  CShotDouble shot;
  int frames = 10;
  int threads = 2;
  int framesAvailable = INT_MAX;
  /// Called on the processor's thread when it fetches this frame's input.
  std::map<int, std::function<void(CStabilizerProc& processor)>> onFetch;
  CRecordingProgressMonitor monitor;

  std::map<int, SOutput> outputs;
  std::vector<int> statuses;
  int errorCode = 0;

  explicit CPass(int width = 40, int lines = 30) : format(width, lines) {
    format.setBlackWhite({BLACK, BLACK, BLACK}, {WHITE, WHITE, WHITE});
    parameters.UseMatting = false;
  }

  /// The measured motion: original triangle = smoothed triangle turned by i * angle and moved.
  void setMotion(double dx, double dy, double angle = 0.0) {
    for (int i = 0; i < frames; ++i) {
      const double s = std::sin(angle * i);
      const double c = std::cos(angle * i);
      const double corners[3][2] = {{3, 4}, {30, 4}, {3, 25}};
      for (int k = 0; k < 3; ++k) {
        const double x = corners[k][0];
        const double y = corners[k][1];
        shot.syntheticSmoothed.PointsAt(FIRST + i).Point(k) = CTrackPoint(x, y);
        shot.syntheticOriginal.PointsAt(FIRST + i).Point(k) =
            CTrackPoint(c * x - s * y + dx, s * x + c * y + dy);
      }
    }
  }

  void run() {
    CRecordingHost host;
    CAbortFlag abort{0};
    CSourceEdge source(format, host.framePool(format.getBytesPerField()));
    CToolEdge results;
    if (framesAvailable != INT_MAX) source.withheldFrame = FIRST + framesAvailable;
    CStabilizerProc processor(20, "Stabilize", &host, &abort, &monitor);
    source.onFrame = [&](CToolFrameBuffer& frame) {
      if (const auto found = onFetch.find(frame.frameIndex() - FIRST); found != onFetch.end()) {
        found->second(processor);
      }
      const Samples samples = sourceFrame(format, frame.frameIndex());
      std::copy(samples.begin(), samples.end(), frame.samples());
    };
    processor.node().connectInput(0, &source);
    processor.node().connectOutput(0, &results);
    processor.SetIOConfig(CToolIOConfig(1, 1, threads));
    CToolFrameRange range(1, 1);
    range.inputs[0] = {false, FIRST, FIRST + frames};
    processor.SetFrameRange(range);
    EXPECT_EQ(processor.ConfigurePorts(), 0);

    send(processor, parameters);
    processor.commandQueue().Add({CAutotoolCommand::RUN, nullptr});
    waitFor(processor, CAutotoolStatus::STOPPED, results);
    processor.commandQueue().Add({CAutotoolCommand::EXIT, nullptr});
    waitFor(processor, CAutotoolStatus::THREAD_ENDED, results);
    BThreadWaitForAll();
  }

  void send(CStabilizerProc& processor, const CStabilizerParameters& settings) {
    auto copy = std::make_unique<CStabilizerToolParameters>(0, shot, settings);
    processor.commandQueue().Add({CAutotoolCommand::NEW_PARAMETERS, copy.release()});
  }

  int sample(int frame, int x, int y, int component = 0) const {
    const Samples& samples = outputs.at(FIRST + frame).samples;
    return samples[static_cast<std::size_t>((y * format.getPixelsPerLine() + x) * 3 + component)];
  }

 private:
  void collect(CToolEdge& results) {
    while (const auto frame = std::unique_ptr<CToolFrameBuffer>(results.queue().takeOldest())) {
      if (frame->isEndOfMaterial()) continue;
      const std::size_t count = format.getBytesPerField() / sizeof(std::uint16_t);
      const std::uint16_t* const samples = std::as_const(*frame).samples();
      outputs[frame->frameIndex()] = {Samples(samples, samples + count), frame->renderFlag(),
                                      frame->changedRegions().Regions().size()};
      // It is ours: what later frames look back at must not be what becomes of it.
      std::fill_n(frame->samples(), count, std::uint16_t{4711});
    }
  }

  // Takes statuses until the given one; a pass that runs dry is stopped as a user would stop it.
  void waitFor(CStabilizerProc& processor, int status, CToolEdge& results) {
    bool stopSent = false;
    for (CAutotoolStatus got; got.status != status;) {
      collect(results);
      if (static_cast<int>(outputs.size()) >= framesAvailable - 1 && !stopSent) {
        processor.commandQueue().Add({CAutotoolCommand::STOP, nullptr});
        stopSent = true;
      }
      if (processor.statusQueue().Take(got) != 0) {
        QTXmillisleep(1);
        continue;
      }
      statuses.push_back(got.status);
      if (got.status == CAutotoolStatus::ERROR_STATUS) errorCode = got.errorCode;
    }
    collect(results);
  }
};

/// Compares a whole output frame with an expectation per pixel; `expected` gives component 0 and
/// MISSING where the fill is to be seen.
void expectFrame(const CPass& pass, int frame, const std::function<int(int x, int y)>& expected,
                 int fill) {
  for (int y = 0; y < pass.format.getLinesPerFrame(); ++y) {
    for (int x = 0; x < pass.format.getPixelsPerLine(); ++x) {
      const int value = expected(x, y);
      ASSERT_EQ(pass.sample(frame, x, y), value == MISSING ? fill : value)
          << "frame " << frame << " x " << x << " y " << y;
    }
  }
}

bool isSource(const CPass& pass, int frame) {
  return pass.outputs.at(FIRST + frame).samples == sourceFrame(pass.format, FIRST + frame);
}

TEST(StabilizerProcTest, AnchorsKeepTheirPictureAndTheOthersAreMoved) {
  CPass pass;
  pass.parameters.GoodFramesIn = 2;
  pass.parameters.GoodFramesOut = 1;
  pass.setMotion(5, -3);
  pass.run();

  ASSERT_EQ(pass.outputs.size(), 10U);
  for (const int frame : {0, 1, 9}) EXPECT_TRUE(isSource(pass, frame)) << frame;
  for (int frame = 2; frame < 9; ++frame) {
    expectFrame(
        pass, frame,
        [frame](int x, int y) {
          return x + 5 > 39 || y - 3 < 0 ? MISSING : sourceSample(FIRST + frame, x + 5, y - 3, 0);
        },
        WHITE);
  }
  for (int frame = 0; frame < 10; ++frame) {
    EXPECT_EQ(pass.outputs[FIRST + frame].renderFlag, frame >= 2) << frame;
    EXPECT_EQ(pass.outputs[FIRST + frame].regions, frame >= 2 ? 1U : 0U) << frame;
  }
  using Status = CAutotoolStatus;
  EXPECT_EQ(pass.statuses,
            (std::vector<int>{Status::THREAD_STARTED, Status::RUNNING, Status::END_OF_MATERIAL,
                              Status::STOPPED, Status::THREAD_ENDED}));
  EXPECT_TRUE(pass.shot.rendered);
  std::vector<int> range(10);
  std::iota(range.begin(), range.end(), FIRST);
  EXPECT_EQ(pass.shot.framesRendered, range);
  EXPECT_EQ(pass.shot.runState(), RUN_RENDERING);
  std::vector<std::string> progress{"SetFrameCount 10 1", "SetStatusMessage Stabilizing",
                                    "StartProgress"};
  progress.insert(progress.end(), 10, "BumpProgress 1");
  progress.insert(progress.end(), {"SetStatusMessage Stabilization complete", "StopProgress 1"});
  EXPECT_EQ(pass.monitor.calls.texts(), progress);
}

TEST(StabilizerProcTest, FillsOfOneColour) {
  for (const auto& [fill, color] :
       {std::pair{MISSING_DATA_White, WHITE}, {MISSING_DATA_Black, BLACK}}) {
    CPass pass;
    pass.parameters.MissingDataFill = fill;
    pass.parameters.GoodFramesIn = pass.parameters.GoodFramesOut = 0;
    pass.setMotion(-10, 0);
    pass.run();
    expectFrame(
        pass, 4,
        [](int x, int y) { return x < 10 ? MISSING : sourceSample(FIRST + 4, x - 10, y, 0); },
        color);
  }
}

TEST(StabilizerProcTest, PreviousFrameShowsWhatWasRenderedLast) {
  for (const int anchors : {0, 3}) {
    CPass pass;
    pass.parameters.MissingDataFill = MISSING_DATA_Previous_Frame;
    pass.parameters.GoodFramesIn = anchors;
    pass.setMotion(-10, 0);
    pass.run();
    // The uncovered columns come from the seed and stay: every later frame misses them too.
    const int seed = anchors == 0 ? 0 : anchors - 1;
    for (const int frame : {anchors, anchors + 1, 8}) {
      expectFrame(
          pass, frame,
          [=](int x, int y) {
            return x < 10 ? sourceSample(FIRST + seed, x, y, 0)
                          : sourceSample(FIRST + frame, x - 10, y, 0);
          },
          0);
    }
  }
}

TEST(StabilizerProcTest, TheMatStaysOrIsPaintedBlackAndNeverMovesIn) {
  for (const bool keep : {true, false}) {
    CPass pass;
    pass.parameters.UseMatting = true;
    pass.parameters.KeepOriginalMatValues = keep;
    pass.shot.box = {4, 3, 30, 20};
    pass.setMotion(2, 1);
    pass.run();
    expectFrame(
        pass, 5,
        [keep](int x, int y) {
          const bool inside = x >= 4 && x <= 30 && y >= 3 && y <= 20;
          if (!inside) return keep ? sourceSample(FIRST + 5, x, y, 0) : BLACK;
          return x + 2 > 30 || y + 1 > 20 ? MISSING : sourceSample(FIRST + 5, x + 2, y + 1, 0);
        },
        WHITE);
  }
}

TEST(StabilizerProcTest, ABoxBeyondTheFrameIsCutAndOneOutsideItIsRefused) {
  CPass cut;
  cut.parameters.UseMatting = true;
  cut.shot.box = {-20, 5, 4000, 900};
  cut.setMotion(0, 2);
  cut.run();
  expectFrame(
      cut, 3,
      [](int x, int y) {
        if (y < 5) return sourceSample(FIRST + 3, x, y, 0);
        return y + 2 > 29 ? MISSING : sourceSample(FIRST + 3, x, y + 2, 0);
      },
      WHITE);

  CPass outside;
  outside.parameters.UseMatting = true;
  outside.shot.box = {50, 5, 60, 9};
  outside.setMotion(0, 2);
  outside.run();
  EXPECT_EQ(outside.errorCode, CStabilizerProc::FAILED_FRAME);
  EXPECT_TRUE(outside.outputs.empty());
}

TEST(StabilizerProcTest, TheNumberOfThreadsChangesNothing) {
  for (const int lines : {30, 5, 1}) {
    for (const int fill : {MISSING_DATA_White, MISSING_DATA_Previous_Frame, MISSING_DATA_Zoom}) {
      std::map<int, SOutput> first;
      for (const int threads : {1, 2, 3, 7, 8, 100}) {
        CPass pass(61, lines);
        pass.frames = 4;
        pass.threads = threads;
        pass.parameters.RMode = STABMODE_Smoothed;
        pass.parameters.MissingDataFill = fill;
        pass.setMotion(1.3, -0.4, 0.01);
        pass.shot.addMovingPoint(2, FIRST, 4, 20, 15, 1.3, 0);
        pass.shot.selected = 2;
        pass.run();
        ASSERT_EQ(pass.outputs.size(), 4U);
        if (threads == 1) first = pass.outputs;
        for (const auto& [frame, output] : pass.outputs) {
          EXPECT_EQ(output.samples, first[frame].samples) << threads << " threads, frame " << frame;
        }
      }
    }
  }
}

TEST(StabilizerProcTest, ZoomWarpsAndEnlargesTheAnchorsToo) {
  CPass pass;
  pass.frames = 4;
  pass.parameters.MissingDataFill = MISSING_DATA_Zoom;
  pass.setMotion(-4, 0);
  pass.shot.addMovingPoint(2, FIRST, 4, 20, 15, 2, 0);
  pass.shot.selected = 2;
  pass.run();

  CPass plain;  // no anchors, uncovered columns filled by the seed: the picture before the zoom
  plain.frames = 4;
  plain.parameters.MissingDataFill = MISSING_DATA_Previous_Frame;
  plain.parameters.GoodFramesIn = plain.parameters.GoodFramesOut = 0;
  plain.setMotion(-4, 0);
  plain.run();
  const SRect area{0, 0, 39, 29};
  CZoomFractional zoom(2);
  zoom.initialize(pass.format, 2, 2, 128, 128, 128);
  Samples expected = plain.outputs.at(FIRST).samples;
  zoom.convert({0, 2.25, 34, 27.75}, area, expected.data(), expected.data());
  EXPECT_EQ(pass.outputs.at(FIRST).samples, expected);
  EXPECT_TRUE(pass.outputs.at(FIRST).renderFlag);
  EXPECT_FALSE(isSource(pass, 3)) << "anchors at the end are enlarged as well";
}

/// The fills that look back, frame by frame and pixel by pixel, with whole frames copied about.
std::map<int, Samples> lookingBack(CPass& pass, const SRect& area) {
  const auto copyArea = [&](const Samples& from, Samples& to) {
    const std::ptrdiff_t stride = std::ptrdiff_t{3} * pass.format.getPixelsPerLine();
    for (int y = area.top; y <= area.bottom; ++y) {
      const std::ptrdiff_t begin = y * stride + std::ptrdiff_t{3} * area.left;
      std::copy_n(from.begin() + begin, 3 * (area.right - area.left + 1), to.begin() + begin);
    }
  };
  CZoomFractional zoom(2);
  zoom.initialize(pass.format, 2, 2, 128, 128, 128);
  const bool zooms = pass.parameters.MissingDataFill == MISSING_DATA_Zoom;
  std::map<int, Samples> outputs;
  Samples previous = sourceFrame(pass.format, FIRST);
  for (int frame = FIRST; frame < FIRST + pass.frames; ++frame) {
    const Samples source = sourceFrame(pass.format, frame);
    Samples& output = outputs[frame] = source;
    mvector<long double> vx, vy;
    EXPECT_TRUE(SolveWarp(pass.shot.syntheticSmoothed.PointsAt(frame),
                          pass.shot.syntheticOriginal.PointsAt(frame), vx, vy));
    SResampleJob job;
    job.source = source.data();
    job.output = output.data();
    job.pixelsPerLine = pass.format.getPixelsPerLine();
    job.area = area;
    job.map = PrepareWarpMap(vx, vy, pass.parameters, area.bottom - area.top);
    job.previous = previous.data();
    const bool isAnchorOut = frame >= FIRST + pass.frames - pass.parameters.GoodFramesOut;
    if (!isAnchorOut) AllResamplers().back().resampleRows(job, area.top, area.bottom);
    if (zooms) zoom.convert(pass.shot.zoomSource, area, output.data(), output.data());
    copyArea(output, previous);
  }
  return outputs;
}

TEST(StabilizerProcTest, FillsThatLookBackSeeWhatWasHandedOnLast) {
  for (const int fill : {MISSING_DATA_Previous_Frame, MISSING_DATA_Zoom}) {
    for (const bool keep : {true, false}) {
      CPass pass(90, 60);
      pass.parameters.MissingDataFill = fill;
      pass.parameters.RMode = STABMODE_Smoothed;
      pass.parameters.GoodFramesIn = 0;
      pass.parameters.GoodFramesOut = 2;
      pass.parameters.KeepOriginalMatValues = keep;
      pass.parameters.UseMatting = true;
      pass.shot.box = {5, 4, 80, 51};
      pass.threads = 3;
      pass.setMotion(-9.3, 6.4, 0.02);
      pass.shot.addMovingPoint(2, FIRST, pass.frames, 20, 15, 0.4, 0);
      pass.shot.selected = 2;
      pass.run();
      ASSERT_EQ(pass.outputs.size(), 10U);
      auto expected = lookingBack(pass, pass.shot.box);
      for (const auto& [frame, output] : pass.outputs) {
        const bool painted = !keep && frame < FIRST + 8;
        const std::uint16_t black[3] = {BLACK, BLACK, BLACK};
        if (painted) PaintOutside(expected[frame].data(), 90, {0, 59}, pass.shot.box, black);
        EXPECT_EQ(output.samples, expected[frame]) << "fill " << fill << " frame " << frame;
      }
    }
  }
}

TEST(StabilizerProcTest, AFrameWithoutItsPointsFailsThePass) {
  CPass pass;
  pass.setMotion(5, -3);
  pass.shot.syntheticOriginal.PointsAt(FIRST + 4).RemovePoint(1);
  pass.run();
  EXPECT_EQ(pass.errorCode, WARP_INVALID_POINTS);
  EXPECT_EQ(pass.outputs.size(), 4U);
  EXPECT_FALSE(pass.shot.rendered);
  EXPECT_TRUE(pass.monitor.calls.contains("SetStatusMessage Stopped"));
  EXPECT_TRUE(pass.monitor.calls.contains("StopProgress 0"));
  EXPECT_EQ(pass.shot.syntheticOriginal.PointsAt(FIRST + 4).Count(), 2) << "read only";
}

TEST(StabilizerProcTest, AStoppedPassIsNotRendered) {
  CPass pass;
  pass.framesAvailable = 5;
  pass.setMotion(5, -3);
  pass.run();
  EXPECT_EQ(pass.errorCode, 0);
  EXPECT_FALSE(pass.shot.rendered);
  EXPECT_TRUE(pass.monitor.calls.contains("SetStatusMessage Stopped"));
  EXPECT_TRUE(pass.monitor.calls.contains("StopProgress 0"));
}

TEST(StabilizerProcTest, NoWarpFunctionCopiesEveryFrame) {
  CPass pass;
  pass.parameters.UFunction = U_Fcn_None;
  pass.setMotion(5, -3, 0.01);
  pass.run();
  for (int frame = 0; frame < 10; ++frame) EXPECT_TRUE(isSource(pass, frame)) << frame;
}

TEST(StabilizerProcTest, MotionThatLeavesNothingToZoomIsRefused) {
  CPass pass;
  pass.parameters.MissingDataFill = MISSING_DATA_Zoom;
  pass.setMotion(0, 0);
  pass.shot.addMovingPoint(0, FIRST, 10, 0, 15, 20, 0);
  pass.shot.selected = 0;
  pass.run();
  EXPECT_EQ(pass.errorCode, CStabilizerProc::FAILED_FRAME);
  EXPECT_TRUE(pass.outputs.empty());
}

TEST(StabilizerProcTest, ParametersThatArriveInMidPassHoldFromTheNextFrame) {
  constexpr int LAST_BEFORE = 4;
  for (const int fill : {MISSING_DATA_Black, MISSING_DATA_Previous_Frame, MISSING_DATA_Zoom}) {
    SCOPED_TRACE(fill);
    CPass pass;
    pass.setMotion(-10, 0);
    pass.parameters.GoodFramesIn = pass.parameters.GoodFramesOut = 0;
    pass.onFetch[LAST_BEFORE] = [&](CStabilizerProc& processor) {
      CStabilizerParameters later = pass.parameters;
      later.MissingDataFill = fill;
      pass.send(processor, later);
    };
    pass.run();
    ASSERT_EQ(pass.outputs.size(), 10U);
    for (const int frame : {LAST_BEFORE, LAST_BEFORE + 1, 9}) {
      expectFrame(
          pass, frame,
          [=](int x, int y) {
            if (x >= 10) return sourceSample(FIRST + frame, x - 10, y, 0);
            if (frame == LAST_BEFORE || fill == MISSING_DATA_Black) return MISSING;
            return sourceSample(FIRST + LAST_BEFORE + 1, x, y, 0);  // the first that looked back
          },
          frame == LAST_BEFORE ? WHITE : BLACK);
    }
  }
}

TEST(StabilizerProcTest, ABandThatThrowsFailsTheFrame) {
  const CFaultsInScope faults;
  const CTraceCapture trace(0);
  CPass pass;
  pass.threads = 3;
  pass.setMotion(0.5, 0);  // every band meets the last column
  pass.onFetch[4] = [&](CStabilizerProc&) { faults->bilinearThrows = true; };
  pass.run();
  EXPECT_EQ(pass.errorCode, CStabilizerProc::FAILED_FRAME);
  EXPECT_EQ(pass.outputs.size(), 4U);
  EXPECT_FALSE(pass.shot.rendered);
  EXPECT_TRUE(pass.monitor.calls.contains("StopProgress 0"));
  const std::string defect = "StabilizerSliceThreadStart: Stabilizer Slice created major error";
  const std::string failure =
      "ERROR: CStabilizerProc::StabilizeFrame: StabilizeFrame failed:A part of frame 104 was not "
      "rendered";
  EXPECT_EQ(trace.lines.texts(), (std::vector<std::string>{
                                     defect, defect, defect, failure,
                                     "ERROR: CToolProcessor::ProcessLoop Processing Error -8508"}));
}

TEST(StabilizerProcTest, BandsWithoutAThreadOfTheirOwnAreRenderedAllTheSame) {
  const auto framesOf = [](const std::function<void(const CFaultsInScope&)>& prepare) {
    const CFaultsInScope faults;
    prepare(faults);
    CPass pass;
    pass.threads = 4;
    pass.setMotion(1.3, -0.4, 0.01);
    pass.run();
    EXPECT_EQ(pass.errorCode, 0);
    EXPECT_TRUE(pass.shot.rendered);
    std::map<int, Samples> frames;
    for (const auto& [frame, output] : pass.outputs) frames[frame] = output.samples;
    return frames;
  };
  const std::map<int, Samples> expected = framesOf([](const CFaultsInScope&) {});
  ASSERT_EQ(expected.size(), 10U);

  // The first thread is the processor's own.
  for (const int good : {1, 2}) {
    SCOPED_TRACE(good);
    EXPECT_EQ(framesOf([good](const CFaultsInScope& faults) { faults->goodSpawns = good; }),
              expected);
    const CTraceCapture trace(0);
    EXPECT_EQ(framesOf([good](const CFaultsInScope& faults) { faults->goodBegins = good; }),
              expected);
    const std::vector<std::string> lines = trace.lines.texts();
    EXPECT_EQ(
        std::count(lines.begin(), lines.end(), "StabilizerSliceThreadStart: BThreadBegin failed"),
        4 - good);
  }
}

}  // namespace
