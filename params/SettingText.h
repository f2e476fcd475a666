#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "support/IniFile.h"

/// A text that a person gives for a setting, read as settings files read it. A reader of a file
/// takes its fallback for what it cannot read; a person is to be told. So every value is read twice
/// with different fallbacks, and is readable when they do not show.
class CSettingText {
 public:
  explicit CSettingText(const std::string& text) : ini_("") {
    ini_.WriteString(SECTION, KEY, text);
  }

  bool read(int& value) const {
    const std::int64_t number = ini_.ReadInteger(SECTION, KEY, 0);
    if (number != ini_.ReadInteger(SECTION, KEY, 1) || !std::in_range<int>(number)) return false;
    value = static_cast<int>(number);
    return true;
  }
  bool read(double& value) const {
    const double number = ini_.ReadDouble(SECTION, KEY, 0.0);
    if (number != ini_.ReadDouble(SECTION, KEY, 1.0)) return false;
    value = number;
    return true;
  }
  bool read(bool& value) const {
    const bool flag = ini_.ReadBool(SECTION, KEY, false);
    if (flag != ini_.ReadBool(SECTION, KEY, true)) return false;
    value = flag;
    return true;
  }
  /// A symbolic name of the table.
  bool read(const CIniAssociations& names, int& value) const {
    return names.ValueBySymbolicName(ini_.ReadString(SECTION, KEY, {}), value);
  }

 private:
  static constexpr const char* SECTION = "Setting";
  static constexpr const char* KEY = "Text";
  CIniFile ini_;
};
