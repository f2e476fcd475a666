#pragma once

#include <string>

#include "clip/TestShot.h"
#include "session/StabilizeOptions.h"

/// What was asked on the command line.
struct SCommandLine {
  enum class ECommand { none, stabilize, info, testShot, residual, version };
  ECommand command = ECommand::none;
  SStabilizeOptions stabilize;
  STestShotSettings testShot;
  std::string testShotOutput;
  std::string testShotTruth;
  bool testShotOverwrite = false;
  std::string residualReport;
  std::string residualTruth;
  std::string logFile;
  int verbosity = 0;  ///< -1 quiet
};

/// Exit statuses; scripts rely on them.
enum EExitStatus { EXIT_DONE = 0, EXIT_FAILED = 1, EXIT_USAGE = 2, EXIT_INTERRUPTED = 130 };

/// Reads the arguments. Returns false when the program shall end with `status`: help was shown, or
/// a wrong option was named on standard error.
bool ParseCommandLine(int argc, char** argv, SCommandLine& commandLine, int& status);
