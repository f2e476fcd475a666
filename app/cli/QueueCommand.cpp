#include <algorithm>
#include <cstdio>

#include "Commands.h"
#include "ShotOptions.h"
#include "session/QueueRun.h"
#include "session/ShotReport.h"

namespace {

struct SRequest {
  std::string list;
  SStabilizeOptions shot;
  SQueueSettings settings;
  int number = 0;
  bool json = false;
};

int addShot(const SRequest& request, const SProgram& program) {
  const CProcessListFile file(request.list);
  const CConsoleObserver console(program);
  // Before the work: a file that is no list will not take the shot.
  if (file.exists()) file.read();
  const SStabilizeOptions shot = CaptureShot(request.shot, console.observer());
  if (console.observer().isInterrupted()) throw CInterrupted();
  int number = 0;
  file.change([&](CProcessList& list) { number = list.add(shot); }, true);
  if (!program.isQuiet())
    std::printf("entry %d: %s -> %s, frames %d to %d, %zu points\n", number, shot.input.c_str(),
                shot.output.c_str(), *shot.in, *shot.out - 1, shot.points.size());
  return EXIT_DONE;
}

std::string successText(const SStabilizeResult& result, bool whole) {
  const std::string text = SummaryAsText(result);
  if (whole || !result.verification) return whole ? text : text.substr(0, text.find('\n'));
  char steadiness[80];
  std::snprintf(steadiness, sizeof steadiness, ", weave %.4f px, jump %.4f px",
                result.verification->after.weave, result.verification->after.jump);
  return text.substr(0, text.find('\n')) + steadiness;
}

void tell(const SShotOutcome& outcome, const SProgram& program) {
  const SQueuedShot& shot = outcome.shot;
  if (shot.state == EShotState::failed)
    Complain("entry " + std::to_string(shot.number) + ": failed: " + shot.options.output + ": " +
             shot.message);
  else if (!program.isQuiet())
    std::printf("entry %d: done: %s: %s\n", shot.number, Printable(shot.options.output).c_str(),
                successText(*outcome.result, program.verbosity > 0).c_str());
  std::fflush(stdout);  // the order of both streams in a log that takes both
}

int runShots(const SRequest& request, const SProgram& program) {
  const CProcessListFile file(request.list);
  file.read();
  const CConsoleObserver console(program);
  CQueueRun(file, request.settings, console.observer()).run([&program](const SShotOutcome& o) {
    tell(o, program);
  });
  const CProcessList list = file.read();
  const auto count = [&list](EShotState state) {
    return std::count_if(list.shots().begin(), list.shots().end(),
                         [state](const SQueuedShot& shot) { return shot.state == state; });
  };
  const std::ptrdiff_t done = count(EShotState::done);
  const std::ptrdiff_t failed = count(EShotState::failed);
  if (!program.isQuiet())
    std::printf("%s: %td done, %td failed, %td left\n", request.list.c_str(), done, failed,
                std::ssize(list.shots()) - done - failed);
  return failed > 0 ? EXIT_FAILED : EXIT_DONE;
}

int listShots(const SRequest& request) {
  const CProcessList list = CProcessListFile(request.list).read();
  if (request.json) {
    std::fputs(ToJson(list).c_str(), stdout);
    return EXIT_DONE;
  }
  std::printf("%6s  %-11s  %15s  %s\n", "number", "state", "frames", "shot");
  for (const SQueuedShot& shot : list.shots()) {
    const std::string frames =
        std::to_string(*shot.options.in) + "-" + std::to_string(*shot.options.out - 1);
    std::printf("%6d  %-11s  %15s  %s -> %s\n", shot.number, ToText(shot.state).c_str(),
                frames.c_str(), Printable(shot.options.input).c_str(),
                Printable(shot.options.output).c_str());
    if (!shot.message.empty()) std::printf("%38s%s\n", "", Printable(shot.message).c_str());
  }
  return EXIT_DONE;
}

/// Changes an entry that nobody is running.
int changeShot(const SRequest& request,
               const std::function<void(CProcessList&, SQueuedShot&)>& change) {
  const CProcessListFile file(request.list);
  file.change([&](CProcessList& list) {
    SQueuedShot* shot = list.find(request.number);
    const std::string name = "entry " + std::to_string(request.number);
    if (!shot) throw CProcessListError("there is no " + name);
    if (shot->state == EShotState::running && file.isBeingRun())
      throw CProcessListError(name + " is being run");
    change(list, *shot);
  });
  return EXIT_DONE;
}

int removeShot(const SRequest& request) {
  return changeShot(request,
                    [&](CProcessList& list, SQueuedShot&) { list.remove(request.number); });
}

int resetShot(const SRequest& request) {
  return changeShot(request, [](CProcessList&, SQueuedShot& shot) { LetWaitAgain(shot); });
}

using Request = std::shared_ptr<SRequest>;

CLI::App* addListCommand(CLI::App& queue, const Request& request, const char* name,
                         const char* description) {
  CLI::App* command = queue.add_subcommand(name, description);
  command->add_option("LIST", request->list, "The process list, LIST.pdl")->required();
  return command;
}

void addAdd(CLI::App& queue, const Request& request, SProgram& program) {
  CLI::App* add = addListCommand(queue, request, "add",
                                 "Capture a shot's settings as a new entry; makes the list if "
                                 "there is none");
  AddInput(*add, request->shot.input)->required();
  AddOutput(*add, request->shot)->required();
  AddPointOptions(*add, request->shot);
  AddMotionOptions(*add, request->shot);
  AddMattingOption(*add, request->shot);
  AddResultOptions(*add, request->shot);
  AddThreadsOption(*add, request->shot.threads);
  AddQuietFlag(*add, program);
  add->callback([request, &program] {
    program.command = [request, &program] { return addShot(*request, program); };
  });
}

void addRun(CLI::App& queue, const Request& request, SProgram& program) {
  CLI::App* run = addListCommand(
      queue, request, "run", "Run what waits or was interrupted; status 1 if an entry has failed");
  run->add_flag("--retry-failed", request->settings.retryFailed, "Run entries that failed again");
  AddThreadsOption(*run, request->settings.threads);
  AddCacheOption(*run, request->settings.cacheMemory);
  AddVerboseFlag(*run, program);
  AddQuietFlag(*run, program);
  run->callback([request, &program] {
    program.command = [request, &program] { return runShots(*request, program); };
  });
}

void addEdit(CLI::App& queue, const Request& request, SProgram& program, const char* name,
             const char* description, int (*act)(const SRequest&)) {
  CLI::App* command = addListCommand(queue, request, name, description);
  command->add_option("NUMBER", request->number, "The entry's number")->required();
  command->callback(
      [request, &program, act] { program.command = [request, act] { return act(*request); }; });
}

}  // namespace

void AddQueueCommand(CLI::App& app, SProgram& program) {
  const auto request = std::make_shared<SRequest>();
  CLI::App* queue = app.add_subcommand("queue", "Collect shots in a process list, and run them");
  queue->require_subcommand(1);
  addAdd(*queue, request, program);
  addRun(*queue, request, program);
  CLI::App* list = addListCommand(*queue, request, "list", "Show the entries and their states");
  list->add_flag("--json", request->json, "As JSON");
  list->callback(
      [request, &program] { program.command = [request] { return listShots(*request); }; });
  addEdit(*queue, request, program, "remove", "Take an entry out of the list", removeShot);
  addEdit(*queue, request, program, "reset", "Let an entry wait again", resetShot);
}
