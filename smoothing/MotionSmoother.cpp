#include "smoothing/MotionSmoother.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "SmoothingErrors.h"
#include "support/ErrorReport.h"
#include "support/Memory.h"
#include "support/Numerics.h"
#include "support/Trace.h"
#include "toolkit/Application.h"

namespace {

/// Sides of the triangle that a single robust point is completed to, pixels.
constexpr double SIDE = 100.0;
/// The smallest weight that still holds the anchors.
constexpr double SMOOTHEST_ALPHA = 1e-30;
/// Lets whoever waits for a path go on before its thread winds up.
constexpr int WIND_UP_MILLISECONDS = 10;

/// Paths of the robust points, element 0 the first frame: x and y of each, one after the other.
class CPaths {
 public:
  CPaths(int points, int frames)
      : frames_(static_cast<std::size_t>(frames)), values_(2U * points * frames_) {}

  std::span<double> x(int point) { return path(2 * point); }
  std::span<double> y(int point) { return path(2 * point + 1); }

 private:
  std::span<double> path(int index) {
    return std::span(values_).subspan(static_cast<std::size_t>(index) * frames_, frames_);
  }

  std::size_t frames_;
  std::vector<double, CLargeAllocator<double>> values_;
};

/// False when a frame has no such point. REQUIRES: as many elements as frames.
bool ReadPath(const CTrackingArray& array, int point, std::span<double> x, std::span<double> y) {
  std::size_t i = 0;
  for (const auto& [frame, points] : array.frames) {
    const auto found = points.Entries().find(point);
    if (found == points.Entries().end() || !found->second.IsValid()) return false;
    x[i] = found->second.x;
    y[i] = found->second.y;
    ++i;
  }
  return true;
}

/// REQUIRES: the path is one that ReadPath took from this array.
void WritePath(CTrackingArray& array, int point, std::span<const double> x,
               std::span<const double> y) {
  std::size_t i = 0;
  for (auto& [frame, points] : array.frames) {
    points.Point(point) = CTrackPoint(x[i], y[i]);
    ++i;
  }
}

/// Whatever happens, whoever waits for the path is released: others still write to its neighbours.
void DoSmoothing(const SSmoothingJob& job) {
  try {
    SmoothSequence(job.mode, job.sequence, job.GoodFramesIn, job.GoodFramesOut, job.RefFrameIndex,
                   job.Alpha2, job.reserved, job.reservedFlag);
  } catch (...) {
    TraceFromHandler(0, "StabilizerSmoothTrampoline: Stabilizer Slice created major error");
  }
  job.shot->smoothingWait().ReleaseOne();
}

/// The path is smoothed on this thread when no other can be had.
void SpawnSmoothing(SSmoothingJob& job, int mode, std::span<double> sequence) {
  job.mode = mode;
  job.sequence = sequence;
  if (BThreadSpawn(StabilizerSmoothTrampoline, &job) == nullptr) DoSmoothing(job);
}

bool Fail(int code, const char* text) {
  theError.set(code, text);
  return false;
}

void CompletePoints(CTrackingPoints& points, int count) {
  const CTrackPoint origin = points.Point(0);
  if (count == 1) {
    points.Point(1) = CTrackPoint(origin.x + SIDE, origin.y);
    points.Point(2) = CTrackPoint(origin.x, origin.y + SIDE);
  } else {
    const CTrackPoint second = points.Point(1);
    points.Point(2) =
        CTrackPoint(origin.x + (second.y - origin.y), origin.y - (second.x - origin.x));
  }
}

}  // namespace

