#include "WindowFixture.h"

namespace {

class Matting : public WindowTest {
 protected:
  static constexpr SRect BOX = {20, 15, 40, 30};  // of a picture of 64 x 48
  void SetUp() override {
    WindowTest::SetUp();
    tool.setMattingBox(BOX);
  }
  void hold(TToolButton& button, int milliseconds) {
    button.press();
    application.advanceClock(milliseconds);
    button.release();
  }
};

TEST_F(Matting, EveryButtonMovesItsEdgeAndStopsAtThePicture) {
  const struct {
    TToolButton* button;
    SRect once, withShift, atTheEnd;
  } cases[] = {
      {&form->TopUpButton, {20, 14, 40, 30}, {20, 4, 40, 30}, {20, 0, 40, 30}},
      {&form->TopDownButton, {20, 16, 40, 30}, {20, 26, 40, 30}, {20, 47, 40, 30}},
      {&form->BottomUpButton, {20, 15, 40, 29}, {20, 15, 40, 19}, {20, 15, 40, 0}},
      {&form->BottomDownButton, {20, 15, 40, 31}, {20, 15, 40, 41}, {20, 15, 40, 47}},
      {&form->LeftLeftButton, {19, 15, 40, 30}, {9, 15, 40, 30}, {0, 15, 40, 30}},
      {&form->LeftRightButton, {21, 15, 40, 30}, {31, 15, 40, 30}, {63, 15, 40, 30}},
      {&form->RightLeftButton, {20, 15, 39, 30}, {20, 15, 29, 30}, {20, 15, 0, 30}},
      {&form->RightRightButton, {20, 15, 41, 30}, {20, 15, 51, 30}, {20, 15, 63, 30}},
  };
  for (const auto& c : cases) {
    tool.setMattingBox(BOX);
    hold(*c.button, 0);
    EXPECT_EQ(tool.getMattingBox(), c.once) << c.button->name();
    application.shiftDown = true;
    hold(*c.button, 0);
    EXPECT_EQ(tool.getMattingBox(), c.withShift) << c.button->name();
    hold(*c.button, 3000);
    EXPECT_EQ(tool.getMattingBox(), c.atTheEnd) << c.button->name();
    application.shiftDown = false;
  }
}

TEST_F(Matting, AHeldButtonMovesAtOnceThenAfterAQuarterSecondThenFast) {
  form->TopUpButton.press();
  for (const auto& [milliseconds, top] : std::initializer_list<std::pair<int, int>>{
           {0, 14}, {249, 14}, {1, 13}, {74, 13}, {1, 12}, {150, 10}}) {
    application.advanceClock(milliseconds);
    EXPECT_EQ(tool.getMattingBox().top, top);
  }
  form->TopUpButton.release();
  application.advanceClock(1000);
  EXPECT_EQ(tool.getMattingBox().top, 10);
  form->TopUpButton.click();
  EXPECT_EQ(tool.getMattingBox().top, 10) << "the click that ends a press moves nothing";
  form->TopUpButton.press();
  tool.toolHide();
  application.advanceClock(1000);
  EXPECT_EQ(tool.getMattingBox().top, 9) << "a hidden panel holds no button";
}

TEST_F(Matting, AllIsTheWholeFrameAndNothingHappensWithoutAClip) {
  form->AllMatButton.click();
  EXPECT_EQ(tool.getMattingBox(), (SRect{0, 0, 63, 47}));
  tool.setMattingBox(BOX);
  host.clipOpen = false;
  form->AllMatButton.click();
  hold(form->TopUpButton, 500);
  form->SetMatButton.click();
  EXPECT_EQ(tool.getMattingBox(), BOX);
}

TEST_F(Matting, WithoutAProcessingRegionItsGroupIsGreyAndTheBoxGone) {
  form->ColorPickButton.setEnabled(false);  // somebody's own state survives
  form->UseMattingCBox.click();
  EXPECT_FALSE(tool.isMattingBoxShown());
  for (TControl* control : form->MattingGroupBox.children())
    EXPECT_EQ(control->isEnabledInWindow(), control == &form->UseMattingCBox) << control->name();
  form->setUseMattingChecked(false);
  form->setUseMattingChecked(true);  // as a points file says
  EXPECT_TRUE(tool.isMattingBoxShown());
  form->setUseMattingChecked(false);
  EXPECT_FALSE(tool.isMattingBoxShown());
  form->UseMattingCBox.click();
  EXPECT_TRUE(tool.isMattingBoxShown());
  for (TControl* control : form->MattingGroupBox.children())
    EXPECT_EQ(control->isEnabledInWindow(), control != &form->ColorPickButton) << control->name();
  form->ShowMattingBoxCBox.click();
  EXPECT_FALSE(tool.isMattingBoxShown());
  EXPECT_TRUE(form->gatherParameters().UseMatting);
}

TEST_F(Matting, ThePickersButtonIsDownExactlyWhileThePickerIsOn) {
  form->ColorPickButton.click();
  EXPECT_TRUE(tool.isColorPickerOn());
  EXPECT_TRUE(form->ColorPickButton.isDown());
  tool.setColorPickerOn(false);  // the picture was clicked
  application.advanceClock(99);
  EXPECT_TRUE(form->ColorPickButton.isDown());
  application.advanceClock(1);
  EXPECT_FALSE(form->ColorPickButton.isDown());
  EXPECT_FALSE(form->ColorPickerStateTimer.isEnabled());
  form->ColorPickButton.click();
  form->ColorPickButton.click();
  EXPECT_FALSE(tool.isColorPickerOn());
  EXPECT_FALSE(form->ColorPickButton.isDown());
}

}  // namespace
