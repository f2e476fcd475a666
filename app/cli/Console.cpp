#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "Commands.h"
#include "support/ErrorReport.h"
#include "support/Files.h"
#include "support/Trace.h"

std::string Printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(),
      [](char c) { return (static_cast<unsigned char>(c) < ' ' && c != '\n') || c == '\x7f'; },
      '?');
  return text;
}

void BeginLog(const std::string& path) {
  std::error_code ignored;
  // A new file: the old one may have another name, under which it shall keep what it holds.
  if (std::filesystem::is_regular_file(path, ignored) && !WriteFileWhole(path, {}))
    throw CUsageError("--log " + theError.getMessage());
  const auto log = std::make_shared<std::ofstream>(path, std::ios::app);
  if (!*log) throw CUsageError("--log " + path + " cannot be written");
  ZRNQLogLevel = 2;
  SetLogSink([log](const std::string& line) { *log << line << std::endl; });
}

void LogLine(const std::string& text) {
  if (ZRNQLogLevel >= 1) SendZRNQMessage(text, true, false);
}

void Complain(const std::string& what) {
  LogLine(what);
  std::fprintf(stderr, "stabilize: %s\n", Printable(what).c_str());
}

void AddQuietFlag(CLI::App& command, SProgram& program) {
  command.add_flag_function(
      "-q,--quiet", [&program](std::int64_t) { program.verbosity = -1; }, "Say nothing but errors");
}

void AddVerboseFlag(CLI::App& command, SProgram& program) {
  command.add_flag_function(
      "-v,--verbose",
      [&program](std::int64_t count) { program.verbosity = static_cast<int>(count); },
      "Say more; twice or three times for details");
}

CConsoleObserver::CConsoleObserver(const SProgram& program)
    : monitor_(program.isQuiet(), isatty(STDERR_FILENO) != 0) {
  observer_.monitor = &monitor_;
  observer_.note = [this](const std::string& text) {
    LogLine(text);
    monitor_.note(Printable(text));
  };
  observer_.interrupted = program.interrupted;
}
