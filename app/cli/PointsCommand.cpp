#include <cstdio>

#include "Commands.h"
#include "ShotOptions.h"
#include "session/PointsJob.h"
#include "session/ShotReport.h"

namespace {

struct SRequest {
  SStabilizeOptions options;
  bool track = false;
};

int savePoints(const SRequest& request, const SProgram& program) {
  const CConsoleObserver console(program);
  const SStabilizeResult result =
      SavePointsOfShot(request.options, request.track, console.observer());
  if (!program.isQuiet()) std::printf("%s\n", PointsSummaryAsText(result).c_str());
  return EXIT_DONE;
}

}  // namespace

void AddPointsCommand(CLI::App& app, SProgram& program) {
  const auto request = std::make_shared<SRequest>();
  SStabilizeOptions& options = request->options;
  CLI::App* command = app.add_subcommand("points", "Find or place the points of a shot, save them");
  AddInput(*command, options.input)->required();
  command
      ->add_option("-o,--output", options.savePoints,
                   "Where the points go: .points, or \"frame x y\" lines (.txt)")
      ->type_name("FILE")
      ->required();
  command->add_flag("--overwrite", options.overwrite, "Replace a file that exists");
  command->add_flag("--track", request->track, "Track them over the shot, too");
  AddPointOptions(*command, options);
  AddMattingOption(*command, options);
  AddThreadsOption(*command, options.threads);
  AddQuietFlag(*command, program);
  command->callback([request, &program] {
    program.command = [request, &program] { return savePoints(*request, program); };
  });
}
