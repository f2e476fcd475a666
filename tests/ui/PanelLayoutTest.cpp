#include <gtest/gtest.h>

#include <functional>

#include "WindowFixture.h"

namespace {

bool overlap(const SBounds& a, const SBounds& b) {
  return a.left < b.right() && b.left < a.right() && a.top < b.bottom() && b.top < a.bottom();
}

/// Pixels that the control's caption takes, with its mark. "&&" is shown as an ampersand, a single
/// "&" marks a key.
int captionWidth(const TControl& control) {
  constexpr int CHARACTER = 6;
  constexpr int MARK = 22;
  const std::string& caption = control.caption();
  int characters = 0;
  for (std::size_t i = 0; i < caption.size(); ++i) {
    if (caption[i] == '&' && ++i == caption.size()) break;
    characters += (caption[i] & 0xC0) != 0x80;
  }
  const bool marked = dynamic_cast<const TCheckBox*>(&control) != nullptr ||
                      dynamic_cast<const TRadioButton*>(&control) != nullptr;
  return characters * CHARACTER + (marked ? MARK : 0);
}

/// Calls `visit` for every control that can be seen, from the panel down.
void walk(const TControl& control, const std::function<void(const TControl&)>& visit) {
  if (!control.isVisible()) return;
  visit(control);
  for (const TControl* child : control.children()) walk(*child, visit);
}

class Panel : public WindowTest {
 protected:
  /// No text is cut, nothing lies outside its parent: true of every window.
  static void expectTextsFit(const TControl& root) {
    walk(root, [](const TControl& control) {
      if (control.caption().empty() || dynamic_cast<const TForm*>(&control) != nullptr) return;
      EXPECT_LE(captionWidth(control), control.bounds().width)
          << control.name() << ": " << control.caption();
      EXPECT_GE(control.bounds().height, 14) << control.name();
    });
  }
  const TControl& panel() const { return form->StabilizationControlPanel; }
  /// What lies over another on purpose.
  bool mayCover(const TControl& a, const TControl& b) const {
    const TControl* const covers[] = {&form->MotionGraphs.TrackWarnPanel,
                                      &form->ExecStatusBar.ProgressPanelLight,
                                      &form->ExecStatusBar.ProgressPanelDark};
    for (const TControl* cover : covers)
      if (&a == cover || &b == cover) return true;
    return a.name().find("Disabled") != std::string::npos ||
           b.name().find("Disabled") != std::string::npos;
  }
};

TEST_F(Panel, EverythingLiesInItsParentAndBesideItsSiblings) {
  EXPECT_EQ(panel().bounds(), (SBounds{0, 0, 512, 720}));
  walk(panel(), [this](const TControl& control) {
    const auto& children = control.children();
    for (std::size_t i = 0; i < children.size(); ++i) {
      const SBounds& b = children[i]->bounds();
      if (!children[i]->isVisible() || b.width == 0) continue;
      EXPECT_TRUE(b.left >= 0 && b.top >= 0 && b.right() <= control.bounds().width &&
                  b.bottom() <= control.bounds().height)
          << control.name() << "." << children[i]->name();
      for (std::size_t j = i + 1; j < children.size(); ++j) {
        if (!children[j]->isVisible() || mayCover(*children[i], *children[j])) continue;
        EXPECT_FALSE(overlap(b, children[j]->bounds()))
            << children[i]->name() << " and " << children[j]->name();
      }
    }
  });
}

TEST_F(Panel, NoTextIsCut) {
  expectTextsFit(panel());
  application.inModalForm = [](TForm& dialog) { expectTextsFit(dialog); };
  form->PreferencesMenuItemClick();
}

TEST_F(Panel, GroupsStandInTheOrderOfWorkOnCommonEdges) {
  const std::vector<std::vector<const TControl*>> rows = {
      {&form->TrackingPointsGroupBox},
      {&form->TrackingBoxSizeGroupBox, &form->MotionSearchGroupBox},
      {&form->StabilizeGroupBox, &form->MotionGroupBox, &form->AnchorGroupBox},
      {&form->SmoothingGroupBox, &form->JitterGroupBox},
      {&form->MissingDataGroupBox, &form->MattingGroupBox},
      {&form->MotionGraphs},
      {&form->StatusMessageLabel, &form->PointCountLabel, &form->PointsLabel},
      {&form->ExecButtonsToolbar},
      {&form->ExecStatusBar},
      {&form->StatusBar}};
  int below = 0;
  for (const auto& row : rows) {
    EXPECT_EQ(row.front()->bounds().left, 8) << row.front()->name();
    EXPECT_EQ(row.back()->bounds().right(), 504) << row.back()->name();
    EXPECT_GE(row.front()->bounds().top, below) << row.front()->name();
    for (std::size_t i = 0; i < row.size(); ++i) {
      EXPECT_EQ(row[i]->bounds().top, row[0]->bounds().top) << row[i]->name();
      EXPECT_EQ(row[i]->bounds().height, row[0]->bounds().height) << row[i]->name();
      if (i > 0) {
        EXPECT_EQ(row[i]->bounds().left - row[i - 1]->bounds().right(), 6);
      }
    }
    below = row.front()->bounds().bottom();
  }
  EXPECT_GE(form->MotionGraphs.bounds().height, 120);
}

/// The tab key must not lead to where nothing is seen.
TEST_F(Panel, HiddenControlsAreNoTabStops) {
  int hidden = 0;
  const std::function<void(const TControl&, bool)> visit = [&](const TControl& control, bool seen) {
    seen = seen && control.isVisible();
    if (!seen) {
      ++hidden;
      EXPECT_FALSE(control.isTabStop()) << control.name();
    }
    for (const TControl* child : control.children()) visit(*child, seen);
  };
  for (const TControl* hider : {static_cast<TControl*>(&form->TrackingPointsGroupBox),
                                static_cast<TControl*>(&form->HiddenPanel)})
    visit(*hider, true);
  EXPECT_GE(hidden, 11);
}

TEST_F(Panel, ArrowsStandAtTheEdgesOfTheBoxThatTheyMove) {
  const SBounds& box = form->MattingBoxPicture.bounds();
  for (const TControl* arrow : {&form->TopUpButton, &form->TopDownButton})
    EXPECT_LE(arrow->bounds().bottom(), box.top) << arrow->name();
  for (const TControl* arrow : {&form->BottomUpButton, &form->BottomDownButton})
    EXPECT_GE(arrow->bounds().top, box.bottom()) << arrow->name();
  for (const TControl* arrow : {&form->LeftLeftButton, &form->LeftRightButton})
    EXPECT_LE(arrow->bounds().right(), box.left) << arrow->name();
  for (const TControl* arrow : {&form->RightLeftButton, &form->RightRightButton})
    EXPECT_GE(arrow->bounds().left, box.right()) << arrow->name();
}

}  // namespace
