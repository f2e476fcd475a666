#include "ui/StabilizerPreferencesForm.h"

TStabilizerPreferencesForm::TStabilizerPreferencesForm(TForm* owner)
    : TForm("StabilizerPreferencesForm", owner),
      Label1("Label1", this),
      MoveAndCopyRadioButton("MoveAndCopyRadioButton", this),
      MoveAndClearRadioButton("MoveAndClearRadioButton", this),
      PromptMeRadioButton("PromptMeRadioButton", this),
      OkButton("OkButton", this),
      CancelButton("CancelButton", this) {}
