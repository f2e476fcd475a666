#include "toolkit/Control.h"

#include <algorithm>
#include <utility>

TControl::TControl(std::string name, TControl* parent) : name_(std::move(name)), parent_(parent) {
  if (parent_ != nullptr) parent_->children_.push_back(this);
}

TControl::~TControl() {
  if (parent_ != nullptr) std::erase(parent_->children_, this);
}

void TRadioButton::setChecked(bool checked) {
  if (checked && parent() != nullptr) {
    for (TControl* sibling : parent()->children()) {
      if (auto* const button = dynamic_cast<TRadioButton*>(sibling)) button->checked_ = false;
    }
  }
  checked_ = checked;
}
