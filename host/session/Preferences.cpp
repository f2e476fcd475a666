#include "session/Preferences.h"

#include <utility>

#include "params/StabilizerParameters.h"
#include "params/StabilizerPreferences.h"
#include "session/StabilizeJob.h"
#include "session/StabilizeOptions.h"
#include "support/ErrorReport.h"
#include "support/IniFile.h"

namespace {

// The sections of the tool's window; do not change.
constexpr const char* PREFERENCES = "StabilizerForm";
constexpr const char* PARAMETERS = "Stabilizer";

void write(const CStabilizerPreferences& record, CIniFile& ini) {
  record.WritePreferences(ini, PREFERENCES);
}
void write(const CStabilizerParameters& record, CIniFile& ini) {
  record.WriteParameters(ini, PARAMETERS);
}

/// The record's values as its file would hold them.
template <typename TRecord>
CPreferences::SSection sectionOf(const TRecord& record, const char* name) {
  CIniFile written("");  // never saved
  write(record, written);
  CPreferences::SSection section{name, {}};
  for (const std::string& key : TRecord::Keys())
    section.settings.push_back({key, written.ReadString(name, key, {})});
  return section;
}

/// False when the record has no such key.
template <typename TRecord>
bool setIn(CIniFile& file, const char* section, const std::string& key, const std::string& text) {
  TRecord record;
  if (record.SetFromText(key, text)) {
    CIniFile written("");  // never saved
    write(record, written);
    file.WriteString(section, key, written.ReadString(section, key, {}));
    return true;
  }
  for (const std::string& known : TRecord::Keys())
    if (key == known) throw CUsageError("--set " + key + ": \"" + text + "\" is no value of it");
  return false;
}

}  // namespace

CPreferences::CPreferences(std::string path)
    : path_(std::move(path)), file_(std::make_unique<CIniFile>(path_)) {
  if (!file_->good()) throw CJobError(theError.getError(), theError.getMessage());
}

CPreferences::~CPreferences() = default;

std::string CPreferences::defaultPath() {
  return IniFileNameFor("Stabilizer");
}

std::vector<CPreferences::SSection> CPreferences::settings() const {
  CStabilizerPreferences preferences;
  CStabilizerParameters parameters;
  preferences.ReadPreferences(*file_, PREFERENCES);
  parameters.ReadParameters(*file_, PARAMETERS);
  return {sectionOf(preferences, PREFERENCES), sectionOf(parameters, PARAMETERS)};
}

void CPreferences::set(const std::string& assignment) {
  const std::size_t equals = assignment.find('=');
  if (equals == std::string::npos) throw CUsageError("--set " + assignment + ": wants KEY=VALUE");
  const std::string key = assignment.substr(0, equals);
  const std::string text = assignment.substr(equals + 1);
  if (!setIn<CStabilizerPreferences>(*file_, PREFERENCES, key, text) &&
      !setIn<CStabilizerParameters>(*file_, PARAMETERS, key, text))
    throw CUsageError("--set " + key + ": there is no such setting");
}

void CPreferences::reset() {
  file_->EraseSection(PREFERENCES);
  file_->EraseSection(PARAMETERS);
}

void CPreferences::save() {
  if (!file_->Save()) throw CJobError(theError.getError(), theError.getMessage());
}
