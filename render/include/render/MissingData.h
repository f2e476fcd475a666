#pragma once

#include <cstdint>

#include "params/StabilizerParameters.h"
#include "support/Rect.h"
#include "tracking/TrackingArray.h"

/// What is shown where a move uncovers picture for which the source frame has no data, and what
/// happens around the processed rectangle. Rectangles are inclusive; frames are 16-bit, 3 samples a
/// pixel, rows directly one after another.

/// The fills that look at an earlier frame.
inline bool FillNeedsPreviousFrame(int fill) {
  return fill == MISSING_DATA_Previous_Frame || fill == MISSING_DATA_Zoom;
}

/// Part of the processing rectangle `area` that is enlarged onto the whole of it so that no
/// uncovered edge remains in any frame: `area` less the farthest excursions of the tracked point
/// `path` and of the rotation between the smoothed points `smoothed0` and `smoothed1`, cut to the
/// aspect ratio of `area` about its centre. Empty (right <= left or bottom <= top) when the motion
/// leaves nothing that all frames share. An empty `path` leaves the whole area.
SRectD ZoomSourceRectangle(const SRect& area, const CTrackingPoints& path,
                           const CTrackingPoints& smoothed0, const CTrackingPoints& smoothed1);

inline bool IsEmpty(const SRectD& rect) {
  return !(rect.right > rect.left && rect.bottom > rect.top);
}

/// The rectangle's part inside a frame of the given size; `right < left` or `bottom < top` when
/// there is none.
SRect ClampedToFrame(const SRect& rect, int pixelsPerLine, int lines);

/// Lines of a frame, both inclusive; none when `last` is less than `first`.
struct SRows {
  int first;
  int last;
};

/// Copies what of `rows` lies outside `inside`. REQUIRES: `rows` and `inside`, which is not empty,
/// lie within the frame.
void CopyOutside(const std::uint16_t* from, std::uint16_t* to, int pixelsPerLine, SRows rows,
                 const SRect& inside);
/// Paints what of `rows` lies outside `inside` in one colour. REQUIRES: as CopyOutside.
void PaintOutside(std::uint16_t* samples, int pixelsPerLine, SRows rows, const SRect& inside,
                  const std::uint16_t color[3]);
