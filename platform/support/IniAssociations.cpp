#include <algorithm>

#include "support/IniFile.h"

namespace {

/// "MISSING_DATA_Previous_Frame" under the prefix "MISSING_DATA" is shown as "Previous Frame".
std::string shownName(const SIniAssociation& row, const std::string& prefix) {
  if (row.displayName != nullptr) return row.displayName;
  std::string name = row.symbolicName;
  if (name.starts_with(prefix)) name.erase(0, prefix.size());
  name.erase(0, name.find_first_not_of('_'));
  std::replace(name.begin(), name.end(), '_', ' ');
  return name;
}

}  // namespace

CIniAssociations::CIniAssociations(const SIniAssociation* rows, std::string prefix,
                                   int defaultValue)
    : prefix_(std::move(prefix)), defaultValue_(defaultValue) {
  while (rows->symbolicName != nullptr && rows->symbolicName[0] != '\0') rows_.push_back(*rows++);
}

bool CIniAssociations::ValueBySymbolicName(const std::string& name, int& value) const {
  const auto row = std::find_if(rows_.begin(), rows_.end(), [&name](const SIniAssociation& entry) {
    return name == entry.symbolicName;
  });
  if (row == rows_.end()) return false;
  value = row->value;
  return true;
}

bool CIniAssociations::ValueByDisplayName(const std::string& name, int& value) const {
  const auto row = std::find_if(
      rows_.begin(), rows_.end(),
      [&name, this](const SIniAssociation& entry) { return name == shownName(entry, prefix_); });
  if (row == rows_.end()) return false;
  value = row->value;
  return true;
}

std::string CIniAssociations::SymbolicName(int value) const {
  for (const SIniAssociation& row : rows_) {
    if (row.value == value) return row.symbolicName;
  }
  return {};
}

std::string CIniAssociations::DisplayName(int value) const {
  for (const SIniAssociation& row : rows_) {
    if (row.value == value) return shownName(row, prefix_);
  }
  return {};
}
