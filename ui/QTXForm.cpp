#include "ui/QTXForm.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "DesktopArea.h"
#include "support/ErrorReport.h"
#include "toolkit/Application.h"

namespace {

std::string sectionPrefix;

constexpr int LARGEST = 32767;  // pixels; what stands in a file may be anything

std::string prefixed(const std::string& section) {
  return sectionPrefix.empty() ? section : sectionPrefix + "\\" + section;
}

int readPixels(const CIniFile& file, const std::string& section, const char* key, int fallback,
               int smallest) {
  const auto value = file.ReadInteger(section, key, fallback);
  return value < smallest || value > LARGEST ? fallback : static_cast<int>(value);
}

/// Acts on the file that is given, or on one that is opened for it, saved and released.
bool withFile(CIniFile* given, const std::string& path, const std::function<bool(CIniFile&)>& act) {
  if (given != nullptr) return act(*given);
  CIniFile* const opened = CreateIniFile(path);
  if (opened == nullptr) return false;
  const bool acted = act(*opened);
  return DeleteIniFile(opened, true) && acted;
}

/// Whoever sends a message does not hear what became of it.
void reportFailure(bool succeeded) {
  if (succeeded) return;
  CAutoErrorReporter reporter("TQTXForm::handleMessage");
  reporter.repeat();
}

}  // namespace

TQTXForm::TQTXForm(std::string name, TForm* owner, std::string iniFileName)
    : TForm(std::move(name), owner), iniFileName_(std::move(iniFileName)) {
  keepDesign();
  onCloseQuery = [this] { return FormCloseQuery(); };
}

TQTXForm::~TQTXForm() = default;

TQTXForm::CSaveWhenExit::~CSaveWhenExit() {
  if (form_.saveOnClose_) form_.saveAll();
}

void TQTXForm::keepDesign() {
  designBounds_ = bounds();
  designVisible_ = isVisible();
  designStyle_ = formStyle();
}

bool TQTXForm::FormCloseQuery() {
  if (saveOnClose_) saveAll();
  return true;
}

void TQTXForm::saveAll() {
  writeSettings(FORM_MODE_NORMAL);
  writeGeometry(FORM_MODE_NORMAL);
}

void TQTXForm::setSectionPrefix(const std::string& prefix) {
  sectionPrefix = prefix;
}

std::string TQTXForm::iniFileName(int mode) const {
  return mode == FORM_MODE_SAVED ? iniFileName_ + "1" : iniFileName_;
}

std::string TQTXForm::sectionName() const {
  return prefixed(name());
}

bool TQTXForm::isMainForm() const {
  return application().mainForm() == this;
}

bool TQTXForm::isResizable() const {
  return borderStyle() != EBorderStyle::single && borderStyle() != EBorderStyle::dialog &&
         borderStyle() != EBorderStyle::toolWindow;
}

bool TQTXForm::readGeometry(int mode, CIniFile* file) {
  if (mode == FORM_MODE_DESIGN) return restoreDesign();
  return withFile(file, iniFileName(mode),
                  [this](CIniFile& opened) { return readGeometryFrom(opened); });
}

bool TQTXForm::restoreDesign() {
  setBounds(designBounds_);
  if (!isMainForm()) setVisible(designVisible_);
  setFormStyle(designStyle_);
  return onGeometryDefaults();
}

bool TQTXForm::readGeometryFrom(CIniFile& file) {
  const std::string section = sectionName();
  if (file.HasSection(section)) {
    SBounds read = bounds();
    read.left = readPixels(file, section, "Left", read.left, -LARGEST);
    read.top = readPixels(file, section, "Top", read.top, -LARGEST);
    if (isResizable()) {
      read.width = readPixels(file, section, "Width", read.width, 1);
      read.height = readPixels(file, section, "Height", read.height, 1);
    }
    setBounds(read);
    if (!isMainForm()) {
      shown_ = file.ReadBool(section, "Visible", isVisible());
      shown_ ? bringBackOntoDesktop() : hide();
    }
    const bool onTop = file.ReadBool(section, "StayOnTop", formStyle() == EFormStyle::stayOnTop);
    setFormStyle(onTop ? EFormStyle::stayOnTop : EFormStyle::normal);
  }
  return onReadGeometry(file, section);
}

