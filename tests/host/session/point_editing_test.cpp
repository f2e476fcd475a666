#include "session/PointEditing.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace {

/// A tool that has points, and may be at work.
class CPointsTool : public CToolObject {
 public:
  explicit CPointsTool(CShotSession& session) : CToolObject("Points") {
    editor.setSystemAPI(&session);
    editor.setTrackingArray(&array, true);
    editor.pointsEditedHook.subscribe(this, 0, [this] { ++edits; });
  }
  int toolInitialize(CNavSystemInterface*) override { return 0; }
  int toolShutdown() override { return 0; }
  CToolProcessor* makeToolProcessorInstance(const CAbortFlag*) override { return nullptr; }
  int getToolProcessingState() override { return state; }
  int onMarksChange() override {
    editor.updateMarks();
    return 0;
  }

  CTrackingArray array;
  CTrackingPointsEditor editor;
  int state = STATE_IDLE;
  int edits = 0;
};

/// Three points, placed at mark IN of frames [100, 108) of a picture of 256 x 192, track box 10.
class PointEditing : public ::testing::Test {
 protected:
  static constexpr int IN = 102;
  static constexpr int OUT = 106;

  PointEditing()
      : session_(OpenClip("test:width=256,height=192,frames=8,firstFrame=100", 1),
                 CShotSession::SSettings()),
        tool_(session_),
        editing_(session_) {
    session_.setTool(&tool_);
    session_.setToolEditor(&tool_.editor);
    array().SetBoxExtents(10, 10, 10, 10, 10, 10);
    session_.setMarks(IN, OUT);
    session_.goToFrame(IN);
    for (const double x : {50.0, 100.0, 150.0}) editing_.place(x, 80.0);
  }
  ~PointEditing() override { session_.setTool(nullptr); }

  CTrackingArray& array() { return tool_.array; }

  void useBox(const SRect& box, bool use = true) {
    array().SetMattingBox(box);
    array().SetUseMatting(use);
  }

  /// As a pass over [in, out) does.
  void track(int in = IN, int out = OUT) {
    const CTrackingPoints first = array().FindPoints(array().FirstFrame());
    array().frames.clear();
    for (int frame = in; frame < out; ++frame)
      for (const auto& [index, point] : first.Entries())
        array().PointsAt(frame).Point(index) = CTrackPoint(point.x + frame - in, point.y);
    tool_.editor.setTracked();
  }

  /// "102: 50 100 150 state 0 selected 2"; the x of every point.
  std::string set() {
    std::string text;
    for (const auto& [frame, points] : array().frames) {
      text += std::to_string(frame) + ":";
      int next = 0;
      for (const auto& [index, point] : points.Entries()) {
        EXPECT_EQ(index, next++) << "numbered without gaps";
        EXPECT_TRUE(point.IsValid());
        text += " " + std::to_string(static_cast<int>(point.x));
      }
      text += "; ";
    }
    return text + "state " + std::to_string(array().TrackState()) + " selected " +
           std::to_string(tool_.editor.selectedPoint);
  }

  void drag(int index, double x, double y) {
    ASSERT_TRUE(editing_.beginMove(index));
    editing_.moveTo(x, y);
    editing_.endMove();
  }

  CShotSession session_;
  CPointsTool tool_;
  CPointEditing editing_;
};

constexpr double NOTHING = std::numeric_limits<double>::quiet_NaN();

