#include <cmath>
#include <limits>

#include "WindowFixture.h"

namespace {

using Path = std::vector<double>;

class Graphs : public WindowTest {
 protected:
  void SetUp() override {
    WindowTest::SetUp();
    graphs = &form->MotionGraphs;
    placePoints(2);
    trackPoints();
    tool.editor().selectedPoint = 0;
  }
  static void put(CTrackingArray& array, int point, const Path& x, const Path& y) {
    for (std::size_t i = 0; i < x.size(); ++i)
      array.PointsAt(IN + static_cast<int>(i)).Point(point) = CTrackPoint(x[i], y[i]);
  }
  /// The selected point moves as told, and so does the smoothed path.
  void move(const Path& x, const Path& y, const Path& smoothX, const Path& smoothY) {
    Path px(OUT - IN, 50.0);
    Path py(OUT - IN, 50.0);
    for (std::size_t i = 0; i < x.size(); ++i) px[i] += x[i];
    for (std::size_t i = 0; i < y.size(); ++i) py[i] += y[i];
    put(tool.livePoints(), 0, px, py);
    tool.editor().setTracked();
    for (CTrackingArray* array : {&tool.syntheticOriginalArray(), &tool.syntheticSmoothedArray()})
      array->Clear();
    put(tool.syntheticOriginalArray(), 0, {7.0}, {9.0});
    Path sx = smoothX;
    Path sy = smoothY;
    for (double& v : sx) v += 7.0;
    for (double& v : sy) v += 9.0;
    put(tool.syntheticSmoothedArray(), 0, sx, sy);
  }
  std::string axis(const TLineChart& chart) const {
    return std::to_string(static_cast<int>(chart.leftAxis().minimum)) + " " +
           std::to_string(static_cast<int>(chart.leftAxis().maximum));
  }
  static std::size_t count(const TLineChart& chart, int series) {
    return chart.series()[series].points.size();
  }

