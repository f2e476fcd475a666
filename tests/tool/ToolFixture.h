#pragma once

#include <string>
#include <vector>

#include "../platform/support/temp_folder.h"
#include "ParameterWindow.h"
#include "doubles/RecordingHost.h"
#include "doubles/RecordingProgressMonitor.h"
#include "support/ErrorReport.h"
#include "support/Trace.h"
#include "tool/StabilizerTool.h"
#include "toolkit/HeadlessApplication.h"

/// A window that holds settings and records what it is told to show.
class CRecordingWindow : public CParameterWindow {
 public:
  explicit CRecordingWindow(CStabilizerTool& tool) : CParameterWindow(tool) {}
  CCallLog calls;

  void updateExecutionButtons(int state, bool renderFlag) override {
    calls.add(CCallLog::text("buttons", state, renderFlag));
  }
  void updateStatusLine() override { calls.add("statusLine"); }
  void updatePointButtons() override { calls.add("pointButtons"); }
  void updateGraphs() override { calls.add("graphs"); }
};

/// A tool whose tracking passes take as long as the test says.
class CTimedTool : public CStabilizerTool {
 public:
  using CStabilizerTool::CStabilizerTool;
  double milliseconds = 0.0;

 protected:
  double trackingMilliseconds() const override { return milliseconds; }
};

/// A tool that is shown and active on an open clip with marks [100, 110), its points untracked.
class ToolTest : public TempFolder {
 protected:
  static constexpr int IN = 100;
  static constexpr int OUT = 110;
  using ETool = CToolObject;

  void SetUp() override {
    host.clip.clipPath = folder + "shot.%04d.dpx";
    host.markIn = IN;
    host.markOut = OUT;
    host.displayedFrame = IN;
    SetApplication(&application);
    SetErrorSink([this](const std::string& operation, int code, const std::string& text) {
      errors.push_back(operation + " " + std::to_string(code) + " " + text);
    });
    SetTraceSink([this](const std::string& line) { trace.push_back(line); });
    ASSERT_EQ(tool.toolInitialize(&host), 0);
    tool.toolShow();
    tool.toolActivate();
    tool.editor().updateMarks();
    forgetCalls();
  }

  void TearDown() override {
    BThreadWaitForAll();
    if (host.editor) tool.toolDeactivate();  // its lock on the buffer pool is the process'
    SetErrorSink({});
    SetTraceSink({});
    ZRNQTraceLevel = savedTraceLevel_;
    SetApplication(nullptr);
  }

  void forgetCalls() {
    host.calls.clear();
    if (window) window->calls.clear();
    errors.clear();
    trace.clear();
  }

  void placePoints(int count = 2) {
    CTrackingArray& points = tool.livePoints();
    points.Clear();
    for (int p = 0; p < count; ++p) {
      points.PointsAt(IN).Point(p) = CTrackPoint(10.0 + 20 * p, 12.0 + 5 * p);
      points.attributes[p] = CTrackAttribute();
    }
  }

  /// What the host's tracking pass leaves behind.
  void trackPoints() {
    CTrackingArray& points = tool.livePoints();
    const CTrackingPoints first = points.FindPoints(points.FirstFrame());
    for (int frame = host.markIn; frame < host.markOut; ++frame) {
      for (const auto& [p, point] : first.Entries()) {
        const double shake = (frame % 3) * 0.5;
        points.PointsAt(frame).Point(p) = CTrackPoint(point.x + shake, point.y - shake);
      }
    }
    tool.editor().setTracked();
  }

  /// A tracking pass of the host that ends well after so many seconds.
  void endTracking(double seconds) {
    tool.milliseconds = seconds * 1000.0;
    shot.setRunState(RUN_TRACKING);
    tool.onTrackingEnd(0);
    shot.setRunState(RUN_IDLE);
  }

  /// [IN, OUT) again, and the tool hears of it.
  void putMarksBack() {
    host.markIn = IN;
    host.markOut = OUT;
    tool.onMarksChange();
  }

  void makeTracked() {
    placePoints();
    trackPoints();
  }
  void makeSmoothed() {
    makeTracked();
    shot.setSmoothedFlag(true);
  }
  /// What the processor says of a range up to mark OUT whose every frame is done.
  void complete(int first) {
    for (int frame = first; frame < OUT; ++frame) shot.frameRendered(frame);
    shot.setRendered();
  }

  /// The heartbeat after the smoothing thread has done its work.
  void heartbeat() {
    BThreadWaitForAll();
    tool.onHeartbeat();
  }
  int report(int status, int errorCode = 0) {
    CAutotoolStatus record;
    record.status = status;
    record.errorCode = errorCode;
    return tool.onToolProcessingStatus(&record);
  }

  /// Which window the tool gets. `window` is it where it records.
  virtual std::unique_ptr<IStabilizerWindow> makeWindow(CStabilizerTool& owner) {
    return std::make_unique<CRecordingWindow>(owner);
  }

  /// So that no test reads what another one has left. Made before the tool, which keeps the name of
  /// its settings file.
  CEnvironment settings{"XDG_CONFIG_HOME", (folder + "config").c_str()};
  CRecordingHost host;
  THeadlessApplication application;
  std::vector<std::string> errors;  ///< "operation code text"
  std::vector<std::string> trace;
  CRecordingWindow* window = nullptr;
  CTimedTool tool{"Stabilize", [this](CStabilizerTool& owner) {
                    auto made = makeWindow(owner);
                    window = dynamic_cast<CRecordingWindow*>(made.get());
                    return made;
                  }};
  IStabilizerShot& shot = tool;  ///< as the smoothing thread and the processor see it

 private:
  int savedTraceLevel_ = ZRNQTraceLevel;
};
