#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "support/ImageFormat.h"
#include "support/Rect.h"

/// Enlarges or reduces a rectangle with sub-pixel edges onto a whole-pixel rectangle: separable
/// cubic filter, 16-bit in and out. When it reduces, the filter widens to cover what it averages.
/// Each result is limited to the range of the samples under the filter, so that an edge never rings
/// beyond them. A source that equals the target gives identical samples.
///
/// Weights are computed for the exact position of every pixel, once per pair of rectangles, and
/// working memory is kept between calls: make one object per pass, not one per frame.
/// THREAD: one call at a time per object, except convertRows after one prepare.
class CZoomFractional {
 public:
  /// `quality` 2, the one there is whatever is asked for: cubic (Mitchell & Netravali 1988, B = 0,
  /// C = 1/2).
  explicit CZoomFractional(int quality);
  ~CZoomFractional();

  /// The format of the frames that `convert` will be given. Callers also say how they would size a
  /// filter table: taps each side (x, y) and fixed-point phases (x, y, weight); the filter has no
  /// table and rounds nothing to phases, so these do not change the result.
  void initialize(const CImageFormat& format, int tapsX, int tapsY, int phasesX, int phasesY,
                  int weightScale);

  /// Maps `source` (of `input`) onto `target` (inclusive pixels of `output`). `input` and `output`
  /// are the same frame or do not overlap. Samples outside the target stay as they are. The filter
  /// reads the pixels that `source` touches and, beyond them, only pixels within `target`; past
  /// those the edge pixel is repeated. So a border around the target never leaks in.
  /// REQUIRES: initialize was called; source is not empty and at most one frame size outside the
  /// frame; target lies in the frame. Otherwise nothing is written.
  void convert(const SRectD& source, const SRect& target, const std::uint16_t* input,
               std::uint16_t* output);

  /// convert in parts, for several threads: prepare, then convertRows until the rows [target.top,
  /// target.bottom] are done, in any division and with the same result. False, and convertRows
  /// writes nothing, where convert would write nothing.
  bool prepare(const SRectD& source, const SRect& target);
  /// Rows [firstRow, lastRow] of the target; those outside it are left out. The frames do not
  /// overlap. THREAD: any, several at once for different rows.
  void convertRows(int firstRow, int lastRow, const std::uint16_t* input,
                   std::uint16_t* output) const;

  static constexpr int MOST_LINES = 4;
  /// Gives `count` whole lines of the input, 1 to MOST_LINES, from `first` on, directly one after
  /// another, as wide as the frame of `initialize`. They are needed until the next call. THREAD:
  /// that of convertRows.
  using LinesFunction = std::function<const std::uint16_t*(int first, int count)>;
  /// The same from lines that are made while they are wanted: each that the rows are made of once,
  /// from top to bottom; rows of another call may be made of some of them too. So an input that is
  /// itself calculated need not go through memory.
  void convertRows(int firstRow, int lastRow, const LinesFunction& lines,
                   std::uint16_t* output) const;

 private:
  struct SImpl;
  std::unique_ptr<SImpl> impl_;
};
