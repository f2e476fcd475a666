#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/ImageFormat.h"
#include "support/Rect.h"

struct STrackSettings {
  int trackBoxExtentX = 10;  ///< half width of the compared patch, pixels
  int trackBoxExtentY = 10;
  int searchLeft = 20;  ///< how far the patch may move between two frames, pixels
  int searchRight = 20;
  int searchUp = 20;
  int searchDown = 20;
  SRect region;  ///< inclusive; a patch that would leave it has left the picture
  int threads = 1;
};

struct SPoint2 {
  double x = 0.0;
  double y = 0.0;
};

enum class EPointState {
  found,
  bridged,  ///< not found in this frame; moved with the other points
  lost      ///< not found, and nothing to bridge with
};
enum class ELossReason { none, leftPicture, noMatch, ambiguous };

/// One point in one frame.
struct STrackedPoint {
  SPoint2 position;  ///< pixels
  EPointState state = EPointState::found;
  ELossReason reason = ELossReason::none;
  double correlation = 0.0;  ///< normalised cross-correlation with the template, -1 to 1
  double sigma = 0.0;        ///< expected error per axis, pixels (Cramer-Rao bound at this noise)
};

/// What became of a point over the shot.
struct SPointSummary {
  int framesFound = 0;
  int framesBridged = 0;
  int firstLossFrameOffset = -1;  ///< frames after the first; -1: never lost
  ELossReason firstLossReason = ELossReason::none;
  bool usable = true;  ///< false: drop the point from the set
  double meanSigma = 0.0;
};

std::string ToText(ELossReason reason);

/// Follows points through the frames of a shot, one frame after another.
/// THREAD: one call at a time; works on `threads` threads inside. Same result for every thread
/// count.
class CShotTracker {
 public:
  /// REQUIRES: every point's patch lies inside the region (see canTrack).
  CShotTracker(const CImageFormat& format, const STrackSettings& settings,
               const std::map<int, SPoint2>& points);
  ~CShotTracker();
  CShotTracker(const CShotTracker&) = delete;
  CShotTracker& operator=(const CShotTracker&) = delete;

  /// True when a point at `position` can be tracked from its first frame.
  static bool canTrack(const SPoint2& position, const STrackSettings& settings);

  /// Takes the templates from the first frame. `samples` is only read during the call. Returns the
  /// points whose patch has no texture to track (by index); they are left out.
  std::vector<int> begin(const std::uint16_t* samples);
  /// Follows every point into the next frame; keyed by point index.
  std::map<int, STrackedPoint> follow(const std::uint16_t* samples);
  /// What became of each point so far; a point that is still lost, or was bridged too long, is not
  /// usable.
  std::map<int, SPointSummary> summary() const;

 private:
  struct SImpl;
  std::unique_ptr<SImpl> impl_;
};
