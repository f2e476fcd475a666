#include "params/StabilizerParameters.h"

#include <cstdint>
#include <utility>

#include "SettingText.h"

namespace {

using P = CStabilizerParameters;

template <typename T>
struct SField {
  const char* key;
  T P::*member;
};

// The keys are stored; do not change. Reading and writing follow the order of the record.
constexpr SField<int> kIntegers[] = {{"TrackBoxExtentX", &P::TrackBoxExtentX},
                                     {"TrackBoxExtentY", &P::TrackBoxExtentY},
                                     {"SearchBoxExtentLeft", &P::SearchBoxExtentLeft},
                                     {"SearchBoxExtentRight", &P::SearchBoxExtentRight},
                                     {"SearchBoxExtentUp", &P::SearchBoxExtentUp},
                                     {"SearchBoxExtentDown", &P::SearchBoxExtentDown},
                                     {"GoodFramesIn", &P::GoodFramesIn},
                                     {"GoodFramesOut", &P::GoodFramesOut},
                                     {"RefFrameIndex", &P::RefFrameIndex}};
constexpr SField<double> kDoubles[] = {{"Jitter", &P::Jitter}, {"Alpha2", &P::Alpha2}};
constexpr SField<bool> kSwitches[] = {{"UseMatting", &P::UseMatting},
                                      {"KeepOriginalMatValues", &P::KeepOriginalMatValues}};

struct SNamedField : SField<int> {
  const CIniAssociations& (*names)();
};
constexpr SNamedField kNamed[] = {{{"HMode", &P::HMode}, StabilizationModeNames},
                                  {{"VMode", &P::VMode}, StabilizationModeNames},
                                  {{"RMode", &P::RMode}, StabilizationModeNames},
                                  {{"UFunction", &P::UFunction}, UFunctionNames},
                                  {{"MissingDataFill", &P::MissingDataFill}, MissingDataFillNames}};

}  // namespace

const CIniAssociations& StabilizationModeNames() {
  static constexpr SIniAssociation rows[] = {
      {"STABMODE_None", "None", STABMODE_None},
      {"STABMODE_Smoothed", "Smoothed", STABMODE_Smoothed},
      {"STABMODE_Flat", "Flat", STABMODE_Flat},
      {"STABMODE_Registered", "Registered", STABMODE_Registered},
      {"", "", -1}};
  static const CIniAssociations table(rows, "STABMODE", -1);
  return table;
}

const CIniAssociations& UFunctionNames() {
  static constexpr SIniAssociation rows[] = {{"U_Fcn_Euclidean", "Euclidean", U_Fcn_Euclidean},
                                             {"U_Fcn_Logrithmic", "Logarithmic", U_Fcn_Logrithmic},
                                             {"U_Fcn_Thin_Plate", "Thin Plate", U_Fcn_Thin_Plate},
                                             {"U_Fcn_None", "None", U_Fcn_None},
                                             {"", "", -1}};
  static const CIniAssociations table(rows, "U_Fcn_", -1);
  return table;
}

const CIniAssociations& MissingDataFillNames() {
  static constexpr SIniAssociation rows[] = {
      {"MISSING_DATA_White", "White", MISSING_DATA_White},
      {"MISSING_DATA_Black", "Black", MISSING_DATA_Black},
      {"MISSING_DATA_Previous_Frame", "Previous Frame", MISSING_DATA_Previous_Frame},
      {"MISSING_DATA_Zoom", "Zoom", MISSING_DATA_Zoom},
      {"", "", -1}};
  static const CIniAssociations table(rows, "MISSING_DATA", -1);
  return table;
}

bool CStabilizerParameters::ReadParameters(const CIniFile& ini, const std::string& section) {
  for (const auto& field : kIntegers) {
    const std::int64_t stored = ini.ReadInteger(section, field.key, this->*field.member);
    if (std::in_range<int>(stored)) this->*field.member = static_cast<int>(stored);
  }
  for (const auto& field : kDoubles) {
    this->*field.member = ini.ReadDouble(section, field.key, this->*field.member);
  }
  for (const auto& field : kNamed) {
    int& value = this->*field.member;
    value = ini.ReadAssociation(field.names(), section, field.key, value);
  }
  for (const auto& field : kSwitches) {
    this->*field.member = ini.ReadBool(section, field.key, this->*field.member);
  }
  return true;
}

bool CStabilizerParameters::WriteParameters(CIniFile& ini, const std::string& section) const {
  for (const auto& field : kIntegers) ini.WriteInteger(section, field.key, this->*field.member);
  for (const auto& field : kDoubles) ini.WriteDouble(section, field.key, this->*field.member);
  for (const auto& field : kNamed) {
    ini.WriteAssociation(field.names(), section, field.key, this->*field.member);
  }
  for (const auto& field : kSwitches) ini.WriteBool(section, field.key, this->*field.member);
  return true;
}

std::vector<std::string> CStabilizerParameters::Keys() {
  std::vector<std::string> keys;
  for (const auto& field : kIntegers) keys.emplace_back(field.key);
  for (const auto& field : kDoubles) keys.emplace_back(field.key);
  for (const auto& field : kNamed) keys.emplace_back(field.key);
  for (const auto& field : kSwitches) keys.emplace_back(field.key);
  return keys;
}

bool CStabilizerParameters::SetFromText(const std::string& key, const std::string& text) {
  const CSettingText given(text);
  for (const auto& field : kIntegers) {
    if (key == field.key) return given.read(this->*field.member);
  }
  for (const auto& field : kDoubles) {
    if (key == field.key) return given.read(this->*field.member);
  }
  for (const auto& field : kNamed) {
    if (key == field.key) return given.read(field.names(), this->*field.member);
  }
  for (const auto& field : kSwitches) {
    if (key == field.key) return given.read(this->*field.member);
  }
  return false;
}

void CStabilizerParameters::ReadPDLEntry(const CPDLElement& element) {
  for (const auto& field : kIntegers) {
    this->*field.member = element.GetAttribInteger(field.key, this->*field.member);
  }
  for (const auto& field : kDoubles) {
    this->*field.member = element.GetAttribDouble(field.key, this->*field.member);
  }
  for (const auto& field : kNamed) {
    const CIniAssociations& names = field.names();
    int& value = this->*field.member;
    names.ValueBySymbolicName(element.GetAttribString(field.key, names.SymbolicName(value)), value);
  }
  for (const auto& field : kSwitches) {
    this->*field.member = element.GetAttribBool(field.key, this->*field.member);
  }
}

void CStabilizerParameters::WritePDLEntry(CPDLElement parent) const {
  CPDLElement element = parent.MakeNewChild("StabilizerParameters");
  for (const auto& field : kIntegers) element.SetAttribInteger(field.key, this->*field.member);
  for (const auto& field : kDoubles) element.SetAttribDouble(field.key, this->*field.member);
  for (const auto& field : kNamed) {
    element.SetAttribString(field.key, field.names().SymbolicName(this->*field.member));
  }
  for (const auto& field : kSwitches) element.SetAttribBool(field.key, this->*field.member);
}
