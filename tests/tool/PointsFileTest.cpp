#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "ToolFixture.h"

namespace {

constexpr int FIRST = 40;  // of the loaded frames
constexpr int END = 44;

class PointsFile : public ToolTest {
 protected:
  void SetUp() override {
    ToolTest::SetUp();
    ZRNQTraceLevel = 0;
    path = folder + "shot.points";
    host.onCall = [this](const std::string& call) { react(call); };
    tool.setBoxExtents(6, 6, 8, 8, 8, 8);
    forgetCalls();
  }

  /// A host tells its tool of every change of the marks; this one may also refuse them.
  void react(const std::string& call) {
    if (call.rfind("setMark", 0) != 0) return;
    if (refusedMark == call) (call[7] == 'I' ? host.markIn : host.markOut) = refusedValue;
    tool.onMarksChange();
  }

  /// Two points over [FIRST, END), the second one anchored; matting off.
  static std::string pointsText(char state) {
    std::string text = "{";
    for (int f = FIRST; f < END; ++f) {
      text += std::to_string(f) + "[0(" + std::to_string(10 + f % 3) + ".5, 12) 1(33, 20.25)]\n";
    }
    return text + "}\n[0(0,0,0,0.0001,0,-1) 1(0,0,0,0.0001,1,0)]\n0 3 60 4 40\n" + state + "\n";
  }
  bool load(char state, bool setMarks = true) {
    put(path, pointsText(state));
    return tool.LoadTrackingPoints(path, setMarks);
  }

  std::string path;
  std::string refusedMark;  ///< "setMarkIn 40": ends at the value beside it
  int refusedValue = 0;
};

TEST_F(PointsFile, NamesAreSuggestedAfterMarkIn) {
  struct {
    bool clip;
    int markIn;
    const char* name;
  } const cases[] = {
      {true, 10, "stab_00_00_00_10.points"},
      {true, 24 * 3661 + 5, "stab_01_01_01_05.points"},
      {false, 10, "stab_10.points"},
      {false, -1, "stab_-1.points"},
  };
  for (const auto& c : cases) {
    host.clipOpen = c.clip;
    host.markIn = c.markIn;
    EXPECT_EQ(tool.SuggestedPointsFileName(), c.name);
  }
}

TEST_F(PointsFile, DialogsBeginWithTheSuggestionAndMayBeCancelled) {
  placePoints();
  tool.SavePointsWithDialog();
  tool.LoadPointsWithDialog(true);
  ASSERT_EQ(application.fileDialogs.size(), 2u);
  EXPECT_EQ(application.fileDialogs[0].kind, SFileDialog::EKind::save);
  EXPECT_EQ(application.fileDialogs[1].kind, SFileDialog::EKind::open);
  for (const SFileDialog& dialog : application.fileDialogs)
    EXPECT_EQ(dialog.fileName, "stab_00_00_04_04.points");
  EXPECT_TRUE(trace.empty());
  application.file = path;
  tool.SavePointsWithDialog();
  tool.clearAllTrackingData();
  tool.LoadPointsWithDialog(false);
  EXPECT_EQ(tool.livePoints().NumberOfPoints(), 2);
}

TEST_F(PointsFile, SavesTheShotAsItStands) {
  placePoints();
  tool.setMattingBox({3, 4, 60, 40});
  tool.livePoints().SetMattingBox({});
  window->setUseMattingChecked(true);
  put(path, "an old file, longer than the new one" + std::string(5000, '.'));
  ASSERT_TRUE(tool.SaveTrackingPoints(path));
  EXPECT_EQ(textOf(path),
            "{100[0(10, 12) 1(30, 17)]\n}\n[0(0,0,0,0.0001,0,-1) 1(0,0,0,0.0001,0,-1)]\n"
            "1 3 60 4 40\nR\n");
  window->setUseMattingChecked(false);
  trackPoints();
  ASSERT_TRUE(tool.SaveTrackingPoints(path));
  EXPECT_TRUE(textOf(path).ends_with("0 3 60 4 40\nG\n")) << textOf(path);
  EXPECT_TRUE(trace.empty());
}

TEST_F(PointsFile, WhatCannotBeCreatedIsToldAndLeftAlone) {
  placePoints();
  std::filesystem::create_directory(folder + "taken");
  ASSERT_EQ(mkfifo((folder + "pipe").c_str(), 0600), 0);
  tool.livePoints().SetMattingBox({1, 1, 2, 2});
  for (const std::string name : {"none/shot.points", "taken", "pipe"}) {
    trace.clear();
    EXPECT_FALSE(tool.SaveTrackingPoints(folder + name));
    ASSERT_EQ(trace.size(), 2u);
    EXPECT_EQ(trace[0], "ERROR: Stabilizer: Can't create tracking point file " + folder + name);
    EXPECT_NE(trace[1].find(folder + name), std::string::npos) << trace[1];
  }
  EXPECT_EQ(tool.livePoints().MattingBox(), (SRect{1, 1, 2, 2}));
  EXPECT_TRUE(std::filesystem::is_fifo(folder + "pipe"));
}

TEST_F(PointsFile, AFullDiskKeepsTheOldFile) {
  placePoints();
  put(path, "old");
  const auto oldHandler = signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit tiny{10, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &tiny);
  const bool saved = tool.SaveTrackingPoints(path);
  setrlimit(RLIMIT_FSIZE, &before);
  signal(SIGXFSZ, oldHandler);
  EXPECT_FALSE(saved);
  ASSERT_EQ(trace.size(), 2u);
  EXPECT_EQ(trace[0], "ERROR: Stabilizer: Can't save tracking points to file " + path);
  EXPECT_EQ(textOf(path), "old");
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    EXPECT_NE(entry.path().extension(), ".tmp") << entry.path();
  }
}

