#include <algorithm>
#include <cmath>

#include "ToolObj/ToolFrameBuffer.h"
#include "support/BinManager.h"
#include "support/MatBox.h"
#include "tool/StabilizerTool.h"

namespace {

// Stored in clips' desktop settings; do not change.
constexpr const char* SECTION = "BlueBoundingBox";

bool isYuv(const CImageFormat& format) {
  const int components = format.getPixelComponents();
  return components == 50 || components == 51 || components == 103;
}

/// A picked component in 8-bit code values, which is what a border's colour is told in.
int eightBitCode(int component, int maximum) {
  if (maximum <= 0) return 0;  // nothing was read yet
  return static_cast<int>(std::lround(255.0 * component / maximum));
}

}  // namespace

void CStabilizerTool::keepMattingBox(const SRect& box) {
  mattingBox_ = box;
  mattingBoxValid_ = true;
  tracked_.SetMattingBox(box);
}

void CStabilizerTool::setMattingBox(const SRect& box) {
  keepMattingBox(box);
  getSystemAPI()->redrawDisplay(0);
}

void CStabilizerTool::showMattingBox(bool show) {
  if (show == mattingBoxShown_) return;
  mattingBoxShown_ = show;
  const CImageFormat* format = getSystemAPI()->getClipImageFormat();
  if (show && format) {
    const int lastColumn = format->getPixelsPerLine() - 1;
    const int lastLine = format->getLinesPerFrame() - 1;
    const SRect& box = mattingBox_;
    if (!mattingBoxValid_ || box.bottom <= box.top || box.right <= box.left) {
      keepMattingBox({0, 0, lastColumn, lastLine});
    } else {
      keepMattingBox({std::max(0, box.left), std::max(0, box.top), std::min(box.right, lastColumn),
                      std::min(box.bottom, lastLine)});
    }
  }
  getSystemAPI()->redrawDisplay(0);
}

void CStabilizerTool::findMattingBox(const std::array<int, 3>& color, int seedX, int seedY) {
  const CImageFormat* format = getSystemAPI()->getClipImageFormat();
  if (!format) return;
  // Of the memory that the host recycles: fresh memory takes longer than the search.
  CToolFrameBuffer frame(format,
                         getSystemAPI()->getFrameAllocator(format->getBytesPerField(), 1, 0, 0));
  if (!frame.ensureSamples() || !getSystemAPI()->copyDisplayedFrame(frame.samples())) return;
  const int tolerance = format->getPixelPacking() == CImageFormat::PACKING_8_BITS ? 25 : 50;
  setMattingBox(FindMatBox(frame.samples(), format->getPixelsPerLine(), format->getLinesPerFrame(),
                           tolerance, format->getActivePictureRect(), isYuv(*format), color, seedX,
                           seedY));
}

void CStabilizerTool::findMattingBoxOfPick() {
  if (colorPicker_.getMaximum() <= 0) return;  // the click met no pixel, nor did the way to it
  std::array<int, 3> color{};
  colorPicker_.getColor(color[0], color[1], color[2]);
  for (int& component : color) component = eightBitCode(component, colorPicker_.getMaximum());
  int x = 0;
  int y = 0;
  colorPicker_.getPosition(x, y);
  findMattingBox(color, x, y);
}

void CStabilizerTool::turnColorPickerOff() {
  if (colorPicker_.isOn()) colorPicker_.setMode(false);
}

void CStabilizerTool::loadMattingBox() {
  mattingBoxValid_ = false;
  const IClip* clip = getSystemAPI()->getClip();
  if (!clip) return;
  CBinManager bin;
  CIniFile* desktop = bin.openDesktop(clip->path());
  if (!desktop) return;
  const auto edge = [desktop](const char* key) {
    return static_cast<int>(desktop->ReadInteger(SECTION, key, -1));
  };
  const SRect box{edge("Left"), edge("Top"), edge("Right"), edge("Bottom")};
  bin.closeDesktop(desktop, false);
  if (box.left >= 0 && box.top >= 0 && box.left < box.right && box.top < box.bottom) {
    turnColorPickerOff();
    setMattingBox(box);
  }
}

void CStabilizerTool::saveMattingBox() {
  const IClip* clip = getSystemAPI()->getClip();
  if (!clip) return;
  CAutoErrorReporter reporter("CStabilizerTool::saveMattingBox");
  CBinManager bin;
  CIniFile* desktop = bin.openDesktop(clip->path());
  if (!desktop) return reporter.repeat();
  if (mattingBoxValid_) {
    desktop->WriteInteger(SECTION, "Left", mattingBox_.left);
    desktop->WriteInteger(SECTION, "Top", mattingBox_.top);
    desktop->WriteInteger(SECTION, "Right", mattingBox_.right);
    desktop->WriteInteger(SECTION, "Bottom", mattingBox_.bottom);
  } else {
    desktop->EraseSection(SECTION);
  }
  if (!bin.closeDesktop(desktop, true)) reporter.repeat();
}
