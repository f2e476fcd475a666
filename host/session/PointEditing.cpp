#include "session/PointEditing.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

/// The index that a point has when the valid ones are numbered without gaps; -1 for no point.
int numberWithoutGaps(const CTrackingPoints& points, int index) {
  if (!points.IsValidPoint(index)) return -1;
  return static_cast<int>(std::ranges::count_if(points.Entries(), [index](const auto& entry) {
    return entry.first < index && entry.second.IsValid();
  }));
}

}  // namespace

CPointEditing::CPointEditing(CShotSession& session) : session_(session) {}

const CTrackingPoints* CPointEditing::pointsAt(int frame) const {
  const auto found = points().frames.find(frame);
  return found == points().frames.end() ? nullptr : &found->second;
}

/// As the editor draws them.
bool CPointEditing::isDrawn(int frame) const {
  const int in = session_.getMarkIn();
  const int out = session_.getMarkOut();
  return editor().showPoints && in >= 0 && frame >= in && (frame == in || frame < out);
}

int CPointEditing::pointAt(double x, double y, double radius) const {
  const int frame = session_.getDisplayedFrame();
  const CTrackingPoints* shown = hasPoints() && isDrawn(frame) ? pointsAt(frame) : nullptr;
  if (!shown) return -1;
  int nearest = -1;
  double least = radius;
  for (const auto& [index, point] : shown->Entries()) {
    const double distance = std::hypot(point.x - x, point.y - y);
    if (!point.IsValid() || !(distance <= least)) continue;
    nearest = index;
    least = distance;
  }
  return nearest;
}

std::string CPointEditing::refusal() const {
  if (!hasPoints()) return "The tool is not active";
  if (session_.isBusy())
    return "Points cannot be changed while a pass runs or pauses: stop it, or let it finish";
  return {};
}

std::string CPointEditing::frameRefusal() const {
  if (std::string reason = refusal(); !reason.empty()) return reason;
  const int in = session_.getMarkIn();
  if (in < 0) return "Set mark IN first: points are placed on its frame";
  if (session_.getDisplayedFrame() != in)
    return "Points are placed and moved on the mark IN frame, " +
           session_.getClip()->timecodeOfFrame(in).toText() + " (frame " + std::to_string(in) +
           "): Home goes there";
  if (!editor().showPoints) return "The tracking points are hidden: show them first";
  return {};
}

std::string CPointEditing::refusal(double x, double y) const {
  if (std::string reason = frameRefusal(); !reason.empty()) return reason;
  const std::optional<SPoint2> allowed = nearestAllowed(x, y);
  if (!allowed) return "The track box is larger than the picture, or has no size: set another";
  if (allowed->x != x || allowed->y != y)
    return "The track box would leave the picture or the processing region there";
  return {};
}

std::optional<SPoint2> CPointEditing::nearestAllowed(double x, double y) const {
  const STrackSettings track = session_.trackSettings();
  const SRect& region = track.region;
  const SPoint2 first = {static_cast<double>(region.left + track.trackBoxExtentX),
                         static_cast<double>(region.top + track.trackBoxExtentY)};
  const SPoint2 last = {static_cast<double>(region.right - track.trackBoxExtentX),
                        static_cast<double>(region.bottom - track.trackBoxExtentY)};
  if (last.x < first.x || last.y < first.y || !CShotTracker::canTrack(first, track))
    return std::nullopt;
  const SPoint2 nearest = {std::clamp(x, first.x, last.x), std::clamp(y, first.y, last.y)};
  // Boxes stand on whole pixels, so that half a pixel more may do.
  const bool mayDo = std::abs(nearest.x - x) < 1.0 && std::abs(nearest.y - y) < 1.0;
  return mayDo && CShotTracker::canTrack({x, y}, track) ? SPoint2{x, y} : nearest;
}

int CPointEditing::place(double x, double y) {
  endMove();
  if (!refusal(x, y).empty()) return -1;
  editor().updateMarks();  // marks that it first met later would cost it the new point
  if (wereCleared()) history_.clear();
  history_.record("Place point", capture());
  keepOnlyMarkIn(-1);
  CTrackingPoints& placed = points().PointsAt(session_.getMarkIn());
  const int index = placed.ValidCount();
  placed.Point(index) = CTrackPoint(x, y);
  points().attributes[index] = {};
  editor().selectedPoint = index;
  finishEdit();
  return index;
}

