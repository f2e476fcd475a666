#include <cmath>
#include <limits>

#include "WindowFixture.h"

namespace {

class Mapping : public WindowTest {
 protected:
  CStabilizerParameters roundTrip(const CStabilizerParameters& record) {
    form->showParameters(record);
    return form->gatherParameters();
  }
  std::string checkedOf(EButtonGroup group) {
    std::string names;
    for (TRadioButton* button : form->buttonsOf(group))
      if (button->isChecked()) names += button->name();
    return names;
  }
  std::string enabledAnchors() {
    std::string which;
    for (TRadioButton* button : form->buttonsOf(EButtonGroup::anchor))
      which += button->isEnabled() ? '1' : '0';
    return which;
  }
  bool referenceEnabled() const {
    const bool enabled = form->RefFrameTimeCodeEdit.isEnabled();
    EXPECT_EQ(form->GoToRefframeButton.isEnabled(), enabled);
    EXPECT_EQ(form->ResetRefFrameButton.isEnabled(), enabled);
    return enabled;
  }
};

TEST_F(Mapping, SmoothingStandsForTheWeightInStepsOfThreeQuarterDecades) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    double shown;
    int position;
    double gathered;
  } cases[] = {
      {-1.0, 0, -1.0},   {-0.5, 0, -1.0}, {nan, 0, -1.0},    {inf, 0, -1.0},
      {0.0, 10, 0.0},    {1.0, 1, 1.0},   {0.001, 5, 0.001}, {0.0001, 6, std::pow(10.0, -3.75)},
      {1e-300, 10, 0.0}, {30.0, 0, -1.0},
  };
  for (const auto& c : cases) {
    CStabilizerParameters record;
    record.Alpha2 = c.shown;
    EXPECT_EQ(roundTrip(record).Alpha2, c.gathered) << c.shown;
    EXPECT_EQ(form->SmoothTrackEdit.value(), c.position) << c.shown;
  }
  // Every position comes back: what a window wrote, a window shows.
  for (int position = 0; position <= 10; ++position) {
    form->SmoothTrackEdit.setValue(position);
    const CStabilizerParameters gathered = form->gatherParameters();
    EXPECT_EQ(roundTrip(gathered).Alpha2, gathered.Alpha2);
    EXPECT_EQ(form->SmoothTrackEdit.value(), position);
  }
}

TEST_F(Mapping, JitterAndAnchorFramesAreRoundedToWhatTheControlsCanShow) {
  for (const auto& [jitter, shown] : std::initializer_list<std::pair<double, int>>{
           {2.5, 3}, {2.4, 2}, {12.0, 10}, {-3.0, 0}, {1e300, 10}, {std::nan(""), 0}}) {
    CStabilizerParameters record;
    record.Jitter = jitter;
    EXPECT_EQ(roundTrip(record).Jitter, shown) << jitter;
  }
  CStabilizerParameters record;
  record.HMode = record.VMode = STABMODE_Smoothed;
  record.GoodFramesIn = 2;
  record.GoodFramesOut = 0;
  EXPECT_EQ(roundTrip(record).GoodFramesIn, 1);
  EXPECT_TRUE(form->AtMarkInCheckBox.isChecked());
  EXPECT_FALSE(form->AtMarkOutCheckBox.isChecked());
  form->AtMarkOutCheckBox.click();
  EXPECT_EQ(form->gatherParameters().GoodFramesOut, 1);
}

TEST_F(Mapping, OneMotionChoiceStandsForAllAxes) {
  const struct {
    int h, v, r;
    std::string axes, motion;
    int shownH, shownV, shownR;
  } cases[] = {
      {-1, -1, 0, "HorizVertRotRadioButton", "SmoothMotionRadioButton", 0, 0, 0},
      {0, 1, 2, "HorizVertRotRadioButton", "MatchRefRadioButton", 2, 2, 2},
      {-1, -1, -1, "HorizAndVertRadioButton", "NoMotionRadioButton", 1, 1, -1},
      {0, 2, -1, "HorizAndVertRadioButton", "SmoothMotionRadioButton", 0, 0, -1},
      {2, -1, -1, "HorizMotionRadioButton", "MatchRefRadioButton", 2, -1, -1},
      {-1, 1, -1, "VertMotionRadioButton", "NoMotionRadioButton", -1, 1, -1},
  };
  for (const auto& c : cases) {
    CStabilizerParameters record;
    record.HMode = c.h;
    record.VMode = c.v;
    record.RMode = c.r;
    const CStabilizerParameters gathered = roundTrip(record);
    EXPECT_EQ(checkedOf(EButtonGroup::stabilize), c.axes);
    EXPECT_EQ(checkedOf(EButtonGroup::motion), c.motion) << c.axes;
    EXPECT_EQ(gathered.HMode, c.shownH) << c.axes;
    EXPECT_EQ(gathered.VMode, c.shownV) << c.axes;
    EXPECT_EQ(gathered.RMode, c.shownR) << c.axes;
  }
}

