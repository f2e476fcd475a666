#pragma once

#include <cstdint>
#include <memory>

#include "support/ImageFormat.h"
#include "support/Rect.h"

/// Enlarges or reduces a rectangle with sub-pixel edges onto a whole-pixel rectangle: separable,
/// windowed filter, 16-bit in and out, clamped to the range of the samples under the filter so that
/// an edge never rings beyond them.
/// THREAD: one call at a time per object.
class CZoomFractional {
 public:
  /// `quality` 2: cubic (Mitchell & Netravali 1988, B = 0, C = 1/2).
  explicit CZoomFractional(int quality);
  ~CZoomFractional();

  /// The format of the frames that `convert` will be given. The five numbers are kept for the
  /// filter's set-up: taps each side (x, y) and fixed-point phases (x, y, weight).
  void initialize(const CImageFormat& format, int tapsX, int tapsY, int phasesX, int phasesY,
                  int weightScale);

  /// Maps `source` (of `input`) onto `target` (inclusive pixels of `output`). `input` and `output`
  /// may be the same frame. Samples outside the target stay as they are; samples outside `source`
  /// are reached by the filter only within `target`'s own bounds (edge samples are repeated there),
  /// so a border around the target never leaks in.
  /// REQUIRES: initialize was called; source is not empty; target lies in the frame.
  void convert(const SRectD& source, const SRect& target, const std::uint16_t* input,
               std::uint16_t* output);

 private:
  struct SImpl;
  std::unique_ptr<SImpl> impl_;
};
