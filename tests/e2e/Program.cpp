#include "Program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace {

int statusOf(int wait) {
  return WIFEXITED(wait) ? WEXITSTATUS(wait) : 128 + WTERMSIG(wait);
}

/// The settings folders lie in the test's own, so that nothing of the person's is read or written.
std::string scriptOf(const std::filesystem::path& folder, const std::string& line) {
  const std::string home = (folder / ".").parent_path().string();  // without a separator behind
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
  std::ifstream file(output, std::ios::binary);
  run.output.assign(std::istreambuf_iterator<char>(file), {});
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

void ProgramTest::expectSameFrames(const std::string& one, const std::string& other,
                                   int frames) const {
  for (int frame = 1001; frame < 1001 + frames; ++frame) {
    const std::string name = std::to_string(frame) + ".dpx";
    ASSERT_TRUE(exists(one + name)) << one + name;
    ASSERT_TRUE(fileText(one + name) == fileText(other + name)) << one + name;
  }
}

void ProgramTest::waitForFile(CRunningProgram& program, const std::string& name) const {
  while (program.isRunning() && !exists(name))
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}
