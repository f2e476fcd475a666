#include "FormDialog.h"

#include <QCloseEvent>

CFormDialog::CFormDialog(TForm& form, QWidget* parent)
    : QDialog(parent), form_(form), presentation_(form, this) {
  setWindowTitle(QString::fromStdString(form.caption()));
  setFixedSize(form.bounds().width, form.bounds().height);
  presentation_.widget()->setGeometry(QRect(QPoint(), size()));
  presentation_.widget()->show();
  form.changedHook.subscribe(this, 0, [this] { follow(); });
}

CFormDialog::~CFormDialog() {
  form_.changedHook.unsubscribe(this, 0);
}

void CFormDialog::follow() {
  if (form_.modalResult() != MODAL_NONE) done(form_.modalResult());
}

TButton* CFormDialog::findButton(const TControl& control, bool (TButton::*is)() const) const {
  for (TControl* child : control.children()) {
    auto* const button = dynamic_cast<TButton*>(child);
    if (button && (button->*is)()) return button;
    if (TButton* const found = findButton(*child, is)) return found;
  }
  return nullptr;
}

void CFormDialog::reject() {
  if (TButton* const cancel = findButton(form_, &TButton::isCancel)) return cancel->click();
  form_.setModalResult(MODAL_CANCEL);
}

// The form is asked first, and stays where it says so.
void CFormDialog::closeEvent(QCloseEvent* event) {
  if (form_.onCloseQuery && !form_.onCloseQuery()) return event->ignore();
  event->ignore();
  reject();
}
