#include <algorithm>
#include <cstdio>

#include "Commands.h"
#include "ShotOptions.h"
#include "session/PluginLibrary.h"
#include "session/ResultFiles.h"
#include "session/ShotReport.h"
#include "support/ErrorReport.h"
#include "support/Kernels.h"

namespace {

struct SRequest {
  SStabilizeOptions options;
  std::string log;
  bool version = false;
};

int showVersions() {
  std::printf("stabilize %s\n", STAB_VERSION);
  const CPluginLibrary plugin(CPluginLibrary::find("stabilize.so"));
  std::printf("plug-in %s, %s\n%s\n", plugin.version().c_str(), plugin.path().c_str(),
              plugin.legalText().c_str());
  const SKernel* const kernel = TheKernel();
  if (!kernel) throw CUsageError(theError.getMessage());
  std::printf("kernel %s (of those here:", kernel->name);
  for (const SKernel& other : AllKernels())
    if (other.usable()) std::printf(" %s", other.name);
  std::printf("; STABILIZE_KERNEL chooses)\n");
  return EXIT_DONE;
}

int stabilize(const SRequest& request, const SProgram& program) {
  const SStabilizeOptions& options = request.options;
  CheckResultFiles(options, request.log);
  if (!request.log.empty()) BeginLog(request.log);
  const CConsoleObserver console(program);
  LogLine("stabilize " STAB_VERSION ": " + options.input + " -> " + options.output);
  const SStabilizeResult result = CStabilizeJob(options, console.observer()).run();
  const std::string summary = SummaryAsText(result);
  LogLine(summary);
  if (!program.isQuiet()) std::printf("%s\n", summary.c_str());
  const std::string unsteady = TooUnsteady(result);
  if (unsteady.empty()) return EXIT_DONE;
  Complain(unsteady);
  return EXIT_FAILED;
}

}  // namespace

void AddStabilizeCommand(CLI::App& app, SProgram& program) {
  const auto request = std::make_shared<SRequest>();
  SStabilizeOptions& options = request->options;
  CLI::Option* input = AddInput(app, options.input);
  CLI::Option* output = AddOutput(app, options);
  app.add_flag("--version", request->version, "Show versions and end");
  AddPointOptions(app, options);
  AddMotionOptions(app, options);
  AddMattingOption(app, options);
  AddResultOptions(app, options);
  AddThreadsOption(app, options.threads);
  AddCacheOption(app, options.cacheMemory);
  CLI::Option* log = app.add_option("--log", request->log, "Write a log")->type_name("FILE");
  AddVerboseFlag(app, program);
  AddQuietFlag(app, program);
  app.final_callback([request, input, output, log, &program] {
    if (request->version) {
      program.command = showVersions;
    } else if (!program.command) {
      if (input->count() == 0) throw CLI::RequiredError("INPUT");
      if (output->count() == 0) throw CLI::RequiredError("--output");
      program.command = [request, &program] { return stabilize(*request, program); };
    } else if (log->count() > 0) {
      throw CLI::ValidationError("--log",
                                 "goes with a shot that is stabilised, not with a command");
    }
  });
}
