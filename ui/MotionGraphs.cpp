#include "ui/MotionGraphs.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <sstream>
#include <utility>

#include "support/Trace.h"
#include "tool/StabilizerTool.h"

namespace {

enum ESeries { TRACKED = 0, SMOOTHED = 1 };
constexpr int TRACE_LEVEL = 3;
constexpr double LARGEST = 1e8;  // pixels; beyond it nothing is a motion

constexpr const char* CHART_HINT =
    "Right mouse down to grab and scroll\r\n"
    "Left mouse down, draw rectangle downwards to zoom in\r\n"
    "Left mouse down, draw rectangel upwards to zoom out|"
    "Grab with right mouse to scroll, Left mouse draw downwards to zoom in, upwards to zoom out";

/// What a chart must show, 0 always.
struct SSpan {
  double low = 0.0;
  double high = 0.0;
  void widen(double value) {
    low = std::min(low, value);
    high = std::max(high, value);
  }
};

struct SLimits {
  int minimum = 0;
  int maximum = 0;
};

int truncated(double value) {
  return static_cast<int>(std::clamp(value, -LARGEST, LARGEST));
}

/// Even numbers, a margin around the motion.
SLimits movementLimits(const SSpan& span) {
  return {2 * truncated((span.low - 3.5) * 0.5), 2 * truncated((span.high + 3.5) * 0.5)};
}

/// Multiples of five. A rotation all to one side shows half as much of the other.
SLimits rotationLimits(const SSpan& span) {
  const double range = span.high - span.low;
  const double low = std::min(span.low, -range / 2);
  const double high = std::max(span.high, range / 2);
  return {truncated(low - 7.5) / 5 * 5, truncated(high + 7.5) / 5 * 5};
}

// In three steps, so that the minimum is below the maximum at every moment.
void setLeftAxis(TLineChart& chart, const SLimits& limits) {
  chart.setLeftMinimum(std::min(limits.minimum, truncated(chart.leftAxis().maximum)) - 1);
  chart.setLeftMaximum(limits.maximum);
  chart.setLeftMinimum(limits.minimum - 1);
}

/// A chart is told of as changed once, however much is drawn.
class CDrawing {
 public:
  explicit CDrawing(TLineChart& chart) : chart_(chart) { chart_.changedHook.hold(); }
  ~CDrawing() {
    chart_.changedHook.release();
    if (chart_.changedHook.isPending()) chart_.changedHook.notify();
  }
  CDrawing(const CDrawing&) = delete;
  CDrawing& operator=(const CDrawing&) = delete;

 private:
  TLineChart& chart_;
};

// The array's own question inserts the frame that it misses; behind the last one that would count
// as tracked.
bool isTrackedOver(const CTrackingArray& points, int point, int in, int out) {
  if (in < 0 || out <= in) return false;
  const CTrackingPoints path = points.Trajectory(point);
  const auto& valid = path.Entries();
  return std::distance(valid.lower_bound(in), valid.lower_bound(out)) == out - in;
}

void add(TLineChart& chart, ESeries series, int frame, double value, const std::string& label,
         SSpan& span) {
  if (!std::isfinite(value)) return;
  chart.addPoint(series, frame, value, label);
  span.widen(value);
}

void trace(const std::string& stage, int point, const char* lowName, double low,
           const char* highName, double high) {
  if (!TracesAt(TRACE_LEVEL)) return;
  std::ostringstream line;
  line << "TTTTTTTTTTT " << stage << point << ": " << lowName << '=' << low << ", " << highName
       << '=' << high;
  TraceAt(TRACE_LEVEL, line.str());
}

}  // namespace

/// One point's path as it was measured, the motion made of all points, and that motion as it is
/// meant to be, of a first and, for the rotation, a second point.
struct TMotionGraphs::SPaths {
  int point = -1;
  CTrackingPoints tracked;
  CTrackingPoints original;
  CTrackingPoints smoothed;
  CTrackingPoints smoothedSecond;
  const IClip* clip = nullptr;

  std::string label(int frame) const {
    const std::string text = clip->timecodeOfFrame(frame).toText();
    return text.substr(std::min(text.find_first_not_of(' '), text.size()));
  }

  /// Plots the motion along one axis and gives what it spans.
  SSpan plot(TLineChart& chart, double CTrackPoint::*axis, const char* name) const {
    SSpan span;
    chart.clear(TRACKED);
    if (tracked.Count() > 0) {
      const double first = tracked.Entries().begin()->second.*axis;
      for (const auto& [frame, at] : tracked.Entries())
        add(chart, TRACKED, frame, at.*axis - first, label(frame), span);
    }
    trace(std::string("After ") + name + " Series 0: ", point, "dMin", span.low, "dMax", span.high);
    chart.clear(SMOOTHED);
    const auto origin = original.Entries().find(smoothed.FirstIndex());
    if (smoothed.Count() > 0 && origin != original.Entries().end()) {
      for (const auto& [frame, at] : smoothed.Entries())
        add(chart, SMOOTHED, frame, at.*axis - origin->second.*axis, {}, span);
    }
    trace(std::string("After ") + name + " Series 1: ", point, "dMin", span.low, "dMax", span.high);
    return span;
  }
};

