#include "render/Warp.h"

#include <atomic>
#include <vector>

#include "support/ErrorReport.h"
#include "support/Numerics.h"

namespace {

using RadialBasis = float (*)(float x0, float y0, float x1, float y1);

std::atomic<RadialBasis> radialBasis{&UEuclidean};

bool hasInvalidPoints(const CTrackingPoints& points) {
  return points.Count() != points.ValidCount();
}

std::vector<CTrackPoint> inOrder(const CTrackingPoints& points) {
  std::vector<CTrackPoint> list;
  list.reserve(static_cast<std::size_t>(points.Count()));
  for (const auto& [index, point] : points.Entries()) list.push_back(point);
  return list;
}

long double radialValue(const CTrackPoint& a, const CTrackPoint& b) {
  return radialBasis.load()(static_cast<float>(a.x), static_cast<float>(a.y),
                            static_cast<float>(b.x), static_cast<float>(b.y));
}

matrix<long double> warpSystem(const std::vector<CTrackPoint>& centres) {
  const int n = static_cast<int>(centres.size());
  matrix<long double> system(n + 3, n + 3);
  for (int i = 0; i < n; ++i) {
    const CTrackPoint& centre = centres[static_cast<std::size_t>(i)];
    for (int j = 0; j < n; ++j) {
      system[i][j] = radialValue(centre, centres[static_cast<std::size_t>(j)]);
    }
    const long double affine[3] = {1.0L, centre.x, centre.y};
    for (int k = 0; k < 3; ++k) system[i][n + k] = system[n + k][i] = affine[k];
  }
  for (int i = n; i < n + 3; ++i) {
    for (int j = n; j < n + 3; ++j) system[i][j] = 0.0L;
  }
  return system;
}

}  // namespace

void SelectRadialBasis(int uFunction) {
  switch (uFunction) {
    case U_Fcn_Logrithmic: radialBasis = &ULogrithmic; break;
    case U_Fcn_None: radialBasis = &UIdenity; break;
    case U_Fcn_Thin_Plate: radialBasis = &UThinPlate; break;
    default: radialBasis = &UEuclidean;
  }
}

bool SolveWarp(const CTrackingPoints& smoothed, const CTrackingPoints& original,
               mvector<long double>& vx, mvector<long double>& vy) {
  if (hasInvalidPoints(original)) {
    theError.set(WARP_INVALID_POINTS,
                 "Internal Error: Some original tracking points are marked invalid");
    return false;
  }
  if (hasInvalidPoints(smoothed) || smoothed.Count() != original.Count()) {
    theError.set(WARP_INVALID_POINTS,
                 "Internal Error: Some smoothed tracking points are marked invalid");
    return false;
  }
  const std::vector<CTrackPoint> targets = inOrder(original);
  const int n = static_cast<int>(targets.size());

  matrix<long double> system = warpSystem(inOrder(smoothed));
  mvector<int> permutation(n + 3);
  double sign = 1.0;
  if (!LUDecompose(system, permutation, sign)) {
    theError.set(WARP_STRAIGHT_LINE, "Tracking points are close to a stright line");
    return false;
  }

  mvector<long double> bx(n + 3);
  mvector<long double> by(n + 3);
  bx.Zero();
  by.Zero();
  for (int i = 0; i < n; ++i) {
    bx[i] = targets[static_cast<std::size_t>(i)].x;
    by[i] = targets[static_cast<std::size_t>(i)].y;
  }
  LUSolve(system, permutation, bx);
  LUSolve(system, permutation, by);
  vx = bx;
  vy = by;
  return true;
}

long double JitterAmplitude(double jitter, int height) {
  if (!(jitter > 0.0)) return 0.0L;
  double strength = (jitter - 7.0) * 0.5;
  if (jitter <= 4.0) {
    strength = jitter * 0.0625;
  } else if (jitter <= 8.0) {
    strength = (jitter - 2.0) * 0.125;
  }
  return static_cast<long double>(strength) * height * (1.0L / 486.0L);
}

SWarpMap PrepareWarpMap(const mvector<long double>& vx, const mvector<long double>& vy,
                        const CStabilizerParameters& parameters, int height) {
  const int n = vx.size() - 3;
  SWarpMap map;
  for (int k = 0; k < 3; ++k) {
    map.wx[static_cast<std::size_t>(k)] = static_cast<float>(vx[n + k]);
    map.wy[static_cast<std::size_t>(k)] = static_cast<float>(vy[n + k]);
  }
  if (parameters.Jitter > 0.0) {
    const long double amplitude = JitterAmplitude(parameters.Jitter, height);
    map.wx[0] = static_cast<float>(map.wx[0] + amplitude * getRandNormal());
    map.wy[0] = static_cast<float>(map.wy[0] + amplitude * getRandNormal());
  }
  if (parameters.UFunction == U_Fcn_None) return SWarpMap{};
  map.wx[1] = 1.0F;
  map.wy[2] = 1.0F;
  if (parameters.RMode == STABMODE_None) {
    map.wx[2] = 0.0F;
    map.wy[1] = 0.0F;
  }
  return map;
}
