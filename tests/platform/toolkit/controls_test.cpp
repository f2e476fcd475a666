#include "toolkit/Controls.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

TEST(Controls, WhatAParentIsItsChildrenCannotEscape) {
  TPanel panel("Panel");
  TGroupBox group("Group", &panel);
  TCheckBox box("Box", &group);
  int clicks = 0;
  box.onClick = [&] { ++clicks; };
  group.setEnabled(false);
  box.click();
  EXPECT_TRUE(box.isEnabled());
  EXPECT_FALSE(box.isEnabledInWindow() || box.isChecked());
  box.focus();
  EXPECT_FALSE(box.isFocused());
  group.setEnabled(true);
  panel.setVisible(false);
  EXPECT_FALSE(box.isShowing() || box.isOperable());
  box.click();
  EXPECT_TRUE(box.isChecked()) << "a program clicks what is hidden";
  EXPECT_EQ(clicks, 1);
}

TEST(Controls, RadioButtonsExcludeEachOtherBelowOneParent) {
  TGroupBox group("Group");
  TGroupBox other("Other");
  TRadioButton a("A", &group), b("B", &group), elsewhere("C", &other);
  std::string clicked;
  a.onClick = [&] { clicked += 'a'; };
  b.onClick = [&] { clicked += 'b'; };
  elsewhere.setChecked(true);
  a.setChecked(true);
  EXPECT_EQ(clicked, "") << "the program is no operator";
  b.click();
  b.click();
  EXPECT_EQ(clicked, "b") << "what is chosen cannot be chosen";
  EXPECT_TRUE(b.isChecked() && elsewhere.isChecked());
  EXPECT_FALSE(a.isChecked());
}

TEST(Controls, ATrackBarStaysInItsRangeAndTellsOfEveryMove) {
  TTrackBar bar("Bar");
  std::vector<int> moves;
  bar.onChange = [&] { moves.push_back(bar.position()); };
  bar.setPosition(500);
  bar.setPosition(100);
  bar.setMaximum(40);
  bar.setPosition(-3);
  bar.setMinimum(10);
  EXPECT_EQ(moves, (std::vector<int>{100, 40, 0, 10}));
}

TEST(Controls, FocusLeavesBeforeItArrivesAndDiesWithItsControl) {
  TPanel panel("Panel");
  TEdit first("First", &panel);
  auto second = std::make_unique<VTimeCodeEdit>("Second", &panel);
  std::string story;
  first.onEnter = [&] { story += "first in, "; };
  first.onExit = [&] { story += "first out, "; };
  second->onEnter = [&] { story += "second in, "; };
  second->onExit = [&] { story += "second out at " + second->timecode().toText(); };
  first.focus();
  first.focus();
  second->focus();
  EXPECT_EQ(FocusedControl(), second.get());
  second->typeText("00:00:02:00");
  DropFocus();
  EXPECT_EQ(story, "first in, first out, second in, second out at 00:00:02:00");
  for (const auto& hide :
       {+[](TPanel& p) { p.setVisible(false); }, +[](TPanel& p) { p.setEnabled(false); }}) {
    story.clear();
    panel.setVisible(true);
    first.focus();
    hide(panel);
    EXPECT_EQ(FocusedControl(), nullptr);
    EXPECT_EQ(story, "first in, first out, ");
  }
  panel.setEnabled(true);
  second->focus();
  second.reset();
  EXPECT_EQ(FocusedControl(), nullptr);
}

TEST(Controls, WhoLeavesMaySendTheFocusOnOrRefuseIt) {
  TPanel panel("Panel");
  TEdit first("First", &panel), second("Second", &panel), third("Third", &panel);
  int arrivals = 0;
  second.onEnter = [&] { ++arrivals; };
  const struct {
    const char* what;
    std::function<void()> onExit;
    TControl* holder;
    int arrivals;
  } cases[] = {{"it goes where it was sent", [] {}, &second, 1},
               {"sent on", [&] { third.focus(); }, &third, 0},
               {"target disabled", [&] { second.setEnabled(false); }, nullptr, 0},
               {"target hidden", [&] { second.setVisible(false); }, nullptr, 0}};
  for (const auto& c : cases) {
    second.setEnabled(true);
    second.setVisible(true);
    first.onExit = {};
    first.focus();
    first.onExit = c.onExit;
    arrivals = 0;
    second.focus();
    EXPECT_EQ(FocusedControl(), c.holder) << c.what;
    EXPECT_EQ(arrivals, c.arrivals) << c.what;
  }
}

TEST(Controls, NothingInWhatIsSwitchedOffIsLeftWithTheFocus) {
  TPanel panel("Panel");
  TEdit first("First", &panel), second("Second", &panel);
  TEdit outside("Outside");
  TControl* next = nullptr;
  int left = 0;
  first.onExit = [&] { next->focus(); };
  second.onExit = [&] { ++left; };
  const struct {
    const char* what;
    void (TControl::*change)(bool);
    TControl* next;
    TControl* holder;
  } cases[] = {{"disabled, sent on within", &TControl::setEnabled, &second, nullptr},
               {"hidden, sent on within", &TControl::setVisible, &second, nullptr},
               {"disabled, sent outside", &TControl::setEnabled, &outside, &outside},
               {"hidden, sent outside", &TControl::setVisible, &outside, &outside}};
  for (const auto& c : cases) {
    next = c.next;
    left = 0;
    first.focus();
    (panel.*c.change)(false);
    EXPECT_EQ(FocusedControl(), c.holder) << c.what;
    EXPECT_EQ(left, c.next == &second ? 1 : 0) << c.what;
    (panel.*c.change)(true);
    DropFocus();
  }
}

