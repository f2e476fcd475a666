#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>

#include "tracking/TrackingArray.h"

/// The points as they were at one time: whole, so that they can come back whatever happened since.
/// Box sizes and matting are settings of the operator's and not among them.
struct SPointsState {
  CTrackingArray::TrackingArrayType frames;
  CTrackingAttributes attributes;
  int trackState = TRACK_STATE_Untracked;
  int selected = -1;

  std::size_t entryCount() const;
};

/// Steps that can be undone and redone. A step is what the operator did and the points as they were
/// on its other side. Beyond the limits the oldest steps go, and among those that were undone the
/// ones that would be redone last; a set that exceeds the most entries by itself is not kept at
/// all. THREAD: one thread.
class CPointHistory {
 public:
  using State = std::shared_ptr<const SPointsState>;

  static constexpr std::size_t MOST_STEPS = 100;
  /// Of all steps together; 80 bytes each.
  static constexpr std::size_t MOST_ENTRIES = 4'000'000;

  explicit CPointHistory(std::size_t mostEntries = MOST_ENTRIES) : mostEntries_(mostEntries) {}

  /// Something was done to the points, which were `before`: what was undone cannot be redone now.
  void record(const std::string& text, State before);
  bool canUndo() const { return !done_.empty(); }
  bool canRedo() const { return !undone_.empty(); }
  /// What would be undone or redone; empty: nothing.
  std::string undoText() const { return canUndo() ? done_.back().text : ""; }
  std::string redoText() const { return canRedo() ? undone_.back().text : ""; }
  /// Takes a step back and answers how the points were; `now` is how they are, for the way forth.
  /// REQUIRES: canUndo.
  State undo(State now);
  /// REQUIRES: canRedo.
  State redo(State now);
  void clear();

 private:
  struct SStep {
    std::string text;
    State state;
    std::size_t entries = 0;
  };
  using Steps = std::deque<SStep>;

  State step(Steps& from, Steps& to, State now);
  void dropOldest();

  const std::size_t mostEntries_;
  Steps done_;
  Steps undone_;  ///< the one to be redone next is the last
};
