#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/ImageFormat.h"
#include "support/Rect.h"
#include "tracker/Picture.h"

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
  lost      ///< not found, and nothing to bridge with; final
};
enum class ELossReason {
  none,
  leftPicture,  ///< its patch would reach out of the region; final
  noMatch,      ///< nothing in the search area is like it, or something covers it
  ambiguous     ///< several places are equally like it
};

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
  bool usable = true;  ///< false: drop the point from the whole shot
  double meanSigma = 0.0;
};

std::string ToText(ELossReason reason);

/// Follows points through the frames of a shot, one frame after another.
///
/// Match. A point's patch is searched for over the whole search range around the point's last
/// position, whatever the movement before: normalised cross-correlation of the luma, coarse to
/// fine, and the exact optimum where that finds nothing good. The best place is fitted to a
/// fraction of a pixel with gain and offset free, so flicker does not move a point. The patch
/// follows slow change: a tenth of each sure match is mixed into it, resampled at the measured
/// position.
///
/// Loss. A point is found only if its correlation is at least 0.6, the fit settles inside range and
/// region, and the match is as good as the point's own history leads one to expect, in every part
/// of the patch. A worse match stands only when most points show the same at once and move alike:
/// then the picture has changed (blur, a flash) and not a cover. A doubtful match is dropped when
/// it also jumps against the other points. Where several places match alike, the movement of the
/// others decides; without them the point is ambiguous.
///
/// Policy. A point that is not found moves by the median movement of the points that were found in
/// this frame and in the last (bridged), if those are at least three or all other points; the
/// search goes on around there, with the old patch, until it is found again. With nothing to bridge
/// with it is lost, and stays so. A point that leaves the picture is carried along and not searched
/// any more. A point is not usable when it was ever lost, left the picture, was bridged in more
/// than a quarter of the frames, or in more than three frames up to the last: its positions would
/// not be measurements. A lone point that is lost leaves nothing to stabilise by: the pass has
/// failed.
///
/// THREAD: one call at a time; works on `threads` threads inside. Same result for every thread
/// count.
class CShotTracker {
 public:
  /// Positions are those of the first frame, pixels, by point index. REQUIRES: every point's patch
  /// lies inside the region (see canTrack), the region inside the frame.
  CShotTracker(const CImageFormat& format, const STrackSettings& settings,
               const std::map<int, SPoint2>& points);
  ~CShotTracker();
  CShotTracker(const CShotTracker&) = delete;
  CShotTracker& operator=(const CShotTracker&) = delete;

  /// True when a point at `position` can be tracked from its first frame.
  static bool canTrack(const SPoint2& position, const STrackSettings& settings);

  /// Takes the templates from the first frame. Returns the points whose patch has no texture to
  /// track (by index); they are left out. Pictures are only looked at during the calls; what they
  /// throw is passed on.
  std::vector<int> begin(const IPicture& picture);
  /// Follows every point into the next frame; keyed by point index, one entry for every point that
  /// `begin` kept.
  std::map<int, STrackedPoint> follow(const IPicture& picture);
  /// The same with a whole frame in memory, interleaved 16-bit samples.
  std::vector<int> begin(const std::uint16_t* samples);
  std::map<int, STrackedPoint> follow(const std::uint16_t* samples);
  /// What became of each point so far; a point that is still lost, or was bridged too long, is not
  /// usable.
  std::map<int, SPointSummary> summary() const;

 private:
  struct SImpl;
  std::unique_ptr<SImpl> impl_;
};
