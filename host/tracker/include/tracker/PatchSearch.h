#pragma once

#include <vector>

#include "tracker/Plane.h"

/// A place where a patch fits into a window: the patch's upper left sample lies on (x, y).
struct SPeak {
  int x = 0;
  int y = 0;
  double correlation = -1.0;  ///< normalised cross-correlation, -1 to 1
};

/// Finds where in a window a patch fits best, over every whole-pixel position, by normalised
/// cross-correlation (Lewis 1995): the covariance of patch and picture below it over the root of
/// the product of their variances, so neither brightness nor contrast matter. A picture without
/// contrast correlates 0.
/// THREAD: one at a time per object. Same bits on every machine.
class CPatchSearch {
 public:
  /// Takes the patch; it serves searches until the next call. REQUIRES: at least 3 x 3 samples.
  void setPatch(const SPlaneView& patch);

  /// Coarse to fine. Usually gives the best peak first, but may miss it where the texture is finer
  /// than the coarse level shows; a low correlation of the first peak tells that. Peaks are at
  /// least 3 samples apart, best first, at most `kPeaks`.
  /// REQUIRES: the window is at least as large as the patch.
  const std::vector<SPeak>& findPeaks(const SPlaneView& window);
  static constexpr int kPeaks = 4;

  /// The best position of all, surely: positions are only passed over when an upper bound on their
  /// correlation (Cauchy-Schwarz on block means and on what they leave) lies below the best found.
  /// Of equals the first in reading order. Positions closer than `distance` samples to `excluded`
  /// in both directions are left out; correlation -1 when that leaves none.
  SPeak findBest(const SPlaneView& window, const SPeak* excluded = nullptr, int distance = 0);

  /// Correlation at one position. REQUIRES: the patch there lies inside the window.
  double correlationAt(const SPlaneView& window, int x, int y) const;

  /// Best position in the square of `radius` around (x, y), as far as it is inside the window.
  SPeak climb(const SPlaneView& window, int x, int y, int radius);

 private:
  struct SLevel {
    CPlane patch;  ///< mean removed; columns beyond its width are 0
    int width = 0;
    int height = 0;
    double norm = 0.0;
    std::vector<float> mask;  ///< 1 for each column of the patch, 0 up to its stride
    CPlane window;
  };

  void takeLevel(const SPlaneView& patch, SLevel& level);
  SPeak bestIn(const SLevel& level, const SPlaneView& window, const SRect& positions);
  void buildWindowLevels(const SPlaneView& window);
  SPlaneView windowAt(int level, const SPlaneView& window) const;
  void scoreCoarsest(const SPlaneView& coarse);
  void pickCandidates();
  void boundAll(const SPlaneView& window);

  std::vector<SLevel> levels_;
  int coarsest_ = 0;
  CPlane map_;      ///< scores of the coarsest level, or bounds of an exact search
  CPlane scratch_;  ///< block sums
  CPlane sums_;     ///< down the columns below each row of positions
  CPlane squares_;
  std::vector<SPeak> candidates_;
  std::vector<SPeak> peaks_;
};
