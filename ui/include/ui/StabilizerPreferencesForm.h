#pragma once

#include "toolkit/Form.h"

/// Asks what becomes of the tracking points when a new mark IN is set. It holds no logic: its owner
/// fills it, shows it modally and reads it back. THREAD: the user-interface thread.
class TStabilizerPreferencesForm : public TForm {
 public:
  explicit TStabilizerPreferencesForm(TForm* owner);

  TLabel Label1;
  TRadioButton MoveAndCopyRadioButton;
  TRadioButton MoveAndClearRadioButton;
  TRadioButton PromptMeRadioButton;
  TButton OkButton;
  TButton CancelButton;
};
