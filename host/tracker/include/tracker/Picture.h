#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/ImageFormat.h"
#include "support/Rect.h"

/// A rectangle of interleaved 16-bit RGB samples.
struct SPicturePart {
  const std::uint16_t* samples = nullptr;  ///< of its first pixel
  std::ptrdiff_t pitch = 0;                ///< samples from a row to the next
};

/// A frame of which the tracker looks at small parts. THREAD: any, several at once.
class IPicture {
 public:
  virtual ~IPicture() = default;
  /// The pixels of `area` (inclusive, in the frame, not empty). `memory` may be filled with them
  /// and must stay as it is while the part is used. Throws what its source throws.
  virtual SPicturePart part(const SRect& area, std::vector<std::uint16_t>& memory) const = 0;
};

/// A whole frame in memory, which must outlive it.
class CWholePicture : public IPicture {
 public:
  CWholePicture(const std::uint16_t* samples, const CImageFormat& format)
      : samples_(samples), pitch_(3 * static_cast<std::ptrdiff_t>(format.getPixelsPerLine())) {}
  SPicturePart part(const SRect& area, std::vector<std::uint16_t>&) const override {
    return {samples_ + area.top * pitch_ + 3 * static_cast<std::ptrdiff_t>(area.left), pitch_};
  }

 private:
  const std::uint16_t* samples_;
  std::ptrdiff_t pitch_;
};
