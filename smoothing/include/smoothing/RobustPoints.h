#pragma once

#include "smoothing/StabilizerShot.h"
#include "tracking/TrackingArray.h"

/// Robust points: however many points a shot was tracked with, its motion is carried by at most two
/// per frame, fitted so that a few points that slipped do not move them.

/// The arrays of one smoothing run. They belong to the run until it puts the two synthetic ones in
/// place; nobody else sees a half-made result, nor anything left of an earlier run.
struct SMotionArrays {
  CTrackingArray tracked;   ///< as measured
  CTrackingArray original;  ///< robust points: the measured motion
  CTrackingArray smoothed;  ///< the same points on their intended path
};

/// Fills `motion.original` with the robust points of every frame of `motion.tracked`, whose points
/// are renumbered 0, 1, 2, ... on the way. By the number of points and by whether rotation counts
/// (`rMode` is not STABMODE_None):
///   one, or two with rotation   the tracked points themselves, image positions
///   two without rotation        their midpoint, an image position
///   three and more              a robust fit of each frame against the reference frame; the robust
///                               points are displacements, (0, 0) and, with rotation, (100, 0) in
///                               the reference frame
/// `referenceFrame` is an absolute frame, moved into the tracked range when it lies outside.
///
/// Returns false without setting `theError` when there is no point, and with -8500 when a fit has
/// no point in the reference frame to compare with. A fit that does not converge is used all the
/// same and named in the trace (level 1). THREAD: any.
bool ComputeRobustPoints(IStabilizerShot& shot, SMotionArrays& motion, int referenceFrame,
                         int rMode);

/// Robust point 0 of `frame` := (tx, ty), the fit of P - R = (tx, ty) over the points P of `frame`
/// and R of the reference frame that are valid in both. Returns whether the fit converged; without
/// points the displacement is 0 and the answer false.
bool RegressTranslation(SMotionArrays& motion, int frame, int referenceFrame);

/// The same with a small rotation about the image origin, P - R = (tx, ty) + theta (-R.y, R.x) (the
/// first-order rotation, sin t = t, cos t = 1). Robust point 0 := (tx, ty), point 1 := (tx, ty) +
/// (100, 100 theta).
bool RegressTranslationRotation(SMotionArrays& motion, int frame, int referenceFrame);
