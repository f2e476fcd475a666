#include "tool/StabilizerTool.h"

std::string CStabilizerTool::getStatusMessage() {
  CAutoThreadLock lock(statusLock_, "CStabilizerTool::getStatusMessage");
  return statusMessage_;
}

void CStabilizerTool::setStatusMessage(const std::string& text) {
  CAutoThreadLock lock(statusLock_, "CStabilizerTool::setStatusMessage");
  statusMessage_ = text;
}

std::string CStabilizerTool::getTimeMessage() {
  CAutoThreadLock lock(timeLock_, "CStabilizerTool::getTimeMessage");
  return timeMessage_;
}

void CStabilizerTool::setTimeMessage(const std::string& text) {
  CAutoThreadLock lock(timeLock_, "CStabilizerTool::setTimeMessage");
  timeMessage_ = text;
}

CStabilizerParameters CStabilizerTool::gatherParameters() {
  // The window's own lock is not taken under ours.
  if (!window_) {
    CAutoThreadLock lock(parametersLock_, "CStabilizerTool::gatherParameters");
    return parameters_;
  }
  const CStabilizerParameters gathered = window_->gatherParameters();
  CAutoThreadLock lock(parametersLock_, "CStabilizerTool::gatherParameters");
  parameters_ = gathered;
  return gathered;
}

void CStabilizerTool::setRunState(int state) {
  runState_ = state;
  if (state != RUN_SMOOTHING) smoothingEnded_.Set();
}

void CStabilizerTool::takePassCopies() {
  pass_.points = tracked_;
  pass_.mattingBox = mattingBox_;
  pass_.selectedPoint = editor_.selectedPoint;
}
