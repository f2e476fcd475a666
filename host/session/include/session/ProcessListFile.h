#pragma once

#include <functional>
#include <string>

#include "session/ProcessList.h"

/// A process list on disk. Several processes may change one at once: each change is read, made and
/// written under the lock of its folder, and the file is replaced whole. A file that is no list is
/// never touched. THREAD: any.
class CProcessListFile {
 public:
  explicit CProcessListFile(const std::string& path);
  /// As given.
  const std::string& path() const { return path_; }

  bool exists() const;
  /// Shots whose runner is gone read as interrupted. Throws CProcessListError naming the file: not
  /// there, no regular file, larger than 16 MiB (some thousand shots), not a list.
  CProcessList read() const;
  /// Reads, lets `edit` change, writes. What `edit` throws leaves the file as it was;
  /// CProcessListErrors get the file's name. `create`: a list that is not there begins empty.
  void change(const std::function<void(CProcessList&)>& edit, bool create = false) const;

  /// Somebody runs the list.
  bool isBeingRun() const;
  /// The file itself, where `path` is a link: what locks and claims are about.
  const std::string& realPath() const { return real_; }

 private:
  CProcessList load(bool create) const;

  std::string path_;
  std::string real_;
};