void SmoothSequence(int mode, std::span<double> sequence, int anchorsIn, int anchorsOut,
                    int reference, double alpha, const void* reserved, bool reservedFlag) {
  if (sequence.empty()) return;
  const int size = static_cast<int>(sequence.size());
  anchorsIn = std::clamp(anchorsIn, 0, size);
  anchorsOut = std::clamp(anchorsOut, 0, size - anchorsIn);
  switch (mode) {
    case STABMODE_Smoothed:
      Smooth3(sequence, anchorsIn, anchorsOut, alpha == 0.0 ? SMOOTHEST_ALPHA : alpha, reserved,
              reservedFlag);
      break;
    case STABMODE_Flat:
      Smooth3(sequence, anchorsIn, anchorsOut, 0.0, reserved, reservedFlag);
      break;
    case STABMODE_Registered: {
      const double still = sequence[std::clamp(reference, 0, size - 1)];
      std::ranges::fill(sequence, still);
      break;
    }
    default: break;
  }
}

void StabilizerSmoothTrampoline(void* argument, BThreadHandle self) {
  const SSmoothingJob job = *static_cast<const SSmoothingJob*>(argument);
  if (BThreadBegin(self) != 0) {
    TraceAt(0, "StabilizerSmoothTrampoline: BThreadBegin failed");
    job.shot->smoothingWait().ReleaseOne();
    return;
  }
  DoSmoothing(job);
  QTXmillisleep(WIND_UP_MILLISECONDS);
  if (BThreadEnd(self) != 0) TraceAt(0, "StabilizerSmoothTrampoline: BThreadEnd failed");
}

bool SmoothRobustPoints(IStabilizerShot& shot, SMotionArrays& motion, int goodFramesIn,
                        int goodFramesOut, int refFrameIndex, double alpha2, int hMode, int vMode) {
  const CBusyCursor busy;
  shot.setStatusMessage("Phase 2...");
  CTrackingArray& original = motion.original;
  if (original.Compact() == 0) return Fail(SMOOTHING_POINT_MISSING, SMOOTHING_POINT_MISSING_TEXT);
  const int count = original.NumberOfPoints();
  const int frameCount = original.EndFrame() - original.FirstFrame();
  if (count < 1) return Fail(SMOOTHING_NO_POINTS, SMOOTHING_NO_POINTS_TEXT);
  if (count >= 3) return Fail(SMOOTHING_TOO_MANY_POINTS, SMOOTHING_TOO_MANY_POINTS_TEXT);
  if (std::int64_t{goodFramesIn} + goodFramesOut >= frameCount) {
    return Fail(SMOOTHING_RANGE_TOO_SHORT, SMOOTHING_RANGE_TOO_SHORT_TEXT);
  }
  motion.smoothed = original;

  if (original.FrameCount() != frameCount) {
    return Fail(SMOOTHING_POINT_MISSING, SMOOTHING_POINT_MISSING_TEXT);
  }
  CPaths paths(count, frameCount);
  for (int point = 0; point < count; ++point) {
    if (!ReadPath(original, point, paths.x(point), paths.y(point))) {
      return Fail(SMOOTHING_POINT_MISSING, SMOOTHING_POINT_MISSING_TEXT);
    }
  }
  const std::int64_t reference = std::int64_t{refFrameIndex} - original.FirstFrame();
  SSmoothingJob job;
  job.shot = &shot;
  job.GoodFramesIn = goodFramesIn;
  job.GoodFramesOut = goodFramesOut;
  job.RefFrameIndex = static_cast<int>(std::clamp<std::int64_t>(reference, 0, frameCount - 1));
  job.Alpha2 = alpha2;
  shot.smoothingWait().SetCount(2 * count);
  for (int point = 0; point < count; ++point) {
    SpawnSmoothing(job, hMode, paths.x(point));
    SpawnSmoothing(job, vMode, paths.y(point));
  }
  shot.smoothingWait().Wait();
  for (int point = 0; point < count; ++point)
    WritePath(motion.smoothed, point, paths.x(point), paths.y(point));
  return true;
}

void CompleteSyntheticPoints(SMotionArrays& motion) {
  const int count = motion.original.NumberOfPoints();
  for (CTrackingArray* array : {&motion.original, &motion.smoothed})
    for (auto& [frame, points] : array->frames) CompletePoints(points, count);
}
