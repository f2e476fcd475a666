#include "toolkit/Controls.h"

#include <algorithm>
#include <utility>

namespace {

TControl* focused = nullptr;

}  // namespace

TControl::TControl(std::string name, TControl* parent) : name_(std::move(name)), parent_(parent) {
  if (parent_ != nullptr) parent_->children_.push_back(this);
}

TControl::~TControl() {
  if (focused == this) focused = nullptr;
  if (parent_ != nullptr) std::erase(parent_->children_, this);
}

void TControl::setBounds(const SBounds& bounds) {
  if (bounds_ == bounds) return;
  const bool resized = bounds_.width != bounds.width || bounds_.height != bounds.height;
  bounds_ = bounds;
  if (resized && onResize) onResize();
  changed();
}

// Before, so that who leaves can still act; and after, for who sent the focus on within.
void TControl::setEnabled(bool enabled) {
  if (!enabled) dropFocusWithin();
  assign(enabled_, enabled);
  if (!enabled) dropFocusWithin();
}

void TControl::setVisible(bool visible) {
  if (!visible) dropFocusWithin();
  assign(visible_, visible);
  if (!visible) dropFocusWithin();
}

void TControl::dropFocusWithin() const {
  for (const TControl* c = focused; c != nullptr; c = c->parent_)
    if (c == this) return DropFocus();
}

bool TControl::isEnabledInWindow() const {
  for (const TControl* c = this; c != nullptr; c = c->parent_)
    if (!c->enabled_) return false;
  return true;
}

bool TControl::isShowing() const {
  for (const TControl* c = this; c != nullptr; c = c->parent_)
    if (!c->visible_) return false;
  return true;
}

void TControl::focus() {
  if (focused == this || !isOperable()) return;
  DropFocus();
  // Whoever left may have sent the focus on, or switched this control off.
  if (focused != nullptr || !isOperable()) return;
  focused = this;
  if (onEnter) onEnter();
  changed();
}

bool TControl::isFocused() const {
  return focused == this;
}

void TControl::leave() {
  if (onExit) onExit();
}

bool TControl::wheel(int steps) {
  for (TControl* c = this; c != nullptr; c = c->parent_)
    if (c->onWheel && c->onWheel(steps)) return true;
  return false;
}

TControl* FocusedControl() {
  return focused;
}

void DropFocus() {
  TControl* const left = std::exchange(focused, nullptr);
  if (left == nullptr) return;
  left->leave();
  left->changed();
}

TButtonControl::TButtonControl(std::string name, TControl* parent)
    : TControl(std::move(name), parent) {
  setTabStop(true);
}

void TButtonControl::click() {
  if (!isEnabledInWindow() || !takeClick()) return;
  if (onClick) onClick();
}

void TToolButton::press() {
  if (!isEnabledInWindow() || pressed_) return;
  pressed_ = true;
  if (onPress) onPress();
}

void TToolButton::release() {
  if (!pressed_) return;
  pressed_ = false;
  if (onRelease) onRelease();
  click();
}

bool TCheckBox::takeClick() {
  setChecked(!checked_);
  return true;
}

void TRadioButton::setChecked(bool checked) {
  if (checked && parent() != nullptr) {
    for (TControl* sibling : parent()->children()) {
      auto* const button = dynamic_cast<TRadioButton*>(sibling);
      if (button != nullptr && button != this) button->assign(button->checked_, false);
    }
  }
  assign(checked_, checked);
}

bool TRadioButton::takeClick() {
  if (checked_) return false;
  setChecked(true);
  return true;
}

TEdit::TEdit(std::string name, TControl* parent) : TControl(std::move(name), parent) {
  setTabStop(true);
}

void TEdit::setText(const std::string& text) {
  if (text_ == text) {
    selectNone();
    return;
  }
  allSelected_ = false;
  assign(text_, text);
}

char TEdit::filterKey(char key) {
  if (!isOperable()) return 0;
  if (onKeyPress) onKeyPress(key);
  return key;
}

void TEdit::type(char key) {
  key = filterKey(key);
  const bool printable = static_cast<unsigned char>(key) >= ' ' && key != 127;
  if (!printable && key != '\b') return;
  std::string text = allSelected_ ? std::string() : text_;
  if (printable) {
    text += key;
  } else if (!text.empty()) {
    text.pop_back();
  }
  setText(text);
}

VTimeCodeEdit::VTimeCodeEdit(std::string name, TControl* parent)
    : TControl(std::move(name), parent), text_(timecode_.toText()) {
  setTabStop(true);
}

void VTimeCodeEdit::setTimecode(const CTimecode& timecode) {
  timecode_ = timecode;
  assign(text_, timecode.toText());
}

void VTimeCodeEdit::typeText(const std::string& text) {
  if (isOperable()) assign(text_, text);
}

void VTimeCodeEdit::commit() {
  if (text_ == timecode_.toText()) return;
  timecode_.fromText(text_);
  assign(text_, timecode_.toText());
}

void VTimeCodeEdit::leave() {
  commit();
  TControl::leave();
}

TCSpinEdit::TCSpinEdit(std::string name, TControl* parent) : TControl(std::move(name), parent) {
  setTabStop(true);
}

void TCSpinEdit::setValue(int value) {
  assign(value_, std::clamp(value, 0, maximum_));
}

void TCSpinEdit::setMaximum(int maximum) {
  assign(maximum_, std::clamp(maximum, 0, 99));
  setValue(value_);
}

TComboBox::TComboBox(std::string name, TControl* parent) : TControl(std::move(name), parent) {
  setTabStop(true);
}

int TComboBox::itemIndex() const {
  const auto found = std::find(items_.begin(), items_.end(), text_);
  return found != items_.end() ? static_cast<int>(found - items_.begin()) : -1;
}

void TComboBox::setItemIndex(int index) {
  const bool exists = index >= 0 && index < static_cast<int>(items_.size());
  setText(exists ? items_[index] : std::string());
}

int TLineChart::addSeries(const std::string& title, EMarker marker, EColor markerColor) {
  series_.push_back({title, marker, markerColor, {}});
  changed();
  return static_cast<int>(series_.size()) - 1;
}

void TLineChart::clear(int series) {
  std::vector<SPoint>& points = series_.at(series).points;
  if (points.empty()) return;
  points.clear();
  changed();
}

void TLineChart::addPoint(int series, double x, double y, const std::string& label) {
  series_.at(series).points.push_back({x, y, label});
  changed();
}
