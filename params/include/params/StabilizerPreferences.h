#pragma once

#include <string>
#include <vector>

#include "support/IniFile.h"

/// What becomes of the points when mark IN moves. Stored as a number; do not change.
enum EMarkInMove { MARK_IN_MOVE_Points = 1, MARK_IN_MOVE_Clear = 2, MARK_IN_MOVE_Prompt = 3 };

/// How an operator likes to work; nothing here shapes a picture. A plain value without invariants:
/// readers do not clamp. Stored in an INI section under the field names.
class CStabilizerPreferences {
 public:
  bool ShowTrackPoints = true;
  bool ShowWhileRender = true;    ///< kept for its key; nothing looks at it
  bool ClearOnShotChange = true;  ///< a mark IN outside the tracked frames clears the points
  bool MarkOutWarnings = true;    ///< ask before a moved mark OUT costs tracking
  int MarkInMovePreference = MARK_IN_MOVE_Prompt;  ///< EMarkInMove
  /// Points are saved beside their clip by themselves, and never loaded by themselves. Written so,
  /// whatever a file says, and never read.
  static constexpr bool AutoSaveTrackPoints = true;
  static constexpr bool AutoLoadTrackPoints = false;

  bool ReadPreferences(const CIniFile& ini, const std::string& section);
  bool WritePreferences(CIniFile& ini, const std::string& section) const;
  /// Every key that is written, in order.
  static std::vector<std::string> Keys();
  /// Takes a value as a person writes it. False, and nothing changed, when there is no such key or
  /// the text is no value of it.
  bool SetFromText(const std::string& key, const std::string& text);

  friend bool operator==(const CStabilizerPreferences&, const CStabilizerPreferences&) = default;
};