TEST_F(Mapping, AnchorsFollowTheRecordAndNoMotionCannotHoldBothEnds) {
  const struct {
    int mode, in, out;
    std::string anchor;
    int gatheredIn, gatheredOut;
  } cases[] = {
      {STABMODE_Smoothed, 1, 0, "AnchorFirstRadioButton", 1, 0},
      {STABMODE_Smoothed, 0, 3, "AnchorLastRadioButton", 0, 1},
      {STABMODE_Smoothed, 1, 1, "AnchorBothRadioButton", 1, 1},
      {STABMODE_Smoothed, 0, 0, "AnchorNoneRadioButton", 0, 0},
      {STABMODE_Registered, 1, 1, "AnchorBothRadioButton", 1, 1},
      {STABMODE_Flat, 1, 1, "AnchorFirstRadioButton", 1, 0},
  };
  for (const auto& c : cases) {
    CStabilizerParameters record;
    record.HMode = record.VMode = c.mode;
    record.GoodFramesIn = c.in;
    record.GoodFramesOut = c.out;
    const CStabilizerParameters gathered = roundTrip(record);
    EXPECT_EQ(checkedOf(EButtonGroup::anchor), c.anchor);
    EXPECT_EQ(gathered.GoodFramesIn, c.gatheredIn) << c.anchor;
    EXPECT_EQ(gathered.GoodFramesOut, c.gatheredOut) << c.anchor;
  }
}

TEST_F(Mapping, EachMotionChoiceEnablesWhatBelongsToIt) {
  const auto smoothing = [this] { return form->SmoothTrackEdit.isFrameEnabled(); };
  form->SmoothMotionRadioButton.click();
  form->AnchorBothRadioButton.click();
  EXPECT_TRUE(smoothing());
  EXPECT_FALSE(referenceEnabled());
  EXPECT_EQ(enabledAnchors(), "1111");
  form->MatchRefRadioButton.click();
  EXPECT_FALSE(smoothing());
  EXPECT_TRUE(referenceEnabled());
  EXPECT_EQ(enabledAnchors(), "0000");
  form->NoMotionRadioButton.click();
  EXPECT_FALSE(smoothing());
  EXPECT_FALSE(referenceEnabled());
  EXPECT_EQ(enabledAnchors(), "1101");
  EXPECT_TRUE(form->AnchorFirstRadioButton.isChecked());
  EXPECT_EQ(form->gatherParameters().GoodFramesOut, 0) << "what is shown is what is gathered";
  form->SmoothMotionRadioButton.click();
  EXPECT_TRUE(smoothing()) << "disabled twice, restored once";

  CStabilizerParameters record;  // shown, a reference leaves the anchors' buttons as they are
  record.HMode = record.VMode = STABMODE_Registered;
  form->showParameters(record);
  EXPECT_EQ(enabledAnchors(), "1111");
  EXPECT_TRUE(referenceEnabled());
}

TEST_F(Mapping, TheReferenceIsAFrameBetweenTheMarksOrMarkIn) {
  const auto gatheredAt = [this](int frame) {
    form->RefFrameTimeCodeEdit.setTimecode(host.clip.timecodeOfFrame(frame));
    return form->gatherParameters().RefFrameIndex;
  };
  EXPECT_EQ(gatheredAt(IN + 3), IN + 3);
  EXPECT_EQ(gatheredAt(OUT - 1), OUT - 1);
  EXPECT_EQ(gatheredAt(OUT), IN);
  EXPECT_EQ(gatheredAt(IN - 1), IN);
  host.clipOpen = false;
  EXPECT_EQ(gatheredAt(IN + 3), IN);
  host.clipOpen = true;
  CStabilizerParameters record;
  record.RefFrameIndex = IN + 5;
  EXPECT_EQ(roundTrip(record).RefFrameIndex, IN + 5) << "an entry comes back as it was captured";
  record.RefFrameIndex = OUT + 40;
  EXPECT_EQ(roundTrip(record).RefFrameIndex, IN + 5);
}

