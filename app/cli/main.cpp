#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <fstream>

#include "CommandLine.h"
#include "ConsoleMonitor.h"
#include "clip/ClipReader.h"
#include "clip/ClipWriter.h"
#include "session/ClipCopy.h"
#include "session/PluginLibrary.h"
#include "session/ShotReport.h"
#include "session/StabilizeJob.h"
#include "session/TruthComparison.h"
#include "support/ErrorReport.h"
#include "support/Files.h"
#include "support/Trace.h"

namespace {

std::atomic<bool> interrupted{false};

void onInterrupt(int signal) {
  interrupted = true;
  std::signal(signal, SIG_DFL);  // a second one ends the program at once
}

void installLog(const SCommandLine& commandLine, std::ofstream& log) {
  if (!commandLine.logFile.empty()) {
    log.open(commandLine.logFile);
    if (!log) throw CUsageError("--log " + commandLine.logFile + " cannot be written");
    ZRNQLogLevel = 2;
    SetLogSink([&log](const std::string& line) { log << line << std::endl; });
  }
  ZRNQTraceLevel = commandLine.verbosity > 0 ? commandLine.verbosity : -1;
  SetTraceSink([](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); });
}

int stabilize(const SCommandLine& commandLine) {
  CConsoleMonitor monitor(commandLine.verbosity < 0, isatty(STDERR_FILENO) != 0);
  SJobObserver observer;
  observer.monitor = &monitor;
  observer.note = [&monitor](const std::string& text) { monitor.note(text); };
  observer.interrupted = &interrupted;
  CStabilizeJob job(commandLine.stabilize, observer);
  const SStabilizeResult result = job.run();
  if (commandLine.verbosity >= 0) std::printf("%s\n", SummaryAsText(result).c_str());
  if (result.verification && result.options.maxResidual) {
    const double residual =
        std::max(result.verification->after.weave, result.verification->after.jump);
    if (residual > *result.options.maxResidual) {
      std::fprintf(stderr,
                   "stabilize: residual motion of %.4f px is larger than --max-residual %g\n",
                   residual, *result.options.maxResidual);
      return EXIT_FAILED;
    }
  }
  return EXIT_DONE;
}

int describe(const std::string& path) {
  const SClipInfo info = OpenClip(path, 1)->info();
  std::printf("path        %s\nkind        %s\npicture     %d x %d, %d bit%s\n", info.path.c_str(),
              info.kind.c_str(), info.format.getPixelsPerLine(), info.format.getLinesPerFrame(),
              info.bitDepth, info.floatSamples ? " float" : "");
  std::printf("frames      %d to %d (%d)\n", info.firstFrame, info.endFrame - 1, info.frameCount());
  if (info.frameRateKnown)
    std::printf("rate        %.6g frames/s (%d/%d)\n", info.frameRate.value(),
                info.frameRate.numerator, info.frameRate.denominator);
  if (info.timecodeKnown) std::printf("timecode    %s\n", info.startTimecode.toText().c_str());
  for (const auto& [key, value] : info.metadata)
    std::printf("  %s: %s\n", key.c_str(), value.c_str());
  return EXIT_DONE;
}

int makeTestShot(const SCommandLine& commandLine) {
  const std::unique_ptr<IClipReader> shot = MakeTestShotReader(commandLine.testShot);
  const SClipInfo& info = shot->info();
  const std::unique_ptr<IClipWriter> writer =
      CreateClip(commandLine.testShotOutput, *shot, info.firstFrame, info.endFrame,
                 {commandLine.testShotOverwrite, AvailableProcessorCoreCount()});
  CConsoleMonitor monitor(commandLine.verbosity < 0, isatty(STDERR_FILENO) != 0);
  SJobObserver observer;
  observer.monitor = &monitor;
  observer.interrupted = &interrupted;
  CopyClip(*shot, *writer, info.firstFrame, info.endFrame, AvailableProcessorCoreCount(),
           "Making the test shot", observer);
  const std::string& truth = commandLine.testShotTruth;
  if (!truth.empty() && !WriteFileWhole(truth, CTestShot(commandLine.testShot).truthAsJson()))
    throw CJobError(-1, theError.getMessage());
  return EXIT_DONE;
}

int showResidual(const SCommandLine& commandLine) {
  const STruthComparison comparison =
      CompareWithTruth(commandLine.residualReport, commandLine.residualTruth);
  std::printf("%s\n", ToText(comparison).c_str());
  return EXIT_DONE;
}

int showVersions() {
  std::printf("stabilize %s\n", STAB_VERSION);
  const CPluginLibrary plugin(CPluginLibrary::find("stabilize.so"));
  std::printf("plug-in %s, %s\n%s\n", plugin.version().c_str(), plugin.path().c_str(),
              plugin.legalText().c_str());
  return EXIT_DONE;
}

int runCommand(const SCommandLine& commandLine) {
  switch (commandLine.command) {
    case SCommandLine::ECommand::info: return describe(commandLine.stabilize.input);
    case SCommandLine::ECommand::testShot: return makeTestShot(commandLine);
    case SCommandLine::ECommand::residual: return showResidual(commandLine);
    case SCommandLine::ECommand::version: return showVersions();
    case SCommandLine::ECommand::stabilize: return stabilize(commandLine);
    case SCommandLine::ECommand::none: break;
  }
  return EXIT_USAGE;
}

int complain(const std::exception& error, int status) {
  std::fprintf(stderr, "stabilize: %s\n", error.what());
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  SCommandLine commandLine;
  int status = EXIT_DONE;
  if (!ParseCommandLine(argc, argv, commandLine, status)) return status;
  std::signal(SIGINT, onInterrupt);
  std::signal(SIGTERM, onInterrupt);
  std::signal(SIGXFSZ, SIG_IGN);  // a full quota is an error of the write that meets it
  std::ofstream log;
  try {
    installLog(commandLine, log);
    status = runCommand(commandLine);
  } catch (const CUsageError& error) {
    status = complain(error, EXIT_USAGE);
  } catch (const CInterrupted& error) {
    status = complain(error, EXIT_INTERRUPTED);
  } catch (const CJobError& error) {
    std::fprintf(stderr, "stabilize: %s (code %d)\n", error.what(), error.code);
    status = EXIT_FAILED;
  } catch (const std::exception& error) {
    status = complain(error, EXIT_FAILED);
  }
  SetLogSink({});
  SetTraceSink({});
  return status;
}
