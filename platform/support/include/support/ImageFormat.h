#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "support/Rect.h"

/// Geometry and code values of a clip's frames. Inside the system samples are 16-bit, full range,
/// interleaved, rows directly one after another; the packing and component codes say what the
/// source file held. A plain value. THREAD: any, const after construction.
class CImageFormat {
 public:
  /// Pixel components: what the three components mean.
  static constexpr int COMPONENTS_RGB = 10;
  /// Pixel packing of the source: 8 bits a component, or more.
  static constexpr int PACKING_8_BITS = 1;
  static constexpr int PACKING_10_BITS = 2;
  static constexpr int PACKING_16_BITS = 3;

  CImageFormat() = default;
  /// RGB frames of the given size; active picture = the whole frame, black 0, white 65535.
  /// REQUIRES: width and height at least 1.
  CImageFormat(int pixelsPerLine, int linesPerFrame);

  int getPixelsPerLine() const { return pixelsPerLine_; }
  int getLinesPerFrame() const { return linesPerFrame_; }
  int getTotalFrameWidth() const { return pixelsPerLine_; }
  int getTotalFrameHeight() const { return linesPerFrame_; }
  /// Colour components of a pixel, alpha left out.
  int getComponentCountExcAlpha() const { return 3; }
  int getPixelPacking() const { return pixelPacking_; }
  int getPixelComponents() const { return pixelComponents_; }
  /// Inclusive.
  SRect getActivePictureRect() const { return activePicture_; }
  /// `box`, inclusive, lies in the active picture and is not empty: at least two pixels each way.
  bool isBoxInPicture(const SRect& box) const {
    return box.left >= activePicture_.left && box.top >= activePicture_.top &&
           box.right <= activePicture_.right && box.bottom <= activePicture_.bottom &&
           box.left < box.right && box.top < box.bottom;
  }
  void getComponentValueBlack(std::uint16_t black[3]) const;
  void getComponentValueWhite(std::uint16_t white[3]) const;
  /// Bytes of one frame's samples (progressive: one field is the frame).
  std::size_t getBytesPerField() const;

  void setActivePictureRect(const SRect& rect) { activePicture_ = rect; }
  void setPixelPacking(int packing) { pixelPacking_ = packing; }
  void setBlackWhite(const std::array<std::uint16_t, 3>& black,
                     const std::array<std::uint16_t, 3>& white) {
    black_ = black;
    white_ = white;
  }

  friend bool operator==(const CImageFormat&, const CImageFormat&) = default;

 private:
  int pixelsPerLine_ = 0;
  int linesPerFrame_ = 0;
  int pixelPacking_ = PACKING_16_BITS;
  int pixelComponents_ = COMPONENTS_RGB;
  SRect activePicture_;
  std::array<std::uint16_t, 3> black_{0, 0, 0};
  std::array<std::uint16_t, 3> white_{65535, 65535, 65535};
};
