#include "session/PointHistory.h"

#include <gtest/gtest.h>

#include <string>

namespace {

/// A set of `entries` in one frame, which is its name.
CPointHistory::State setOf(int name, int entries = 1) {
  SPointsState state;
  CTrackingPoints& points = state.frames[name];
  for (int index = 0; index < entries; ++index) points.Point(index) = CTrackPoint(1.0, 1.0);
  return std::make_shared<const SPointsState>(std::move(state));
}

int nameOf(const CPointHistory::State& state) {
  return state->frames.begin()->first;
}

TEST(PointHistory, KeepsTheLatestSteps) {
  constexpr int STEPS = static_cast<int>(CPointHistory::MOST_STEPS);
  CPointHistory history;
  for (int step = 0; step < STEPS + 5; ++step) history.record(std::to_string(step), setOf(step));
  for (int step = STEPS + 4; step >= 5; --step) {
    ASSERT_TRUE(history.canUndo()) << step;
    EXPECT_EQ(history.undoText(), std::to_string(step));
    EXPECT_EQ(nameOf(history.undo(setOf(step + 1))), step);
  }
  EXPECT_FALSE(history.canUndo());
  for (int step = 5; step < STEPS + 5; ++step) {
    EXPECT_EQ(history.redoText(), std::to_string(step));
    EXPECT_EQ(nameOf(history.redo(setOf(step))), step + 1);
  }
  EXPECT_FALSE(history.canRedo());
}

TEST(PointHistory, KeepsNoMoreEntriesThanItMay) {
  constexpr int MOST = 40;
  CPointHistory history(MOST);
  history.record("first", setOf(1, MOST / 2));
  history.record("second", setOf(2, MOST / 2));
  EXPECT_EQ(nameOf(history.undo(setOf(3, 1))), 2);
  EXPECT_EQ(nameOf(history.undo(setOf(2, 1))), 1) << "both had room";
  EXPECT_EQ(nameOf(history.redo(setOf(1, MOST - 1))), 2);
  EXPECT_TRUE(history.canUndo());
  EXPECT_EQ(nameOf(history.redo(setOf(2, 2))), 3);
  EXPECT_EQ(nameOf(history.undo(setOf(3, 1))), 2);
  EXPECT_FALSE(history.canUndo()) << "the oldest went";
  EXPECT_TRUE(history.canRedo());
  history.record("too much", setOf(4, MOST + 1));
  EXPECT_FALSE(history.canUndo());
  EXPECT_FALSE(history.canRedo());
}

}  // namespace