TMotionGraphs::TMotionGraphs(std::string name, TControl* parent)
    : TControl(std::move(name), parent),
      HTrackGraph("HTrackGraph", this),
      VTrackGraph("VTrackGraph", this),
      RTrackGraph("RTrackGraph", this),
      TrackWarnPanel("TrackWarnPanel", this),
      TrackWarnDataLabel("TrackWarnDataLabel", &TrackWarnPanel),
      TrackWarnReasonLabel("TrackWarnReasonLabel", &TrackWarnPanel) {
  const struct {
    TLineChart& chart;
    const char* title;
    const char* caption;
    EMarker marker;
    double minimum, maximum;
  } looks[] = {
      {HTrackGraph, "     Horizontal Movement", "Horizontal", EMarker::circle, -21, 20},
      {VTrackGraph, "       Vertical Movement", "Vertical", EMarker::diamond, -21, 20},
      {RTrackGraph, "      Rotation", "Rotation", EMarker::diamond, -41, 40},
  };
  for (const auto& look : looks) {
    look.chart.setCaption(look.title);
    look.chart.setTitleVisible(false);
    look.chart.setLegendVisible(false);
    look.chart.setHint(CHART_HINT);
    look.chart.setBottomIncrement(5);
    look.chart.setLeftAxis({look.caption, false, look.minimum, look.maximum});
    look.chart.addSeries("Tracking Points", look.marker, EColor::yellow);
    look.chart.addSeries("Smoothed Points", EMarker::circle, EColor::blue);
  }
  TrackWarnPanel.setColor(EColor::cream);
  TrackWarnDataLabel.setCaption("Tracking data not available");
  TrackWarnDataLabel.setAlignment(EAlignment::center);
  TrackWarnReasonLabel.setAlignment(EAlignment::center);
  onResize = [this] { layOut(); };
  layOut();
}

void TMotionGraphs::update(CStabilizerTool& tool) {
  CNavSystemInterface* const host = tool.getSystemAPI();
  const CTrackingArray& points = tool.livePoints();
  const int point = tool.editor().selectedPoint;
  if (!points.PointExists(point)) return hideGraphs("No point is selected");
  if (host == nullptr || !isTrackedOver(points, point, host->getMarkIn(), host->getMarkOut()))
    return hideGraphs("Point has not been tracked");
  if (tool.pointNeedsRetracking()) return hideGraphs("Point needs to be retracked");
  TrackWarnPanel.setVisible(false);
  draw(tool, point);
}

void TMotionGraphs::hideGraphs(const char* reason) {
  TrackWarnReasonLabel.setCaption(reason);
  if (TrackWarnPanel.isVisible()) return;
  for (TLineChart* chart : charts()) {
    const CDrawing drawing(*chart);
    chart->clear(TRACKED);
    chart->clear(SMOOTHED);
  }
  TrackWarnPanel.setVisible(true);
}

void TMotionGraphs::draw(CStabilizerTool& tool, int point) {
  const CTrackingArray& points = tool.livePoints();
  const CTrackingPoints& first = points.FindPoints(points.FirstFrame());
  const IClip* const clip = tool.getSystemAPI()->getClip();
  const bool known = point >= first.FirstIndex() && point < first.EndIndex();
  if (points.FrameCount() == 0 || !known || clip == nullptr) return;
  SPaths paths;
  paths.point = point;
  paths.tracked = points.Trajectory(point);
  // While they are being made they belong to the thread that makes them.
  if (tool.runState() != RUN_SMOOTHING) {
    paths.original = tool.syntheticOriginalArray().Trajectory(0);
    paths.smoothed = tool.syntheticSmoothedArray().Trajectory(0);
    paths.smoothedSecond = tool.syntheticSmoothedArray().Trajectory(1);
  }
  paths.clip = clip;
  trace("TAG ", point, "XMaxMove", 0, "YMaxMove", 0);
  drawMovement(paths);
  drawRotation(paths);
}

// Both charts to the same scale: what looks larger is larger.
void TMotionGraphs::drawMovement(const SPaths& paths) {
  const CDrawing drawingH(HTrackGraph);
  const CDrawing drawingV(VTrackGraph);
  const SLimits h = movementLimits(paths.plot(HTrackGraph, &CTrackPoint::x, "H"));
  const SLimits v = movementLimits(paths.plot(VTrackGraph, &CTrackPoint::y, "V"));
  trace("V Axis limits: ", paths.point, "iMinV", v.minimum, "iMaxV", v.maximum);
  const SLimits both = {std::min(h.minimum, v.minimum), std::max(h.maximum, v.maximum)};
  trace("FINAL Axis limits: ", paths.point, "iMin", both.minimum, "iMax", both.maximum);
  setLeftAxis(HTrackGraph, both);
  setLeftAxis(VTrackGraph, both);
}

// The second point lies beside the first: how far it is above or below is the rotation.
void TMotionGraphs::drawRotation(const SPaths& paths) {
  const CDrawing drawing(RTrackGraph);
  RTrackGraph.clear(TRACKED);
  RTrackGraph.clear(SMOOTHED);
  SSpan span;
  for (const auto& [frame, second] : paths.smoothedSecond.Entries()) {
    const auto firstPoint = paths.smoothed.Entries().find(frame);
    if (firstPoint == paths.smoothed.Entries().end()) continue;
    add(RTrackGraph, SMOOTHED, frame, second.y - firstPoint->second.y, {}, span);
  }
  setLeftAxis(RTrackGraph, rotationLimits(span));
}

void TMotionGraphs::layOut() {
  constexpr int GAP = 4;
  constexpr int LINE = 18;
  const int width = bounds().width;
  const int height = bounds().height;
  const int column = std::max(0, (width - 2 * GAP) / 3);
  int left = 0;
  for (TLineChart* chart : charts()) {
    const bool last = chart == &RTrackGraph;
    chart->setBounds({left, 0, last ? width - left : column, height});
    left = std::min(left + column + GAP, width);
  }
  TrackWarnPanel.setBounds({0, 0, width, height});
  TrackWarnDataLabel.setBounds({0, height / 2 - LINE, width, LINE});
  TrackWarnReasonLabel.setBounds({0, height / 2, width, LINE});
}
