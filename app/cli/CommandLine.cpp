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
  } catch (const CLI::Success& help) {
    app.exit(help);
    status = EXIT_DONE;
    return false;
  } catch (const CLI::ParseError& error) {
    Complain(error.what() + std::string("\nRun with --help for more information."));
    status = EXIT_USAGE;
    return false;
  }
  return true;
}
