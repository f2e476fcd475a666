#pragma once

#include <cstdint>
#include <vector>

#include "support/Rect.h"

/// Regions of a frame, each with or without a copy of the pixels it held. Tools use it to say which
/// pixels they changed and to keep the originals. Rectangles are inclusive.
/// THREAD: one at a time.
class CPixelRegionList {
 public:
  struct SRegion {
    SRect rect;
    std::vector<std::uint16_t> pixels;  // empty: the region carries no pixels
  };
  /// The first field is the frame's lines 0, 2, 4, ..., the second the lines between.
  enum class EField { first, second, both };

  /// Adds a region. `pixels` is null, or the whole frame's samples (`width` x `height` pixels of
  /// `components` samples, row after row) from which the region's part is copied. The rectangle is
  /// clipped to the frame; an empty one is ignored.
  void Add(const SRect& rect, const std::uint16_t* pixels, int width, int height, int components);

  /// Stores the frame's current samples as the pixels of every region (lines of `field` only, the
  /// others keep what they had, 0 where that was nothing). Parts of a region outside the frame are
  /// left alone.
  void ReplacePixelsFromFrame(const std::uint16_t* frame, int width, int height, int components,
                              EField field);

  /// Copies the regions' lines of `field` from one frame's samples to another's.
  void CopyPixelsFrameToFrame(const std::uint16_t* from, std::uint16_t* to, int width, int height,
                              int components, EField field) const;

  /// Moves all of `other`'s regions to the end of this list.
  void TakeFrom(CPixelRegionList& other);
  void Clear() { regions_.clear(); }
  bool IsEmpty() const { return regions_.empty(); }
  const std::vector<SRegion>& Regions() const { return regions_; }

 private:
  std::vector<SRegion> regions_;
};
