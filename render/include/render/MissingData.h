#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "params/StabilizerParameters.h"
#include "support/Memory.h"
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

/// Copies what lies outside `inside`. REQUIRES: `inside` is a non-empty part of the frame.
void CopyOutside(const std::uint16_t* from, std::uint16_t* to, int pixelsPerLine, int lines,
                 const SRect& inside);
/// Paints what lies outside `inside` in one colour. REQUIRES: as CopyOutside.
void PaintOutside(std::uint16_t* samples, int pixelsPerLine, int lines, const SRect& inside,
                  const std::uint16_t color[3]);

/// The samples that uncovered pixels show with the fills that look back. Only the processing
/// rectangle is ever kept: nothing else can be missing. One allocation per pass.
/// THREAD: one at a time; Take for disjoint rows from several.
class CPreviousFrame {
 public:
  /// Keeps what it has when the size is the same. False when there is no memory.
  bool Allocate(int pixelsPerLine, int lines);
  void Release();
  /// Keeps the columns of `area` of rows [firstRow, lastRow] of a frame.
  void Take(const std::uint16_t* samples, const SRect& area, int firstRow, int lastRow);
  /// Something was taken since Allocate.
  bool isFilled() const { return filled_; }
  void markFilled() { filled_ = true; }
  /// Null before Allocate.
  const std::uint16_t* samples() const { return samples_.get(); }

 private:
  struct SFree {
    void operator()(std::uint16_t* samples) const { QTXfree(samples); }
  };
  std::unique_ptr<std::uint16_t, SFree> samples_;
  int pixelsPerLine_ = 0;
  int lines_ = 0;
  bool filled_ = false;
};
