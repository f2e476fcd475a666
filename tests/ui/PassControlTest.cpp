#include "WindowFixture.h"

namespace {

using ETool = CToolObject;

class Passes : public WindowTest {
 protected:
  /// The buttons as an operator sees them: "d" there but disabled, "e" enabled, "-" hidden, in the
  /// order preview frame, preview all, render frame, render all, pause, resume, stop, capture.
  std::string buttons() const {
    const TExecButtonsFrame& bar = form->ExecButtonsToolbar;
    const TControl* const controls[] = {&bar.PreviewFrameButton, &bar.PreviewAllButton,
                                        &bar.RenderFrameButton,  &bar.RenderAllButton,
                                        &bar.PauseButton,        &bar.ResumeButton,
                                        &bar.StopButton,         &bar.CapturePDLButton};
    std::string text;
    for (const TControl* c : controls) text += !c->isVisible() ? '-' : c->isEnabled() ? 'e' : 'd';
    return text;
  }
  std::string highlighted() const {
    const TExecButtonsFrame& bar = form->ExecButtonsToolbar;
    std::string names;
    for (const TPanel* panel : {&bar.PreviewFrameButtonPanel, &bar.PreviewAllButtonPanel,
                                &bar.RenderFrameButtonPanel, &bar.RenderAllButtonPanel})
      if (panel->innerBevel() == EBevel::raised) names += panel->name();
    return names;
  }
  CTimecode timecodeOf(int frame) const { return host.clip.timecodeOfFrame(frame); }
};

TEST_F(Passes, ButtonsFollowTheProcessingState) {
  const struct {
    int state;
    bool render;
    int runState;
    std::string buttons, highlighted;
  } cases[] = {
      {ETool::STATE_IDLE, true, RUN_IDLE, "deded-de", ""},
      {ETool::STATE_RUNNING, false, RUN_RENDERING, "dddde-ed", "PreviewAllButtonPanel"},
      {ETool::STATE_RUNNING, true, RUN_RENDERING, "dddde-ed", "RenderAllButtonPanel"},
      {ETool::STATE_RUNNING, true, RUN_TRACKING, "ddddd-ed", "RenderAllButtonPanel"},
      {ETool::STATE_PAUSING, true, RUN_RENDERING, "ddddd-dd", "RenderAllButtonPanel"},
      {ETool::STATE_PAUSED, true, RUN_RENDERING, "dddd-eed", "RenderAllButtonPanel"},
      {ETool::STATE_STOPPING, true, RUN_RENDERING, "ddddd-dd", "RenderAllButtonPanel"},
      {ETool::STATE_PREVIEW_FRAME, false, RUN_RENDERING, "ddddd-dd", "PreviewFrameButtonPanel"},
      {ETool::STATE_RENDER_FRAME_PAUSED, true, RUN_RENDERING, "ddddd-dd", "RenderFrameButtonPanel"},
      {2, true, RUN_RENDERING, "ddddd-dd", "RenderFrameButtonPanel"},
      {99, true, RUN_RENDERING, "ddddd-dd", "RenderFrameButtonPanel"},
      {ETool::STATE_IDLE, true, RUN_IDLE, "deded-de", ""},
  };
  makeSmoothed();
  form->updatePointButtons();
  for (const auto& c : cases) {
    shot.setRunState(c.runState);
    form->updateExecutionButtons(c.state, c.render);
    EXPECT_EQ(buttons(), c.buttons) << c.state;
    EXPECT_EQ(highlighted(), c.highlighted) << c.state;
  }
  shot.setRunState(RUN_IDLE);
}

TEST_F(Passes, IdleButtonsSayWhyTheyCannotBePressed) {
  const struct {
    const char* what;
    bool tracked;
    std::string buttons, previewHint, renderHint, captureHint;
  } cases[] = {
      {"no points", false, "ddddd-dd", "Can't preview - invalid tracking data",
       "Can't render - invalid tracking data", "Can't capture - no tracking points"},
      {"tracked", true, "deded-de", "Preview marked range", "Render marked range",
       "Capture to PDL"},
  };
  for (const auto& c : cases) {
    c.tracked ? makeTracked() : tool.clearAllTrackingData();
    form->updatePointButtons();
    form->updateExecutionButtons(ETool::STATE_IDLE, false);
    EXPECT_EQ(buttons(), c.buttons) << c.what;
    EXPECT_EQ(form->ExecButtonsToolbar.PreviewAllButton.hint(), c.previewHint) << c.what;
    EXPECT_EQ(form->ExecButtonsToolbar.RenderAllButton.hint(), c.renderHint) << c.what;
    EXPECT_EQ(form->ExecButtonsToolbar.CapturePDLButton.hint(), c.captureHint) << c.what;
  }
  placePoints();
  form->updatePointButtons();
  form->updateExecutionButtons(ETool::STATE_IDLE, false);
  EXPECT_EQ(buttons(), "ddddd-de") << "untracked points can be captured";
}

TEST_F(Passes, TheCursorTellsOfWorkUnlessThePickerHasIt) {
  form->updateExecutionButtons(ETool::STATE_RUNNING, false);
  EXPECT_EQ(application.cursor(), ECursor::appStarting);
  form->updateExecutionButtons(ETool::STATE_PAUSED, false);
  EXPECT_EQ(application.cursor(), ECursor::normal);
  form->updateExecutionButtons(ETool::STATE_RUNNING, false);
  form->ColorPickButton.click();
  form->updateExecutionButtons(ETool::STATE_IDLE, false);
  EXPECT_EQ(application.cursor(), ECursor::appStarting);
}

TEST_F(Passes, AKeyAndAClickTakeTheSameRoad) {
  const struct {
    const char* keys;
    TToolButton* button;
    int state;
  } cases[] = {
      {"D KeyDown", &form->ExecButtonsToolbar.PreviewFrameButton, ETool::STATE_IDLE},
      {"Shift+D KeyDown", &form->ExecButtonsToolbar.PreviewAllButton, ETool::STATE_IDLE},
      {"G KeyDown", &form->ExecButtonsToolbar.RenderFrameButton, ETool::STATE_IDLE},
      {"Shift+G KeyDown", &form->ExecButtonsToolbar.RenderAllButton, ETool::STATE_IDLE},
      {"Space KeyDown", &form->ExecButtonsToolbar.PauseButton, ETool::STATE_RUNNING},
      {"Space KeyDown", &form->ExecButtonsToolbar.ResumeButton, ETool::STATE_PAUSED},
      {"Ctrl+Space KeyDown", &form->ExecButtonsToolbar.StopButton, ETool::STATE_RUNNING},
      {", KeyDown", &form->ExecButtonsToolbar.CapturePDLButton, ETool::STATE_IDLE},
      {"Return KeyDown", &form->ExecButtonsToolbar.SetStartTCButton, ETool::STATE_IDLE},
  };
  for (const auto& c : cases) {
    const auto travel = [&](const std::function<void()>& act) {
      makeSmoothed();
      host.displayedFrame = IN + 2;
      shot.setRunState(c.state == ETool::STATE_IDLE ? RUN_IDLE : RUN_RENDERING);
      form->updatePointButtons();
      form->updateExecutionButtons(c.state, false);
      // Enabled by hand: at rest the window itself keeps the one-frame passes disabled.
      form->ExecButtonsToolbar.enableButton(c.button->tag(), true);
      forgetCalls();
      act();
      const std::pair road(host.calls.take(), tool.runState());
      for (int beats = 0; beats < 3; ++beats) report(1);
      shot.setRunState(RUN_IDLE);
      return road;
    };
    CUserInput input;
    ASSERT_EQ(input.parse(c.keys), 0);
    EXPECT_EQ(travel([&] { EXPECT_EQ(tool.onUserInput(input), 18) << c.keys; }),
              travel([&] { c.button->click(); }))
        << c.keys;
  }
}

TEST_F(Passes, APassWithoutPointsIsRefusedAloud) {
  form->ExecButtonsToolbar.enableButton(EXEC_BUTTON_RENDER_ALL, true);
  form->ExecButtonsToolbar.RenderAllButton.click();
  ASSERT_EQ(application.errors.size(), 1u);
  EXPECT_EQ(application.errors[0], "You must set at least one tracking point!    ");
  EXPECT_EQ(theError.getError(), -8505);
  EXPECT_EQ(tool.runState(), RUN_IDLE);
  tool.livePoints().PointsAt(IN + 1).Point(0) = CTrackPoint(10.0, 10.0);
  form->ExecButtonsToolbar.RenderAllButton.click();
  EXPECT_EQ(application.errors.size(), 2u) << "none on the IN frame";
}

TEST_F(Passes, TheNextFrameIsShownFirstAndEndsBeforeMarkOut) {
  makeSmoothed();
  for (const bool render : {false, true}) {
    TToolButton& button = render ? form->ExecButtonsToolbar.RenderFrameButton
                                 : form->ExecButtonsToolbar.PreviewFrameButton;
    const int command = render ? EXEC_BUTTON_RENDER_NEXT_FRAME : EXEC_BUTTON_PREVIEW_NEXT_FRAME;
    host.displayedFrame = OUT - 2;
    button.setEnabled(true);
    EXPECT_TRUE(form->runExecutionCommand(command));
    EXPECT_EQ(host.displayedFrame, OUT - 1);
    EXPECT_EQ(tool.resumeFrame(), OUT);
    EXPECT_EQ(tool.runState(), RUN_RENDER_REQUESTED);
    shot.setRunState(RUN_IDLE);
    EXPECT_TRUE(form->runExecutionCommand(command));
    EXPECT_EQ(host.displayedFrame, OUT - 1);
    EXPECT_EQ(tool.runState(), RUN_IDLE) << "there is no next frame";
  }
}

TEST_F(Passes, CaptureTakesAllEventsWithShift) {
  placePoints();
  form->updatePointButtons();
  form->updateExecutionButtons(ETool::STATE_IDLE, false);
  forgetCalls();
  form->ExecButtonsToolbar.CapturePDLButton.click();
  application.shiftDown = true;
  form->ExecButtonsToolbar.CapturePDLButton.click();
  application.shiftDown = false;
  form->ExecButtonsToolbar.CapturePDLButton.setEnabled(false);
  EXPECT_FALSE(form->runExecutionCommand(EXEC_BUTTON_CAPTURE_PDL));
  EXPECT_TRUE(form->runExecutionCommand(EXEC_BUTTON_CAPTURE_PDL_ALL_EVENTS));
  EXPECT_EQ(host.calls.take(),
            (std::vector<std::string>{"capturePDL 0", "capturePDL 1", "capturePDL 1"}));
}

TEST_F(Passes, TheResumeTimecodeFollowsTheHost) {
  form->setResumeFrame(IN + 6);
  EXPECT_EQ(form->ExecButtonsToolbar.resumeTimecode(), timecodeOf(IN + 6));
  EXPECT_EQ(tool.resumeFrame(), IN + 6);
  form->setResumeFrame(-1);
  EXPECT_EQ(tool.resumeFrame(), host.clip.first);
  form->ExecButtonsToolbar.ResumeTCEdit.typeText(timecodeOf(IN + 8).toText());
  host.onCall = [this](const std::string&) { host.displayedFrame = IN + 7; };
  form->ExecButtonsToolbar.GotoTCButton.click();
  EXPECT_EQ(tool.resumeFrame(), IN + 7) << "where the host ended";
  EXPECT_EQ(form->ExecButtonsToolbar.resumeTimecode(), timecodeOf(IN + 7));
  host.clipOpen = false;
  form->setResumeFrame(IN);
  EXPECT_EQ(tool.resumeFrame(), IN + 7);
}

}  // namespace
