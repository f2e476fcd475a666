#include "tracking/TrackingPointsEditor.h"

namespace {

// The host's colour codes.
constexpr int COLOR_UNTRACKED = 0;
constexpr int COLOR_TRACKED = 2;
constexpr int COLOR_RENDERED = 4;
constexpr int COLOR_ANCHOR = 8;

}  // namespace

CTrackingPointsEditor::CTrackingPointsEditor()
    : selectedPoint(&selectedPointValue_,
                    [this](const int& point) {
                      if (point == selectedPointValue_) return;
                      selectedPointValue_ = point;
                      pointsChangedHook.notify();
                    }),
      showPoints(&showPointsValue_, [this](const bool& show) {
        if (show == showPointsValue_) return;
        showPointsValue_ = show;
        refresh();
      }) {}

void CTrackingPointsEditor::setSystemAPI(CNavSystemInterface* host) {
  host_ = host;
  markIn_ = -1;
  markOut_ = -1;
  drawTrackingPoints();
}

void CTrackingPointsEditor::setTrackingArray(CTrackingArray* array, bool keepState) {
  array_ = array;
  if (array_ != nullptr) {
    if (!keepState) {
      array_->SetTrackState(TRACK_STATE_Untracked);
      updateMarks();
    } else if (array_->TrackState() == TRACK_STATE_Rendered) {
      array_->SetTrackState(TRACK_STATE_Tracked);
    }
  }
  selectedPoint = -1;
  pointsChangedHook.notify();
}

void CTrackingPointsEditor::setMotionArrays(const CTrackingArray* original,
                                            const CTrackingArray* smoothed) {
  originalMotion_ = original;
  smoothedMotion_ = smoothed;
}

void CTrackingPointsEditor::resetMarks() {
  markIn_ = -1;
  markOut_ = -1;
  clearAll();
}

void CTrackingPointsEditor::setTracked() {
  if (array_ == nullptr) return;
  array_->SetTrackState(TRACK_STATE_Tracked);
  pointsChangedHook.notify();
}

void CTrackingPointsEditor::setRendered() {
  if (array_ != nullptr) array_->SetTrackState(TRACK_STATE_Rendered);
}

void CTrackingPointsEditor::setEdited() {
  if (array_ == nullptr) return;
  for (auto& [index, attribute] : array_->attributes) attribute.trackStatus = TRACK_STATUS_Unknown;
  pointsEditedHook.notify();
  pointsChangedHook.notify();
  refresh();
}

bool CTrackingPointsEditor::isTrackingValid() {
  return hasPoints() && markIn_ >= 0 && markIn_ < markOut_ && markIn_ >= array_->FirstFrame() &&
         markOut_ <= array_->EndFrame() && array_->TrackState() != TRACK_STATE_Untracked;
}

bool CTrackingPointsEditor::isFrameTracked(int frame) {
  return hasPoints() && frame >= 0 && array_->FirstFrame() <= frame && frame < array_->EndFrame() &&
         array_->TrackState() != TRACK_STATE_Untracked;
}

void CTrackingPointsEditor::keepFirstFrame() {
  if (array_ == nullptr) return;
  array_->RemoveLeadingEmptyFrames();
  array_->KeepOnlyFrame(array_->FirstFrame());
  pointsChangedHook.notify();
}

void CTrackingPointsEditor::clearAll() {
  if (array_ == nullptr) return;
  array_->Clear();
  selectedPoint = -1;
  pointsChangedHook.notify();
}

int CTrackingPointsEditor::classify(int mark) {
  if (mark < 0) return MARK_DELETED;
  return isFrameTracked(mark) ? MARK_INSIDE : MARK_OUTSIDE;
}

int CTrackingPointsEditor::markInChange() {
  if (suspended_ || host_ == nullptr || !hasPoints()) return MARK_UNCHANGED;
  const int mark = host_->getMarkIn();
  return mark == markIn_ ? static_cast<int>(MARK_UNCHANGED) : classify(mark);
}

int CTrackingPointsEditor::markOutChange() {
  if (suspended_ || host_ == nullptr || !hasPoints()) return MARK_UNCHANGED;
  if (array_->FirstFrame() == markIn_ && array_->FrameCount() < 2) return MARK_UNCHANGED;
  const int mark = host_->getMarkOut();
  return mark == markOut_ ? static_cast<int>(MARK_UNCHANGED) : classify(mark);
}