bool CPointEditing::replaceAll(const std::vector<SPoint2>& places) {
  endMove();
  CTrackingPoints placed;
  for (const SPoint2& place : places)
    if (refusal(place.x, place.y).empty())
      placed.Point(placed.Count()) = CTrackPoint(place.x, place.y);
  if (placed.Count() == 0) return false;
  editor().updateMarks();
  if (wereCleared()) history_.clear();
  history_.record("Find points", capture());
  points().Clear();
  points().PointsAt(session_.getMarkIn()) = placed;
  for (const auto& [index, point] : placed.Entries()) points().attributes[index] = {};
  editor().selectedPoint = 0;
  finishEdit();
  return true;
}

/// The set is untracked then, and numbered without gaps; answers the new number of a point.
int CPointEditing::keepOnlyMarkIn(int followed) {
  CTrackingArray& array = points();
  const int in = session_.getMarkIn();
  const CTrackingPoints* there = pointsAt(in);
  if (there && there->ValidCount() > 0) {
    array.KeepOnlyFrame(in);
  } else {
    array.RemoveLeadingEmptyFrames();
    array.MoveToFrame(in);
  }
  const CTrackingPoints kept = array.FindPoints(in);
  const int selected = numberWithoutGaps(kept, editor().selectedPoint);
  const int count = array.Compact();
  for (int unfilled = count; unfilled > kept.ValidCount(); --unfilled)
    array.PointsAt(in).RemovePoint(array.PointsAt(in).EndIndex() - 1);
  editor().selectedPoint = selected;
  return numberWithoutGaps(kept, followed);
}

void CPointEditing::select(int index) {
  endMove();
  if (!hasPoints() || (index != -1 && !points().PointExists(index))) return;
  editor().selectedPoint = index;
  editor().refresh();
}

bool CPointEditing::beginMove(int index) {
  endMove();
  if (!frameRefusal().empty() || !nearestAllowed(0, 0)) return false;
  editor().updateMarks();
  const CTrackingPoints* there = pointsAt(session_.getMarkIn());
  if (!there || !there->IsValidPoint(index)) return false;
  const CTrackPoint& point = there->Entries().at(index);
  move_ = SMove{index, {point.x, point.y}, nullptr};
  return true;
}

void CPointEditing::moveTo(double x, double y) {
  if (!move_ || !std::isfinite(x) || !std::isfinite(y)) return;
  if (!frameRefusal().empty()) return endMove();
  const int in = session_.getMarkIn();
  const CTrackingPoints* there = pointsAt(in);
  const std::optional<SPoint2> to = nearestAllowed(x, y);
  if (!to || !there || !there->IsValidPoint(move_->index)) return endMove();
  const CTrackPoint& now = there->Entries().at(move_->index);
  if (now.x == to->x && now.y == to->y) return;
  if (!move_->before) {
    move_->before = capture();
    move_->index = keepOnlyMarkIn(move_->index);
  }
  CTrackPoint& point = points().PointsAt(in).Point(move_->index);
  point.x = to->x;
  point.y = to->y;
  finishEdit();
}

void CPointEditing::endMove() {
  if (!move_) return;
  const SMove move = *std::exchange(move_, std::nullopt);
  if (!move.before || !hasPoints() || wereCleared()) return;
  const CTrackingPoints* there = pointsAt(session_.getMarkIn());
  const bool isBack = refusal().empty() && there && there->IsValidPoint(move.index) &&
                      there->Entries().at(move.index).x == move.from.x &&
                      there->Entries().at(move.index).y == move.from.y;
  if (isBack) return install(*move.before);
  history_.record("Move point", move.before);
}

void CPointEditing::cancelMove() {
  if (!move_) return;
  if (!refusal().empty() || wereCleared()) return endMove();
  const SMove move = *std::exchange(move_, std::nullopt);
  if (move.before) install(*move.before);
}

bool CPointEditing::nudge(int index, double dx, double dy) {
  if (!beginMove(index)) return false;
  moveTo(move_->from.x + dx, move_->from.y + dy);
  const bool moved = move_ && move_->before;
  endMove();
  return moved;
}

bool CPointEditing::remove(int index) {
  endMove();
  if (!refusal().empty() || !points().PointExists(index)) return false;
  CTrackingArray& array = points();
  CPointHistory::State before = capture();
  array.RemoveEmptyFrames();
  const CTrackingPoints first = array.FindPoints(array.FirstFrame());
  int selected = numberWithoutGaps(first, before->selected);
  const int removed = numberWithoutGaps(first, index);
  array.DeletePoint(index);
  const int count = array.Compact();
  // What was rendered was rendered with the deleted point.
  if (count > 0) array.SetTrackState(std::min<int>(before->trackState, TRACK_STATE_Tracked));
  if (removed >= 0 && (selected > removed || (selected == removed && selected > 0))) --selected;
  editor().selectedPoint = std::min(selected, count - 1);
  history_.record("Delete point", std::move(before));
  finishEdit();
  return true;
}
