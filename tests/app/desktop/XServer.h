#pragma once

#include <sys/types.h>

/// A screen of the test's own, 2600 by 1700 pixels, that nobody sees; gone with the object. DISPLAY
/// names it from now on.
class CXServer {
 public:
  CXServer();
  ~CXServer();
  CXServer(const CXServer&) = delete;
  CXServer& operator=(const CXServer&) = delete;
  /// False: there is no Xvfb, or it does not start.
  bool isRunning() const { return process_ > 0; }

 private:
  pid_t process_ = -1;
};
