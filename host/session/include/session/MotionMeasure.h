#pragma once

#include <vector>

#include "support/ImageFormat.h"
#include "tracker/ShotTracker.h"
#include "tracking/TrackingArray.h"

/// Of the picture, between pixel centres.
SPoint2 CentreOf(const CImageFormat& format);

/// Motion of the whole picture in one frame against the first frame of the shot: a scene point p of
/// the first frame lies at R(angle)(p - centre) + centre + (x, y). Pixels and degrees; x right, y
/// down, angles from x towards y.
struct SFrameMotion {
  int frame = 0;
  double x = 0.0;
  double y = 0.0;
  double angle = 0.0;
};

/// The motion that all tracked points share, frame by frame: robust least squares over the points,
/// so that points on moving subjects do not count. With one point the angle stays 0. The first
/// entry is zero. `array` holds every point in every frame.
std::vector<SFrameMotion> FitMotion(const CTrackingArray& array, const SPoint2& centre);

/// The point whose path stays nearest to the motion that all share: the one to stand for the
/// picture. -1 when the array is empty. `array` holds every point in every frame; `motion` is its
/// FitMotion.
int MostTypicalPoint(const CTrackingArray& array, const std::vector<SFrameMotion>& motion,
                     const SPoint2& centre);

/// The motion that a smoothed (or measured) triangle of points stands for, frame by frame, against
/// the first frame.
std::vector<SFrameMotion> MotionOfTriangles(const CTrackingArray& triangles, const SPoint2& centre);

/// How unsteady a path is against the path that was meant. RMS and largest deviation after the mean
/// deviation is taken away: a picture that stands still a little aside is steady.
struct SSteadiness {
  double weave = 0.0;     ///< horizontal, RMS pixels
  double jump = 0.0;      ///< vertical, RMS pixels
  double rotation = 0.0;  ///< RMS degrees
  double peakWeave = 0.0;
  double peakJump = 0.0;
  double peakRotation = 0.0;
};

/// Deviation of one frame after the mean is taken away.
struct SDeviation {
  int frame = 0;
  double x = 0.0;
  double y = 0.0;
  double angle = 0.0;
};

/// REQUIRES: both name the same frames in the same order.
std::vector<SDeviation> Deviations(const std::vector<SFrameMotion>& path,
                                   const std::vector<SFrameMotion>& meant);
SSteadiness Steadiness(const std::vector<SDeviation>& deviations);
/// The `count` frames with the largest displacement, worst first.
std::vector<SDeviation> WorstFrames(std::vector<SDeviation> deviations, int count);
