#pragma once

#include <atomic>
#include <functional>
#include <string>

/// Exit statuses; scripts rely on them.
enum EExitStatus { EXIT_DONE = 0, EXIT_FAILED = 1, EXIT_USAGE = 2, EXIT_INTERRUPTED = 130 };

/// What the program was asked to do, and what its commands need to do it.
struct SProgram {
  /// The command that was chosen, with its options; returns the exit status, or throws one of the
  /// session's errors.
  std::function<int()> command;
  int verbosity = 0;                         ///< -1 quiet
  std::atomic<bool>* interrupted = nullptr;  ///< becomes true when the command shall stop

  bool isQuiet() const { return verbosity < 0; }
};

/// Texts of files that anybody may have made are shown on the terminal, not obeyed by it: control
/// characters become "?". Line breaks stay.
std::string Printable(std::string text);

/// Begins the log that the two below write to, in place of what stands there. The caller has made
/// sure that nothing is lost by that. Throws CUsageError where it cannot be written.
void BeginLog(const std::string& path);

/// A line of what the program did, for --log alone. THREAD: any.
void LogLine(const std::string& text);

/// The one way to tell an error: on standard error behind the program's name, and in the log.
/// THREAD: any.
void Complain(const std::string& what);
