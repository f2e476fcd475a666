#pragma once

#include <array>
#include <vector>

#include "FitKernels.h"
#include "tracker/Plane.h"

/// Where and how well a patch sits in a window, to a fraction of a pixel.
struct SPatchFit {
  bool converged = false;
  double x = 0.0;  ///< window coordinates of the patch's upper left sample
  double y = 0.0;
  double gain = 1.0;  ///< picture = gain * patch + offset
  double offset = 0.0;
  double correlation = 0.0;
  double residual = 0.0;  ///< mean square of what gain and offset leave
  double sigma = 0.0;     ///< expected error per axis, pixels
  /// Mean square residual of each ninth of the patch, row by row; negative where it is masked out.
  std::array<double, 9> ninths{};
};

/// The picture of a point's surroundings, and its fit to later frames: least squares over shift,
/// gain, offset, rotation and scale, by Gauss-Newton steps in the patch's own frame (inverse
/// compositional, Baker & Matthews 2004). Rotation and scale are solved for in each step, so that
/// a small one does not push the shift, but never applied. The picture is read between its samples
/// by the polynomial through six of them (Lagrange), which has no bias toward whole pixels on
/// smoothed planes. THREAD: one at a time per object. Same bits on every machine.
class CPatchModel {
 public:
  CPatchModel(int halfX, int halfY);

  /// Samples that a window must offer around the patch, wherever it may be placed or blended.
  static constexpr int kGuard = 8;

  /// Takes the patch at a whole position of a smoothed plane. `valid` (inclusive, patch
  /// coordinates) is the part that may be compared: the rest is masked out.
  void take(const CPlane& plane, int x, int y, const SRect& valid);

  /// Makes ready for `refine`, comparing only what is valid here and was when the patch was taken.
  /// False when that has no texture in some direction.
  bool prepare(const SRect& valid);

  /// Smaller eigenvalue of the structure tensor, per sample: gradients in code range per pixel.
  double texture() const { return texture_; }
  /// Variance of the patch's valid samples.
  double variance() const { return variance_; }
  /// Standard deviation of position that unit noise in the picture causes, worst direction.
  double noiseGain() const { return noiseGain_; }

  /// Starts at (x, y), gives up more than `kMaxMove` away from it. REQUIRES: prepare gave true.
  SPatchFit refine(const CPlane& plane, double x, double y);
  static constexpr double kMaxMove = 1.75;

  /// Mixes `share` of the picture at `fit` into the patch, gain and offset taken out.
  void blend(const CPlane& plane, const SPatchFit& fit, double share);

  /// The patch, for the search.
  SPlaneView patch() const;

 private:
  SPatchPlanes planes();
  void fillColumns();
  bool solve();
  void measureNoiseGain();
  void resample(const CPlane& plane, double x, double y, int border);
  void judge(const SFitSums& sums, SPatchFit& fit);

  int halfX_;
  int halfY_;
  int width_;
  int height_;
  SRect taken_;  ///< valid when the patch was taken
  SRect ready_;  ///< valid now
  bool stale_ = true;
  bool usable_ = false;
  double texture_ = 0.0;
  double variance_ = 0.0;
  double noiseGain_ = 0.0;
  double sigmaGain_ = 0.0;
  double mean_ = 0.0;
  double samples_ = 0.0;
  double energy_ = 0.0;  ///< sum of squares of core_
  CPlane patch_;         ///< with kBorder samples around
  // Of the rows that are valid now, from the plane's row of that number on; the others are not
  // kept.
  std::vector<float> mask_;
  std::vector<float> along_;
  std::vector<float> down_;
  CPlane gradientX_;
  CPlane gradientY_;
  CPlane core_;                   ///< patch minus mean, masked
  std::array<CPlane, 3> solver_;  ///< rows of the inverse normal equations times the columns
  CPlane picture_;
  CPlane rows_;
  std::vector<float> zeros_;
  std::vector<float> line_;
};
