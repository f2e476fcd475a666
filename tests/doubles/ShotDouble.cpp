#include "doubles/ShotDouble.h"

void CShotDouble::addMovingPoint(int point, int first, int count, double x, double y, double dx,
                                 double dy) {
  for (int i = 0; i < count; ++i) {
    tracked.PointsAt(first + i).Point(point) = CTrackPoint(x + i * dx, y + i * dy);
  }
}

void CShotDouble::setRendered() {
  rendered = true;
  calls.add("setRendered");
}

void CShotDouble::setRunState(int state) {
  runState_ = state;
  calls.add(CCallLog::text("setRunState", state));
}

void CShotDouble::setSmoothedFlag(bool flag) {
  smoothed = flag;
  calls.add(CCallLog::text("setSmoothedFlag", flag));
}

std::string CShotDouble::getStatusMessage() {
  const std::lock_guard lock(textsMutex_);
  return statusMessage_;
}

void CShotDouble::setStatusMessage(const std::string& text) {
  {
    const std::lock_guard lock(textsMutex_);
    statusMessage_ = text;
  }
  calls.add(CCallLog::text("setStatusMessage", text));
}

std::string CShotDouble::getTimeMessage() {
  const std::lock_guard lock(textsMutex_);
  return timeMessage_;
}

void CShotDouble::setTimeMessage(const std::string& text) {
  {
    const std::lock_guard lock(textsMutex_);
    timeMessage_ = text;
  }
  calls.add(CCallLog::text("setTimeMessage", text));
}

CStabilizerParameters CShotDouble::gatherParameters() {
  calls.add("gatherParameters");
  return parameters;
}
