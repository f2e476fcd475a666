#include "XServer.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>
#include <string>

CXServer::CXServer() {
  int ends[2];
  if (pipe(ends) != 0) return;
  process_ = fork();
  if (process_ == 0) {
    close(ends[0]);
    prctl(PR_SET_PDEATHSIG, SIGTERM);  // a test that is killed leaves no screen behind
    const std::string number = std::to_string(ends[1]);
    // It chooses a free number itself and tells it once it listens.
    execlp("Xvfb", "Xvfb", "-displayfd", number.c_str(), "-screen", "0", "2600x1700x24",
           "-nolisten", "tcp", "-noreset", static_cast<char*>(nullptr));
    _exit(127);
  }
  close(ends[1]);
  std::string number;
  for (char c; read(ends[0], &c, 1) == 1 && c != '\n';) number += c;
  close(ends[0]);
  if (number.empty()) {
    waitpid(process_, nullptr, 0);
    process_ = -1;
    return;
  }
  setenv("DISPLAY", (":" + number).c_str(), 1);
}

CXServer::~CXServer() {
  if (process_ <= 0) return;
  kill(process_, SIGTERM);
  waitpid(process_, nullptr, 0);
}
