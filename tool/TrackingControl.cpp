#include <algorithm>
#include <iterator>

#include "tool/StabilizerTool.h"
#include "toolkit/Application.h"

namespace {

// A shorter pass is done again sooner than a question is read.
constexpr int SECONDS_WORTH_PROTECTING = 60;

}  // namespace

bool CStabilizerTool::onTrackingStart() {
  if (!areMarksValid() || !getSystemAPI()->isClipAvailable() || tracked_.NumberOfPoints() < 1) {
    getProgressMonitor()->StopProgress(false);
    if (runState_ == RUN_TRACKING) runState_ = RUN_ERROR;  // the pass it waits for will not come
    return false;
  }
  editor_.keepFirstFrame();
  const int* e = boxExtents_;
  setBoxExtents(e[0], e[1], e[2], e[3], e[4], e[5]);  // points from elsewhere bring other sizes
  needsRetracking_ = true;
  if (runState_ == RUN_IDLE) {
    forgetPendingRequest();
    runState_ = RUN_TRACKING;
  } else if (runState_ == RUN_SMOOTHING && pendingRequest_ == RUN_IDLE) {
    pendingRequest_ = RUN_TRACKING;
  }
  trackingTimer_.Start();
  return true;
}

void CStabilizerTool::onTrackingEnd(int failed) {
  if (runState_ != RUN_TRACKING) return;
  runState_ = failed == 0 ? RUN_TRACKED : RUN_ERROR;
  trackingDuration_ = static_cast<int>(trackingMilliseconds() * 0.001);
  moveInAnswered_ = false;
  renderCompleted_ = false;
}

bool CStabilizerTool::checkMarkChanges() {
  return checkMarkInChange() && checkMarkOutChange();
}

bool CStabilizerTool::checkMarkInChange() {
  CNavSystemInterface* host = getSystemAPI();
  if (host->getFolderText() != folderText_ || host->isFirstShow()) return true;
  switch (editor_.markInChange()) {
    case MARK_DELETED: return mayDeleteMarkIn();
    case MARK_OUTSIDE: return mayMoveMarkIn();
    default: return true;
  }
}

bool CStabilizerTool::mayDeleteMarkIn() {
  if (!isTrackingWorthProtecting() && tracked_.NumberOfPoints() < 2) return true;
  return confirmMark(
      "All tracking points will be deleted if you delete your IN mark.    \nContinue anyway?",
      &CNavSystemInterface::setMarkIn, editor_.markIn());
}

bool CStabilizerTool::mayMoveMarkIn() {
  if (clearOnShotChange_) {
    clearAllTrackingData();
    return true;
  }
  if (!isTrackingWorthProtecting() || moveInAnswered_) return true;
  moveInAnswered_ =
      confirmMark("All tracking data will be lost if you move your IN mark.    \nContinue anyway?",
                  &CNavSystemInterface::setMarkIn, editor_.markIn());
  return moveInAnswered_;
}

bool CStabilizerTool::checkMarkOutChange() {
  if (getSystemAPI()->getFolderText() != folderText_) return true;
  const int change = editor_.markOutChange();
  if (change != MARK_DELETED && change != MARK_OUTSIDE) return true;
  if (!markOutWarnings_ || !isTrackingWorthProtecting()) return true;
  const char* question =
      change == MARK_DELETED
          ? "Tracking information will be lost if you delete your OUT mark.\nContinue anyway?"
          : "All points will need to be re-tracked.    \nContinue anyway?";
  return confirmMark(question, &CNavSystemInterface::setMarkOut, editor_.markOut());
}

bool CStabilizerTool::isTrackingWorthProtecting() {
  return isTracked() && trackingDuration_ > SECONDS_WORTH_PROTECTING && !renderCompleted_;
}

bool CStabilizerTool::confirmMark(const char* question, void (CNavSystemInterface::*putBack)(int),
                                  int oldMark) {
  constexpr int CANCEL = static_cast<int>(EConfirmation::cancel);
  if (_QTXConfirmationDialog(question) != CANCEL) return true;
  (getSystemAPI()->*putBack)(oldMark);
  return false;
}

// Passes work on their own copy of the points, but on these synthetic points themselves: while one
// is under way they are cleared by the first heartbeat after it. A tracking pass writes into the
// points themselves, so it ends first; a path that is being smoothed, and what was to come of it,
// are of points that are no more.
void CStabilizerTool::clearAllTrackingData() {
  discardSmoothedPath();
  if (runState_ == RUN_TRACKING) {
    stop();
  } else {
    forgetWhatHasNotBegun();
  }
  editor_.resetMarks();
  if (areArraysInUse()) {
    clearPostponed_ = true;
  } else {
    syntheticOriginal_.Clear();
  }
  editor_.selectedPoint = -1;
  editor_.updateMarks();  // points that are placed now belong to the marks as they are
  editor_.refresh();
  updateWindow();
}

void CStabilizerTool::selectRelativePoint(int delta) {
  if (tracked_.NumberOfPoints() == 0) return;
  const int count = tracked_.FindPoints(tracked_.FirstFrame()).Count();
  int selected = editor_.selectedPoint + delta;
  if (selected > count - 1) {
    selected = 0;
  } else if (selected < 0) {
    selected = count - 1;
  }
  editor_.selectedPoint = selected;
  editor_.refresh();
}

void CStabilizerTool::setTrackingPointsVisible(bool visible) {
  if (editor_.showPoints != visible) editor_.showPoints = visible;
}

void CStabilizerTool::setBoxExtents(int x, int y, int left, int right, int up, int down) {
  const int extents[] = {x, y, left, right, up, down};
  std::copy(std::begin(extents), std::end(extents), boxExtents_);
  if (!tracked_.BoxExtentsDiffer(x, y, left, right, up, down)) return;
  tracked_.SetBoxExtents(x, y, left, right, up, down);
  getSystemAPI()->redrawDisplay(0);
}

bool CStabilizerTool::isTracked() {
  return tracked_.NumberOfPoints() > 0 && editor_.isTrackingValid();
}