TEST_F(Mapping, ReferenceButtonsFollowTheHostWhereverItEnds) {
  makeSmoothed();
  form->MatchRefRadioButton.click();
  BThreadWaitForAll();
  host.displayedFrame = IN + 4;
  form->ResetRefFrameButton.click();
  EXPECT_EQ(form->gatherParameters().RefFrameIndex, IN + 4);
  form->RefFrameTimeCodeEdit.typeText(host.clip.timecodeOfFrame(IN + 6).toText());
  form->ResetRefFrameButton.click();
  EXPECT_EQ(form->RefFrameTimeCodeEdit.text(), host.clip.timecodeOfFrame(IN + 4).toText());
  form->RefFrameTimeCodeEdit.typeText(host.clip.timecodeOfFrame(IN + 7).toText());
  form->GoToRefframeButton.click();
  EXPECT_EQ(host.displayedFrame, IN + 7);
  host.onCall = [this](const std::string& call) {
    if (call.rfind("goToFrame", 0) == 0) host.displayedFrame = IN + 2;
  };
  form->RefFrameTimeCodeEdit.typeText("25:99:00:00");
  form->GoToRefframeButton.click();
  EXPECT_EQ(form->RefFrameTimeCodeEdit.timecode(), host.clip.timecodeOfFrame(IN + 2));
  EXPECT_FALSE(tool.isSmoothed()) << "another reference, another path";
  host.onCall = {};
  host.clip.first = IN;  // the timecode that stands there lies before the clip now
  host.clip.end = OUT;
  form->RefFrameTimeCodeEdit.setTimecode(CTimecode(-5, 24, false));
  form->GoToRefframeButton.click();
  EXPECT_EQ(host.displayedFrame, IN);
  EXPECT_EQ(form->RefFrameTimeCodeEdit.timecode(), host.clip.timecodeOfFrame(IN));
  host.clipOpen = false;
  forgetCalls();
  form->GoToRefframeButton.click();
  form->ResetRefFrameButton.click();
  EXPECT_TRUE(host.calls.take().empty());
}

TEST_F(Mapping, OnlyWhatShapesThePathCostsThePath) {
  const struct {
    const char* what;
    bool costs;
    std::function<void()> act;
  } cases[] = {
      {"smoothing", true, [this] { form->SmoothTrackEdit.wheel(1); }},
      {"jitter", true, [this] { form->JitterTrackEdit.wheel(1); }},
      {"axes", true, [this] { form->VertMotionRadioButton.click(); }},
      {"motion", true, [this] { form->NoMotionRadioButton.click(); }},
      {"anchor", true, [this] { form->AnchorLastRadioButton.click(); }},
      {"chosen already", false, [this] { form->AnchorLastRadioButton.click(); }},
      {"fill", false, [this] { form->MissingDataZoomRadioButton.click(); }},
      {"hidden anchors", false, [this] { form->AtMarkInCheckBox.click(); }},
      {"shown record", false, [this] { form->showParameters(CStabilizerParameters()); }},
      {"set by program", false, [this] { form->JitterTrackEdit.setValue(7); }},
  };
  form->SmoothMotionRadioButton.click();
  form->SmoothTrackEdit.setValue(4);
  for (const auto& c : cases) {
    makeSmoothed();
    c.act();
    EXPECT_EQ(tool.runState() == RUN_SMOOTHING || tool.runState() == RUN_SMOOTHED, c.costs)
        << c.what;
    for (int beats = 0; beats < 4; ++beats) heartbeat();
    ASSERT_EQ(tool.runState(), RUN_IDLE) << c.what;
  }
}

TEST_F(Mapping, BoxSizesReachTheToolAtOnce) {
  placePoints();
  form->TrackingBoxSizeTrackEdit.setValue(12);
  form->MotionTrackEdit.setValue(20);
  form->TrackingBoxSizeTrackEdit.wheel(-1);
  EXPECT_FALSE(tool.livePoints().BoxExtentsDiffer(11, 11, 20, 20, 20, 20));
  form->MotionTrackEdit.wheel(1);
  EXPECT_FALSE(tool.livePoints().BoxExtentsDiffer(11, 11, 21, 21, 21, 21));
  CStabilizerParameters record;
  record.TrackBoxExtentX = record.TrackBoxExtentY = 8;
  form->showParameters(record);
  EXPECT_FALSE(tool.livePoints().BoxExtentsDiffer(8, 8, 20, 20, 20, 20));
}

TEST_F(Mapping, AnUnknownWarpFunctionIsSaidAndTheRecordsIsKept) {
  CStabilizerParameters record;
  record.UFunction = U_Fcn_Thin_Plate;
  EXPECT_EQ(roundTrip(record).UFunction, U_Fcn_Thin_Plate);
  EXPECT_TRUE(application.errors.empty());
  form->UFunctionComboBox.setText("Bent");
  EXPECT_EQ(form->gatherParameters().UFunction, U_Fcn_Thin_Plate);
  EXPECT_EQ(application.errors, std::vector<std::string>{"Unknown Warp Function\nBent"});
}

}  // namespace
