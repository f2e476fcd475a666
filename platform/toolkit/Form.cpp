#include "toolkit/Form.h"

#include <algorithm>
#include <utility>

#include "toolkit/Application.h"

TForm::TForm(std::string name, TForm* owner)
    : TControl(std::move(name)), application_(*Application()), owner_(owner) {
  setVisible(false);
  application_.forms_.push_back(this);
}

TForm::~TForm() {
  std::erase(application_.forms_, this);
  std::erase_if(application_.queue_, [this](const auto& queued) { return queued.form == this; });
  if (application_.mainForm_ == this) application_.mainForm_ = nullptr;
}

bool TForm::close() {
  if (onCloseQuery && !onCloseQuery()) return false;
  hide();
  return true;
}

int TForm::showModal() {
  setModalResult(MODAL_NONE);
  show();
  const int result = application_.runModal(*this);
  hide();
  return result;
}

void TForm::handleMessage(const SMessage& message) {
  if (message.number == MESSAGE_CLOSE) close();
}

// A button's result ends the modal form that it stands in.
bool TButton::takeClick() {
  if (modalResult_ == MODAL_NONE) return true;
  for (TControl* c = parent(); c != nullptr; c = c->parent()) {
    if (auto* const form = dynamic_cast<TForm*>(c)) form->setModalResult(modalResult_);
  }
  return true;
}
