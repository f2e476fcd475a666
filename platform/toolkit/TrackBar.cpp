#include <algorithm>
#include <utility>

#include "toolkit/Controls.h"

TTrackBar::TTrackBar(std::string name, TControl* parent) : TControl(std::move(name), parent) {
  setTabStop(true);
}

void TTrackBar::setMinimum(int minimum) {
  assign(minimum_, minimum);
  setPosition(position_);
}

void TTrackBar::setMaximum(int maximum) {
  assign(maximum_, maximum);
  setPosition(position_);
}

void TTrackBar::setPosition(int position) {
  // Not std::clamp: in the midst of a change of range there may be no position between the two.
  position = std::min(std::max(position, minimum_), maximum_);
  if (position == position_) return;
  position_ = position;
  changed();
  if (onChange) onChange();
}

void TTrackBar::setSelection(int start, int end) {
  if (selectionStart_ == start && selectionEnd_ == end) return;
  selectionStart_ = start;
  selectionEnd_ = end;
  changed();
}
