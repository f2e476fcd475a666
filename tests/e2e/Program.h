#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

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

/// A folder of the test's own, gone with the object.
class CTemporaryFolder {
 public:
  CTemporaryFolder();
  ~CTemporaryFolder();
  CTemporaryFolder(const CTemporaryFolder&) = delete;
  CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

std::string FileText(const std::filesystem::path& file);
