#pragma once

#include <QDialog>

#include "presenter/Presentation.h"
#include "toolkit/Form.h"

/// A form as a modal dialog: open until the form has a result, or is hidden.
class CFormDialog : public QDialog {
 public:
  CFormDialog(TForm& form, QWidget* parent);
  ~CFormDialog() override;

 protected:
  /// Escape and the title bar's button.
  void reject() override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void follow();
  TButton* findButton(const TControl& control, bool (TButton::*is)() const) const;

  TForm& form_;
  CPresentation presentation_;
};