  TMotionGraphs* graphs = nullptr;
};

TEST_F(Graphs, TheNoticeSaysWhatIsMissing) {
  const struct {
    const char* reason;
    std::function<void()> spoil;
  } cases[] = {
      {"No point is selected", [this] { tool.editor().selectedPoint = -1; }},
      {"No point is selected", [this] { tool.editor().selectedPoint = 77; }},
      {"Point has not been tracked", [this] { tool.livePoints().PointsAt(IN + 4).RemovePoint(0); }},
      {"Point has not been tracked", [this] { host.markIn = host.markOut = -1; }},
      {"Point needs to be retracked",
       [this] { tool.livePoints().SetTrackState(TRACK_STATE_Untracked); }},
  };
  for (const auto& c : cases) {
    host.markIn = IN;
    host.markOut = OUT;
    placePoints(2);
    trackPoints();
    tool.editor().selectedPoint = 0;
    form->updateGraphs();
    ASSERT_FALSE(graphs->TrackWarnPanel.isVisible());
    ASSERT_EQ(count(graphs->HTrackGraph, 0), 10u);
    c.spoil();
    form->updateGraphs();
    EXPECT_EQ(graphs->TrackWarnReasonLabel.caption(), c.reason);
    EXPECT_TRUE(graphs->TrackWarnPanel.isVisible());
    EXPECT_EQ(count(graphs->HTrackGraph, 0) + count(graphs->VTrackGraph, 0), 0u);
  }
  tool.editor().selectedPoint = -1;
  form->updateGraphs();
  EXPECT_EQ(graphs->TrackWarnReasonLabel.caption(), "No point is selected")
      << "the reason changes behind the panel that is there";
}

TEST_F(Graphs, BothMovementsShareTheScaleOfTheLargerOne) {
  const struct {
    const char* what;
    Path x, y, smoothX, smoothY;
    const char* axis;
  } cases[] = {
      {"right alone", {0, 1, 3, 2}, {}, {0, 1, 3}, {0, 0, 0}, "-3 6"},
      {"up and down", {}, {0, -8, 9}, {0}, {0}, "-11 12"},
      {"the smoothed path alone", {}, {}, {0, -20}, {0, 1}, "-23 4"},
      {"nothing moves", {}, {}, {}, {}, "-3 2"},
  };
  for (const auto& c : cases) {
    move(c.x, c.y, c.smoothX, c.smoothY);
    form->updateGraphs();
    EXPECT_EQ(axis(graphs->HTrackGraph), c.axis) << c.what;
    EXPECT_EQ(axis(graphs->VTrackGraph), c.axis) << c.what;
    EXPECT_EQ(count(graphs->HTrackGraph, 1), c.smoothX.size()) << c.what;
  }
}

TEST_F(Graphs, PointsCarryFramesAndTimecodes) {
  move({0, 1.5}, {0, -2.5}, {0, 0.5}, {0, 0.25});
  form->updateGraphs();
  const auto& h = graphs->HTrackGraph.series();
  const auto& v = graphs->VTrackGraph.series();
  EXPECT_EQ(h[0].points[1], (TLineChart::SPoint{IN + 1.0, 1.5, "00:00:04:05"}));
  EXPECT_EQ(v[0].points[1], (TLineChart::SPoint{IN + 1.0, -2.5, "00:00:04:05"}));
  EXPECT_EQ(h[1].points[1], (TLineChart::SPoint{IN + 1.0, 0.5, ""}));
  EXPECT_EQ(v[1].points[1], (TLineChart::SPoint{IN + 1.0, 0.25, ""}));
  host.clip.first = IN;
  form->updateGraphs();
  EXPECT_EQ(h[0].points[1].label, "00:00:00:01") << "as the frame is called everywhere else";
}

TEST_F(Graphs, RotationIsHowFarTheSecondPointStandsAboveTheFirst) {
  const struct {
    const char* what;
    Path difference;
    const char* axis;
  } cases[] = {{"both ways", {-1, 4, 0}, "-11 10"},
               {"none", {0, 0}, "-6 5"},
               {"one way", {0, 20}, "-16 25"},
               {"no second point", {}, "-6 5"}};
  for (const auto& c : cases) {
    move({}, {}, Path(c.difference.size(), 0.0), Path(c.difference.size(), 0.0));
    Path second = c.difference;
    for (double& y : second) y += 9.0;
    put(tool.syntheticSmoothedArray(), 1, second, second);
    form->updateGraphs();
    EXPECT_EQ(axis(graphs->RTrackGraph), c.axis) << c.what;
    EXPECT_EQ(count(graphs->RTrackGraph, 0), 0u);
    EXPECT_EQ(count(graphs->RTrackGraph, 1), c.difference.size()) << c.what;
  }
}

TEST_F(Graphs, AChartNeverStandsOnItsHeadAndTellsOfADrawingOnce) {
  int told = 0;
  TLineChart& chart = graphs->HTrackGraph;
  form->updateGraphs();
  chart.changedHook.subscribe(this, 1, [&] {
    ++told;
    EXPECT_LT(chart.leftAxis().minimum, chart.leftAxis().maximum);
  });
  const double inf = std::numeric_limits<double>::infinity();
  for (const double far : {1000.0, -1000.0, 1e300, -1e300, inf, std::nan(""), 2.0}) {
    told = 0;
    move({0, far}, {0, far}, {0, -far}, {far, 0});
    put(tool.syntheticSmoothedArray(), 1, {far}, {far});
    form->updateGraphs();
    EXPECT_EQ(told, 1) << far;
    EXPECT_LT(chart.leftAxis().minimum, chart.leftAxis().maximum) << far;
  }
}

TEST_F(Graphs, ARunningSmootherKeepsItsPathToItself) {
  move({0, 1}, {0, 1}, {0, 1}, {0, 1});
  shot.setRunState(RUN_SMOOTHING);
  form->updateGraphs();
  EXPECT_EQ(count(graphs->HTrackGraph, 0), 10u);
  EXPECT_EQ(count(graphs->HTrackGraph, 1), 0u);
  shot.setRunState(RUN_IDLE);
  form->updateGraphs();
  EXPECT_EQ(count(graphs->HTrackGraph, 1), 2u);
  host.clipOpen = false;
  tool.syntheticSmoothedArray().Clear();
  form->updateGraphs();
  EXPECT_EQ(count(graphs->HTrackGraph, 1), 2u) << "without a clip nothing is drawn anew";
}

TEST_F(Graphs, ADrawingIsTracedInTheHighestLevel) {
  move({0, 3}, {}, {0, 2}, {0, 0});
  trace.clear();
  form->updateGraphs();
  EXPECT_TRUE(trace.empty());
  ZRNQTraceLevel = 3;
  form->updateGraphs();
  ZRNQTraceLevel = 0;
  ASSERT_EQ(trace.size(), 7u);
  EXPECT_NE(trace[0].find("TTTTTTTTTTT TAG 0: XMaxMove=0, YMaxMove=0"), std::string::npos);
  EXPECT_NE(trace[1].find("TTTTTTTTTTT After H Series 0: 0: dMin=0, dMax=3"), std::string::npos);
  EXPECT_NE(trace[6].find("TTTTTTTTTTT FINAL Axis limits: 0: iMin=-2, iMax=6"), std::string::npos);
}

}  // namespace
