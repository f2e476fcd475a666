#include "Program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

int statusOf(int wait) {
  return WIFEXITED(wait) ? WEXITSTATUS(wait) : 128 + WTERMSIG(wait);
}

/// The settings folders lie in the test's own, so that nothing of the person's is read or written.
std::string scriptOf(const std::filesystem::path& folder, const std::string& line) {
  const std::string home = folder.string();
  return "cd '" + home + "' && export HOME='" + home + "' XDG_CONFIG_HOME='" + home +
         "/.config' XDG_STATE_HOME='" + home +
         "/.state' && stabilize() { '" STAB_PROGRAM "' \"$@\"; } && " + line;
}

}  // namespace

SRun RunLine(const std::filesystem::path& folder, const std::string& line) {
  const std::filesystem::path output = folder / ".output";
  CRunningProgram program(folder, "{ " + line + "\n} > '" + output.string() + "' 2>&1");
  SRun run;
  run.status = program.wait();
  run.output = FileText(output);
  return run;
}

CRunningProgram::CRunningProgram(const std::filesystem::path& folder, const std::string& line) {
  const std::string script = scriptOf(folder, line);
  process_ = fork();
  if (process_ < 0) throw std::runtime_error("cannot start a process");
  if (process_ != 0) return;
  setpgid(0, 0);
  execl("/bin/bash", "bash", "-c", script.c_str(), static_cast<char*>(nullptr));
  _exit(127);
}

CRunningProgram::~CRunningProgram() {
  if (!isRunning()) return;
  signal(SIGKILL);
  wait();
}

void CRunningProgram::signal(int number) {
  // Of an ended program there is nothing to signal, and -1 would mean every process there is.
  if (process_ > 0) kill(process_, number);
}

bool CRunningProgram::isRunning() {
  if (process_ < 0) return false;
  int state = 0;
  if (waitpid(process_, &state, WNOHANG) != process_) return true;
  status_ = statusOf(state);
  process_ = -1;
  return false;
}

int CRunningProgram::wait() {
  if (process_ < 0) return status_;
  int state = 0;
  waitpid(process_, &state, 0);
  process_ = -1;
  return status_ = statusOf(state);
}

CTemporaryFolder::CTemporaryFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "stabilize-XXXXXX").string();
  if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder: " + pattern);
  path_ = pattern;
}

CTemporaryFolder::~CTemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string FileText(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}