TEST_F(PointEditing, SaysWhyAPointCannotStandThere) {
  const SRect part{0, 0, 199, 191};
  const SRect beside{0, 0, 256, 191};
  const struct {
    const char* what;
    std::function<void()> arrange;
    double x, y;
    const char* says;  ///< empty: it can
  } cases[] = {
      {"first place", [] {}, 10.0, 10.0, ""},
      {"last place", [] {}, 245.0, 181.0, ""},
      {"rounds to it", [] {}, 245.4, 9.6, ""},
      {"beyond", [] {}, 245.6, 90.0, "track box would leave"},
      {"outside the picture", [] {}, -3e12, 90.0, "track box would leave"},
      {"no place", [] {}, NOTHING, 90.0, "track box would leave"},
      {"region", [&] { useBox(part); }, 190.0, 90.0, "region"},
      {"box beside the picture", [&] { useBox(beside); }, 245.0, 90.0, ""},
      {"empty box", [&] { useBox(SRect()); }, 190.0, 90.0, ""},
      {"unused box", [&] { useBox(part, false); }, 190.0, 90.0, ""},
      {"no box", [&] { array().SetBoxExtents(-1, -1, -1, -1, -1, -1); }, 90.0, 90.0, "no size"},
      {"box too large", [&] { array().SetBoxExtents(10, 96, 9, 9, 9, 9); }, 90.0, 90.0, "larger"},
      {"other frame", [&] { session_.goToFrame(IN + 1); }, 90.0, 90.0, "01:00:00:02 (frame 102)"},
      {"hidden", [&] { tool_.editor.showPoints = false; }, 90.0, 90.0, "hidden"},
      {"no mark", [&] { session_.setMarks(-1, OUT); }, 90.0, 90.0, "Set mark IN first"},
      {"at work", [&] { tool_.state = CToolObject::STATE_PAUSED; }, 90.0, 90.0, "pass runs"},
      {"no tool", [&] { session_.setToolEditor(nullptr); }, 90.0, 90.0, "not active"}};
  for (const auto& c : cases) {
    useBox({}, false);
    array().SetBoxExtents(10, 10, 10, 10, 10, 10);
    c.arrange();
    const std::string says = editing_.refusal(c.x, c.y);
    EXPECT_NE(says.find(c.says), std::string::npos) << c.what << ": " << says;
    EXPECT_EQ(says.empty(), *c.says == '\0') << c.what << ": " << says;
    EXPECT_EQ(editing_.place(c.x, c.y) >= 0, says.empty()) << c.what;
    session_.setToolEditor(&tool_.editor);
    tool_.state = CToolObject::STATE_IDLE;
    tool_.editor.showPoints = true;
    session_.setMarks(IN, OUT);
    session_.goToFrame(IN);
  }
}

TEST_F(PointEditing, WhileAPassRunsOnlyTheSelectionChanges) {
  ASSERT_TRUE(editing_.beginMove(0));
  editing_.moveTo(60.0, 80.0);
  track();
  tool_.state = CToolObject::STATE_RUNNING;
  const std::string before = set();
  editing_.moveTo(70.0, 80.0);
  EXPECT_FALSE(editing_.isMoving()) << "the drag ended with the pass";
  EXPECT_FALSE(editing_.beginMove(0));
  EXPECT_FALSE(editing_.nudge(0, 1.0, 0.0));
  EXPECT_FALSE(editing_.remove(0));
  EXPECT_FALSE(editing_.canUndo());
  editing_.undo();
  EXPECT_EQ(set(), before);
  editing_.select(0);
  EXPECT_EQ(tool_.editor.selectedPoint, 0);
  editing_.select(7);
  EXPECT_EQ(tool_.editor.selectedPoint, 0) << "no such point";
  editing_.select(-1);
  EXPECT_EQ(tool_.editor.selectedPoint, -1);
  tool_.state = CToolObject::STATE_IDLE;
  EXPECT_EQ(editing_.undoText(), "Move point");
}

TEST_F(PointEditing, FindsTheNearestPointThatIsDrawn) {
  track();
  array().PointsAt(IN).Point(1).x = 56.0;
  const struct {
    int frame;
    double x, radius;
    int found;
  } cases[] = {{IN, 52.0, 5.0, 0},      {IN, 54.0, 5.0, 1},    {IN, 53.0, 3.0, 1},
               {IN, 45.0, 5.0, 0},      {IN, 44.9, 5.0, -1},   {IN + 1, 151.0, 0.0, 2},
               {OUT - 1, 53.0, 0.5, 0}, {OUT, 53.0, 50.0, -1}, {IN, 50.0, -1.0, -1},
               {IN - 1, 50.0, 5.0, -1}, {IN, NOTHING, 5.0, -1}};
  for (const auto& c : cases) {
    session_.goToFrame(c.frame);
    EXPECT_EQ(editing_.pointAt(c.x, 80.0, c.radius), c.found) << c.frame << " " << c.x;
  }
  session_.goToFrame(IN);
  tool_.editor.showPoints = false;
  EXPECT_EQ(editing_.pointAt(50.0, 80.0, 5.0), -1) << "nobody picks what he does not see";
}

