#pragma once

#include <array>
#include <vector>

#include "support/PDLElement.h"
#include "support/Rect.h"
#include "tracker/ShotTracker.h"
#include "tracking/TrackingArray.h"

/// Where the renderer put the picture of one frame: an affine map from the centres of the input's
/// pixels to those of the output's, x right and y down, the first pixel's centre at 0, 0.
struct SPictureMove {
  int frame = 0;
  /// Two rows: x' = m[0] x + m[1] y + m[2], y' = m[3] x + m[4] y + m[5].
  std::array<double, 6> matrix{1.0, 0.0, 0.0, 0.0, 1.0, 0.0};

  SPoint2 at(const SPoint2& point) const {
    return {matrix[0] * point.x + matrix[1] * point.y + matrix[2],
            matrix[3] * point.x + matrix[4] * point.y + matrix[5]};
  }
  double angle() const;  ///< degrees, from x towards y
  double scale() const;  ///< square root of how much larger areas become
};

/// What the zoom fill enlarged: `source` (edges, pixel i covers [i, i + 1)) became `region`.
struct SZoom {
  SRectD source;  ///< all zero: nothing was enlarged
  SRect region;   ///< inclusive

  double factor() const;
};

/// What of the tool's settings decides where a picture goes.
struct SMoveSettings {
  int anchorsIn = 0;  ///< frames at either end that are copied as they are
  int anchorsOut = 0;
  bool turns = false;  ///< rotation is stabilised
  bool still = false;  ///< nothing is moved at all
  bool zooms = false;  ///< frames are enlarged, the anchors with them; those at IN are moved, too
};
/// From the settings that the tool captured.
SMoveSettings MoveSettingsOf(const CPDLEntry& entry);

/// The moves of a rendered shot, frame by frame, without jitter, which is drawn anew for every
/// frame. `original` and `smoothed` are the tool's triangles, which the renderer solves its maps
/// from: every frame of the shot, three points each.
std::vector<SPictureMove> PictureMoves(const CTrackingArray& original,
                                       const CTrackingArray& smoothed,
                                       const SMoveSettings& settings, const SZoom& zoom);
