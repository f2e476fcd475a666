#include "ui/QTXForm.h"

#include <utility>

TQTXForm::TQTXForm(std::string name, TForm* owner, std::string iniFileName)
    : TForm(std::move(name), owner), iniFileName_(std::move(iniFileName)) {}
TQTXForm::~TQTXForm() = default;
bool TQTXForm::readGeometry(int, CIniFile*) {
  return true;
}
bool TQTXForm::writeGeometry(int, CIniFile*) {
  return true;
}
bool TQTXForm::readSettings(int, CIniFile*) {
  return true;
}
bool TQTXForm::writeSettings(int, CIniFile*) {
  return true;
}
bool TQTXForm::readAll(int, CIniFile*) {
  return true;
}
void TQTXForm::handleMessage(const SMessage& message) {
  TForm::handleMessage(message);
}
void TQTXForm::setSectionPrefix(const std::string&) {}
std::string TQTXForm::iniFileName(int) const {
  return iniFileName_;
}
std::string TQTXForm::sectionName() const {
  return name();
}
