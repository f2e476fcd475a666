#include "ui/TrackEditFrame.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <utility>

#include "toolkit/HeadlessApplication.h"

namespace {

class TrackEdit : public testing::Test {
 protected:
  TrackEdit() {
    SetApplication(&application);
    frame.emplace("Frame");
    frame->setRange(5, 30);
    frame->setValue(20);
    frame->NotifyWidget.onClick = [this] { ++clicks; };
    frame->changeHook.subscribe(this, 1, [this] { EXPECT_EQ(++raised, clicks) << "click first"; });
  }
  ~TrackEdit() override {
    frame.reset();
    SetApplication(nullptr);
  }
  void type(const std::string& keys) {
    frame->Edit.focus();
    for (const char key : keys) frame->Edit.type(key);
  }
  std::string state() const {
    return std::to_string(frame->value()) + " " + frame->Edit.text() + " " + std::to_string(clicks);
  }

  THeadlessApplication application;
  std::optional<TTrackEditFrame> frame;
  int clicks = 0;
  int raised = 0;
};

TEST_F(TrackEdit, WhatTheOwnerSetsIsShownAndNotTold) {
  frame->setValue(25);
  EXPECT_EQ(state(), "25 25 0");
  frame->setValue(99);
  EXPECT_EQ(state(), "30 30 0");
  frame->setRange(5, 12);
  EXPECT_EQ(state(), "12 12 0");
  EXPECT_EQ(frame->EditDisabledLabel.caption(), "12");
}

TEST_F(TrackEdit, KeysAreTakenWhenTheEditIsLeft) {
  const struct {
    const char* keys;
    const char* state;
    int beeps;
  } cases[] = {
      {"25\r", "25 25 1", 0},   {"20\r", "20 20 0", 0},
      {"40\r", "30 40 1", 0},   {"25\x1b", "20 20 0", 0},
      {"25\x1a", "20 20 0", 0}, {"-1x2\r", "12 12 1", 2},
      {"1\xe9\r", "5 1 1", 0},  {"25\b\r", "5 2 1", 0},
      {"\b\r", "5 0 1", 0},     {"99999999999\r", "30 2147483647 1", 0},
      {"7", "20 7 0", 0},
  };
  for (const auto& c : cases) {
    frame->setValue(20);
    frame->Edit.setText("20");
    DropFocus();
    clicks = raised = application.beeps = 0;
    type(c.keys);
    EXPECT_EQ(state(), c.state) << c.keys;
    EXPECT_EQ(application.beeps, c.beeps) << c.keys;
    const bool left = c.keys[1] != '\0';
    EXPECT_EQ(frame->TrackBar.isFocused(), left) << c.keys;
    EXPECT_TRUE(frame->TitleLabel.isBold());
  }
  DropFocus();
  EXPECT_EQ(state(), "7 7 1") << "leaving takes it, too";
  EXPECT_FALSE(frame->TitleLabel.isBold());
}

TEST_F(TrackEdit, EscapeGivesBackWhatTheBarWasMovedFromMeanwhile) {
  frame->Edit.focus();
  frame->TrackBar.setPosition(28);
  EXPECT_EQ(clicks, 1);
  frame->Edit.type(27);
  EXPECT_EQ(state(), "20 20 2");
  frame->Edit.focus();
  frame->TrackBar.setPosition(28);
  for (const char key : {'\b', '\b', '2', '0', '\x1b'}) frame->Edit.type(key);
  EXPECT_EQ(state(), "20 20 4") << "told though the number had been typed already";
}

TEST_F(TrackEdit, OfWhatIsPrintableOnlyDigitsAreTaken) {
  for (char key = ' '; key <= '~'; ++key) {
    const bool digit = key >= '0' && key <= '9';
    frame->Edit.setText("2");
    application.beeps = 0;
    frame->Edit.type(key);
    EXPECT_EQ(frame->Edit.text(), digit ? std::string("2") + key : "2") << key;
    EXPECT_EQ(application.beeps, digit ? 0 : 1) << key;
  }
}

TEST_F(TrackEdit, TextThatWasPutThereCountsByItsLeadingDigits) {
  const struct {
    const char *text, *state;
  } cases[] = {{"", "5 0 1"},    {"-12", "5 0 1"},    {"-99999999999", "5 0 1"},
               {" 12", "5 0 1"}, {"12.9", "12 12 1"}, {"007", "7 7 1"}};
  for (const auto& c : cases) {
    frame->setValue(20);
    clicks = raised = 0;
    frame->Edit.focus();
    frame->Edit.setText(c.text);
    DropFocus();
    EXPECT_EQ(state(), c.state) << c.text;
  }
}

TEST_F(TrackEdit, ANumberBeyondTheRangeIsToldOnceAndShownUntilTheBarMoves) {
  type("40\r");
  frame->Edit.focus();
  DropFocus();
  EXPECT_EQ(state(), "30 40 1") << "left again as it stood";
  frame->enable(false);
  EXPECT_EQ(frame->EditDisabledLabel.caption(), "30") << "grey, it reads what counts";
  frame->setRange(5, 60);
  frame->setValue(40);
  EXPECT_EQ(frame->EditDisabledLabel.caption(), "40");
}

TEST_F(TrackEdit, TheWheelStepsWithinTheRangeAndIsAlwaysTaken) {
  EXPECT_TRUE(frame->TrackBar.wheel(3));
  EXPECT_EQ(state(), "21 21 1");
  EXPECT_TRUE(frame->Edit.wheel(-1));
  EXPECT_EQ(state(), "20 20 2");
  frame->setValue(30);
  EXPECT_TRUE(frame->wheel(1));
  EXPECT_EQ(state(), "30 30 2");
  frame->enable(false);
  EXPECT_TRUE(frame->wheel(-1));
  EXPECT_EQ(state(), "30 30 2");
  frame->enable(true);
  frame->setEnabled(false);
  EXPECT_TRUE(frame->wheel(-1));
  EXPECT_EQ(state(), "30 30 2") << "nothing changes that nobody would be told of";
  frame->setEnabled(true);
  frame->NotifyWidget.setVisible(false);
  frame->setVisible(false);
  EXPECT_TRUE(frame->wheel(-1));
  EXPECT_EQ(state(), "29 29 3") << "hidden, it tells all the same";
}

TEST_F(TrackEdit, ADeferredDragIsToldOnceAfterTheButtonCameUp) {
  frame->setDeferredUpdate(true);
  application.leftButtonDown = true;
  for (int position = 21; position < 28; ++position) {
    frame->TrackBar.setPosition(position);
    application.advanceClock(300);
  }
  EXPECT_EQ(state(), "27 27 0");
  application.leftButtonDown = false;
  application.advanceClock(500);
  application.advanceClock(5000);
  EXPECT_EQ(state(), "27 27 1");
  frame->wheel(1);
  EXPECT_EQ(clicks, 2) << "no drag, no delay";
}

TEST_F(TrackEdit, WhatEndsADragIsToldInPlaceOfIt) {
  frame->setDeferredUpdate(true);
  application.leftButtonDown = true;
  frame->setValue(12);
  frame->setRange(15, 30);
  application.leftButtonDown = false;
  application.advanceClock(2000);
  EXPECT_EQ(state(), "15 15 0") << "the owner's are no drag";
  application.leftButtonDown = true;
  frame->TrackBar.setPosition(22);
  application.leftButtonDown = false;
  frame->wheel(1);
  EXPECT_EQ(state(), "23 23 1");
  application.advanceClock(2000);
  EXPECT_EQ(clicks, 1);
}

TEST_F(TrackEdit, DisabledItIsGreyAsAWholeAndComesBack) {
  type("17\r");
  frame->Edit.focus();
  frame->enable(false);
  EXPECT_EQ(FocusedControl(), nullptr);
  EXPECT_EQ(frame->EditDisabledLabel.caption(), "17") << "what was typed last";
  EXPECT_FALSE(frame->Edit.isOperable());
  EXPECT_TRUE(frame->EditDisabledPanel.isVisible());
  EXPECT_EQ(frame->TrackBarDisabledPanel.bounds(), frame->TrackBar.bounds());
  EXPECT_EQ(frame->TrackBar.selectionStart(), frame->TrackBar.selectionEnd());
  frame->setValue(10);
  EXPECT_EQ(frame->EditDisabledLabel.caption(), "10");
  frame->enable(true);
  EXPECT_TRUE(frame->Edit.isOperable());
  EXPECT_FALSE(frame->EditDisabledPanel.isVisible());
  EXPECT_EQ(frame->TrackBar.selectionStart(), 5);
  EXPECT_EQ(frame->TrackBar.selectionEnd(), 10);
}

TEST_F(TrackEdit, NoChangeOfRangePassesThroughAnEmptyOne) {
  bool sane = true;
  frame->TrackBar.changedHook.subscribe(
      this, 1, [&] { sane = sane && frame->minimum() <= frame->maximum(); });
  for (const auto& [low, high] : {std::pair{10, 60}, {70, 90}, {5, 30}, {31, 31}, {0, 0}}) {
    frame->setRange(low, high);
    EXPECT_TRUE(sane) << low;
    EXPECT_GE(frame->value(), low);
    EXPECT_LE(frame->value(), high);
  }
}

TEST_F(TrackEdit, AnyWidthHasTheBarLeftAndTheEditRight) {
  for (const int width : {120, 228, 480}) {
    frame->setBounds({0, 0, width, 40});
    const SBounds bar = frame->TrackBar.bounds();
    const SBounds edit = frame->EditAlignmentPanel.bounds();
    EXPECT_EQ(edit.right(), width);
    EXPECT_EQ(edit.width, 34);
    EXPECT_LT(bar.right(), edit.left);
    EXPECT_GT(bar.width, width / 2);
    EXPECT_EQ(frame->TrackBarDisabledPanel.bounds(), bar);
    EXPECT_EQ(frame->EditDisabledPanel.bounds(), edit);
    EXPECT_EQ(frame->MinLabel.bounds().left, bar.left);
    EXPECT_EQ(frame->MaxLabel.bounds().right(), bar.right());
    for (const TLabel* label : {&frame->MinLabel, &frame->MaxLabel}) {
      EXPECT_GE(label->bounds().top, bar.bottom());
      EXPECT_LE(label->bounds().bottom(), 40);
      EXPECT_GE(label->bounds().width, 18) << "three letters";
    }
    EXPECT_LE(frame->MinLabel.bounds().right(), frame->MaxLabel.bounds().left);
  }
}

}  // namespace
