#include "tracking/TrackingPointsEditor.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "doubles/RecordingHost.h"

namespace {

using Calls = std::vector<std::string>;

/// An editor on a set that was tracked over the marks [100, 141).
class TrackingPointsEditor : public testing::Test {
 protected:
  TrackingPointsEditor() {
    host.markIn = 100;
    host.markOut = 141;
    host.displayedFrame = 100;
    editor.setSystemAPI(&host);
    editor.setTrackingArray(&array, false);
    Track(100, 141, 2);
    editor.pointsChangedHook.subscribe(this, 0, [this] { ++pointsChanged; });
    editor.marksChangedHook.subscribe(this, 0, [this] { ++marksChanged; });
    host.calls.clear();
  }

  void Track(int first, int end, int points) {
    for (int frame = first; frame < end; ++frame) {
      for (int point = 0; point < points; ++point) {
        array.PointsAt(frame).Point(point) = {10.0 * (point + 1), 5.0};
      }
    }
    editor.setTracked();
  }

  Calls Draw() {
    host.calls.clear();
    editor.drawTrackingPoints();
    return host.calls.take();
  }

  CRecordingHost host;
  CTrackingArray array;
  CTrackingPointsEditor editor;
  int pointsChanged = 0;
  int marksChanged = 0;
};

TEST_F(TrackingPointsEditor, AttachingTakesTheMarksAndForgetsASelection) {
  EXPECT_EQ(editor.markIn(), 100);
  EXPECT_EQ(editor.markOut(), 141);
  editor.selectedPoint = 1;
  editor.setRendered();
  editor.setTrackingArray(&array, true);
  EXPECT_EQ(array.TrackState(), TRACK_STATE_Tracked);
  EXPECT_EQ(editor.selectedPoint, -1);
  editor.setTrackingArray(&array, false);
  EXPECT_EQ(array.TrackState(), TRACK_STATE_Untracked);
  EXPECT_EQ(array.FrameCount(), 41);
}

TEST_F(TrackingPointsEditor, PropertiesAnnounceOtherValuesOnly) {
  editor.selectedPoint = -1;
  EXPECT_EQ(pointsChanged, 0);
  editor.selectedPoint = 1;
  EXPECT_EQ(pointsChanged, 1);
  editor.showPoints = true;
  EXPECT_EQ(host.calls.take(), Calls{});
  editor.showPoints = false;
  EXPECT_EQ(host.calls.take(), Calls{"redrawDisplay 0"});
  EXPECT_EQ(Draw(), Calls{});
}

TEST_F(TrackingPointsEditor, ValidityNeedsMarksInsideTheTrackedFrames) {
  struct SCase {
    int in, out, state;
    bool valid;
  };
  const SCase cases[] = {
      {100, 141, TRACK_STATE_Tracked, true},    {120, 141, TRACK_STATE_Rendered, true},
      {100, 140, TRACK_STATE_Tracked, true},    {100, 142, TRACK_STATE_Tracked, false},
      {100, 141, TRACK_STATE_Untracked, false}, {120, 120, TRACK_STATE_Tracked, false},
      {130, 120, TRACK_STATE_Tracked, false},
  };
  for (const SCase& c : cases) {
    editor.applyMarks(c.in, c.out);
    array.SetTrackState(c.state);
    EXPECT_EQ(editor.isTrackingValid(), c.valid) << c.in << " " << c.out;
    EXPECT_NE(editor.needsRetracking(), c.valid);
  }
}

TEST_F(TrackingPointsEditor, AnEmptyLeadingFrameDoesNotMakeTheSetReachFurther) {
  editor.setSuspended(true);
  array.PointsAt(90);
  EXPECT_FALSE(editor.isFrameTracked(90));
  EXPECT_TRUE(editor.isFrameTracked(100));
  EXPECT_FALSE(editor.isFrameTracked(141));
  EXPECT_FALSE(editor.isFrameTracked(-1));
}

TEST_F(TrackingPointsEditor, MarkChangesAreClassified) {
  struct SCase {
    const char* name;
    int in, out;
    int inChange, outChange;
  };
  const SCase cases[] = {
      {"as remembered", 100, 141, 0, 0}, {"deleted", -1, -1, 1, 1},    {"inside", 120, 130, 2, 2},
      {"outside", 90, 150, 3, 3},        {"one past", 141, 142, 3, 3},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    host.markIn = c.in;
    host.markOut = c.out;
    EXPECT_EQ(editor.markInChange(), c.inChange);
    EXPECT_EQ(editor.markOutChange(), c.outChange);
    editor.setSuspended(true);
    EXPECT_EQ(editor.markInChange(), 0);
    EXPECT_EQ(editor.markOutChange(), 0);
    editor.setSuspended(false);
  }
  array.KeepOnlyFrame(100);
  EXPECT_EQ(editor.markInChange(), 3);
  EXPECT_EQ(editor.markOutChange(), 0) << "points that were only placed reach any mark OUT";
  array.Clear();
  EXPECT_EQ(editor.markInChange(), 0);
}

TEST_F(TrackingPointsEditor, NewMarksAdjustTheData) {
  struct SCase {
    const char* name;
    int in, out;
    int firstFrame, frameCount, state;
  };
  const SCase cases[] = {
      {"IN inside", 120, 141, 100, 41, TRACK_STATE_Tracked},
      {"OUT outside", 100, 150, 100, 41, TRACK_STATE_Tracked},
      {"IN before", 90, 141, 90, 1, TRACK_STATE_Untracked},
      {"IN behind", 141, 150, 141, 1, TRACK_STATE_Untracked},
      {"OUT deleted", 120, -1, 120, 1, TRACK_STATE_Untracked},
      {"OUT deleted, IN outside", 90, -1, 90, 1, TRACK_STATE_Untracked},
      {"IN deleted", -1, 141, 0, 0, TRACK_STATE_Untracked},
      {"both deleted", -1, -1, 0, 0, TRACK_STATE_Untracked},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    editor.setSystemAPI(&host);
    editor.applyMarks(100, 141);
    array.Clear();
    Track(100, 141, 2);
    host.calls.clear();
    marksChanged = 0;
    editor.applyMarks(c.in, c.out);
    EXPECT_EQ(array.FirstFrame(), c.firstFrame);
    EXPECT_EQ(array.FrameCount(), c.frameCount);
    EXPECT_EQ(array.NumberOfPoints(), c.frameCount > 0 ? 2 : 0);
    EXPECT_EQ(array.TrackState(), c.state);
    EXPECT_EQ(editor.markIn(), c.in);
    EXPECT_EQ(editor.markOut(), c.out);
    editor.applyMarks(c.in, c.out);
    EXPECT_EQ(marksChanged, 1) << "only a change is announced";
    EXPECT_EQ(host.calls.take(), Calls{"redrawDisplay 0"});
  }
}

TEST_F(TrackingPointsEditor, TheFirstMarkInClearsWhatWasPlacedWithoutOne) {
  editor.setSystemAPI(&host);
  editor.updateMarks();
  EXPECT_EQ(array.FrameCount(), 0);
  EXPECT_EQ(editor.markIn(), 100);
}

TEST_F(TrackingPointsEditor, WhileSuspendedMarksDoNotTouchTheData) {
  editor.setSuspended(true);
  host.markIn = 10;
  editor.updateMarks();
  EXPECT_EQ(array.FrameCount(), 41);
  EXPECT_EQ(editor.markIn(), 100);
  editor.setSuspended(false);
  editor.updateMarks();
  EXPECT_EQ(array.FirstFrame(), 10);
}

TEST_F(TrackingPointsEditor, APointsStatusFollowsCoverageAndState) {
  struct SCase {
    const char* name;
    int out, state, status;
  };
  const SCase cases[] = {
      {"covered", 141, TRACK_STATE_Tracked, TRACK_STATUS_Tracked},
      {"edited since", 141, TRACK_STATE_Untracked, TRACK_STATUS_NeedsRetrack},
      {"marks one frame beyond", 142, TRACK_STATE_Tracked, TRACK_STATUS_NotTracked},
  };
  array.attributes[0];
  for (const SCase& c : cases) {
    editor.applyMarks(100, c.out);
    array.SetTrackState(c.state);
    editor.evaluatePointStatus(0);
    EXPECT_EQ(array.TrackStatus(0), c.status) << c.name;
    EXPECT_EQ(editor.needsRetracking(), c.status != TRACK_STATUS_Tracked)
        << c.name << ": asking for the status tracks no frame";
  }
}

TEST_F(TrackingPointsEditor, ColourAndMarksOfTheDisplayedFrame) {
  struct SCase {
    const char* name;
    int in, out, frame, state;
    bool suspended;
    int color;  // -1 nothing drawn
  };
  const SCase cases[] = {
      {"tracked", 100, 141, 110, TRACK_STATE_Tracked, false, 2},
      {"rendered", 100, 141, 110, TRACK_STATE_Rendered, false, 4},
      {"untracked", 100, 141, 110, TRACK_STATE_Untracked, false, 0},
      {"marks reach further", 100, 142, 110, TRACK_STATE_Tracked, false, 0},
      {"marks begin earlier", 99, 141, 110, TRACK_STATE_Rendered, false, 0},
      {"before IN", 110, 141, 109, TRACK_STATE_Tracked, false, -1},
      {"at OUT", 100, 130, 130, TRACK_STATE_Tracked, false, -1},
      {"no IN", -1, 141, 110, TRACK_STATE_Tracked, false, -1},
      {"no OUT, at IN", 110, -1, 110, TRACK_STATE_Tracked, false, 0},
      {"no OUT, elsewhere", 110, -1, 111, TRACK_STATE_Tracked, false, -1},
      {"OUT before IN", 110, 105, 110, TRACK_STATE_Tracked, false, 0},
      {"no such frame", 100, 141, 150, TRACK_STATE_Tracked, true, -1},
      {"suspended", -1, -1, 110, TRACK_STATE_Tracked, true, 2},
  };
  for (const SCase& c : cases) {
    host.markIn = c.in;
    host.markOut = c.out;
    host.displayedFrame = c.frame;
    array.SetTrackState(c.state);
    editor.setSuspended(c.suspended);
    const std::string color = "setDrawingColor " + std::to_string(c.color);
    const Calls drawn = {color, "drawTrackBox 10 5 -1 -1 0 0 0", "setDrawingColor 8",
                         color, "drawTrackBox 20 5 -1 -1 0 0 0", "setDrawingColor 8"};
    EXPECT_EQ(Draw(), c.color < 0 ? Calls{} : drawn) << c.name;
  }
}

TEST_F(TrackingPointsEditor, BoxesAndAnchorArrows) {
  host.imageFormat = CImageFormat(1930, 1080);
  array.SetBoxExtents(10, 11, 20, 21, 22, 23);
  array.PointsAt(100).Point(1).highlight = true;
  array.attributes[1].An = ANCHOR_Vertical;
  array.attributes[1].AnIn = 0;
  const std::string arrow = "drawArrow 10 5 20 5 32 48";
  EXPECT_EQ(Draw(), (Calls{"setDrawingColor 2", "drawTrackBox 10 5 10 11 0 0 0",
                           "setDrawingColor 8", "setDrawingColor 2",
                           "drawTrackBox 20 5 10 11 0 0 1", "setDrawingColor 8", arrow}));
  EXPECT_EQ(array.TrackStatus(1), TRACK_STATUS_Tracked) << "drawing evaluates the status";
  for (const int type : {ANCHOR_None, ANCHOR_FixHorizontal, ANCHOR_FixVertical}) {
    array.attributes[1].An = type;
    EXPECT_EQ(Draw().size(), 6u) << type;
  }
  for (const int type : {ANCHOR_Horizontal, ANCHOR_Vertical, ANCHOR_Both}) {
    array.attributes[1].An = type;
    EXPECT_EQ(Draw().back(), arrow) << type;
  }
  array.PointsAt(100).Point(0).valid = false;
  EXPECT_EQ(Draw().size(), 3u) << "no arrow from a point that is not in the frame";
}

TEST_F(TrackingPointsEditor, ArrowsJoinThePointsOfTheDisplayedFrame) {
  array.PointsAt(110).Point(0) = {3, 4};
  array.PointsAt(110).Point(1) = {50, 60};
  array.attributes[1].An = ANCHOR_Both;
  host.displayedFrame = 110;
  struct SCase {
    int anchor, width;
    const char* last;
  };
  const SCase cases[] = {
      {0, 1920, "drawArrow 3 4 50 60 32 48"}, {0, 1079, "drawArrow 3 4 50 60 17 25"},
      {0, 59, "drawArrow 3 4 50 60 0 0"},     {1, 1920, "drawArrow 50 60 50 60 32 48"},
      {-1, 1920, "setDrawingColor 8"},        {7, 1920, "setDrawingColor 8"},
  };
  for (const SCase& c : cases) {
    host.imageFormat = CImageFormat(c.width, 48);
    array.attributes[1].AnIn = c.anchor;
    EXPECT_EQ(Draw().back(), c.last) << c.anchor << " " << c.width;
  }
}

TEST_F(TrackingPointsEditor, OnlyTheSelectedHighlightedPointShowsItsSearchBox) {
  array.SetBoxExtents(10, 11, 20, 99, 22, 99);
  for (const int selected : {-1, 0, 1}) {
    for (const bool highlight : {false, true}) {
      editor.selectedPoint = selected;
      array.PointsAt(100).Point(1).highlight = highlight;
      const Calls calls = Draw();
      ASSERT_EQ(calls.size(), 6u);
      EXPECT_EQ(calls[1], "drawTrackBox 10 5 10 11 0 0 0");
      const std::string search = selected == 1 && highlight ? "30 33 " : "0 0 ";
      EXPECT_EQ(calls[4], "drawTrackBox 20 5 10 11 " + search + (highlight ? "1" : "0"));
    }
  }
}

TEST_F(TrackingPointsEditor, NothingIsDrawnWithoutWhatItTakes) {
  ASSERT_FALSE(Draw().empty());
  host.clipOpen = false;
  EXPECT_EQ(Draw(), Calls{}) << "no image format";
  host.clipOpen = true;
  array.PointsAt(90).Point(0);
  host.displayedFrame = 90;
  editor.setSuspended(true);
  EXPECT_EQ(Draw(), Calls{}) << "a frame without a valid point";
  host.displayedFrame = 100;
  array.Clear();
  EXPECT_EQ(Draw(), Calls{}) << "no points";
  Track(100, 101, 1);
  EXPECT_EQ(Draw().size(), 3u);
  editor.setTrackingArray(nullptr, true);
  EXPECT_EQ(Draw(), Calls{}) << "no array";
}

TEST_F(TrackingPointsEditor, ANewHostIsDrawnTo) {
  CRecordingHost other;
  other.markIn = 100;
  other.markOut = 141;
  other.displayedFrame = 140;
  editor.setSystemAPI(&other);
  EXPECT_EQ(other.calls.count("drawTrackBox"), 2);
  EXPECT_EQ(editor.markIn(), -1);
}

TEST_F(TrackingPointsEditor, DrawingEvaluatesAStatusOnce) {
  Draw();  // gives the points their attributes
  Draw();
  EXPECT_EQ(array.TrackStatus(0), TRACK_STATUS_Tracked);
  array.SetTrackState(TRACK_STATE_Untracked);
  Draw();
  EXPECT_EQ(array.TrackStatus(0), TRACK_STATUS_Tracked);
  array.attributes[0] = {};
  Draw();
  EXPECT_EQ(array.TrackStatus(0), TRACK_STATUS_NeedsRetrack);
  EXPECT_EQ(array.TrackStatus(1), TRACK_STATUS_Tracked);
}

TEST_F(TrackingPointsEditor, RefreshDeselectsWhenTheLastPointIsGone) {
  editor.selectedPoint = 1;
  editor.refresh();
  EXPECT_EQ(editor.selectedPoint, 1);
  array.Clear();
  editor.refresh();
  EXPECT_EQ(editor.selectedPoint, -1);
  EXPECT_EQ(host.calls.take(), (Calls{"redrawDisplay 0", "redrawDisplay 0"}));
}

TEST_F(TrackingPointsEditor, ClearingAndKeepingAreAnnounced) {
  // Drawing asks whether points cover the marks, and asking inserts the frames that are missing.
  array.PointsAt(90);
  editor.keepFirstFrame();
  EXPECT_EQ(pointsChanged, 1);
  EXPECT_EQ(array.FirstFrame(), 100);
  EXPECT_EQ(array.NumberOfPoints(), 2);
  EXPECT_EQ(array.FrameCount(), 1);
  EXPECT_EQ(array.TrackState(), TRACK_STATE_Untracked);
  editor.resetMarks();
  EXPECT_EQ(pointsChanged, 2);
  EXPECT_EQ(array.FrameCount(), 0);
  EXPECT_EQ(editor.markIn(), -1);
  EXPECT_EQ(editor.markOut(), -1);
}

TEST(TrackingPointsEditorAlone, DoesNothingWithoutArrayAndHost) {
  CRecordingHost host;
  host.markIn = 3;
  for (const bool hasHost : {false, true}) {
    CTrackingPointsEditor editor;
    editor.setSystemAPI(hasHost ? &host : nullptr);
    editor.setTrackingArray(nullptr, false);
    editor.setTracked();
    editor.setRendered();
    editor.keepFirstFrame();
    editor.resetMarks();
    editor.updateMarks();
    editor.applyMarks(1, 2);
    editor.evaluatePointStatus(0);
    editor.drawTrackingPoints();
    editor.refresh();
    EXPECT_FALSE(editor.isTrackingValid());
    EXPECT_FALSE(editor.isFrameTracked(0));
    EXPECT_EQ(editor.markInChange(), 0);
    EXPECT_EQ(editor.markOutChange(), 0);
    EXPECT_EQ(editor.markIn(), -1);
  }
  EXPECT_EQ(host.calls.take(), Calls{});
}

}  // namespace
