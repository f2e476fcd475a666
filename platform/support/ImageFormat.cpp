#include "support/ImageFormat.h"

#include <algorithm>

CImageFormat::CImageFormat(int pixelsPerLine, int linesPerFrame)
    : pixelsPerLine_(pixelsPerLine),
      linesPerFrame_(linesPerFrame),
      activePicture_{0, 0, pixelsPerLine - 1, linesPerFrame - 1} {}

void CImageFormat::getComponentValueBlack(std::uint16_t black[3]) const {
  std::copy(black_.begin(), black_.end(), black);
}

void CImageFormat::getComponentValueWhite(std::uint16_t white[3]) const {
  std::copy(white_.begin(), white_.end(), white);
}

std::size_t CImageFormat::getBytesPerField() const {
  return static_cast<std::size_t>(linesPerFrame_) * static_cast<std::size_t>(pixelsPerLine_) *
         static_cast<std::size_t>(getComponentCountExcAlpha()) * sizeof(std::uint16_t);
}
