#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// True for anything but a folder.
bool DoesFileExist(const std::string& path);
/// Folder part with its trailing separator; empty when there is none.
std::string GetFilePath(const std::string& path);
/// The user's base folders by the XDG base directory rules, without trailing separator. Nothing is
/// created.
std::string ConfigFolder();
std::string StateFolder();
/// Reads a regular file of at most `limit` bytes into `text`. On false `text` stands as it was and
/// `theError` names file and cause.
bool ReadFileWhole(const std::string& path, std::string& text, std::size_t limit);
/// A file that is about to be replaced whole: a temporary file beside `path`, which takes its name
/// when the text is committed. Uncommitted it leaves no trace.
class CFileReplacement {
 public:
  /// Creates the temporary file. Not open, and `theError` names file and cause (its code is the
  /// negative errno), where none can be created, or where `path` is write-protected or something
  /// else than a regular file.
  explicit CFileReplacement(std::string path);
  ~CFileReplacement();
  CFileReplacement(const CFileReplacement&) = delete;
  CFileReplacement& operator=(const CFileReplacement&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }
  /// REQUIRES: isOpen(); once. On false the old file stands as it was and `theError` is set as
  /// above. A file that is there keeps its permissions, a link stays one.
  bool commit(std::string_view text);

 private:
  bool close();

  std::string path_;
  std::string target_;
  std::string temporary_;
  int descriptor_ = -1;
};

/// Writes the whole text under a temporary name beside `path` and renames it. On false nothing is
/// left behind, an old file stands as it was, and `theError` names file and cause. The rules are
/// those of CFileReplacement.
bool WriteFileWhole(const std::string& path, std::string_view text);
