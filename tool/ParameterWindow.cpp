#include "tool/ParameterWindow.h"

#include "support/ErrorReport.h"
#include "support/Files.h"
#include "support/IniFile.h"
#include "tool/StabilizerTool.h"
#include "toolkit/Application.h"

namespace {

// Stored; do not change. The window's own section is named after it.
constexpr const char* PARAMETER_SECTION = "Stabilizer";
constexpr const char* WINDOW_SECTION = "StabilizerForm";
constexpr const char* AUTO_POINTS_FILE = "stab_auto.points";

constexpr int CLIP_CHANGED_SLOT = 1;

}  // namespace

CParameterWindow::CParameterWindow(CStabilizerTool& tool) : tool_(tool) {
  if (hasOperator()) readSettings();
}

CParameterWindow::~CParameterWindow() {
  tool_.clipChangedHook.unsubscribe(this, CLIP_CHANGED_SLOT);
  if (hasOperator() && remembers_) writeSettings();
  saveAutoPoints();
}

void CParameterWindow::show() {
  visible_ = true;
  tool_.showMattingBox(showMattingBoxChecked_ && isUseMattingChecked());
  sendPreferences();
  tool_.clipChangedHook.subscribe(this, CLIP_CHANGED_SLOT, [this] { saveAutoPoints(); });
  sendBoxExtents();
}

void CParameterWindow::hide() {
  visible_ = false;
  tool_.showMattingBox(false);
  tool_.setTrackingPointsVisible(false);
  tool_.clipChangedHook.unsubscribe(this, CLIP_CHANGED_SLOT);
  saveAutoPoints();
}

void CParameterWindow::setPreferences(const CStabilizerPreferences& preferences) {
  preferences_ = preferences;
  if (visible_) sendPreferences();
}

void CParameterWindow::sendPreferences() {
  tool_.setTrackingPointsVisible(preferences_.ShowTrackPoints);
  tool_.setClearOnShotChange(preferences_.ClearOnShotChange);
  tool_.setMarkOutWarnings(preferences_.MarkOutWarnings);
  tool_.setMarkInMovePreference(preferences_.MarkInMovePreference);
}

bool CParameterWindow::hasOperator() const {
  CNavSystemInterface* const host = tool_.getSystemAPI();
  return host != nullptr && !host->isBatchRun();
}

// A file that is not ours to read stays as it is, also when it has become readable in the
// meantime: the defaults that are used in its place are nobody's settings.
void CParameterWindow::readSettings() {
  CAutoErrorReporter reporter("CParameterWindow::readSettings");
  const CIniFile file(tool_.settingsFileName());
  if (!file.good()) return reporter.repeat();
  parameters_.ReadParameters(file, PARAMETER_SECTION);
  preferences_.ReadPreferences(file, WINDOW_SECTION);
  remembers_ = true;
}

// Read anew before it is written: what else stands in the file, and what another program has
// written there since, survives.
void CParameterWindow::writeSettings() {
  CAutoErrorReporter reporter("CParameterWindow::writeSettings");
  CIniFile file(tool_.settingsFileName());
  if (!file.good()) return reporter.repeat();
  gatherParameters().WriteParameters(file, PARAMETER_SECTION);
  preferences_.WritePreferences(file, WINDOW_SECTION);
  if (!file.Save()) reporter.repeat();
}

void CParameterWindow::saveAutoPoints() {
  CNavSystemInterface* const host = tool_.getSystemAPI();
  if (!hasOperator() || !host->isClipAvailable()) return;
  if (tool_.livePoints().NumberOfPoints() == 0) return;
  tool_.SaveTrackingPoints(GetFilePath(host->getFolderText()) + AUTO_POINTS_FILE);
}

void CParameterWindow::toggleColorPicker() {
  tool_.setColorPickerOn(!tool_.isColorPickerOn());
}

CStabilizerParameters CParameterWindow::gatherParameters() {
  CAutoThreadLock lock(lock_, "CParameterWindow::gatherParameters");
  return parameters_;
}

void CParameterWindow::showParameters(const CStabilizerParameters& parameters) {
  {
    CAutoThreadLock lock(lock_, "CParameterWindow::showParameters");
    parameters_ = parameters;
  }
  sendBoxExtents();
}

bool CParameterWindow::isUseMattingChecked() const {
  CAutoThreadLock lock(lock_, "CParameterWindow::isUseMattingChecked");
  return parameters_.UseMatting;
}

void CParameterWindow::setUseMattingChecked(bool checked) {
  CAutoThreadLock lock(lock_, "CParameterWindow::setUseMattingChecked");
  parameters_.UseMatting = checked;
}

std::string CParameterWindow::askPointsFileToSave(const std::string& suggestedName) {
  SFileDialog dialog;
  dialog.kind = SFileDialog::EKind::save;
  dialog.fileName = suggestedName;
  return Application()->chooseFile(dialog);
}

std::string CParameterWindow::askPointsFileToLoad(const std::string& suggestedName) {
  SFileDialog dialog;
  dialog.fileName = suggestedName;
  return Application()->chooseFile(dialog);
}

void CParameterWindow::sendBoxExtents() {
  const CStabilizerParameters p = gatherParameters();
  tool_.setBoxExtents(p.TrackBoxExtentX, p.TrackBoxExtentY, p.SearchBoxExtentLeft,
                      p.SearchBoxExtentRight, p.SearchBoxExtentUp, p.SearchBoxExtentDown);
}
