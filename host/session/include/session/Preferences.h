#pragma once

#include <memory>
#include <string>
#include <vector>

class CIniFile;

/// What the tool remembers between sessions with an operator, seen from a host: its settings file,
/// in which only what was set stands. Batch runs neither read nor write it.
/// THREAD: one at a time.
class CPreferences {
 public:
  struct SSetting {
    std::string key;
    std::string value;
  };
  struct SSection {
    std::string name;
    std::vector<SSetting> settings;
  };

  /// Throws CJobError, which names the file, when it is there and is no settings file; such a file
  /// is never written.
  explicit CPreferences(std::string path);
  ~CPreferences();
  CPreferences(const CPreferences&) = delete;
  CPreferences& operator=(const CPreferences&) = delete;
  /// The settings file of the tool "Stabilize" for this user.
  static std::string defaultPath();

  const std::string& path() const { return path_; }
  /// Every key with the value that the tool would work with: the operator's preferences, then the
  /// parameters.
  std::vector<SSection> settings() const;
  /// Takes "KEY=VALUE". Throws CUsageError, which names the key, when there is no such key or the
  /// text is no value of it.
  void set(const std::string& assignment);
  /// Takes back whatever was set: all keys have their defaults then.
  void reset();
  /// Writes what was changed; nothing is written before. Throws CJobError, which names the file.
  void save();

 private:
  std::string path_;
  std::unique_ptr<CIniFile> file_;
};
