#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

#include "../platform/support/temp_folder.h"

/// What a program that ended left behind.
struct SRun {
  int status = -1;     ///< exit status; 128 + signal when a signal ended it
  std::string output;  ///< standard output and error together
};

/// Runs a shell line in `folder`; `stabilize` in it is the built program.
SRun RunLine(const std::filesystem::path& folder, const std::string& line);

/// A program that runs beside the test. Ended and waited for at the latest with the object.
class CRunningProgram {
 public:
  CRunningProgram(const std::filesystem::path& folder, const std::string& line);
  ~CRunningProgram();
  CRunningProgram(const CRunningProgram&) = delete;
  CRunningProgram& operator=(const CRunningProgram&) = delete;

  void signal(int number);
  bool isRunning();
  /// Waits for the end; the status as in SRun.
  int wait();

 private:
  pid_t process_ = -1;
  int status_ = -1;
};

/// Runs the program in the test's own folder.
class ProgramTest : public TempFolder {
 protected:
  SRun run(const std::string& line) const { return RunLine(folder, line); }
  /// What it says; it is to succeed.
  std::string mustRun(const std::string& line) const {
    const SRun done = run(line);
    EXPECT_EQ(done.status, 0) << line << "\n" << done.output;
    return done.output;
  }
  std::string fileText(const std::string& name) const { return textOf(folder + name); }
  bool exists(const std::string& name) const { return std::filesystem::exists(folder + name); }
  static bool contains(const std::string& text, const std::string& words) {
    return text.find(words) != std::string::npos;
  }
  static bool says(const SRun& run, const std::string& words) {
    return contains(run.output, words);
  }
  /// Frames from 1001, byte by byte: "a." stands for a.1001.dpx and those that follow.
  void expectSameFrames(const std::string& one, const std::string& other, int frames) const;
  /// Waits until the program has begun to write a file, or has ended.
  void waitForFile(CRunningProgram& program, const std::string& name) const;
};