TEST_F(PointsFile, AFileThatIsNoneChangesNothing) {
  constexpr const char* OPEN = "ERROR: Stabilizer: Can't open tracking point file ";
  constexpr const char* LOAD = "ERROR: Stabilizer: Can't load tracking points from file ";
  std::filesystem::create_directory(folder + "folder");
  ASSERT_EQ(mkfifo((folder + "pipe").c_str(), 0600), 0);
  const std::string whole = pointsText('G');
  put(folder + "empty", "");
  put(folder + "rubbish", "no points\n");
  put(folder + "cut short", whole.substr(0, whole.size() - 2));
  put(folder + "huge", "{");
  std::filesystem::resize_file(folder + "huge", std::uintmax_t{1} << 30);
  struct {
    const char *name, *line;
  } const cases[] = {{"none", OPEN},    {"folder", OPEN},    {"pipe", OPEN}, {"empty", LOAD},
                     {"rubbish", LOAD}, {"cut short", LOAD}, {"huge", LOAD}};
  makeSmoothed();
  const CTrackingArray points = tool.livePoints();
  const CStabilizerParameters parameters = window->gatherParameters();
  const SRect box = tool.getMattingBox();
  for (const auto& c : cases) {
    for (const bool setMarks : {true, false}) {
      forgetCalls();
      EXPECT_FALSE(tool.LoadTrackingPoints(folder + c.name, setMarks)) << c.name;
      ASSERT_EQ(trace.size(), 2u) << c.name;
      EXPECT_EQ(trace[0], c.line + folder + c.name);
      EXPECT_FALSE(trace[1].empty());
      EXPECT_EQ(tool.livePoints(), points) << c.name;
      EXPECT_EQ(window->gatherParameters(), parameters);
      EXPECT_EQ(tool.getMattingBox(), box);
      EXPECT_TRUE(tool.isSmoothed());
      EXPECT_TRUE(host.calls.take().empty()) << c.name;
    }
  }
}