/// Every edit of a set that was tracked over more than the marks, taken back and done again.
TEST_F(PointEditing, EveryEditIsOneStepThatComesBackExactly) {
  const std::string at103 = "103: 53 103 153";
  const struct {
    const char* text;
    std::function<void()> edit;
    std::string after;
  } cases[] = {
      {"Place point", [&] { editing_.place(20.0, 30.0); }, at103 + " 20; state 0 selected 3"},
      {"Move point", [&] { drag(1, 60.5, 70.0); }, "103: 53 60 153; state 0 selected 1"},
      {"Move point", [&] { drag(1, 999.0, -5.0); }, "103: 53 245 153; state 0 selected 1"},
      {"Move point", [&] { editing_.nudge(2, -3.0, 0.0); }, "103: 53 103 150; state 0 selected 1"},
      {"Delete point", [&] { editing_.remove(0); },
       "100: 100 150; 101: 101 151; 102: 102 152; 103: 103 153; 104: 104 154; 105: 105 155; "
       "state 1 selected 0"},
      {"Delete point", [&] { editing_.remove(1); },
       "100: 50 150; 101: 51 151; 102: 52 152; 103: 53 153; 104: 54 154; 105: 55 155; "
       "state 1 selected 0"}};
  track(100, OUT);
  session_.setMarks(103, OUT);
  session_.goToFrame(103);
  editing_.select(1);
  for (const auto& c : cases) {
    tool_.editor.setRendered();
    array().attributes[2].trackStatus = TRACK_STATUS_Tracked;
    const CTrackingArray before = array();
    const int edits = tool_.edits;
    c.edit();
    EXPECT_GT(tool_.edits, edits) << c.text;
    EXPECT_EQ(set(), c.after);
    for (const auto& [index, attribute] : array().attributes)
      EXPECT_EQ(attribute.trackStatus, TRACK_STATUS_Unknown) << "is evaluated anew";
    EXPECT_EQ(editing_.undoText(), c.text);
    array().SetBoxExtents(12, 12, 9, 9, 9, 9);
    editing_.undo();
    EXPECT_EQ(array().TrackBoxExtentX, 12) << "the operator's setting";
    EXPECT_EQ(array().frames, before.frames) << c.text;
    EXPECT_EQ(array().TrackState(), TRACK_STATE_Rendered);
    EXPECT_EQ(tool_.editor.selectedPoint, 1);
    editing_.redo();
    EXPECT_EQ(set(), c.after);
    editing_.undo();
    array().SetBoxExtents(10, 10, 10, 10, 10, 10);
    EXPECT_EQ(editing_.undoText(), "Place point") << "of the fixture";
  }
}

TEST_F(PointEditing, ADragThatMovesNothingIsNoStep) {
  track();
  const std::string before = set();
  const std::vector<std::function<void()>> drags = {
      [&] { editing_.beginMove(0), editing_.endMove(); },
      [&] { editing_.beginMove(0), editing_.moveTo(50.0, 80.0), editing_.endMove(); },
      [&] { drag(0, NOTHING, 80.0); },
      [&] {
        editing_.beginMove(0);
        editing_.moveTo(70.0, 80.0);
        editing_.moveTo(50.0, 80.0);
        editing_.endMove();
      },
      [&] { editing_.beginMove(0), editing_.moveTo(70.0, 90.0), editing_.cancelMove(); },
      [&] { editing_.nudge(0, 0.0, 0.0); },
      [&] { editing_.beginMove(3), editing_.moveTo(70.0, 90.0), editing_.endMove(); }};
  for (std::size_t i = 0; i < drags.size(); ++i) {
    drags[i]();
    EXPECT_EQ(set(), before) << i;
    EXPECT_EQ(editing_.undoText(), "Place point") << i;
  }
  editing_.beginMove(0);
  for (const double x : {60.0, 61.0, 62.0}) editing_.moveTo(x, 80.0);
  session_.goToFrame(IN + 1);
  editing_.moveTo(99.0, 80.0);
  EXPECT_FALSE(editing_.isMoving()) << "not in this frame";
  EXPECT_EQ(set(), "102: 62 100 150; state 0 selected 2");
  editing_.undo();
  EXPECT_EQ(set(), before) << "one step";
}

TEST_F(PointEditing, TheSelectionStaysWithItsPointAndAnchorsFollow) {
  const struct {
    int selected, removed, after;
  } cases[] = {{2, 0, 1}, {2, 2, 1}, {0, 0, 0}, {0, 1, 0}, {1, 1, 0}, {-1, 1, -1}};
  track();
  array().attributes[2].An = ANCHOR_Both;
  array().attributes[2].AnIn = 1;
  for (const auto& c : cases) {
    editing_.select(c.selected);
    ASSERT_TRUE(editing_.remove(c.removed));
    EXPECT_EQ(tool_.editor.selectedPoint, c.after) << c.selected << " " << c.removed;
    EXPECT_TRUE(c.removed != 0 || array().attributes[1].AnIn == 0) << "renumbered alike";
    editing_.undo();
    EXPECT_EQ(array().attributes[2].AnIn, 1);
    EXPECT_EQ(tool_.editor.selectedPoint, c.selected);
  }
  for (int left = 3; left > 0; --left) EXPECT_TRUE(editing_.remove(0));
  EXPECT_EQ(set(), "state 0 selected -1");
  EXPECT_FALSE(editing_.remove(0));
  editing_.undo();
  EXPECT_EQ(array().NumberOfPoints(), 1) << "the operator took the last one, and may have it back";
}

