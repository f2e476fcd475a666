#include <cstdio>

#include "Commands.h"
#include "session/TruthComparison.h"

namespace {

struct SRequest {
  std::string report;
  std::string truth;
};

int showResidual(const SRequest& request) {
  std::printf("%s\n", ToText(CompareWithTruth(request.report, request.truth)).c_str());
  return EXIT_DONE;
}

}  // namespace

void AddResidualCommand(CLI::App& app, SProgram& program) {
  const auto request = std::make_shared<SRequest>();
  CLI::App* command = app.add_subcommand(
      "residual", "Compare the report of a stabilised test shot with the shot's truth");
  command->add_option("REPORT", request->report, "Written by --report")->required();
  command->add_option("TRUTH", request->truth, "Written by test-shot --truth")->required();
  command->callback(
      [request, &program] { program.command = [request] { return showResidual(*request); }; });
}