TEST_F(PointsFile, WithItsMarksATrackedSetStaysTrackedAndIsSmoothed) {
  for (const char state : {'G', 'B'}) {
    SCOPED_TRACE(state);
    makeSmoothed();
    tool.editor().selectedPoint = 1;
    forgetCalls();
    ASSERT_TRUE(load(state));
    EXPECT_EQ(host.markIn, FIRST);
    EXPECT_EQ(host.markOut, END);
    EXPECT_EQ(host.displayedFrame, FIRST);
    CTrackingArray& points = tool.livePoints();
    EXPECT_EQ(points.FrameCount(), END - FIRST);
    EXPECT_EQ(points.TrackState(), TRACK_STATE_Tracked);
    EXPECT_EQ(points.FindPoints(FIRST).Entries().at(1), CTrackPoint(33, 20.25));
    EXPECT_EQ(points.attributes.at(1).An, ANCHOR_Horizontal);
    EXPECT_FALSE(points.BoxExtentsDiffer(6, 6, 8, 8, 8, 8)) << "the settings' boxes";
    EXPECT_EQ(points.MattingBox(), (SRect{3, 4, 60, 40}));
    EXPECT_EQ(tool.getMattingBox(), (SRect{3, 4, 60, 40}));
    EXPECT_FALSE(window->isUseMattingChecked());
    EXPECT_EQ(tool.editor().selectedPoint, -1);
    EXPECT_EQ(tool.editor().originalMotion(), nullptr) << "the path of the points before";
    EXPECT_FALSE(tool.isSmoothed());
    EXPECT_FALSE(tool.evaluateRetracking());
    EXPECT_TRUE(window->calls.contains("pointButtons"));
    EXPECT_EQ(tool.runState(), RUN_SMOOTHING_REQUESTED);
    tool.onHeartbeat();
    heartbeat();
    EXPECT_TRUE(tool.isSmoothed());
    EXPECT_EQ(tool.syntheticSmoothedArray().FirstFrame(), FIRST);
    putMarksBack();
  }
}

TEST_F(PointsFile, WhereTheMarksAreNotItsOwnThePointsAreTrackedAnew) {
  struct {
    const char* name;
    char state;
    bool setMarks;
    const char* refusedMark;
    int refusedValue;
    int markIn;                 // before
    int expected, expectedOut;  // where the points and mark OUT then are
  } const cases[] = {
      {"marks not asked for", 'G', false, "", 0, IN, IN, OUT},
      {"no mark IN", 'B', false, "", 0, -1, 77, OUT},
      {"mark IN refused", 'G', true, "setMarkIn 40", IN, IN, IN, OUT},
      {"mark OUT refused", 'G', true, "setMarkOut 44", 43, IN, IN, OUT},
      {"one frame too few", 'B', true, "setMarkOut 44", OUT, IN, IN, OUT},
      {"untracked, with its marks", 'R', true, "", 0, IN, FIRST, END},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    makeSmoothed();
    host.markIn = c.markIn;
    host.markOut = OUT;
    host.displayedFrame = 77;
    refusedMark = c.refusedMark;
    refusedValue = c.refusedValue;
    ASSERT_TRUE(load(c.state, c.setMarks));
    EXPECT_EQ(host.markIn, c.expected);
    EXPECT_EQ(host.markOut, c.expectedOut);
    EXPECT_EQ(host.displayedFrame, c.expected);
    EXPECT_EQ(tool.livePoints().FirstFrame(), c.expected);
    EXPECT_EQ(tool.livePoints().FrameCount(), c.state == 'R' ? END - FIRST : 1);
    EXPECT_EQ(tool.livePoints().NumberOfPoints(), 2);
    EXPECT_EQ(tool.livePoints().TrackState(), TRACK_STATE_Untracked);
    EXPECT_TRUE(tool.evaluateRetracking());
    EXPECT_EQ(tool.runState(), RUN_IDLE);
    EXPECT_FALSE(tool.isSmoothed());
    EXPECT_EQ(tool.editor().originalMotion(), nullptr);
  }
}

TEST_F(PointsFile, AnEmptySetEmptiesTheShotAndMovesNoMark) {
  makeSmoothed();
  put(path, "{}\n[]\n1 3 60 4 40\nR\n");
  ASSERT_TRUE(tool.LoadTrackingPoints(path, true));
  EXPECT_EQ(tool.livePoints().NumberOfPoints(), 0);
  EXPECT_EQ(host.markIn, IN);
  EXPECT_TRUE(window->isUseMattingChecked());
  EXPECT_EQ(tool.runState(), RUN_IDLE);
}

