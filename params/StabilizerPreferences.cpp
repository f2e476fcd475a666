#include "params/StabilizerPreferences.h"

#include <cstdint>
#include <utility>

#include "SettingText.h"

namespace {

using P = CStabilizerPreferences;

/// A switch without a member is a constant.
struct SSwitch {
  const char* key;
  bool P::*member;
  bool constant = false;
};
// The keys are stored; do not change. Writing follows this order.
constexpr SSwitch kSwitches[] = {{"ShowTrackPoints", &P::ShowTrackPoints},
                                 {"ShowWhileRender", &P::ShowWhileRender},
                                 {"ClearOnShotChange", &P::ClearOnShotChange},
                                 {"AutoSaveTrackPoints", nullptr, P::AutoSaveTrackPoints},
                                 {"AutoLoadTrackPoints", nullptr, P::AutoLoadTrackPoints},
                                 {"MarkOutWarnings", &P::MarkOutWarnings}};
constexpr const char* kMarkInMove = "MarkInMovePreference";

}  // namespace

bool CStabilizerPreferences::ReadPreferences(const CIniFile& ini, const std::string& section) {
  for (const auto& [key, member, constant] : kSwitches) {
    if (member) this->*member = ini.ReadBool(section, key, this->*member);
  }
  const std::int64_t stored = ini.ReadInteger(section, kMarkInMove, MarkInMovePreference);
  if (std::in_range<int>(stored)) MarkInMovePreference = static_cast<int>(stored);
  return true;
}

bool CStabilizerPreferences::WritePreferences(CIniFile& ini, const std::string& section) const {
  for (const auto& [key, member, constant] : kSwitches) {
    ini.WriteBool(section, key, member ? this->*member : constant);
  }
  ini.WriteInteger(section, kMarkInMove, MarkInMovePreference);
  return true;
}

std::vector<std::string> CStabilizerPreferences::Keys() {
  std::vector<std::string> keys;
  for (const auto& field : kSwitches) keys.emplace_back(field.key);
  keys.emplace_back(kMarkInMove);
  return keys;
}

bool CStabilizerPreferences::SetFromText(const std::string& key, const std::string& text) {
  const CSettingText given(text);
  for (const auto& [name, member, constant] : kSwitches) {
    if (key != name) continue;
    bool value = false;
    if (!given.read(value) || (!member && value != constant)) return false;
    if (member) this->*member = value;
    return true;
  }
  int choice = 0;
  if (key != kMarkInMove || !given.read(choice)) return false;
  if (choice < MARK_IN_MOVE_Points || choice > MARK_IN_MOVE_Prompt) return false;
  MarkInMovePreference = choice;
  return true;
}
