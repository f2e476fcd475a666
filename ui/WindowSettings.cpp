#include <string>

#include "support/Files.h"
#include "tool/StabilizerTool.h"
#include "ui/StabilizerForm.h"
#include "ui/StabilizerPreferencesForm.h"

namespace {

// Stored; do not change. The window's own section is named after it.
constexpr const char* PARAMETER_SECTION = "Stabilizer";
constexpr const char* AUTO_POINTS_FILE = "stab_auto.points";

std::string askFile(SFileDialog& dialog, const std::string& suggestedName) {
  dialog.fileName = suggestedName;
  return Application()->chooseFile(dialog);
}

}  // namespace

CStabilizerPreferences TStabilizerForm::preferences() const {
  CStabilizerPreferences p;
  p.ShowTrackPoints = ShowPointCBox.isChecked();
  p.ShowWhileRender = ShowRenderPointCBox.isChecked();
  p.ClearOnShotChange = ClearOnShotChangeCBox.isChecked();
  p.MarkOutWarnings = WarnMarkOutMoveCheckBox.isChecked();
  p.MarkInMovePreference = markInMovePreference_;
  return p;
}

bool TStabilizerForm::onReadSettings(CIniFile& file, const std::string& section) {
  CStabilizerParameters record;
  record.ReadParameters(file, PARAMETER_SECTION);
  showParameters(record);
  CStabilizerPreferences p = preferences();
  p.ReadPreferences(file, section);
  ShowPointCBox.setChecked(p.ShowTrackPoints);
  ShowRenderPointCBox.setChecked(p.ShowWhileRender);
  ClearOnShotChangeCBox.setChecked(p.ClearOnShotChange);
  AutoSaveCBox.setChecked(true);
  AutoLoadCBox.setChecked(false);
  WarnMarkOutMoveCheckBox.setChecked(p.MarkOutWarnings);
  markInMovePreference_ = p.MarkInMovePreference;
  setDialogFolders();
  remembers_ = true;
  if (isControlPanelVisible()) tellSwitches();
  return true;
}

// A file that could not be read when it was ours to read keeps what is in it, also when somebody
// has mended it since: the defaults that are shown in its place are nobody's settings.
bool TStabilizerForm::onWriteSettings(CIniFile& file, const std::string& section) {
  if (remembers_) {
    gatherParameters().WriteParameters(file, PARAMETER_SECTION);
    preferences().WritePreferences(file, section);
  }
  saveAutoPoints();
  return true;
}

void TStabilizerForm::PreferencesMenuItemClick() {
  TStabilizerPreferencesForm& form = *preferencesForm_;
  const auto choice = [&form](int preference) -> TRadioButton* {
    switch (preference) {
      case MARK_IN_MOVE_Points: return &form.MoveAndCopyRadioButton;
      case MARK_IN_MOVE_Clear: return &form.MoveAndClearRadioButton;
      case MARK_IN_MOVE_Prompt: return &form.PromptMeRadioButton;
      default: return nullptr;
    }
  };
  for (int p = MARK_IN_MOVE_Points; p <= MARK_IN_MOVE_Prompt; ++p)
    choice(p)->setChecked(p == markInMovePreference_);
  if (form.showModal() == MODAL_OK) {
    markInMovePreference_ = form.MoveAndCopyRadioButton.isChecked()    ? MARK_IN_MOVE_Points
                            : form.MoveAndClearRadioButton.isChecked() ? MARK_IN_MOVE_Clear
                                                                       : MARK_IN_MOVE_Prompt;
  }
  if (markInMovePreference_ != tool_.markInMovePreference())
    tool_.setMarkInMovePreference(markInMovePreference_);
}

std::string TStabilizerForm::autoPointsFile() const {
  return GetFilePath(host().getFolderText()) + AUTO_POINTS_FILE;
}

void TStabilizerForm::setDialogFolders() {
  OpenTrackingPointsDialog.initialFolder = SaveTrackingPointsDialog.initialFolder =
      GetFilePath(host().getFolderText());
}

void TStabilizerForm::autoLoadPoints() {
  if (!AutoLoadCBox.isChecked() || host().isFirstShow()) return;
  if (DoesFileExist(autoPointsFile())) tool_.LoadTrackingPoints(autoPointsFile(), true);
}

void TStabilizerForm::saveAutoPoints() {
  if (!hasOperator() || !host().isClipAvailable() || !AutoSaveCBox.isChecked()) return;
  if (tool_.livePoints().NumberOfPoints() > 0) tool_.SaveTrackingPoints(autoPointsFile());
}

std::string TStabilizerForm::askPointsFileToSave(const std::string& suggestedName) {
  return askFile(SaveTrackingPointsDialog, suggestedName);
}

std::string TStabilizerForm::askPointsFileToLoad(const std::string& suggestedName) {
  return askFile(OpenTrackingPointsDialog, suggestedName);
}
