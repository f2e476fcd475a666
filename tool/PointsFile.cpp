#include <cerrno>
#include <locale>
#include <sstream>
#include <utility>

#include "support/Files.h"
#include "support/Trace.h"
#include "tool/StabilizerTool.h"
#include "tracking/TrackingText.h"

namespace {

// Room for the largest set that may be stored, such as 200 points over 40,000 frames.
constexpr std::size_t LARGEST_POINTS_FILE = std::size_t{256} << 20;

// People search their logs for these; do not change.
constexpr const char* CANNOT_CREATE = "ERROR: Stabilizer: Can't create tracking point file ";
constexpr const char* CANNOT_SAVE = "ERROR: Stabilizer: Can't save tracking points to file ";
constexpr const char* CANNOT_OPEN = "ERROR: Stabilizer: Can't open tracking point file ";
constexpr const char* CANNOT_LOAD = "ERROR: Stabilizer: Can't load tracking points from file ";

/// The second line is for whoever has to put it right.
bool refuse(const char* line, const std::string& path, const std::string& reason) {
  TraceAt(0, line + path);
  TraceAt(0, reason);
  return false;
}

/// False: `line` and `reason` say why.
bool readPoints(const std::string& path, CTrackingArray& points, const char*& line,
                std::string& reason) {
  std::string text;
  if (!ReadFileWhole(path, text, LARGEST_POINTS_FILE)) {
    const int cause = -theError.getError();
    line = cause == EFBIG || cause == EIO ? CANNOT_LOAD : CANNOT_OPEN;
    reason = theError.getMessage();
    return false;
  }
  line = CANNOT_LOAD;
  std::istringstream stream(std::move(text));
  stream.imbue(std::locale::classic());
  return ReadTrackingArray(stream, points, reason);
}

std::string withoutBlanks(const std::string& text) {
  constexpr const char* BLANKS = " \t\r\n";
  const std::size_t first = text.find_first_not_of(BLANKS);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

}  // namespace

std::string CStabilizerTool::SuggestedPointsFileName() {
  const int markIn = getSystemAPI()->getMarkIn();
  std::string name = std::to_string(markIn);
  if (const IClip* clip = getSystemAPI()->getClip()) {
    name = withoutBlanks(clip->timecodeOfFrame(markIn).toText());
    for (char& c : name) {
      if (c == ':' || c == '.') c = '_';
    }
  }
  return "stab_" + name + ".points";
}

bool CStabilizerTool::SaveTrackingPoints(const std::string& path) {
  CFileReplacement file(path);
  if (!file.isOpen()) return refuse(CANNOT_CREATE, path, theError.getMessage());
  tracked_.SetMattingBox(mattingBox_);
  tracked_.SetUseMatting(window_ && window_->isUseMattingChecked());
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << tracked_;
  if (!text) return refuse(CANNOT_SAVE, path, "There are more points than a points file holds");
  return file.commit(text.str()) || refuse(CANNOT_SAVE, path, theError.getMessage());
}

// What can fail comes first, so that a refused file has changed nothing.
bool CStabilizerTool::LoadTrackingPoints(const std::string& path, bool setMarks) {
  CTrackingArray loaded;
  const char* line = nullptr;
  std::string reason;
  if (!readPoints(path, loaded, line, reason)) return refuse(line, path, reason);
  if (isTrackingPassUnderWay()) {
    return refuse(CANNOT_LOAD, path, "A tracking pass is under way; stop it first");
  }
  if (window_) window_->setUseMattingChecked(loaded.UseMatting());
  turnColorPickerOff();
  setMattingBox(loaded.MattingBox());
  const bool hasPoints = loaded.NumberOfPoints() > 0;
  const bool marksTaken = hasPoints && setMarks && takeMarksOf(loaded);
  if (hasPoints && !marksTaken) placeAtMarkIn(loaded);
  const int* e = boxExtents_;
  loaded.SetBoxExtents(e[0], e[1], e[2], e[3], e[4], e[5]);
  installPoints(loaded, marksTaken && loaded.TrackState() != TRACK_STATE_Untracked);
  return true;
}

// The host's pass writes what it finds into the live points through the editor, to its very end,
// and then calls them tracked: other points put in its way would be mixed with its own.
bool CStabilizerTool::isTrackingPassUnderWay() const {
  return runState_ == RUN_TRACKING || pendingRequest_ == RUN_TRACKING;
}

// The host, or an operator who is asked about the points so far, may refuse one of the marks.
bool CStabilizerTool::takeMarksOf(const CTrackingArray& points) {
  CNavSystemInterface* host = getSystemAPI();
  const int oldIn = host->getMarkIn();
  const int oldOut = host->getMarkOut();
  host->setMarkIn(points.FirstFrame());
  host->setMarkOut(points.EndFrame());
  if (host->getMarkIn() == points.FirstFrame() && host->getMarkOut() == points.EndFrame()) {
    host->goToFrame(points.FirstFrame());
    return true;
  }
  host->setMarkIn(oldIn);
  host->setMarkOut(oldOut);
  return false;
}

void CStabilizerTool::placeAtMarkIn(CTrackingArray& points) {
  CNavSystemInterface* host = getSystemAPI();
  int frame = host->getMarkIn();
  if (frame < 0) {
    frame = host->getDisplayedFrame();
    host->setMarkIn(frame);
  } else {
    host->goToFrame(frame);
  }
  points.MoveToFrame(frame);
}

// Safe at any run state but that of a tracking pass. Smoothing and rendering that are under way
// work on copies of the points and on a path that is left alone here; a smoothing run's result is
// thrown away when it comes, a pass (also one that is paused) ends with the path it began with.
// What was asked for and has not begun is forgotten: it was asked of other points.
void CStabilizerTool::installPoints(const CTrackingArray& points, bool tracked) {
  discardSmoothedPath();  // before the run state is looked at: a smoothing run may end in between
  forgetWhatHasNotBegun();

  // The editor takes the marks as they are while it still has the old points: marks that it first
  // met later would cost it the new ones.
  editor_.updateMarks();
  tracked_ = points;
  editor_.setTrackingArray(&tracked_, true);
  needsRetracking_ = !tracked;
  if (tracked) onTrackedPointsLoaded();
  editor_.selectedPoint = -1;
  editor_.refresh();
  refreshExecutionButtons();
  updateWindow();
}

void CStabilizerTool::forgetWhatHasNotBegun() {
  const int state = runState_;
  const bool begun = state == RUN_SMOOTHING || state == RUN_RENDERING || state == RUN_RENDERED;
  if (!begun && state != RUN_ERROR) runState_ = RUN_IDLE;
  forgetPendingRequest();
  deferredRender_ = false;
  renderedUpTo_ = NO_FRAME;  // what a pass renders now are not these points
}

void CStabilizerTool::onTrackedPointsLoaded() {
  editor_.setTracked();
  trackingDuration_ = 0;  // loaded again sooner than a question is read
  moveInAnswered_ = false;
  renderCompleted_ = false;
  // A one-frame pass that the host started by itself leaves the run state idle, and reads the path.
  const bool idle = runState_ == RUN_IDLE && !areArraysInUse();
  if (idle && isTracked()) runState_ = RUN_SMOOTHING_REQUESTED;
}

void CStabilizerTool::SavePointsWithDialog() {
  if (!window_) return;
  const std::string path = window_->askPointsFileToSave(SuggestedPointsFileName());
  if (!path.empty()) SaveTrackingPoints(path);
}

void CStabilizerTool::LoadPointsWithDialog(bool setMarks) {
  if (!window_) return;
  const std::string path = window_->askPointsFileToLoad(SuggestedPointsFileName());
  if (!path.empty()) LoadTrackingPoints(path, setMarks);
}
