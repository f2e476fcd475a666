#include "tool/ParameterWindow.h"

#include "tool/StabilizerTool.h"
#include "toolkit/Application.h"

void CParameterWindow::show() {
  visible_ = true;
  tool_.showMattingBox(showMattingBoxChecked_ && isUseMattingChecked());
  tool_.setTrackingPointsVisible(showPointsChecked_);
  sendBoxExtents();
}

void CParameterWindow::hide() {
  visible_ = false;
  tool_.showMattingBox(false);
  tool_.setTrackingPointsVisible(false);
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
  return Application()->askFileToSave("Save Tracking Points", "*.points", suggestedName);
}

std::string CParameterWindow::askPointsFileToLoad(const std::string& suggestedName) {
  return Application()->askFileToOpen("Load Tracking Points", "*.points", suggestedName);
}

void CParameterWindow::sendBoxExtents() {
  const CStabilizerParameters p = gatherParameters();
  tool_.setBoxExtents(p.TrackBoxExtentX, p.TrackBoxExtentY, p.SearchBoxExtentLeft,
                      p.SearchBoxExtentRight, p.SearchBoxExtentUp, p.SearchBoxExtentDown);
}