TEST(Controls, AHeldButtonComesUpEvenWhenItWasDisabledMeanwhile) {
  TPanel panel("Panel");
  TToolButton button("Button", &panel);
  std::string story;
  button.onPress = [&] { story += "down "; };
  button.onRelease = [&] { story += "up "; };
  button.onClick = [&] { story += "click "; };
  button.release();
  button.press();
  button.press();
  button.release();
  EXPECT_EQ(story, "down up click ");
  button.press();
  panel.setEnabled(false);
  button.release();
  button.press();
  button.release();
  EXPECT_EQ(story, "down up click down up ");
}

TEST(Controls, EditsTakeKeysThatNobodySwallows) {
  TEdit edit("Edit");
  edit.onKeyPress = [](char& key) {
    if (key == 'x') key = 0;
    if (key == 'a') key = 'A';
  };
  const struct {
    const char* keys;
    bool selected;
    const char* text;
  } cases[] = {{"bx", false, "12b"},
               {"a", true, "A"},
               {"\b", false, "1"},
               {"\b", true, ""},
               {"\r\x1b", false, "12"}};
  for (const auto& c : cases) {
    edit.setText("12");
    if (c.selected) edit.selectAll();
    for (const char* key = c.keys; *key != '\0'; ++key) edit.type(*key);
    EXPECT_EQ(edit.text(), c.text);
  }
  edit.setEnabled(false);
  edit.type('7');
  EXPECT_EQ(edit.text(), "12");

  VTimeCodeEdit timecode("Timecode");
  timecode.setTimecode(CTimecode(30, 30, false));
  for (const auto& [typed, frames] : std::initializer_list<std::pair<const char*, int>>{
           {"00:00:03:05", 95}, {"nonsense", 95}, {"00:00:00:30", 95}, {"", 95}}) {
    timecode.typeText(typed);
    timecode.commit();
    EXPECT_EQ(timecode.timecode().frameCount(), frames) << typed;
    EXPECT_EQ(timecode.text(), timecode.timecode().toText());
  }
  timecode.setEnabled(false);
  timecode.typeText("00:00:09:00");
  timecode.commit();
  EXPECT_EQ(timecode.timecode().frameCount(), 95);
}

TEST(Controls, TheWheelGoesUpUntilSomebodyTakesIt) {
  TPanel panel("Panel");
  TPanel frame("Frame", &panel);
  TTrackBar bar("Bar", &frame);
  EXPECT_FALSE(bar.wheel(1));
  std::string story;
  panel.onWheel = [&](int) { return story += "panel ", true; };
  frame.onWheel = [&](int steps) { return story += "frame ", steps > 0; };
  EXPECT_TRUE(bar.wheel(1));
  EXPECT_TRUE(bar.wheel(-1));
  EXPECT_EQ(story, "frame frame panel ");
}

TEST(Controls, EveryVisibleChangeIsToldAndNothingElse) {
  TCSpinEdit spin("Spin");
  TComboBox combo("Combo");
  combo.setItems({"One", "Two"});
  TToolButton button("Button");
  int told = 0;
  for (TControl* control : {static_cast<TControl*>(&spin), static_cast<TControl*>(&combo),
                            static_cast<TControl*>(&button)})
    control->changedHook.subscribe(&told, 1, [&] { ++told; });
  spin.setValue(3);
  spin.setValue(3);
  spin.setMaximum(2);
  EXPECT_EQ(spin.value(), 2);
  EXPECT_EQ(told, 3);
  combo.setItemIndex(1);
  combo.setItemIndex(1);
  EXPECT_EQ(combo.text(), "Two");
  for (const int none : {7, 2, -1}) {
    combo.setItemIndex(none);
    EXPECT_EQ(combo.itemIndex(), -1) << none;
  }
  EXPECT_EQ(told, 5);
  button.setDown(true);
  button.setTag(4);
  EXPECT_EQ(told, 6);
  combo.setText("Two");
  combo.setItems({"Two", "Three"});
  EXPECT_EQ(combo.itemIndex(), 0) << "the text stays, wherever it stands now";
}

TEST(Controls, ASpinEditHoldsNoMoreThanItsMaximumAndTwoDigits) {
  const struct {
    int maximum, value, shownMaximum, shown;
  } cases[] = {{99, -1, 99, 0}, {99, 100, 99, 99}, {100, 100, 99, 99}, {5, 6, 5, 5}, {-4, 3, 0, 0}};
  for (const auto& c : cases) {
    TCSpinEdit spin("Spin");
    spin.setMaximum(c.maximum);
    spin.setValue(c.value);
    EXPECT_EQ(spin.maximum(), c.shownMaximum) << c.maximum;
    EXPECT_EQ(spin.value(), c.shown) << c.maximum << ' ' << c.value;
  }
}

TEST(Controls, ASelectionThatGoesIsSeenThoughTheTextStays) {
  TEdit edit("Edit");
  int told = 0;
  edit.changedHook.subscribe(&told, 1, [&] { ++told; });
  const struct {
    const char* what;
    std::function<void()> act;
    int told;
  } cases[] = {{"typed over by the same", [&] { edit.type('7'); }, 1},
               {"set to the same", [&] { edit.setText("7"); }, 1},
               {"set to another", [&] { edit.setText("8"); }, 1},
               {"deselected", [&] { edit.selectNone(); }, 1},
               {"selected again", [&] { edit.selectAll(); }, 0}};
  for (const auto& c : cases) {
    edit.setText("7");
    edit.selectAll();
    told = 0;
    c.act();
    EXPECT_EQ(told, c.told) << c.what;
    EXPECT_EQ(edit.isAllSelected(), c.told == 0) << c.what;
  }
  edit.selectNone();
  told = 0;
  edit.setText("7");
  EXPECT_EQ(told, 0);
}

}  // namespace
