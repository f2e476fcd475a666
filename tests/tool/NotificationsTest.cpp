#include "ToolFixture.h"
#include "support/Memory.h"

namespace {

class Notifications : public ToolTest {};

TEST_F(Notifications, ActivationAndDeactivationMirrorEachOther) {
  host.displaySetting = true;
  tool.toolDeactivate();
  EXPECT_EQ(
      host.calls.take(),
      (std::vector<std::string>{"prepareForToolCall", "setDisplayMode 1", "setToolEditor null",
                                "setToolProgressMonitor null", "setToolActive 0", "redrawDisplay 0",
                                "setDisplaySetting 0", "setToolProgressMonitor null"}));
  EXPECT_EQ(host.editor, nullptr);
  EXPECT_FALSE(QTXunlockPreallocPool(PREALLOC_POOL_BUFFER_HOLDERS)) << "the tool's lock is gone";
  host.displaySetting = true;
  tool.toolActivate();
  EXPECT_EQ(host.calls.take(),
            (std::vector<std::string>{"setToolEditor set", "setToolProgressMonitor set",
                                      "setToolActive 1", "redrawDisplay 0"}));
  EXPECT_EQ(host.editor, &tool.editor());
  host.displaySetting = false;
  tool.toolDeactivate();
  EXPECT_TRUE(host.calls.contains("setDisplaySetting 1")) << "as it was at activation";
}

TEST_F(Notifications, ADisplayThatIsTakenIsTraced) {
  ZRNQTraceLevel = 0;
  tool.toolDeactivate();
  host.displayAvailable = false;
  trace.clear();
  tool.toolActivate();
  ASSERT_EQ(trace.size(), 1u);
  EXPECT_NE(trace[0].find("StabilizerTool"), std::string::npos);
  EXPECT_NE(trace[0].find(":325: ASSERT (success) FAILED!"), std::string::npos) << trace[0];
}

TEST_F(Notifications, WhatArrivesWhileInactiveIsReplayed) {
  int newClips = 0;
  int marks = 0;
  tool.newClipHook.subscribe(this, 0, [&newClips] { ++newClips; });
  tool.marksChangedHook.subscribe(this, 0, [&marks] { ++marks; });

  tool.toolDeactivate();
  EXPECT_EQ(tool.onMarksChange(), CToolObject::NOT_HANDLED);
  tool.toolActivate();
  EXPECT_EQ(marks, 1);

  tool.toolDeactivate();
  host.folderText = "/clips/next";
  EXPECT_EQ(tool.onNewClip(), CToolObject::NOT_HANDLED);
  EXPECT_EQ(tool.onMarksChange(), CToolObject::NOT_HANDLED);
  EXPECT_EQ(tool.folderText(), "/clips/shot");
  tool.toolActivate();
  EXPECT_EQ(newClips, 1);
  EXPECT_EQ(marks, 1) << "the new clip brings its own marks";
  EXPECT_EQ(tool.folderText(), "/clips/next");

  tool.toolDeactivate();
  tool.toolActivate();
  EXPECT_EQ(newClips + marks, 2) << "once is enough";
}

TEST_F(Notifications, TheMouseReachesThePickerWhileItIsOn) {
  CUserInput mouse;
  ASSERT_EQ(mouse.parse("LButton ButtonDown"), 0);
  mouse.imageX = 7;
  mouse.imageY = 9;
  CUserInput release = mouse;
  release.action = CUserInput::ACTION_BUTTON_UP;
  const auto events = [&] {
    host.calls.clear();
    const std::vector<int> results{tool.onMouseMove(mouse), tool.onUserInput(mouse),
                                   tool.onUserInput(release)};
    EXPECT_EQ(results[0], CToolObject::NOT_HANDLED);
    EXPECT_EQ(results[1], results[2]);
    return std::pair(results[1], host.calls.count("readDisplayedPixel"));
  };
  const std::pair unheard{static_cast<int>(CToolObject::NOT_HANDLED), 0};
  EXPECT_EQ(events(), unheard);
  tool.setColorPickerOn(true);
  EXPECT_EQ(events(), std::pair(static_cast<int>(CToolObject::CONSUMED), 2));
  EXPECT_TRUE(host.calls.contains("readDisplayedPixel 7 9"));
  host.clipOpen = false;
  EXPECT_EQ(events(), unheard);
  host.clipOpen = true;
  tool.toolHide();
  EXPECT_EQ(events(), unheard);
}

TEST_F(Notifications, ThePickerGoesOffWithWhatItPicksFrom) {
  CPDLEntry settings;
  CStabilizerParameters().WritePDLEntry(settings.FirstElement());
  CPDLEntry settingsAndPoints;
  tool.capturePDLEntry(settingsAndPoints);
  const struct {
    const char* name;
    std::function<void()> moment;
    bool staysOn;
  } cases[] = {
      {"clip change", [this] { tool.onClipChange(); }, false},
      {"a new clip without a box", [this] { tool.onNewClip(); }, true},
      {"settings", [&] { tool.runPDLEntry(settings); }, true},
      {"settings with points and box", [&] { tool.runPDLEntry(settingsAndPoints); }, false},
      {"a new clip with a box of its own",
       [this] {
         tool.setMattingBox({4, 5, 60, 40});
         tool.onClipChange();  // keeps the box with the clip
         tool.setColorPickerOn(true);
         tool.onNewClip();
       },
       false},
      {"framing", [this] { tool.onFramingChange(); }, true},
      {"marks", [this] { tool.onMarksChange(); }, true},
      {"deactivation", [this] { tool.toolDeactivate(); }, false},
  };
  for (const auto& c : cases) {
    tool.setColorPickerOn(true);
    c.moment();
    EXPECT_EQ(tool.isColorPickerOn(), c.staysOn) << c.name;
    EXPECT_EQ(host.cursor != nullptr, c.staysOn) << c.name;
  }
}

TEST_F(Notifications, AnotherShotClearsThePointsIfTheOperatorWishes) {
  const struct {
    const char* name;
    bool clears;
    int in, out, points;
  } cases[] = {
      {"inside the tracked frames", true, 102, 108, 0},
      {"outside", true, 300, 310, 0},
      {"put back", true, IN, OUT, 2},
      {"points are to be kept", false, 102, 108, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    host.markIn = IN;
    host.markOut = OUT;
    tool.editor().updateMarks();
    makeTracked();
    tool.setClearOnShotChange(c.clears);
    tool.toolDeactivate();
    host.markIn = c.in;
    host.markOut = c.out;
    tool.onMarksChange();
    tool.toolActivate();
    EXPECT_EQ(tool.livePoints().NumberOfPoints(), c.points);
    EXPECT_EQ(tool.editor().markIn(), c.in);
    EXPECT_EQ(tool.editor().markOut(), c.out);
  }
}

TEST_F(Notifications, ClipChangeAnnouncesBeforeTheHostLeaves) {
  int announced = 0;
  tool.clipChangedHook.subscribe(this, 0, [&] {
    ++announced;
    EXPECT_EQ(host.calls.count("setDisplayMode"), 0);
  });
  EXPECT_EQ(tool.onClipChange(), CToolObject::HANDLED);
  EXPECT_EQ(announced, 1);
  EXPECT_TRUE(host.calls.contains("setDisplayMode 0"));
  forgetCalls();
  EXPECT_EQ(tool.onFramingChange(), CToolObject::HANDLED);
  EXPECT_TRUE(host.calls.contains("setDisplayMode 1"));
}

TEST_F(Notifications, ChangedPointsAreAnnouncedByTheHeartbeatOnce) {
  int announced = 0;
  tool.pointsChangedHook.subscribe(this, 0, [&announced] { ++announced; });
  tool.editor().pointsChangedHook.notify();
  tool.editor().pointsChangedHook.notify();
  EXPECT_EQ(announced, 0);
  tool.onHeartbeat();
  tool.onHeartbeat();
  EXPECT_EQ(announced, 1);
}

TEST_F(Notifications, AFirstShowClearsThePoints) {
  placePoints();
  tool.toolHide();
  tool.toolShow();
  EXPECT_EQ(tool.livePoints().NumberOfPoints(), 2);
  host.firstShow = true;
  forgetCalls();
  tool.toolShow();
  EXPECT_EQ(tool.livePoints().NumberOfPoints(), 0);
  EXPECT_TRUE(host.calls.contains("SetHelpPages StabilizeOperation.htm StabilizeHotKeys.htm 0"));
}

TEST_F(Notifications, ShutdownDuringSmoothingWaitsForIt) {
  makeTracked();
  tool.request(REQUEST_PARAMETERS_CHANGED);
  tool.toolShutdown();
  window = nullptr;
  EXPECT_EQ(tool.runState(), RUN_SMOOTHED);
  EXPECT_FALSE(tool.isToolShowing());
  EXPECT_EQ(tool.onHeartbeat(), CToolObject::NOT_HANDLED);
}

TEST_F(Notifications, PointsAreShownOnDemand) {
  window->setShowPointsChecked(false);
  tool.setTrackingPointsVisible(false);
  tool.showTrackingPoints();
  EXPECT_TRUE(window->isShowPointsChecked());
  EXPECT_TRUE(tool.editor().showPoints);
}

}  // namespace