// A tool that is shown again has not met the marks yet; meeting them must not cost it the points.
TEST_F(PointsFile, LoadedPointsSurviveTheFirstNewsOfTheMarks) {
  for (const bool setMarks : {true, false}) {
    tool.editor().resetMarks();
    host.markIn = FIRST;
    host.markOut = END;
    host.onCall = nullptr;  // marks that do not move are no news
    ASSERT_TRUE(load('G', setMarks));
    tool.onMarksChange();
    EXPECT_EQ(tool.livePoints().NumberOfPoints(), 2);
    EXPECT_EQ(tool.isTracked(), setMarks);
  }
}

TEST_F(PointsFile, AtEveryRunStateLoadingIsRefusedOrSafe) {
  struct {
    int state;
    bool loads;
    int tracked, untracked;  // run state after loading the one and the other
  } const cases[] = {
      {RUN_IDLE, true, RUN_SMOOTHING_REQUESTED, RUN_IDLE},
      {RUN_ERROR, true, RUN_ERROR, RUN_ERROR},
      {RUN_TRACKING_REQUESTED, true, RUN_SMOOTHING_REQUESTED, RUN_IDLE},
      {RUN_TRACKING, false, RUN_TRACKING, RUN_TRACKING},
      {RUN_TRACKED, true, RUN_SMOOTHING_REQUESTED, RUN_IDLE},
      {RUN_SMOOTHING_REQUESTED, true, RUN_SMOOTHING_REQUESTED, RUN_IDLE},
      {RUN_SMOOTHING, true, RUN_SMOOTHING, RUN_SMOOTHING},
      {RUN_SMOOTHED, true, RUN_SMOOTHING_REQUESTED, RUN_IDLE},
      {RUN_RENDER_REQUESTED, true, RUN_SMOOTHING_REQUESTED, RUN_IDLE},
      {RUN_RENDERING, true, RUN_RENDERING, RUN_RENDERING},
      {RUN_RENDERED, true, RUN_RENDERED, RUN_RENDERED},
  };
  for (const auto& c : cases) {
    for (const bool tracked : {true, false}) {
      SCOPED_TRACE(std::to_string(c.state) + (tracked ? " tracked" : " untracked"));
      makeSmoothed();
      const CTrackingArray before = tool.livePoints();
      shot.setRunState(c.state);
      forgetCalls();
      EXPECT_EQ(load('G', tracked), c.loads);
      EXPECT_EQ(tool.runState(), tracked ? c.tracked : c.untracked);
      if (c.loads) {
        EXPECT_EQ(tool.isTracked(), tracked);
        EXPECT_FALSE(tool.isSmoothed());
      } else {
        EXPECT_EQ(tool.livePoints(), before);
        ASSERT_EQ(trace.size(), 2u);
        EXPECT_EQ(trace[0], "ERROR: Stabilizer: Can't load tracking points from file " + path);
        EXPECT_TRUE(host.calls.take().empty());
      }
      shot.setRunState(RUN_IDLE);
      putMarksBack();
    }
  }
}

TEST_F(PointsFile, ATrackingPassThatWaitsForSmoothingIsUnderWay) {
  placePoints();
  shot.setRunState(RUN_SMOOTHING);
  ASSERT_TRUE(tool.onTrackingStart());
  EXPECT_FALSE(load('G'));
  shot.setRunState(RUN_IDLE);
}

// Whether the thread has ended by the time of the load or not.
TEST_F(PointsFile, APathOfTheOldPointsNeverBelongsToTheNew) {
  for (const bool tracked : {true, false}) {
    for (const bool ended : {true, false}) {
      SCOPED_TRACE(std::string(tracked ? "tracked" : "untracked") + (ended ? ", ended" : ""));
      makeTracked();
      tool.request(REQUEST_PARAMETERS_CHANGED);
      if (ended) BThreadWaitForAll();
      ASSERT_TRUE(load('G', tracked));
      for (int beats = 0; beats < 6; ++beats) heartbeat();
      EXPECT_EQ(tool.runState(), RUN_IDLE);
      EXPECT_EQ(tool.isSmoothed(), tracked);
      const CTrackingArray* motion = tool.editor().originalMotion();
      ASSERT_EQ(motion != nullptr, tracked);
      EXPECT_EQ(motion ? motion->FirstFrame() : FIRST, FIRST);
      EXPECT_TRUE(errors.empty());
      putMarksBack();
    }
  }
}