TEST_F(PointEditing, UndoAndRedoGiveWholeSetsWhateverHappenedInBetween) {
  drag(0, 60.0, 80.0);
  track();
  const std::string tracked = set();
  editing_.undo();
  EXPECT_EQ(set(), "102: 50 100 150; state 0 selected 2");
  track();
  editing_.redo();
  EXPECT_EQ(set(), tracked) << "as that undo found it";
  editing_.undo();
  EXPECT_EQ(array().TrackState(), TRACK_STATE_Tracked) << "as that redo found it";
  editing_.place(20.0, 20.0);
  EXPECT_FALSE(editing_.canRedo()) << "another way was taken";

  tool_.editor.clearAll();
  EXPECT_EQ(editing_.undoText(), "");
  editing_.undo();
  EXPECT_EQ(array().NumberOfPoints(), 0) << "what the tool cleared stays so";
  editing_.place(30.0, 30.0);
  editing_.undo();
  EXPECT_EQ(array().NumberOfPoints(), 0);
  EXPECT_FALSE(editing_.canUndo()) << "nothing before the clear";
  editing_.redo();
  EXPECT_EQ(set(), "102: 30; state 0 selected 0");
  editing_.forget();
  EXPECT_FALSE(editing_.canUndo());
}

TEST_F(PointEditing, AnUndoFollowsTheMarks) {
  const struct {
    const char* what;
    int in, out;
    bool tracked;
    std::string after;
  } cases[] = {
      {"moved away", 104, OUT, false, "104: 50 100 150; state 0 selected 2"},
      {"before the tracked frames", 101, OUT, true, "101: 50 100 150; state 0 selected 2"},
      {"inside", 103, 105, true,
       "102: 50 100 150; 103: 51 101 151; 104: 52 102 152; 105: 53 103 153; state 1 selected 2"},
      {"no end", 103, -1, true, "103: 51 101 151; state 0 selected 2"}};
  for (const auto& c : cases) {
    if (c.tracked) track();
    drag(1, 120.0, 80.0);
    session_.setMarks(c.in, c.out);
    editing_.undo();
    EXPECT_EQ(set(), c.after) << c.what;
    EXPECT_EQ(tool_.editor.markIn(), c.in);
    while (array().NumberOfPoints() > 0) editing_.remove(0);
    session_.setMarks(IN, OUT);
    for (const double x : {50.0, 100.0, 150.0}) editing_.place(x, 80.0);
  }
}

TEST_F(PointEditing, MarksThatTheEditorHasNotMetDoNotCostThePoints) {
  tool_.editor.resetMarks();
  editing_.place(50.0, 80.0);
  session_.setMarks(IN, OUT + 1);
  EXPECT_EQ(set(), "102: 50; state 0 selected 0");
  editing_.place(60.0, 80.0);
  tool_.editor.setSystemAPI(&session_);  // forgets them, and keeps the points
  editing_.undo();
  session_.setMarks(IN, OUT);
  EXPECT_EQ(set(), "102: 50; state 0 selected 0");
}

/// What a host may find: a point that is lost at mark IN, and entries that were never filled.
TEST_F(PointEditing, GapsAtMarkInCloseUp) {
  track(100, OUT);
  array().PointsAt(103).Point(0) = CTrackPoint();
  array().PointsAt(103).Point(7) = CTrackPoint();
  session_.setMarks(103, OUT);
  session_.goToFrame(103);
  editing_.select(2);
  drag(2, 20.0, 80.0);
  EXPECT_EQ(set(), "103: 103 20; state 0 selected 1");
  EXPECT_EQ(editing_.place(30.0, 80.0), 2);
  array().MoveToFrame(100);
  EXPECT_EQ(editing_.place(40.0, 80.0), 3);
  EXPECT_EQ(set(), "103: 103 20 30 40; state 0 selected 3") << "from where no mark is";
}

}  // namespace
