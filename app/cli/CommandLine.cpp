#include "CommandLine.h"

#include "Commands.h"

bool ParseCommandLine(int argc, char** argv, SProgram& program, int& status) {
  CLI::App app{
      "Stabilises film scans and video on tracked points, in 16 bits.\n"
      "  stabilize INPUT -o OUTPUT [OPTIONS]",
      "stabilize"};
  AddStabilizeCommand(app, program);
  AddPointsCommand(app, program);
  AddInfoCommand(app, program);
  AddTestShotCommand(app, program);
  AddResidualCommand(app, program);
  AddPreferencesCommand(app, program);
  AddQueueCommand(app, program);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    status = app.exit(error) == 0 ? EXIT_DONE : EXIT_USAGE;
    return false;
  }
  return true;
}
