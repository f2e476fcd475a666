#include "ConsoleMonitor.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr double SHOW_EVERY_MS = 100.0;

std::string timeText(double seconds) {
  const int whole = static_cast<int>(seconds + 0.5);
  char text[32];
  if (whole >= 3600)
    std::snprintf(text, sizeof text, "%d:%02d:%02d", whole / 3600, whole / 60 % 60, whole % 60);
  else
    std::snprintf(text, sizeof text, "%d:%02d", whole / 60, whole % 60);
  return text;
}

}  // namespace

CConsoleMonitor::~CConsoleMonitor() {
  std::lock_guard<std::mutex> lock(mutex_);
  clearLine();
}

void CConsoleMonitor::SetIdle(bool setText) {
  std::lock_guard<std::mutex> lock(mutex_);
  total_ = 0;
  running_ = false;
  if (setText) status_ = "Idle";
}

void CConsoleMonitor::SetStatusMessage(const std::string& text) {
  std::lock_guard<std::mutex> lock(mutex_);
  status_ = text;
}

void CConsoleMonitor::PushStatusMessage(const std::string& text) {
  std::lock_guard<std::mutex> lock(mutex_);
  saved_.push_back(status_);
  status_ = text;
}

void CConsoleMonitor::PopStatusMessage() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (saved_.empty()) return;
  status_ = saved_.back();
  saved_.pop_back();
}

void CConsoleMonitor::SetFrameCount(int total, int step) {
  std::lock_guard<std::mutex> lock(mutex_);
  total_ = total;
  step_ = std::max(1, step);
  units_ = 0;
}

void CConsoleMonitor::StartProgress() {
  std::lock_guard<std::mutex> lock(mutex_);
  timer_.Start();
  units_ = 0;
  tenthsShown_ = 0;
  shownAt_ = 0.0;
  running_ = total_ > 0;
}

void CConsoleMonitor::BumpProgress(int units) {
  std::lock_guard<std::mutex> lock(mutex_);
  units_ += units;
  if (running_) show(false);
}

void CConsoleMonitor::StopProgress(bool completed) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (!running_) return;
  if (completed) units_ = total_ * step_;
  show(true);
  running_ = false;
}

void CConsoleMonitor::note(const std::string& text) {
  if (quiet_) return;
  std::lock_guard<std::mutex> lock(mutex_);
  clearLine();
  std::fprintf(stderr, "%s\n", text.c_str());
}

std::string CConsoleMonitor::lineText() const {
  const int done = std::min(total_, units_ / step_);
  const double seconds = timer_.Read() * 0.001;
  const double rate = seconds > 0.0 ? done / seconds : 0.0;
  char text[160];
  std::snprintf(text, sizeof text, "%-22s %6d/%d  %3d %%  %7.1f frames/s  %s %s", status_.c_str(),
                done, total_, total_ > 0 ? static_cast<int>(100.0 * done / total_) : 0, rate,
                done < total_ ? timeText(rate > 0.0 ? (total_ - done) / rate : 0.0).c_str()
                              : timeText(seconds).c_str(),
                done < total_ ? "left" : "in all");
  return text;
}

void CConsoleMonitor::clearLine() {
  if (!lineOpen_) return;
  std::fputs("\r\x1b[K", stderr);
  lineOpen_ = false;
}

void CConsoleMonitor::show(bool last) {
  if (quiet_) return;
  if (!terminal_) {
    const int tenths = total_ > 0 ? units_ / step_ * 10 / total_ : 0;
    if (tenths <= tenthsShown_ && !(last && tenthsShown_ < 10)) return;
    tenthsShown_ = last ? 10 : tenths;
    std::fprintf(stderr, "%s\n", lineText().c_str());
    return;
  }
  const double now = timer_.Read();
  if (!last && now - shownAt_ < SHOW_EVERY_MS) return;
  shownAt_ = now;
  std::fprintf(stderr, "\r\x1b[K%s%s", lineText().c_str(), last ? "\n" : "");
  std::fflush(stderr);
  lineOpen_ = !last;
}