void CTrackingPointsEditor::applyMarks(int in, int out) {
  if (suspended_ || array_ == nullptr || (in == markIn_ && out == markOut_)) return;
  if (in < 0 || markIn_ < 0) {
    resetMarks();
  } else if (in != markIn_ && !isFrameTracked(in)) {
    array_->MoveToFrame(in);
  }
  if (out < 0 && in >= 0) array_->KeepOnlyFrame(in);  // without mark IN there is no such frame
  markIn_ = in;
  markOut_ = out;
  marksChangedHook.notify();
  if (host_ != nullptr) host_->redrawDisplay(0);
}

void CTrackingPointsEditor::updateMarks() {
  if (host_ != nullptr) applyMarks(host_->getMarkIn(), host_->getMarkOut());
}

void CTrackingPointsEditor::evaluatePointStatus(int point) {
  if (array_ == nullptr) return;
  const int end = array_->EndFrame();
  int status = TRACK_STATUS_NotTracked;
  if (array_->IsTrackedOver(point, markIn_, markOut_)) {
    status = isTrackingValid() ? TRACK_STATUS_Tracked : TRACK_STATUS_NeedsRetrack;
  }
  // The question inserts the frame that it misses; behind the last one that would count as tracked.
  array_->frames.erase(array_->frames.lower_bound(end), array_->frames.end());
  array_->SetTrackStatus(point, status);
}

/// False when the marks keep the frame from being drawn.
bool CTrackingPointsEditor::drawingColor(int frame, int& color) const {
  switch (array_->TrackState()) {
    case TRACK_STATE_Tracked: color = COLOR_TRACKED; break;
    case TRACK_STATE_Rendered: color = COLOR_RENDERED; break;
    default: color = COLOR_UNTRACKED;
  }
  if (suspended_) return true;
  const int in = host_->getMarkIn();
  const int out = host_->getMarkOut();
  if (in < 0) return false;
  if (out <= in) {
    color = COLOR_UNTRACKED;
    return frame == in;
  }
  if (in < array_->FirstFrame() || array_->EndFrame() < out) color = COLOR_UNTRACKED;
  return in <= frame && frame < out;
}

void CTrackingPointsEditor::drawTrackingPoints() {
  if (host_ == nullptr || !showPointsValue_ || !hasPoints()) return;
  const int frame = host_->getDisplayedFrame();
  if (!array_->HasFrame(frame)) return;
  int color = COLOR_UNTRACKED;
  if (!drawingColor(frame, color)) return;
  const CImageFormat* format = host_->getClipImageFormat();
  if (format == nullptr) return;
  const int arrowLength = format->getPixelsPerLine() / 60;
  array_->GetBoxExtents(boxCache_[0], boxCache_[1], boxCache_[2], boxCache_[3], boxCache_[4],
                        boxCache_[5]);
  const CTrackingPoints& points = array_->FindPoints(frame);
  for (const auto& [index, point] : points.Entries()) {
    if (point.IsValid()) drawPoint(index, points, color, arrowLength);
  }
}

void CTrackingPointsEditor::drawPoint(int index, const CTrackingPoints& points, int color,
                                      int arrowLength) {
  const CTrackPoint& point = points.Entries().at(index);
  if (array_->TrackStatus(index) == TRACK_STATUS_Unknown) evaluatePointStatus(index);
  host_->setDrawingColor(color);
  const bool showSearch = point.highlight && index == selectedPointValue_;
  const int halfWidth = array_->TrackBoxExtentX;
  const int halfHeight = array_->TrackBoxExtentY;
  host_->drawTrackBox(point.x, point.y, halfWidth, halfHeight,
                      showSearch ? array_->SearchBoxExtentLeft + halfWidth : 0,
                      showSearch ? array_->SearchBoxExtentUp + halfHeight : 0, point.highlight);
  host_->setDrawingColor(COLOR_ANCHOR);
  // As AnchorType and AnchorIndex answer, but for a point that is known to exist: they would look
  // through every frame for it, for every point that is drawn.
  const CTrackAttribute& attribute = array_->attributes[index];
  const int type = attribute.An;
  const bool anchored = type == ANCHOR_Horizontal || type == ANCHOR_Vertical || type == ANCHOR_Both;
  if (!anchored || !points.IsValidPoint(attribute.AnIn)) return;
  const CTrackPoint& anchor = points.Entries().at(attribute.AnIn);
  host_->drawArrow(anchor.x, anchor.y, point.x, point.y, arrowLength,
                   static_cast<int>(arrowLength * 1.5));
}

void CTrackingPointsEditor::refresh() {
  if (array_ == nullptr || host_ == nullptr) return;
  if (!hasPoints()) selectedPoint = -1;
  host_->redrawDisplay(0);
}
