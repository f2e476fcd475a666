#pragma once

#include <memory>
#include <string>

#include "support/IniFile.h"

/// Finds what is kept beside clips: each clip has one desktop settings file,
/// "<clip folder>/.<clip name>.desktop.ini", or, where that folder cannot be written, a file under
/// <XDG state home>/stabilize/desktop named after the clip's whole path.
class CBinManager {
 public:
  /// `clipPath`: the clip's file, or one file name or pattern of its sequence, the
  /// same each time. Of a name above 200 bytes only a part and a hash are used.
  std::string desktopFileName(const std::string& clipPath) const;
  /// The settings, null when the file exists but cannot be used. Close with closeDesktop.
  CIniFile* openDesktop(const std::string& clipPath) const;
  /// Null is ignored. False when saving failed.
  bool closeDesktop(CIniFile* desktop, bool save) const;
};
