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
    tool.syntheticOriginalArray().PointsAt(IN - 1).Point(0) = CTrackPoint(100, 200);
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
      {"Point has not been tracked", [this] { tool.livePoints().frames.erase(IN + 4); }},
      {"Point has not been tracked",
       [this] {
         host.markOut = OUT + 1;
         tool.editor().updateMarks();
       }},
      {"Point needs to be retracked",
       [this] { tool.livePoints().SetTrackState(TRACK_STATE_Untracked); }},
  };
  for (const auto& c : cases) {
    host.markIn = IN;
    host.markOut = OUT;
    tool.editor().updateMarks();
    placePoints(2);
    trackPoints();
    tool.editor().selectedPoint = 0;
    form->updateGraphs();
    ASSERT_FALSE(graphs->TrackWarnPanel.isVisible());
    ASSERT_EQ(count(graphs->HTrackGraph, 0), 10u);
    c.spoil();
    const CTrackingArray before = tool.livePoints();
    form->updateGraphs();
    EXPECT_EQ(tool.livePoints(), before) << "a frame put in would count as tracked";
    EXPECT_EQ(graphs->TrackWarnReasonLabel.caption(), c.reason);
    EXPECT_TRUE(graphs->TrackWarnPanel.isVisible());
    EXPECT_EQ(count(graphs->HTrackGraph, 0) + count(graphs->VTrackGraph, 0), 0u);
  }
  graphs->HTrackGraph.addPoint(0, 1.0, 2.0, "");
  tool.editor().selectedPoint = -1;
  form->updateGraphs();
  EXPECT_EQ(graphs->TrackWarnReasonLabel.caption(), "No point is selected")
      << "the reason changes behind the panel that is there";
  EXPECT_EQ(count(graphs->HTrackGraph, 0), 1u) << "cleared once, when the panel came";
}

TEST_F(Graphs, AToolWithoutAHostHasNothingTracked) {
  CStabilizerTool homeless("Stabilize", nullptr);
  homeless.livePoints() = tool.livePoints();
  homeless.editor().selectedPoint = 0;
  graphs->update(homeless);
  EXPECT_EQ(graphs->TrackWarnReasonLabel.caption(), "Point has not been tracked");
}

TEST_F(Graphs, ChartsAreMadeAlikeAndStayInTheirPanel) {
  TMotionGraphs fresh("MotionGraphs");
  const struct {
    TLineChart& chart;
    const char* title;
    TLineChart::SLeftAxis axis;
    EMarker marker;
  } cases[] = {
      {fresh.HTrackGraph,
       "     Horizontal Movement",
       {"Horizontal", false, -21, 20},
       EMarker::circle},
      {fresh.VTrackGraph,
       "       Vertical Movement",
       {"Vertical", false, -21, 20},
       EMarker::diamond},
      {fresh.RTrackGraph, "      Rotation", {"Rotation", false, -41, 40}, EMarker::diamond},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.chart.caption(), c.title);
    EXPECT_EQ(c.chart.leftAxis(), c.axis) << c.title;
    EXPECT_FALSE(c.chart.isTitleVisible() || c.chart.isLegendVisible()) << c.title;
    EXPECT_EQ(c.chart.bottomIncrement(), 5) << c.title;
    ASSERT_EQ(c.chart.series().size(), 2u) << c.title;
    EXPECT_EQ(c.chart.series()[0].marker, c.marker) << c.title;
    EXPECT_EQ(c.chart.series()[0].markerColor, EColor::yellow) << c.title;
    EXPECT_EQ(c.chart.series()[1].marker, EMarker::circle) << c.title;
    EXPECT_EQ(c.chart.series()[1].markerColor, EColor::blue) << c.title;
    for (const SBounds& panel : {SBounds{0, 0, 496, 150}, SBounds{0, 0, 3, 1}, SBounds{}}) {
      fresh.setBounds(panel);
      EXPECT_GE(c.chart.bounds().width, 0) << c.title << panel.width;
      EXPECT_GE(c.chart.bounds().left, 0) << c.title << panel.width;
      EXPECT_LE(c.chart.bounds().right(), panel.width) << c.title << panel.width;
    }
  }
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
  tool.livePoints().PointsAt(IN - 5).Point(0) = CTrackPoint(40.0, 60.0);
  tool.livePoints().PointsAt(IN - 4).Point(0).x = 7.0;
  form->updateGraphs();
  ASSERT_EQ(h[0].points.size(), 11u) << "an invalid entry is none";
  EXPECT_EQ(h[0].points[1], (TLineChart::SPoint{IN, 10.0, "00:00:04:04"})) << "from its own start";
  tool.livePoints().frames.erase(tool.livePoints().frames.begin(),
                                 tool.livePoints().frames.find(IN));
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
  put(tool.syntheticSmoothedArray(), 1, {0, 1}, {0, 1});
  shot.setRunState(RUN_SMOOTHING);
  form->updateGraphs();
  EXPECT_EQ(count(graphs->HTrackGraph, 0), 10u);
  EXPECT_EQ(count(graphs->HTrackGraph, 1) + count(graphs->RTrackGraph, 1), 0u);
  shot.setRunState(RUN_IDLE);
  form->updateGraphs();
  EXPECT_EQ(count(graphs->HTrackGraph, 1), 2u);
  EXPECT_EQ(count(graphs->RTrackGraph, 1), 2u);
}

TEST_F(Graphs, WhatCannotBePlacedIsNotDrawnAnew) {
  move({0, 1}, {}, {0, 1}, {0, 1});
  form->updateGraphs();
  tool.syntheticSmoothedArray().Clear();
  host.clipOpen = false;
  form->updateGraphs();
  EXPECT_EQ(count(graphs->HTrackGraph, 1), 2u) << "no clip";
  host.clipOpen = true;
  tool.livePoints().PointsAt(IN - 1).Point(1) = CTrackPoint(1, 1);
  form->updateGraphs();
  EXPECT_EQ(count(graphs->HTrackGraph, 1), 2u) << "the first frame knows other points only";
  tool.livePoints().PointsAt(IN - 1).Point(0);
  form->updateGraphs();
  EXPECT_EQ(count(graphs->HTrackGraph, 1), 0u);
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
