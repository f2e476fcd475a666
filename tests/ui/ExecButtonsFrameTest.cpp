#include "ui/ExecButtonsFrame.h"

#include <gtest/gtest.h>

#include <set>

namespace {

class ExecButtons : public testing::Test {
 protected:
  ExecButtons() {
    frame.ButtonPressedNotifier.onClick = [this] { told.push_back(frame.lastCommand()); };
  }
  void enableAll(bool enabled) {
    for (int command = EXEC_BUTTON_PREVIEW_FRAME; command <= EXEC_BUTTON_SET_RESUME_TC; ++command)
      frame.enableButton(command, enabled);
  }

  TExecButtonsFrame frame{"Frame"};
  std::vector<int> told;
};

TEST_F(ExecButtons, AKeysCommandIsTakenAsItsButtonStands) {
  const struct {
    int command;
    bool whenEnabled, whenDisabled;
  } cases[] = {
      {EXEC_BUTTON_PREVIEW_FRAME, true, false},
      {EXEC_BUTTON_PREVIEW_NEXT_FRAME, true, false},
      {EXEC_BUTTON_PREVIEW_ALL, true, false},
      {EXEC_BUTTON_RENDER_FRAME, true, false},
      {EXEC_BUTTON_RENDER_NEXT_FRAME, true, false},
      {EXEC_BUTTON_RENDER_ALL, true, false},
      {EXEC_BUTTON_PAUSE, false, false},  // only as what 20009 becomes
      {EXEC_BUTTON_RESUME, false, false},
      {EXEC_BUTTON_STOP, true, false},
      {EXEC_BUTTON_CAPTURE_PDL, true, false},
      {EXEC_BUTTON_CAPTURE_PDL_ALL_EVENTS, true, true},
      {EXEC_BUTTON_GO_TO_RESUME_TC, true, false},
      {EXEC_BUTTON_SET_RESUME_TC, true, false},
      {EXEC_BUTTON_NONE, false, false},
      {20015, false, false},
      {-1, false, false},
  };
  for (const bool enabled : {true, false}) {
    enableAll(enabled);
    for (const auto& c : cases) {
      told.clear();
      const bool expected = enabled ? c.whenEnabled : c.whenDisabled;
      EXPECT_EQ(frame.runCommand(c.command), expected) << c.command;
      EXPECT_EQ(told, expected ? std::vector{c.command} : std::vector<int>{}) << c.command;
      EXPECT_EQ(frame.lastCommand(), c.command);
    }
  }
}

TEST_F(ExecButtons, OneKeyPausesAndResumesWhicheverIsThere) {
  EXPECT_FALSE(frame.runCommand(EXEC_BUTTON_PAUSE_OR_RESUME)) << "idle";
  frame.enableButton(EXEC_BUTTON_PAUSE, true);
  EXPECT_TRUE(frame.runCommand(EXEC_BUTTON_PAUSE_OR_RESUME));
  frame.showButton(EXEC_BUTTON_PAUSE, false);
  EXPECT_FALSE(frame.runCommand(EXEC_BUTTON_PAUSE_OR_RESUME)) << "hidden, if enabled";
  frame.showButton(EXEC_BUTTON_RESUME, true);
  frame.enableButton(EXEC_BUTTON_RESUME, true);
  EXPECT_TRUE(frame.runCommand(EXEC_BUTTON_PAUSE_OR_RESUME));
  EXPECT_EQ(told, (std::vector<int>{EXEC_BUTTON_PAUSE, EXEC_BUTTON_RESUME}));
}

TEST_F(ExecButtons, AClickTellsWhatItsKeyTells) {
  enableAll(true);
  std::set<int> commands;
  for (TControl* child : frame.children()) {
    std::vector<TControl*> candidates = child->children();
    candidates.push_back(child);
    for (TControl* candidate : candidates) {
      auto* const button = dynamic_cast<TToolButton*>(candidate);
      if (button == nullptr) continue;
      told.clear();
      frame.ResumeTCEdit.typeText("00:00:01:00");
      button->press();
      button->release();
      EXPECT_EQ(told, std::vector{button->tag()}) << button->name();
      EXPECT_EQ(frame.resumeTimecode().frameCount(), 24) << "typed text is taken first";
      frame.setResumeTimecode(CTimecode());
      commands.insert(button->tag());
    }
  }
  EXPECT_EQ(commands.size(), 10u);
}

TEST_F(ExecButtons, HintsAndGroups) {
  frame.setButtonHint(EXEC_BUTTON_STOP, "Not now");
  EXPECT_EQ(frame.StopButton.hint(), "Not now");
  frame.enableButton(EXEC_BUTTON_PREVIEW_ALL, false);
  EXPECT_FALSE(frame.PreviewAllButtonPanel.isEnabled());
  frame.PreviewAllButton.click();
  EXPECT_TRUE(told.empty());
  frame.enableResumeGroup(false);
  EXPECT_FALSE(frame.runCommand(EXEC_BUTTON_SET_RESUME_TC));
  EXPECT_FALSE(frame.ResumeTCEdit.isEnabled());
}

}  // namespace
