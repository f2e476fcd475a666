#include <algorithm>
#include <memory>

#include "session/PointEditing.h"

// How edits end, and how they are taken back.

namespace {

bool holdsPoint(const CTrackingArray& array) {
  return std::ranges::any_of(array.frames,
                             [](const auto& frame) { return frame.second.ValidCount() > 0; });
}

}  // namespace

void CPointEditing::finishEdit() {
  leftPoints_ = holdsPoint(points());
  editor().setEdited();
}

bool CPointEditing::wereCleared() const {
  return leftPoints_ && !holdsPoint(points());
}

bool CPointEditing::canUndo() const {
  return history_.canUndo() && refusal().empty() && session_.getMarkIn() >= 0 && !wereCleared();
}

bool CPointEditing::canRedo() const {
  return history_.canRedo() && refusal().empty() && session_.getMarkIn() >= 0 && !wereCleared();
}

std::string CPointEditing::undoText() const {
  return canUndo() ? history_.undoText() : "";
}

std::string CPointEditing::redoText() const {
  return canRedo() ? history_.redoText() : "";
}

void CPointEditing::undo() {
  endMove();
  if (canUndo()) install(*history_.undo(capture()));
}

void CPointEditing::redo() {
  endMove();
  if (canRedo()) install(*history_.redo(capture()));
}

void CPointEditing::forget() {
  move_.reset();
  history_.clear();
  leftPoints_ = false;
}

CPointHistory::State CPointEditing::capture() const {
  const CTrackingArray& array = points();
  return std::make_shared<const SPointsState>(
      SPointsState{array.frames, array.attributes, array.TrackState(), editor().selectedPoint});
}

void CPointEditing::install(const SPointsState& state) {
  editor().updateMarks();
  CTrackingArray& array = points();
  array.frames = state.frames;
  array.attributes = state.attributes;
  array.SetTrackState(state.trackState);
  fitToMarks();
  editor().selectedPoint = array.PointExists(state.selected) ? state.selected : -1;
  finishEdit();
}

void CPointEditing::fitToMarks() {
  CTrackingArray& array = points();
  if (array.NumberOfPoints() == 0) return;
  const int in = session_.getMarkIn();
  if (in != array.FirstFrame() && !editor().isFrameTracked(in)) array.MoveToFrame(in);
  if (session_.getMarkOut() < 0 && array.FrameCount() > 1) array.KeepOnlyFrame(in);
}
