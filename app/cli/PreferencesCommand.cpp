#include <cstdio>

#include "Commands.h"
#include "session/Preferences.h"

namespace {

struct SRequest {
  std::vector<std::string> assignments;
  bool reset = false;
};

int showPreferences(const SRequest& request) {
  CPreferences preferences(CPreferences::defaultPath());
  if (request.reset) preferences.reset();
  for (const std::string& assignment : request.assignments) preferences.set(assignment);
  preferences.save();
  std::printf("%s\n", preferences.path().c_str());
  for (const CPreferences::SSection& section : preferences.settings()) {
    std::printf("[%s]\n", section.name.c_str());
    for (const auto& [key, value] : section.settings)
      std::printf("%s = %s\n", key.c_str(), value.c_str());
  }
  return EXIT_DONE;
}

}  // namespace

void AddPreferencesCommand(CLI::App& app, SProgram& program) {
  const auto request = std::make_shared<SRequest>();
  CLI::App* command =
      app.add_subcommand("preferences", "Show or change what the tool remembers for an operator");
  command
      ->add_option("--set", request->assignments,
                   "Change a preference or a parameter; may be repeated")
      ->type_name("KEY=VALUE")
      ->allow_extra_args(false);
  command->add_flag("--reset", request->reset, "Go back to the defaults (before any --set)");
  command->callback(
      [request, &program] { program.command = [request] { return showPreferences(*request); }; });
}
