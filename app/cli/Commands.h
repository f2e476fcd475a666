#pragma once

#include <CLI/CLI.hpp>
#include <memory>

#include "ConsoleMonitor.h"
#include "Program.h"
#include "session/StabilizeJob.h"

/// Each adds one command with its options to the command line. When its words are met, `program`'s
/// command becomes it. `program` outlives the parser.

/// The program without a command's name: stabilises a shot.
void AddStabilizeCommand(CLI::App& app, SProgram& program);
void AddPointsCommand(CLI::App& app, SProgram& program);
void AddInfoCommand(CLI::App& app, SProgram& program);
void AddTestShotCommand(CLI::App& app, SProgram& program);
void AddResidualCommand(CLI::App& app, SProgram& program);
void AddPreferencesCommand(CLI::App& app, SProgram& program);
void AddQueueCommand(CLI::App& app, SProgram& program);

/// -q for a command that has progress to show.
void AddQuietFlag(CLI::App& command, SProgram& program);
/// -v for a command that has details to tell.
void AddVerboseFlag(CLI::App& command, SProgram& program);

/// Progress and remarks of a command's work on the console.
class CConsoleObserver {
 public:
  explicit CConsoleObserver(const SProgram& program);
  const SJobObserver& observer() const { return observer_; }

 private:
  CConsoleMonitor monitor_;
  SJobObserver observer_;
};
