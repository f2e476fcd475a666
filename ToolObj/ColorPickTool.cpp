#include "ToolObj/ColorPickTool.h"

#include <algorithm>
#include <iterator>

#include "ToolObj/ToolObject.h"
#include "host/NavSystemInterface.h"
#include "support/CursorImage.h"

namespace {

constexpr int AS_DISPLAYED = 1;

// Fractions come from outside: below 0, above 1, and not even a number.
int codeValue(int maximum, float fraction) {
  const double value = static_cast<double>(maximum) * fraction + 0.5;
  if (!(value > 0.0)) return 0;  // no number is above 0
  return value < maximum ? static_cast<int>(value) : maximum;
}

}  // namespace

void CColorPickTool::setMode(bool on) {
  if (!systemInterface_) return;
  on_ = on;
  systemInterface_->showCursor(on ? LoadCursorImage("ColorPicker") : nullptr);
}

void CColorPickTool::getColor(int& first, int& second, int& third) const {
  first = color_[0];
  second = color_[1];
  third = color_[2];
}

void CColorPickTool::getPosition(int& x, int& y) const {
  x = x_;
  y = y_;
}

int CColorPickTool::buttonDown(const CUserInput& input) {
  if (!on_) return CToolObject::NOT_HANDLED;
  sample(input);
  return CToolObject::CONSUMED;
}

int CColorPickTool::buttonUp(const CUserInput&) {
  if (!on_) return CToolObject::NOT_HANDLED;
  pickedHook.notify();
  return CToolObject::CONSUMED;
}

int CColorPickTool::sample(const CUserInput& input) {
  if (!on_ || !systemInterface_) return CToolObject::NOT_HANDLED;
  x_ = input.imageX;
  y_ = input.imageY;
  systemInterface_->prepareDisplayedPixels(AS_DISPLAYED);
  int maximum = 0;
  float fractions[COMPONENTS] = {};
  if (!systemInterface_->readDisplayedPixel(x_, y_, maximum, fractions)) {
    return CToolObject::NOT_HANDLED;
  }
  maximum_ = std::max(maximum, 0);
  int color[COMPONENTS];
  for (int c = 0; c < COMPONENTS; ++c) color[c] = codeValue(maximum_, fractions[c]);
  if (!std::equal(std::begin(color), std::end(color), color_)) {
    std::copy(std::begin(color), std::end(color), color_);
    colorChangedHook.notify();
  }
  return CToolObject::NOT_HANDLED;
}
