#include "ui/StabilizerPreferencesForm.h"

TStabilizerPreferencesForm::TStabilizerPreferencesForm(TForm* owner)
    : TForm("StabilizerPreferencesForm", owner),
      Label1("Label1", this),
      MoveAndCopyRadioButton("MoveAndCopyRadioButton", this),
      MoveAndClearRadioButton("MoveAndClearRadioButton", this),
      PromptMeRadioButton("PromptMeRadioButton", this),
      OkButton("OkButton", this),
      CancelButton("CancelButton", this) {
  constexpr int MARGIN = 16;
  constexpr int WIDTH = 420;
  constexpr int LINE = 24;
  constexpr int BUTTON = 80;
  setCaption("Stabilization Preferences");
  setBorderStyle(EBorderStyle::single);
  setSystemButtons(false);
  setPosition(EFormPosition::ownerCenter);

  Label1.setCaption("When setting a new MARK IN point:");
  MoveAndCopyRadioButton.setCaption("Always move the tracking points to the new MARK IN frame");
  MoveAndClearRadioButton.setCaption("Always clear all the tracking points");
  PromptMeRadioButton.setCaption("Prompt me for what action to take");
  OkButton.setCaption("OK");
  OkButton.setDefault(true);
  OkButton.setModalResult(MODAL_OK);
  CancelButton.setCaption("Cancel");
  CancelButton.setCancel(true);
  CancelButton.setModalResult(MODAL_CANCEL);

  int top = MARGIN;
  Label1.setBounds({MARGIN, top, WIDTH - 2 * MARGIN, LINE});
  for (TRadioButton* button :
       {&MoveAndCopyRadioButton, &MoveAndClearRadioButton, &PromptMeRadioButton}) {
    top += LINE;
    button->setBounds({2 * MARGIN, top, WIDTH - 3 * MARGIN, LINE});
  }
  top += LINE + MARGIN;
  CancelButton.setBounds({WIDTH - MARGIN - BUTTON, top, BUTTON, LINE});
  OkButton.setBounds({CancelButton.bounds().left - 8 - BUTTON, top, BUTTON, LINE});
  setBounds({0, 0, WIDTH, top + LINE + MARGIN});
}
