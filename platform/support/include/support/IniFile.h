#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// One row of a name table: symbolic name (stored in files; do not change), display name, value.
/// Without a display name (null) the symbolic name is shown, its prefix taken off and its
/// underscores as blanks.
struct SIniAssociation {
  const char* symbolicName;
  const char* displayName;
  int value;
};

/// Table between enumerated values and the names that are stored for them. Built from an array that
/// ends with an empty symbolic name. The terminator's value is the default that a lookup of an
/// unknown name gives.
class CIniAssociations {
 public:
  CIniAssociations(const SIniAssociation* rows, std::string prefix, int defaultValue);

  /// False leaves `value` as it is.
  bool ValueBySymbolicName(const std::string& name, int& value) const;
  bool ValueByDisplayName(const std::string& name, int& value) const;
  /// Empty when no row has the value.
  std::string SymbolicName(int value) const;
  std::string DisplayName(int value) const;
  const std::vector<SIniAssociation>& Rows() const { return rows_; }
  int DefaultValue() const { return defaultValue_; }

 private:
  std::vector<SIniAssociation> rows_;
  std::string prefix_;
  int defaultValue_;
};

/// Sections of key = value, the same text in every locale. Reads give `fallback` for what is
/// missing or does not parse (an infinity or "nan" is no number here). Any text is a value; names
/// of sections and keys stand as they are and hold no line break, "=" or "]". Comments survive.
/// Writes stay in memory until Save, which writes a temporary file and renames it. THREAD: one at a
/// time.
class CIniFile {
 public:
  /// Reads `path` when it exists. `good` is false, and `theError` names the file, when it cannot be
  /// read, is larger than 16 megabytes or holds a line that no INI file has; such a file is never
  /// overwritten.
  explicit CIniFile(std::string path);
  ~CIniFile();
  CIniFile(const CIniFile&) = delete;
  CIniFile& operator=(const CIniFile&) = delete;

  bool good() const { return good_; }
  const std::string& path() const { return path_; }

  bool HasSection(const std::string& section) const;
  std::int64_t ReadInteger(const std::string& section, const std::string& key,
                           std::int64_t fallback) const;
  double ReadDouble(const std::string& section, const std::string& key, double fallback) const;
  bool ReadBool(const std::string& section, const std::string& key, bool fallback) const;
  std::string ReadString(const std::string& section, const std::string& key,
                         const std::string& fallback) const;
  /// A value of names parted by commas; blanks around a name do not count, nor do empty names.
  std::vector<std::string> ReadStringList(const std::string& section, const std::string& key) const;
  int ReadAssociation(const CIniAssociations& table, const std::string& section,
                      const std::string& key, int fallback) const;

  void WriteInteger(const std::string& section, const std::string& key, std::int64_t value);
  /// Written so that it reads back to the same double.
  void WriteDouble(const std::string& section, const std::string& key, double value);
  void WriteBool(const std::string& section, const std::string& key, bool value);
  void WriteString(const std::string& section, const std::string& key, const std::string& value);
  /// A value that the table lacks is written as an empty name, which reads as the fallback.
  void WriteAssociation(const CIniAssociations& table, const std::string& section,
                        const std::string& key, int value);
  void EraseSection(const std::string& section);

  /// True when nothing had changed or the file was written whole; missing folders are made. Sets
  /// `theError` on false.
  bool Save();

 private:
  struct SImpl;
  std::string path_;
  bool good_ = true;
  bool changed_ = false;
  std::unique_ptr<SImpl> impl_;
};

/// A CIniFile that its caller gives back with DeleteIniFile; null when the file is not usable.
CIniFile* CreateIniFile(const std::string& path);
/// Saves when asked to, then destroys. Null is ignored. Returns false when saving failed.
bool DeleteIniFile(CIniFile* file, bool save);
/// The settings file of a tool: <XDG config home>/stabilize/<name>.ini. Nothing is created.
std::string IniFileNameFor(const std::string& name);
