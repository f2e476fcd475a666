#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "session/StabilizeOptions.h"

/// A process list that cannot be read, changed or written as asked, or is none. The message names
/// the file, and the place in it.
class CProcessListError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What became of a queued shot. The names are stored; do not change.
enum class EShotState { waiting, running, done, failed, interrupted };
std::string ToText(EShotState state);

/// One shot of a list: the host's part of what was asked for, and the tool's part as the tool
/// captured it.
struct SQueuedShot {
  int number = 0;  ///< its name in the list; stays, and is given once
  EShotState state = EShotState::waiting;
  /// Input, output and other files with absolute paths, marks, overwrite, what is said about the
  /// result, and the tool's entry; the rest is unset.
  SStabilizeOptions options;
  std::string message;  ///< why it failed the last time
  /// UTC, when its output got its first frame; empty: it never did, or is done. From then on
  /// what stands at the output is its own, and may be replaced by it.
  std::string beganWriting;
};

/// The shot waits again, whatever became of it. What it wrote itself it may write again.
void LetWaitAgain(SQueuedShot& shot);

/// Shots in the order in which they are run.
///
/// Stored as XML, names and order of attributes as written by `toText` (do not change): a
/// `ProcessList` with Version 1 and the Next number, in it an `Entry` for each shot with the host's
/// part as attributes and the tool's entry as its child.
class CProcessList {
 public:
  /// Throws CProcessListError naming the place for a text that is not a list: other root or
  /// version, broken XML, an entry without its attributes or its child, an attribute that does not
  /// parse, an unknown state, a number twice. What the entries ask for is not judged here.
  static CProcessList FromText(const std::string& text);
  std::string toText() const;

  const std::vector<SQueuedShot>& shots() const { return shots_; }
  /// Appends a waiting shot; its number. Throws CProcessListError when another shot, not done, has
  /// frames of this one in the same output, unless this one may overwrite.
  int add(const SStabilizeOptions& options);
  /// Null for a number that is not there. Valid until the list changes.
  SQueuedShot* find(int number);
  void remove(int number);

 private:
  int next_ = 1;
  std::vector<SQueuedShot> shots_;
};

/// The list for scripts: an array of objects.
std::string ToJson(const CProcessList& list);
