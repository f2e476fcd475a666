#pragma once

#include <string>

// Locks between processes, and between objects of one process. Advisory: they keep out only those
// who ask. They end with the object, and with the process whatever ends it.

/// Held while a file is read, changed and written back: whoever else changes a file of the same
/// folder so waits. Short; leaves nothing behind.
class CFolderLock {
 public:
  /// Waits for its turn. `file`: any path in the folder.
  explicit CFolderLock(const std::string& file);
  ~CFolderLock();
  CFolderLock(const CFolderLock&) = delete;
  CFolderLock& operator=(const CFolderLock&) = delete;
  /// False: `theError` names the folder and the cause.
  bool isHeld() const { return held_; }

 private:
  int descriptor_ = -1;
  bool held_ = false;
};

/// Held by the one who works through a file for long. The file itself stays free to be read and
/// replaced: what is locked is a hidden file beside it, which goes with the claim. (One that a
/// killed process left is taken over by the next claim.)
class CFileClaim {
 public:
  /// Does not wait.
  explicit CFileClaim(const std::string& file);
  ~CFileClaim();
  CFileClaim(const CFileClaim&) = delete;
  CFileClaim& operator=(const CFileClaim&) = delete;
  /// False: `theError` names the file and the cause; its code is -EAGAIN when another holds it.
  bool isHeld() const { return descriptor_ >= 0; }
  /// Somebody else's, or this process's: is there a claim? Takes none itself.
  static bool isClaimed(const std::string& file);

 private:
  std::string marker_;
  int descriptor_ = -1;
};
