#pragma once

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>

#include "ToolObj/ProgressMonitor.h"

/// A shot that could not be stabilised. `code` is the tool's own where it gave one, else -1.
class CJobError : public std::runtime_error {
 public:
  CJobError(int code, const std::string& text) : std::runtime_error(text), code(code) {}
  const int code;
};

/// The operator stopped the job.
class CInterrupted : public std::runtime_error {
 public:
  CInterrupted() : std::runtime_error("interrupted") {}
};

/// Whom a job tells how it goes. `monitor` gets every stage's progress; `note` single remarks.
struct SJobObserver {
  IToolProgressMonitor* monitor = nullptr;  ///< any thread; null: nobody
  std::function<void(const std::string&)> note = [](const std::string&) {};
  /// The output is about to get its first frame. On a writing thread; what it throws fails the job.
  std::function<void()> beginsToWrite = [] {};
  const std::atomic<bool>* interrupted = nullptr;  ///< becomes true when the job shall stop

  bool isInterrupted() const { return interrupted && *interrupted; }
};
