#pragma once

#include <string>
#include <string_view>

#include "tracking/TrackingArray.h"

/// Points in the plain text that trackers exchange: a line "frame x y" for every frame of a point,
/// an empty line between one point and the next, and comments from a "#" to the end of the line:
///
///     # point 0
///     1001 512.25 300
///     1002 513 301.5
///
///     # point 1
///     1001 90.5 88
///
/// Frames are the clip's own numbers, positions pixels between centres: the centre of the first
/// pixel is 0 0. Points are numbered in the order of the text; a point may miss frames, and its
/// frames may come in any order. THREAD: any.

enum class ETrackerOrigin {
  topLeft,    ///< y grows downward, as everywhere in this program
  bottomLeft  ///< y grows upward; the centre of the lowest row is 0
};

/// What a text counts its lines of pixels by.
struct STrackerPicture {
  ETrackerOrigin origin = ETrackerOrigin::topLeft;
  int height = 0;  ///< rows of the picture; used with bottomLeft
};

/// Every valid point, as the shortest numbers that read back as the same.
std::string TrackerText(const CTrackingArray& points, const STrackerPicture& picture);

/// The set is untracked whatever it holds. Throws std::runtime_error that names the line: not three
/// fields, no frame number, a negative one, a frame that the point has already, no finite number or
/// one beyond a million, and whatever exceeds the limits of TrackingLimits.h.
CTrackingArray ReadTrackerText(std::string_view text, const STrackerPicture& picture);
