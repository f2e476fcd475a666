#include <atomic>
#include <csignal>
#include <cstdio>

#include "CommandLine.h"
#include "clip/ClipWriter.h"
#include "session/StabilizeJob.h"
#include "support/Trace.h"

namespace {

std::atomic<bool> interrupted{false};

void onInterrupt(int signal) {
  interrupted = true;
  std::signal(signal, SIG_DFL);  // a second one ends the program at once
}

void installTrace(const SProgram& program) {
  ZRNQTraceLevel = program.verbosity > 0 ? program.verbosity : -1;
  SetTraceSink([](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); });
}

int complain(const std::string& what, int status) {
  Complain(what);
  return status;
}

int run(const SProgram& program) {
  try {
    return program.command();
  } catch (const CUsageError& error) {
    return complain(error.what(), EXIT_USAGE);
  } catch (const CClipExists& error) {
    return complain(std::string(error.what()) + "; --overwrite replaces it", EXIT_FAILED);
  } catch (const CInterrupted& error) {
    return complain(error.what(), EXIT_INTERRUPTED);
  } catch (const CJobError& error) {
    return complain(error.what() + (" (code " + std::to_string(error.code) + ")"), EXIT_FAILED);
  } catch (const std::exception& error) {
    return complain(error.what(), EXIT_FAILED);
  }
}

/// What was printed has arrived, or the status says that it has not.
int finishOutput(int status) {
  const bool failed = std::fflush(stdout) != 0 || std::ferror(stdout) != 0;
  return failed && status == EXIT_DONE ? complain("standard output cannot be written", EXIT_FAILED)
                                       : status;
}

}  // namespace

int main(int argc, char** argv) {
  SProgram program;
  program.interrupted = &interrupted;
  int status = EXIT_DONE;
  if (!ParseCommandLine(argc, argv, program, status)) return finishOutput(status);
  std::signal(SIGINT, onInterrupt);
  std::signal(SIGTERM, onInterrupt);
  std::signal(SIGHUP, onInterrupt);
  std::signal(SIGPIPE, SIG_IGN);  // who stops reading our progress does not stop the work
  std::signal(SIGXFSZ, SIG_IGN);  // a full quota is an error of the write that meets it
  installTrace(program);
  status = finishOutput(run(program));
  SetLogSink({});
  SetTraceSink({});
  return status;
}
