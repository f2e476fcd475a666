#include <QCheckBox>
#include <QClipboard>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QToolButton>

#include "PresenterFixture.h"

namespace {

TEST_F(Presenter, WhatTheProgramSetsIsSeenAndIsNoAct) {
  TCheckBox check("Check", &panel);
  TTrackBar bar("Bar", &panel);
  TEdit edit("Edit", &panel);
  TLabel label("Label", &panel);
  TRadioButton first("First", &panel), second("Second", &panel);
  int acts = 0;
  check.onClick = first.onClick = second.onClick = [&] { ++acts; };
  edit.onKeyPress = [&](char&) { ++acts; };
  auto window = show();
  check.setChecked(true);
  check.setCaption("Sho&w && tell");
  check.setHint("short|long");
  bar.setMaximum(50);
  bar.setPosition(30);
  edit.setText("12");
  label.setBold(true);
  label.setVisible(false);
  second.setChecked(true);
  first.setChecked(true);
  EXPECT_TRUE(find<QCheckBox>("Check").isChecked());
  EXPECT_EQ(find<QCheckBox>("Check").text(), "Sho&w && tell");
  EXPECT_EQ(find<QCheckBox>("Check").toolTip(), "short");
  EXPECT_EQ(find<QSlider>("Bar").value(), 30);
  EXPECT_EQ(find<QSlider>("Bar").maximum(), 50);
  EXPECT_EQ(find<QLineEdit>("Edit").text(), "12");
  EXPECT_TRUE(find<QLabel>("Label").isHidden());
  EXPECT_TRUE(find<QRadioButton>("First").isChecked());
  EXPECT_FALSE(find<QRadioButton>("Second").isChecked());
  EXPECT_EQ(acts, 0);
}

TEST_F(Presenter, AClickIsTheControlsAndItsAnswerIsShown) {
  TCheckBox check("Check", &panel);
  TButton button("Button", &panel);
  TToolButton stays("Stays", &panel);
  TRadioButton first("First", &panel), second("Second", &panel);
  TControl* const controls[] = {&check, &button, &stays, &first, &second};
  for (int row = 0; row < 5; ++row) place(*controls[row], row);
  stays.setStaysDown(true);
  int clicks = 0;
  check.onClick = [&] { check.setChecked(false); };  // refuses
  button.onClick = [&] { ++clicks; };
  stays.onClick = [&] { stays.setDown(true); };
  auto window = show();
  QTest::mouseClick(&find<QCheckBox>("Check"), Qt::LeftButton, {}, {8, 11});
  EXPECT_FALSE(find<QCheckBox>("Check").isChecked());
  QTest::mouseClick(&find<QPushButton>("Button"), Qt::LeftButton);
  EXPECT_EQ(clicks, 1);
  EXPECT_FALSE(find<QPushButton>("Button").hasFocus()) << "Space would click it again";
  for (int click = 0; click < 2; ++click)
    QTest::mouseClick(&find<QToolButton>("Stays"), Qt::LeftButton);
  EXPECT_TRUE(find<QToolButton>("Stays").isChecked());
  QTest::mouseClick(&find<QRadioButton>("First"), Qt::LeftButton, {}, {8, 11});
  QTest::mouseClick(&find<QRadioButton>("First"), Qt::LeftButton, {}, {8, 11});
  EXPECT_TRUE(find<QRadioButton>("First").isChecked()) << "a choice is not clicked away";
  QTest::keyClick(&find<QRadioButton>("First"), Qt::Key_Down);
  EXPECT_TRUE(second.isChecked());
  EXPECT_FALSE(find<QRadioButton>("First").isChecked());
  QTest::keyClick(&find<QRadioButton>("Second"), Qt::Key_Down);
  EXPECT_TRUE(first.isChecked()) << "round and round";
}

TEST_F(Presenter, AHeldButtonComesUpWhateverHappens) {
  TToolButton button("Button", &panel);
  place(button, 0);
  std::string acts;
  button.onPress = [&] { acts += "down "; };
  button.onRelease = [&] { acts += "up "; };
  auto window = show();
  auto& shown = find<QToolButton>("Button");
  QTest::mousePress(&shown, Qt::LeftButton);
  QTest::mouseRelease(&shown, Qt::LeftButton);
  EXPECT_EQ(acts, "down up ");
  const struct {
    const char* what;
    void (TControl::*change)(bool);
  } cases[] = {{"disabled", &TControl::setEnabled}, {"hidden", &TControl::setVisible}};
  for (const auto& c : cases) {
    acts.clear();
    QTest::mousePress(&shown, Qt::LeftButton);
    (button.*c.change)(false);
    EXPECT_EQ(acts, "down up ") << c.what;
    (button.*c.change)(true);
    QTest::mouseRelease(&shown, Qt::LeftButton);
  }
  acts.clear();
  QTest::mousePress(&shown, Qt::LeftButton);
  window.reset();
  EXPECT_EQ(acts, "down up ") << "the window went";
}

TEST_F(Presenter, EveryCharacterPassesTheControlFirst) {
  TEdit edit("Edit", &panel);
  place(edit, 0);
  std::string keys;
  edit.onKeyPress = [&](char& key) {
    keys += key;
    if (key == 'x') key = 0;
    if (key == 'a') key = 'A';
  };
  auto window = show();
  auto& shown = find<QLineEdit>("Edit");
  shown.setFocus();
  QTest::keyClicks(&shown, "12xa3");
  EXPECT_EQ(edit.text(), "12A3");
  QTest::keyClick(&shown, Qt::Key_Home);
  QTest::keyClicks(&shown, "9");
  EXPECT_EQ(edit.text(), "912A3") << "where the cursor is";
  QTest::keyClick(&shown, Qt::Key_Delete);
  QTest::keyClick(&shown, Qt::Key_Backspace);
  EXPECT_EQ(edit.text(), "2A3");
  QApplication::clipboard()->setText("7x8");
  QTest::keyClick(&shown, Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(edit.text(), "782A3");
  keys.clear();
  QTest::keyClick(&shown, Qt::Key_Return);
  QTest::keyClick(&shown, Qt::Key_Escape);
  QTest::keyClick(&shown, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(keys, std::string("\r\x1b\x1a"));
  EXPECT_EQ(edit.text(), "782A3");
  edit.selectAll();
  QTest::keyClicks(&shown, "5");
  EXPECT_EQ(edit.text(), "5") << "what is typed replaces what is selected";
}

TEST_F(Presenter, FocusIsInStepBothWays) {
  TEdit first("First", &panel), second("Second", &panel);
  TLabel label("Label", &panel);
  TEdit third("Third", &panel);
  TControl* const controls[] = {&first, &second, &label, &third};
  for (int row = 0; row < 4; ++row) place(*controls[row], row);
  second.setTabStop(false);
  std::string acts;
  first.onEnter = [&] { acts += "in "; };
  first.onExit = [&] { acts += "out "; };
  auto window = show();
  DropFocus();
  EXPECT_FALSE(find<QLineEdit>("First").hasFocus()) << "where Qt had put it";
  acts.clear();
  find<QLineEdit>("First").setFocus();
  EXPECT_EQ(FocusedControl(), &first);
  QTest::keyClick(&find<QLineEdit>("First"), Qt::Key_Tab);
  EXPECT_EQ(FocusedControl(), &third) << "the second is no tab stop";
  first.focus();
  EXPECT_TRUE(find<QLineEdit>("First").hasFocus());
  first.setEnabled(false);
  EXPECT_FALSE(find<QLineEdit>("Third").hasFocus()) << "nobody chose the next one";
  EXPECT_EQ(FocusedControl(), nullptr);
  EXPECT_EQ(acts, "in out in out ");
}

TEST_F(Presenter, AWheelGoesUpUntilSomebodyTakesIt) {
  TControl frame("Frame", &panel);
  frame.setBounds({0, 0, 200, 60});
  TTrackBar bar("Bar", &frame);
  bar.setBounds({0, 0, 200, 30});
  int steps = 0;
  frame.onWheel = [&](int by) {
    steps += by;
    return true;
  };
  auto window = show();
  for (const int delta : {120, 60, 60, -120, -360}) {
    QWheelEvent event({5, 5}, {5, 5}, {}, {0, delta}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(&find<QSlider>("Bar"), &event);
  }
  EXPECT_EQ(steps, -2) << "halves add up";
  EXPECT_EQ(bar.position(), 0) << "taken is taken";
}

TEST_F(Presenter, AButtonActsOnWhatIsBeingTyped) {
  VTimeCodeEdit timecode("Timecode", &panel);
  TButton push("Push", &panel);
  TToolButton tool("Tool", &panel), held("Held", &panel);
  TControl* const controls[] = {&timecode, &push, &tool, &held};
  for (int row = 0; row < 4; ++row) place(*controls[row], row);
  timecode.setTimecode(CTimecode(0, 24, false));
  std::string exited, acted;
  timecode.onExit = [&] { exited = timecode.timecode().toText(); };
  const auto act = [&] { acted = exited; };
  push.onClick = tool.onClick = held.onPress = act;
  auto window = show();
  int second = 0;
  for (const char* name : {"Push", "Tool", "Held"}) {
    const std::string typed = "00:00:0" + std::to_string(++second) + ":00";
    auto& field = find<QLineEdit>("Timecode");
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, typed.c_str());
    QTest::mouseClick(&find<QAbstractButton>(name), Qt::LeftButton);
    EXPECT_EQ(acted, typed) << name;
    EXPECT_FALSE(field.hasFocus()) << name;
  }
}

TEST_F(Presenter, ATimecodeIsTakenOnReturnAndWhenItIsLeft) {
  VTimeCodeEdit edit("Edit", &panel);
  TEdit other("Other", &panel);
  place(edit, 0);
  place(other, 1);
  edit.setTimecode(CTimecode(0, 24, false));
  auto window = show();
  auto& shown = find<QLineEdit>("Edit");
  shown.setFocus();
  const struct {
    const char* typed;
    Qt::Key key;
    const char* then;
  } cases[] = {{"00:00:02:00", Qt::Key_Return, "00:00:02:00"},
               {"00:00:03:00", Qt::Key_Tab, "00:00:03:00"},
               {"nonsense", Qt::Key_Return, "00:00:03:00"}};
  for (const auto& c : cases) {
    shown.setFocus();
    shown.selectAll();
    QTest::keyClicks(&shown, c.typed);
    QTest::keyClick(&shown, c.key);
    EXPECT_EQ(edit.timecode().toText(), c.then);
    EXPECT_EQ(shown.text(), c.then);
    EXPECT_FALSE(shown.hasFocus());
  }
}

}  // namespace