void TQTXForm::bringBackOntoDesktop() {
  setBounds(BroughtBackOntoDesktop(bounds(), application().monitors()));
  setWindowState(EWindowState::normal);
  shown_ = true;
  show();
}

bool TQTXForm::writeGeometry(int mode, CIniFile* file) {
  if (mode == FORM_MODE_DESIGN) return true;
  return withFile(file, iniFileName(mode),
                  [this](CIniFile& opened) { return writeGeometryTo(opened); });
}

bool TQTXForm::writeGeometryTo(CIniFile& file) {
  const std::string section = sectionName();
  if (!isMainForm()) file.WriteBool(section, "Visible", isVisible());
  if (isVisible()) setWindowState(EWindowState::normal);
  file.WriteInteger(section, "Left", bounds().left);
  file.WriteInteger(section, "Top", bounds().top);
  file.WriteInteger(section, "Width", bounds().width);
  file.WriteInteger(section, "Height", bounds().height);
  file.WriteBool(section, "StayOnTop", formStyle() == EFormStyle::stayOnTop);
  return onWriteGeometry(file, section);
}

bool TQTXForm::readSettings(int mode, CIniFile* file) {
  if (mode == FORM_MODE_DESIGN) return onSettingsDefaults();
  return withFile(file, iniFileName(mode),
                  [this](CIniFile& opened) { return onReadSettings(opened, sectionName()); });
}

bool TQTXForm::writeSettings(int mode, CIniFile* file) {
  if (mode == FORM_MODE_DESIGN) return true;
  return withFile(file, iniFileName(mode),
                  [this](CIniFile& opened) { return onWriteSettings(opened, sectionName()); });
}

bool TQTXForm::readAll(int mode, CIniFile* file) {
  const bool settings = readSettings(mode, file);
  const bool geometry = readGeometry(mode, file);
  return settings && geometry;
}

void TQTXForm::handleMessage(const SMessage& message) {
  const int mode = static_cast<int>(message.wParam);
  auto* const file = static_cast<CIniFile*>(message.lParam);
  switch (message.number) {
    case FORM_RELOAD_ALL: return reloadAll();
    case FORM_REFRESH: return onRefresh();
    case FORM_READ_SETTINGS: return reportFailure(readSettings(mode, file));
    case FORM_WRITE_SETTINGS: return reportFailure(writeSettings(mode, file));
    case FORM_READ_GEOMETRY: return reportFailure(readGeometry(mode, file));
    case FORM_WRITE_GEOMETRY: return reportFailure(writeGeometry(mode, file));
    case MESSAGE_INIT_MENU: onMenu(); break;
    case MESSAGE_CLOSE: shown_ = false; break;
    default: break;
  }
  TForm::handleMessage(message);
}

void TQTXForm::reloadAll() {
  TApplication& app = application();
  const auto tellAll = [&app](const SMessage& message) {
    for (TForm* form : app.forms()) app.postMessage(*form, message);
  };
  tellAll({FORM_READ_GEOMETRY, FORM_MODE_NORMAL});
  restoreZOrder();
  app.deliverMessages();
  if (CIniFile* const file = CreateIniFile(iniFileName(FORM_MODE_NORMAL))) {
    tellAll({FORM_READ_SETTINGS, FORM_MODE_NORMAL, file});
    app.deliverMessages();
    DeleteIniFile(file, true);
  }
  tellAll({FORM_REFRESH});
  app.deliverMessages();
}

// From the last name to the first, each to the top: the first one ends there.
bool TQTXForm::restoreZOrder() {
  CIniFile* const file = CreateIniFile(iniFileName(FORM_MODE_NORMAL));
  if (file == nullptr) return false;
  std::vector<std::string> names = file->ReadStringList("Z", "ZOrder");
  for (const std::string& window : names)
    if (file->ReadBool(prefixed(window), "Visible", false)) onZOrder(window);
  if (!DeleteIniFile(file, true)) return false;
  std::reverse(names.begin(), names.end());
  for (const std::string& window : names) {
    const std::vector<TForm*> forms = application().forms();
    for (TForm* form : forms)
      if (form->name() == window) application().raise(*form);
  }
  return true;
}
