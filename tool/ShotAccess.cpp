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

void CStabilizerTool::setRunState(int state) {
  runState_ = state;
  if (state != RUN_SMOOTHING) smoothingEnded_.Set();
}

void CStabilizerTool::takePassCopies() {
  if (window_) pass_.parameters = window_->gatherParameters();
  pass_.points = tracked_;
  pass_.mattingBox = mattingBox_;
  pass_.selectedPoint = editor_.selectedPoint;
}
