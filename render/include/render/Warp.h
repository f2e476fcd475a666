#pragma once

#include <array>

#include "params/StabilizerParameters.h"
#include "smoothing/LinearAlgebra.h"
#include "tracking/TrackingArray.h"

/// The map of one frame: for every output pixel the position in the source frame whose picture is
/// to appear there. It is solved from two triangles of points as a radial-basis interpolation with
/// an affine part (Bookstein, "Principal Warps", 1989) and then reduced to its affine part.

/// Failures, set in `theError`.
constexpr int WARP_STRAIGHT_LINE = -8503;
constexpr int WARP_INVALID_POINTS = -8504;

/// Selects the radial basis by EUFunction; an unknown value selects the Euclidean one. One setting
/// per process: whoever receives parameters last decides. THREAD: any.
void SelectRadialBasis(int uFunction);

/// Solves for the map that takes every smoothed point S to its original point O.
///
/// `vx`, `vy`: n + 3 elements each: n radial weights, the constant, the x and the y coefficient; x
/// of the source is vx[n] + vx[n+1] x + vx[n+2] y + sum vx[i] U(r_i), y likewise with vy.
/// False, with `theError` set and vx, vy untouched: WARP_INVALID_POINTS when a set holds an invalid
/// point (or the sets differ in size), WARP_STRAIGHT_LINE when all smoothed points lie on one of
/// the axes. Points on any other line do not fail: the weights are then huge, and the frame is
/// missing data where the map leaves the picture. THREAD: any.
bool SolveWarp(const CTrackingPoints& smoothed, const CTrackingPoints& original,
               mvector<long double>& vx, mvector<long double>& vy);

/// Pixels of added motion per unit deviate, for a processing rectangle that is `height` (bottom
/// minus top) rows high: the setting 4 moves a 486-line picture by a quarter of a pixel.
long double JitterAmplitude(double jitter, int height);

/// Affine map of one frame, evaluated in single precision: {constant, x coefficient, y
/// coefficient}. The radial weights are always zero by the time it is evaluated, so they are not
/// part of it.
struct SWarpMap {
  std::array<float, 3> wx{0.0F, 1.0F, 0.0F};
  std::array<float, 3> wy{0.0F, 0.0F, 1.0F};

  /// The part of a row's coordinates that is the same for all its pixels.
  float rowTermX(int y) const { return wx[2] * static_cast<float>(y) + wx[0]; }
  float rowTermY(int y) const { return wy[2] * static_cast<float>(y) + wy[0]; }
  float sourceX(int x, float rowTerm) const { return wx[1] * static_cast<float>(x) + rowTerm; }
  float sourceY(int x, float rowTerm) const { return wy[1] * static_cast<float>(x) + rowTerm; }

  friend bool operator==(const SWarpMap&, const SWarpMap&) = default;
};

/// Reduces a solution to the map that is rendered: the affine part in single precision, jitter
/// added to the constants (x draws first; no draw when it is 0), scale held at 1, rotation removed
/// when it is not stabilised. `U_Fcn_None` gives the identity: the picture stays where it is.
/// `height`: of the processing rectangle, bottom minus top. REQUIRES: vx.size() == vy.size() >= 3.
SWarpMap PrepareWarpMap(const mvector<long double>& vx, const mvector<long double>& vy,
                        const CStabilizerParameters& parameters, int height);
