#pragma once

#include <string>

/// A file under construction: written under a hidden name beside its place, renamed when it is
/// whole, removed otherwise. The hidden name ends with the extension of the final one.
class CTemporaryFile {
 public:
  explicit CTemporaryFile(const std::string& finalPath);
  ~CTemporaryFile();
  CTemporaryFile(const CTemporaryFile&) = delete;
  CTemporaryFile& operator=(const CTemporaryFile&) = delete;

  const std::string& path() const { return path_; }
  /// Gives the file its final name, replacing what stands there. Throws CClipError.
  void commit();

 private:
  std::string finalPath_;
  std::string path_;
  bool committed_ = false;
};
