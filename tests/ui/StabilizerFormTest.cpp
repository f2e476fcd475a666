#include "WindowFixture.h"

namespace {

class Window : public WindowTest {
 protected:
  std::string status() const {
    return form->StatusMessageLabel.caption() + ", " + form->PointCountLabel.caption() + " " +
           form->PointsLabel.caption();
  }
  void notifyPoints() {
    tool.editor().pointsChangedHook.notify();
    heartbeat();
  }
  /// Two points, and a click on Track that the tool has taken up.
  void beginTracking() {
    placePoints();
    notifyPoints();
    form->TrackButton.click();
    heartbeat();
  }
  int key(const char* text) {
    CUserInput input;
    EXPECT_EQ(input.parse(text), 0) << text;
    return tool.onUserInput(input);
  }
  /// Track, Clear, Load, Save, Prev, Next.
  std::string pointButtons() const {
    std::string text;
    for (const TButton* button :
         {&form->TrackButton, &form->ClearAllButton, &form->LoadPointsButton,
          &form->SavePointsButton, &form->PrevPointButton, &form->NextPointButton})
      text += button->isEnabled() ? '1' : '0';
    return text;
  }
};

TEST_F(Window, PanelIsHandedOverOnceAndTakenBack) {
  EXPECT_EQ(host.controlPanel, &form->StabilizationControlPanel);
  EXPECT_TRUE(form->StabilizationControlPanel.isVisible());
  EXPECT_EQ(tool.getProgressMonitor(), &form->ExecStatusBar);
  tool.toolHide();
  EXPECT_FALSE(tool.isToolShowing());
  EXPECT_EQ(StabilizerForm, form) << "hiding keeps it";
  tool.toolShow();
  EXPECT_TRUE(tool.isToolShowing());
  forgetCalls();
  tool.toolDeactivate();
  tool.toolShutdown();
  EXPECT_TRUE(host.calls.contains("removeToolControlPanel 6"));
  EXPECT_EQ(StabilizerForm, nullptr);
  EXPECT_EQ(StabilizerPreferencesForm, nullptr);
  EXPECT_NE(tool.getProgressMonitor(), nullptr);
}

TEST_F(Window, PointButtonsAndStatusFollowThePoints) {
  const struct {
    int points;
    const char* buttons;
    const char* status;
  } cases[] = {{0, "001000", "Idle, 0 points"},
               {1, "111100", "Idle, 1 point"},
               {2, "111111", "Idle, 2 points"}};
  for (const auto& c : cases) {
    placePoints(c.points);
    notifyPoints();
    EXPECT_EQ(pointButtons(), c.buttons) << c.points;
    EXPECT_EQ(status(), c.status) << c.points;
  }
  form->ClearAllButton.click();
  heartbeat();
  EXPECT_EQ(pointButtons(), "001000");
}

TEST_F(Window, RunStatesAndTextsAreReadTwiceASecond) {
  tool.setStatusMessage("Phase 2");
  tool.setTimeMessage("3 s");
  const struct {
    int state;
    const char* label;
  } cases[] = {{1, "Error"},     {2, "Tracking"},  {4, "Tracking"},   {5, "Smoothing"},
               {7, "Smoothing"}, {8, "Rendering"}, {10, "Rendering"}, {11, "Unknown"},
               {-1, "Unknown"},  {0, "Idle"}};
  for (const auto& c : cases) {
    shot.setRunState(c.state);
    application.advanceClock(500);
    EXPECT_EQ(form->StatusMessageLabel.caption(), c.label);
  }
  EXPECT_EQ(form->StatusBar.panels()[0].text, "Phase 2");
  EXPECT_EQ(form->StatusBar.panels()[1].text, "3 s");
  tool.toolHide();
  tool.setTimeMessage("4 s");
  application.advanceClock(5000);
  EXPECT_EQ(form->StatusBar.panels()[1].text, "3 s") << "a hidden window asks nothing";
}

TEST_F(Window, PointsStayHiddenFromARenderOnUntilTheyAreWanted) {
  const auto shown = [this] {
    EXPECT_EQ(form->ShowPointCBox.isChecked(), tool.editor().showPoints);
    return tool.editor().showPoints.get();
  };
  ASSERT_TRUE(shown());
  shot.setRunState(RUN_RENDERING);
  application.advanceClock(500);
  EXPECT_FALSE(shown());
  form->ShowPointCBox.click();
  application.advanceClock(2000);
  EXPECT_TRUE(shown()) << "the operator's wish holds while it renders";
  shot.setRunState(RUN_IDLE);
  application.advanceClock(500);
  EXPECT_FALSE(shown());
  application.advanceClock(2000);
  form->ShowPointCBox.click();
  EXPECT_TRUE(shown());
}

TEST_F(Window, NewMarksShowThePointsUnlessWorkIsUnderWay) {
  form->ShowPointCBox.click();
  shot.setRunState(RUN_TRACKING);
  tool.onMarksChange();
  EXPECT_FALSE(form->ShowPointCBox.isChecked());
  shot.setRunState(RUN_IDLE);
  tool.onMarksChange();
  EXPECT_TRUE(form->ShowPointCBox.isChecked());
  EXPECT_TRUE(tool.editor().showPoints);
}

TEST_F(Window, WidePicturesHaveTwiceTheBoxes) {
  const auto open = [this](int width) {
    host.imageFormat = CImageFormat(width, 48);
    tool.onClipChange();
    tool.onNewClip();
  };
  const auto sliders = [this] {
    const TTrackEditFrame& box = form->TrackingBoxSizeTrackEdit;
    const TTrackEditFrame& motion = form->MotionTrackEdit;
    return std::vector<int>{box.minimum(),    box.maximum(),    box.value(),
                            motion.minimum(), motion.maximum(), motion.value()};
  };
  placePoints();
  form->TrackingBoxSizeTrackEdit.setValue(20);
  form->MotionTrackEdit.setValue(25);
  open(2048);
  EXPECT_EQ(sliders(), (std::vector<int>{5, 30, 20, 5, 50, 25}));
  open(2049);
  EXPECT_EQ(sliders(), (std::vector<int>{10, 60, 40, 10, 100, 50}));
  EXPECT_FALSE(tool.livePoints().BoxExtentsDiffer(40, 40, 50, 50, 50, 50));
  open(4096);
  EXPECT_EQ(sliders(), (std::vector<int>{10, 60, 40, 10, 100, 50})) << "not doubled twice";
  open(1920);
  EXPECT_EQ(sliders(), (std::vector<int>{5, 30, 20, 5, 50, 25}));
}

TEST_F(Window, ANewClipBeginsAtItsMarkIn) {
  host.folderText = folder + "next/shot.%04d.dpx";
  host.markIn = IN + 3;
  tool.onNewClip();
  EXPECT_EQ(tool.resumeFrame(), IN + 3);
  EXPECT_EQ(form->gatherParameters().RefFrameIndex, IN + 3);
  EXPECT_EQ(form->OpenTrackingPointsDialog.initialFolder, folder + "next/");
  EXPECT_EQ(form->SaveTrackingPointsDialog.initialFolder, folder + "next/");
  form->AutoLoadCBox.setChecked(true);
  tool.onNewClip();  // there is no such file yet
  placePoints();
  std::filesystem::create_directories(folder + "next");
  ASSERT_TRUE(tool.SaveTrackingPoints(folder + "next/stab_auto.points"));
  tool.clearAllTrackingData();
  host.firstShow = true;
  tool.onNewClip();
  EXPECT_EQ(tool.livePoints().NumberOfPoints(), 0);
  host.firstShow = false;
  tool.onNewClip();
  EXPECT_EQ(tool.livePoints().NumberOfPoints(), 2);
}

TEST_F(Window, AClosedClipTakesNothingDown) {
  makeSmoothed();
  form->updateExecutionButtons(CToolObject::STATE_RUNNING, true);
  tool.onClipChange();
  host.clipOpen = false;
  host.markIn = host.markOut = -1;
  tool.onNewClip();
  for (TControl* control : {&form->ResetRefFrameButton, &form->GoToRefframeButton}) {
    control->setEnabled(true);
    static_cast<TToolButton*>(control)->click();
  }
  form->ExecButtonsToolbar.GotoTCButton.click();
  form->TrackButton.click();
  form->SavePointsButton.click();
  application.advanceClock(1000);
  tool.toolHide();
  tool.toolShow();
  EXPECT_EQ(form->gatherParameters().RefFrameIndex, -1);
}

TEST_F(Window, WhatIsBeingTypedCountsWhenThePanelIsHidden) {
  form->TrackingBoxSizeTrackEdit.Edit.focus();
  for (const char key : {'2', '2'}) form->TrackingBoxSizeTrackEdit.Edit.type(key);
  tool.toolHide();
  EXPECT_EQ(form->gatherParameters().TrackBoxExtentX, 22);
  EXPECT_EQ(FocusedControl(), nullptr);
}

TEST_F(Window, LoadLeavesTheMarksAloneWhileShiftIsHeld) {
  placePoints();
  ASSERT_TRUE(tool.SaveTrackingPoints(folder + "a.points"));
  application.file = folder + "a.points";
  host.markIn = IN + 2;
  tool.onMarksChange();
  key("Shift+Shift KeyDown");
  form->LoadPointsButton.click();
  EXPECT_EQ(host.markIn, IN + 2);
  key("Shift KeyUp");
  form->LoadPointsButton.click();
  EXPECT_EQ(host.markIn, IN);
  const SFileDialog& dialog = application.fileDialogs.at(0);
  EXPECT_EQ(dialog.filter, "Tracking Points|*.points|All Files|*.*");
  EXPECT_TRUE(dialog.pathMustExist && dialog.fileMustExist);
}

TEST_F(Window, PreferencesChangeOnOkAlone) {
  const auto choose = [this](TRadioButton& choice, bool ok) {
    application.inModalForm = [&choice, ok](TForm&) {
      choice.click();
      (ok ? StabilizerPreferencesForm->OkButton : StabilizerPreferencesForm->CancelButton).click();
    };
    form->PreferencesMenuItemClick();
    return tool.markInMovePreference();
  };
  TStabilizerPreferencesForm& dialog = *StabilizerPreferencesForm;
  EXPECT_EQ(choose(dialog.MoveAndClearRadioButton, false), 3);
  EXPECT_EQ(form->markInMovePreference(), 3);
  EXPECT_EQ(choose(dialog.MoveAndClearRadioButton, true), 2);
  EXPECT_EQ(choose(dialog.PromptMeRadioButton, false), 2);
  application.inModalForm = [&dialog](TForm&) {
    EXPECT_TRUE(dialog.MoveAndClearRadioButton.isChecked()) << "preselected";
    dialog.OkButton.click();
  };
  form->PreferencesMenuItemClick();
  EXPECT_EQ(choose(dialog.MoveAndCopyRadioButton, true), 1);
}

TEST_F(Window, WorkThatComesToNothingGivesTheButtonsBack) {
  const TExecButtonsFrame& buttons = form->ExecButtonsToolbar;
  beginTracking();
  ASSERT_TRUE(buttons.StopButton.isEnabled());
  form->ExecButtonsToolbar.StopButton.click();
  EXPECT_TRUE(host.calls.contains("StopTrackingRun"));
  tool.onTrackingEnd(1);
  heartbeat();
  EXPECT_FALSE(buttons.StopButton.isEnabled());
  EXPECT_EQ(form->StatusMessageLabel.caption(), "Idle");
  EXPECT_EQ(application.cursor(), ECursor::normal);

  makeSmoothed();
  host.renderPermitted = false;
  form->updateExecutionButtons(CToolObject::STATE_IDLE, false);
  EXPECT_EQ(key("Shift+G KeyDown"), 18);
  ASSERT_TRUE(buttons.StopButton.isEnabled());
  heartbeat();
  EXPECT_FALSE(buttons.StopButton.isEnabled());
  EXPECT_TRUE(buttons.RenderAllButton.isEnabled());
}

TEST_F(Window, AnOperatorsFirstShot) {
  beginTracking();
  EXPECT_EQ(form->StatusMessageLabel.caption(), "Tracking");
  EXPECT_TRUE(form->ExecButtonsToolbar.StopButton.isEnabled());
  EXPECT_FALSE(form->ExecButtonsToolbar.RenderAllButton.isEnabled());
  EXPECT_TRUE(form->MotionGraphs.TrackWarnPanel.isVisible());
  trackPoints();
  tool.editor().selectedPoint = 0;
  tool.onTrackingEnd(0);
  for (int beats = 0; beats < 4; ++beats) heartbeat();
  EXPECT_EQ(form->StatusMessageLabel.caption(), "Idle");
  EXPECT_TRUE(form->ExecButtonsToolbar.RenderAllButton.isEnabled());
  EXPECT_FALSE(form->MotionGraphs.TrackWarnPanel.isVisible());
  const auto& series = form->MotionGraphs.HTrackGraph.series();
  EXPECT_EQ(series[0].points.size(), static_cast<std::size_t>(OUT - IN));
  EXPECT_EQ(series[1].points.size(), static_cast<std::size_t>(OUT - IN));
  form->ExecButtonsToolbar.RenderAllButton.click();
  heartbeat();
  EXPECT_EQ(form->StatusMessageLabel.caption(), "Rendering");
  EXPECT_TRUE(form->ExecButtonsToolbar.PauseButton.isEnabled());
  EXPECT_EQ(form->ExecButtonsToolbar.RenderAllButtonPanel.innerBevel(), EBevel::raised);
  report(1);
}

}  // namespace
