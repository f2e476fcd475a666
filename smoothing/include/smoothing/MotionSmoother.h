#pragma once

#include <span>

#include "smoothing/RobustPoints.h"
#include "smoothing/StabilizerShot.h"
#include "support/Threads.h"

/// From tracked points to the two triangles a frame that the renderer works with: the measured
/// motion and the intended one.

/// Starts a smoothing run on a thread of its own and returns at once: 0, or -8507 (reported, run
/// state RUN_ERROR) when no thread could be started. Sets the run state to RUN_SMOOTHING and takes
/// a copy of the tracked array before it returns; the shot must live until the run state has left
/// RUN_SMOOTHING. See RunSmoothing for what happens then. THREAD: the user-interface thread, run
/// state not RUN_SMOOTHING.
int StartSmoothing(IStabilizerShot& shot);

/// A whole run on the calling thread: gathers the parameters, reduces the tracked points to robust
/// points, smooths their paths and completes the triangles, all on arrays of its own.
///
/// Success: both synthetic arrays put in place, texts "Smoothing complete", smoothed flag, and last
/// the run state RUN_SMOOTHED, which publishes the others. Failure: the shot's arrays and flag stay
/// as they were, the failure is reported as "CStabilizerTool::DoSmoothing_trampoline", and last the
/// run state becomes RUN_ERROR. The shot is not touched after its run state was set.
void RunSmoothing(IStabilizerShot& shot);

/// Second phase: `motion.smoothed` becomes `motion.original` with the x and y paths of its one or
/// two robust points smoothed, one thread a path, joined by the shot's counting wait. `hMode` rules
/// x, `vMode` y, of both points; rotation lives in the second point and has no mode of its own.
/// `refFrameIndex` is an absolute frame. Returns false with `theError` set: -8500 a frame without a
/// robust point, -8501 not more frames than anchors, -8505 no robust point, -8506 more than two.
bool SmoothRobustPoints(IStabilizerShot& shot, SMotionArrays& motion, int goodFramesIn,
                        int goodFramesOut, int refFrameIndex, double alpha2, int hMode, int vMode);

/// Adds to the one or two points of every frame, original and smoothed alike, what makes them a
/// triangle: (100, 0) and (0, 100) from a single point; from two with d = point 1 - point 0 the
/// corner (d.y, -d.x) from point 0.
void CompleteSyntheticPoints(SMotionArrays& motion);

/// One path for one thread. The sequence belongs to the run.
struct SSmoothingJob {
  IStabilizerShot* shot = nullptr;
  int mode = 0;  ///< EStabilizationMode
  std::span<double> sequence;
  int GoodFramesIn = 0;
  int GoodFramesOut = 0;
  int RefFrameIndex = 0;  ///< element of the sequence
  double Alpha2 = 0.0;
  const void* reserved = nullptr;
  bool reservedFlag = false;
};

/// Thread function of one path; `job` points to an SSmoothingJob, which it copies before it lets
/// the spawner go on. Releases the shot's counting wait once, whatever happens.
void StabilizerSmoothTrampoline(void* job, BThreadHandle self);

/// One path in place, element 0 the first frame. STABMODE_None leaves it, STABMODE_Smoothed smooths
/// with weight `alpha` (exactly 0 becomes 1e-30: as smooth as can be, anchors held), STABMODE_Flat
/// holds still, STABMODE_Registered gives every frame the value of element `reference`. Anchors and
/// reference are moved into the sequence when they reach beyond it.
void SmoothSequence(int mode, std::span<double> sequence, int anchorsIn, int anchorsOut,
                    int reference, double alpha, const void* reserved = nullptr,
                    bool reservedFlag = false);