TEST_F(PointsFile, ARenderUnderWayDoesNotClaimTheNewPoints) {
  makeSmoothed();
  ASSERT_EQ(tool.startProcessing(ETool::EVENT_RENDER_RANGE, false), 0);
  ASSERT_EQ(tool.runState(), RUN_RENDERING);
  ASSERT_TRUE(load('G'));
  complete(IN);
  report(CAutotoolStatus::STOPPED);
  heartbeat();
  EXPECT_EQ(tool.runState(), RUN_IDLE);
  EXPECT_EQ(tool.livePoints().TrackState(), TRACK_STATE_Tracked) << "they were not rendered";

  tool.request(REQUEST_RENDER_ALL);
  forgetCalls();
  for (int beats = 0; beats < 6 && tool.runState() != RUN_RENDERING; ++beats) heartbeat();
  EXPECT_EQ(tool.runState(), RUN_RENDERING);
  EXPECT_EQ(host.calls.count("StartTrackingRun"), 0);
  EXPECT_TRUE(host.calls.contains("SetToolFrameRange 0 40 44"));
  EXPECT_EQ(tool.syntheticSmoothedArray().FirstFrame(), FIRST);
}

TEST_F(PointsFile, ABatchTracksLoadedPointsOnlyWhereItMust) {
  host.batchRun = true;
  for (const bool setMarks : {true, false}) {
    for (const int beatsBefore : {0, 1, 4}) {  // not smoothed, being smoothed, smoothed
      SCOPED_TRACE(std::string(setMarks ? "marks, " : "no marks, ") + std::to_string(beatsBefore));
      placePoints();
      ASSERT_TRUE(load('G', setMarks));
      for (int i = 0; i < beatsBefore; ++i) i == 0 ? (void)tool.onHeartbeat() : heartbeat();
      forgetCalls();
      ASSERT_EQ(tool.startProcessing(ETool::EVENT_RENDER_RANGE, false), 0);
      for (int beats = 0; beats < 8 && host.calls.count("RunActiveToolSetup") == 0; ++beats) {
        if (host.calls.count("StartTrackingRun") == 1 && tool.runState() == RUN_TRACKING) {
          ASSERT_TRUE(tool.onTrackingStart());
          trackPoints();
          tool.onTrackingEnd(0);
        }
        heartbeat();
      }
      EXPECT_EQ(host.calls.count("StartTrackingRun"), setMarks ? 0 : 1);
      EXPECT_EQ(host.calls.count("RunActiveToolSetup"), 1);
      EXPECT_TRUE(tool.isSmoothed());
      report(CAutotoolStatus::STOPPED);
      heartbeat();
      ASSERT_EQ(tool.runState(), RUN_IDLE);
      putMarksBack();
    }
  }
}

TEST_F(PointsFile, ALongPassBeforeTheLoadAsksNoMoreQuestions) {
  makeTracked();
  endTracking(61.0);
  tool.setClearOnShotChange(false);
  ASSERT_TRUE(load('G'));
  EXPECT_EQ(application.questions.size(), 1u) << "moving IN costs the points that are there";
  EXPECT_EQ(tool.trackingDuration(), 0);
  host.setMarkIn(FIRST - 20);
  EXPECT_EQ(application.questions.size(), 1u);

  application.answer = EConfirmation::cancel;  // the marks stay: the points come to them
  putMarksBack();
  makeTracked();
  endTracking(61.0);
  ASSERT_TRUE(load('G'));
  EXPECT_EQ(host.markIn, IN);
  EXPECT_EQ(host.markOut, OUT);
  EXPECT_EQ(tool.livePoints().FirstFrame(), IN);
}

}  // namespace
