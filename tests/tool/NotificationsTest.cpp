#include "ToolFixture.h"
#include "support/Memory.h"
#include "tool/StabilizerCommands.h"

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

TEST_F(Notifications, AHiddenToolHandlesNothing) {
  tool.toolHide();
  forgetCalls();
  CToolCommand command(&tool, STAB_CMD_TRACK);
  CUserInput input;
  ASSERT_EQ(input.parse(" Shift+G KeyDown"), 0);
  makeTracked();
  EXPECT_EQ(tool.onToolCommand(command), CToolObject::NOT_HANDLED);
  EXPECT_TRUE(tool.isTracked());
  EXPECT_EQ(tool.onUserInput(input), CToolObject::NOT_HANDLED);
  EXPECT_EQ(tool.onMouseMove(input), CToolObject::NOT_HANDLED);
  EXPECT_EQ(tool.onClipChange(), CToolObject::NOT_HANDLED);
  EXPECT_EQ(tool.onFramingChange(), CToolObject::NOT_HANDLED);
  EXPECT_EQ(tool.drawOverlay(), CToolObject::NOT_HANDLED);
  EXPECT_EQ(tool.onHeartbeat(), CToolObject::NOT_HANDLED);
  EXPECT_TRUE(host.calls.texts().empty());
  EXPECT_TRUE(window->calls.texts().empty());
}

TEST_F(Notifications, KeysReachTheCommandHandler) {
  ZRNQTraceLevel = 3;
  CUserInput input;
  ASSERT_EQ(input.parse(" Shift+A          KeyDown"), 0);
  EXPECT_EQ(tool.onUserInput(input), CToolObject::NOT_HANDLED);
  EXPECT_EQ(trace, std::vector<std::string>{"Stabilizer Tool command number 14"});
  EXPECT_TRUE(window->calls.contains("buttons 0 0"));
  host.clipOpen = false;
  trace.clear();
  EXPECT_EQ(tool.onUserInput(input), CToolObject::NOT_HANDLED);
  EXPECT_TRUE(trace.empty());
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
