#include <algorithm>

#include "SavedEnables.h"
#include "tool/StabilizerTool.h"
#include "ui/StabilizerForm.h"

namespace {

constexpr int FIRST_REPEAT = 250;  // milliseconds
constexpr int NEXT_REPEAT = 75;
constexpr int STEP = 1;  // pixels
constexpr int STEP_WITH_SHIFT = 10;

}  // namespace

void TStabilizerForm::wireMatting() {
  for (TToolButton* button :
       {&TopUpButton, &TopDownButton, &BottomUpButton, &BottomDownButton, &LeftLeftButton,
        &LeftRightButton, &RightLeftButton, &RightRightButton}) {
    button->onPress = [this, button] { pressMattingButton(*button); };
    button->onRelease = [this] { releaseMattingButton(); };
  }
  AllMatButton.onClick = [this] { selectWholeFrame(); };
  SetMatButton.onClick = [this] { tool_.findMattingBox(); };
  ShowMattingBoxCBox.onClick = [this] { tool_.showMattingBox(ShowMattingBoxCBox.isChecked()); };
  UseMattingCBox.onClick = [this] { applyUseMatting(); };
  ColorPickButton.onClick = [this] { toggleColorPicker(); };
  ColorPickerStateTimer.onTimer = [this] {
    if (!tool_.isColorPickerOn()) releaseColorPickButton();
  };
}

void TStabilizerForm::pressMattingButton(TToolButton& button) {
  heldButton_ = &button;
  moveMattingBox();
  DownTimer.setInterval(FIRST_REPEAT);
  DownTimer.setEnabled(true);
}

void TStabilizerForm::onDownTimer() {
  if (heldButton_ == nullptr) return DownTimer.setEnabled(false);
  moveMattingBox();
  DownTimer.setInterval(NEXT_REPEAT);
}

void TStabilizerForm::releaseMattingButton() {
  heldButton_ = nullptr;
  DownTimer.setEnabled(false);
}

// Each edge stays in the picture; that an edge may pass its opposite one is the operator's affair.
void TStabilizerForm::moveMattingBox() {
  const CImageFormat* const format = host().getClipImageFormat();
  if (format == nullptr) return;
  struct SMove {
    const TToolButton* button;
    int SRect::*edge;
    int sign;
  };
  const SMove moves[] = {
      {&TopUpButton, &SRect::top, -1},       {&TopDownButton, &SRect::top, 1},
      {&BottomUpButton, &SRect::bottom, -1}, {&BottomDownButton, &SRect::bottom, 1},
      {&LeftLeftButton, &SRect::left, -1},   {&LeftRightButton, &SRect::left, 1},
      {&RightLeftButton, &SRect::right, -1}, {&RightRightButton, &SRect::right, 1}};
  const int step = application().isShiftDown() ? STEP_WITH_SHIFT : STEP;
  SRect box = tool_.getMattingBox();
  for (const auto& [button, edge, sign] : moves) {
    if (button != heldButton_) continue;
    const bool isRow = edge == &SRect::top || edge == &SRect::bottom;
    const int last = (isRow ? format->getLinesPerFrame() : format->getPixelsPerLine()) - 1;
    box.*edge = sign < 0 ? std::max(0, box.*edge - step) : std::min(box.*edge + step, last);
  }
  tool_.setMattingBox(box);
}

void TStabilizerForm::selectWholeFrame() {
  const CImageFormat* const format = host().getClipImageFormat();
  if (format == nullptr) return;
  tool_.setMattingBox({0, 0, format->getPixelsPerLine() - 1, format->getLinesPerFrame() - 1});
}

void TStabilizerForm::setUseMattingChecked(bool checked) {
  UseMattingCBox.setChecked(checked);
  applyUseMatting();
}

void TStabilizerForm::applyUseMatting() {
  enableMattingGroup();
  tool_.setUseMatting(UseMattingCBox.isChecked());
  if (isControlPanelVisible())
    tool_.showMattingBox(ShowMattingBoxCBox.isChecked() && UseMattingCBox.isChecked());
}

void TStabilizerForm::enableMattingGroup() {
  if (UseMattingCBox.isChecked()) {
    mattingEnables_->restore();
    return;
  }
  const bool focused = UseMattingCBox.isFocused();
  mattingEnables_->disable(MattingGroupBox);
  MattingGroupBox.setEnabled(true);
  UseMattingCBox.setEnabled(true);
  if (focused) UseMattingCBox.focus();  // what is disabled, if for a moment, loses it
}

void TStabilizerForm::toggleColorPicker() {
  const bool on = !tool_.isColorPickerOn();
  tool_.setColorPickerOn(on);
  if (!on) return releaseColorPickButton();
  ColorPickButton.setDown(true);
  ColorPickerStateTimer.setEnabled(true);
}

void TStabilizerForm::releaseColorPickButton() {
  ColorPickButton.setDown(false);
  ColorPickerStateTimer.setEnabled(false);
}
