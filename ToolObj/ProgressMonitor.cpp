#include "ToolObj/ProgressMonitor.h"

#include <algorithm>

#include "support/Trace.h"

namespace {

constexpr int TRACE_LEVEL = 2;

std::string twoDigits(int value) {
  std::string text = std::to_string(value);
  return value < 10 ? text.insert(0, 1, '0') : text;
}

std::string shortSeconds(int seconds, double exactSeconds) {
  const int milliseconds =
      static_cast<int>(static_cast<long long>(exactSeconds * 1000.0 + 0.5) % 1000);
  std::string text = std::to_string(seconds);
  text += '.';
  if (seconds < 10) {
    if (milliseconds < 100) text += '0';
    return text + twoDigits(milliseconds);
  }
  // 995 ms and more would round to a third digit, which reads as a tenth.
  return text + twoDigits(std::min(99, (milliseconds + 5) / 10));
}

}  // namespace

std::string CDefaultToolProgressMonitor::TimeText(double seconds, bool shortForm) {
  const int whole = static_cast<int>(seconds + 0.0005);
  const int hours = whole / 3600;
  const int minutes = whole % 3600 / 60;
  const int rest = whole % 60;
  if (hours >= 1) return std::to_string(hours) + ":" + twoDigits(minutes) + ":" + twoDigits(rest);
  if (minutes >= 1) return std::to_string(minutes) + ":" + twoDigits(rest);
  return shortForm ? shortSeconds(rest, seconds) : "0:" + twoDigits(rest);
}

void CDefaultToolProgressMonitor::SetIdle(bool setText) {
  {
    const CAutoThreadLock lock(lock_, "SetIdle");
    resetCounts(0, 1);
    if (setText) statusMessage_ = "Idle";
  }
  TraceAt(TRACE_LEVEL, "TPM: IDLE");
}

void CDefaultToolProgressMonitor::SetStatusMessage(const std::string& text) {
  const CAutoThreadLock lock(lock_, "SetStatusMessage");
  statusMessage_ = text;
}

void CDefaultToolProgressMonitor::PushStatusMessage(const std::string& text) {
  const CAutoThreadLock lock(lock_, "PushStatusMessage");
  savedStatusMessages_.push_back(statusMessage_);
  statusMessage_ = text;
}

void CDefaultToolProgressMonitor::PopStatusMessage() {
  const CAutoThreadLock lock(lock_, "PopStatusMessage");
  if (savedStatusMessages_.empty()) return;
  statusMessage_ = savedStatusMessages_.back();
  savedStatusMessages_.pop_back();
}

void CDefaultToolProgressMonitor::SetToolMessage(const std::string& text) {
  const CAutoThreadLock lock(lock_, "SetToolMessage");
  toolMessage_ = text;
}

void CDefaultToolProgressMonitor::SetFrameCount(int total, int step) {
  const CAutoThreadLock lock(lock_, "SetFrameCount");
  resetCounts(total, step);
}

void CDefaultToolProgressMonitor::StartProgress() {
  {
    const CAutoThreadLock lock(lock_, "StartProgress");
    timer_.Start();
    elapsedSeconds_ = 0.0;
    secondsPerItem_ = 0.0;
  }
  ReportProgress();
}

void CDefaultToolProgressMonitor::BumpProgress(int units) {
  bool grew = false;
  {
    const CAutoThreadLock lock(lock_, "BumpProgress");
    pendingUnits_ += units;
    if (pendingUnits_ >= step_) {
      grew = advance(pendingUnits_ / step_);
      pendingUnits_ %= step_;
    }
  }
  if (grew) ReportProgress();
}

void CDefaultToolProgressMonitor::StopProgress(bool completed) {
  bool grew = false;
  std::string line = "TPM: ";
  {
    const CAutoThreadLock lock(lock_, "StopProgress");
    if (completed) {
      pendingUnits_ = 0;
      grew = advance(total_ - done_);
    }
    line.append(statusMessage_).append(" STOP");
  }
  if (grew) ReportProgress();
  TraceAt(TRACE_LEVEL, line);
}

void CDefaultToolProgressMonitor::ReportProgress() {
  if (!TracesAt(TRACE_LEVEL)) return;
  std::string line;
  {
    const CAutoThreadLock lock(lock_, "ReportProgress");
    if (total_ <= 0) return;
    line = reportLine();
  }
  TraceAt(TRACE_LEVEL, line);
}

void CDefaultToolProgressMonitor::resetCounts(int total, int step) {
  total_ = total;
  step_ = std::max(1, step);
  done_ = 0;
  pendingUnits_ = 0;
  elapsedSeconds_ = 0.0;
  secondsPerItem_ = 0.0;
}

bool CDefaultToolProgressMonitor::advance(int items) {
  const int before = done_;
  done_ = std::min(total_, done_ + items);
  elapsedSeconds_ = timer_.Read() * 0.001;
  if (done_ > 0) secondsPerItem_ = elapsedSeconds_ / done_;
  return done_ > before;
}

std::string CDefaultToolProgressMonitor::reportLine() const {
  std::string totalTime = "-:--";
  std::string elapsedTime = "-:--";
  std::string remainingTime = "-:--";
  std::string percentage = "0";
  std::string perItem = "-.---";
  if (done_ > 0) {
    const double totalSeconds = total_ * secondsPerItem_;
    totalTime = TimeText(totalSeconds, false);
    elapsedTime = TimeText(elapsedSeconds_, false);
    remainingTime = TimeText(totalSeconds - elapsedSeconds_, false);
    percentage = std::to_string(static_cast<int>(100.0 * done_ / total_));
    perItem = TimeText(secondsPerItem_, true);
  }
  std::string line = "TPM: [";
  line.append(statusMessage_).append("] Total: ").append("Total: ");
  line.append(std::to_string(total_)).append(" / ").append(totalTime);
  line.append("  So far: ").append(std::to_string(done_)).append(" / ").append(elapsedTime);
  line.append(" (").append(percentage).append("% / ").append(perItem).append(")");
  line.append("  To go: ").append(std::to_string(total_ - done_)).append(" / ");
  return line.append(remainingTime);
}

int CDefaultToolProgressMonitor::total() const {
  const CAutoThreadLock lock(lock_, "total");
  return total_;
}

int CDefaultToolProgressMonitor::done() const {
  const CAutoThreadLock lock(lock_, "done");
  return done_;
}

int CDefaultToolProgressMonitor::pendingUnits() const {
  const CAutoThreadLock lock(lock_, "pendingUnits");
  return pendingUnits_;
}

std::string CDefaultToolProgressMonitor::statusMessage() const {
  const CAutoThreadLock lock(lock_, "statusMessage");
  return statusMessage_;
}

std::string CDefaultToolProgressMonitor::toolMessage() const {
  const CAutoThreadLock lock(lock_, "toolMessage");
  return toolMessage_;
}
