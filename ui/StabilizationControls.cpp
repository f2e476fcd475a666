#include "ui/StabilizationControls.h"

#include "params/SmoothingScale.h"

namespace {

void set(TControl& control, const char* caption, const char* hint = "") {
  control.setCaption(caption);
  control.setHint(hint);
}

void tick(TCheckBox& box, const char* caption, bool ticked) {
  box.setCaption(caption);
  box.setChecked(ticked);
}

void setSlider(TTrackEditFrame& frame, int minimum, int maximum, int value) {
  frame.setRange(minimum, maximum);
  frame.setValue(value);
}

}  // namespace

TStabilizationControls::TStabilizationControls()
    : StabilizationControlPanel("StabilizationControlPanel"),
      TrackingPointsGroupBox("TrackingPointsGroupBox", &StabilizationControlPanel),
      TrackButton("TrackButton", &TrackingPointsGroupBox),
      ClearAllButton("ClearAllButton", &TrackingPointsGroupBox),
      LoadPointsButton("LoadPointsButton", &TrackingPointsGroupBox),
      SavePointsButton("SavePointsButton", &TrackingPointsGroupBox),
      PrevPointButton("PrevPointButton", &TrackingPointsGroupBox),
      NextPointButton("NextPointButton", &TrackingPointsGroupBox),
      ShowPointCBox("ShowPointCBox", &TrackingPointsGroupBox),
      ClearOnShotChangeCBox("ClearOnShotChangeCBox", &TrackingPointsGroupBox),
      ShowRenderPointCBox("ShowRenderPointCBox", &TrackingPointsGroupBox),
      AutoLoadCBox("AutoLoadCBox", &TrackingPointsGroupBox),
      AutoSaveCBox("AutoSaveCBox", &TrackingPointsGroupBox),
      TrackingBoxSizeGroupBox("TrackingBoxSizeGroupBox", &StabilizationControlPanel),
      TrackingBoxSizeTrackEdit("TrackingBoxSizeTrackEdit", &TrackingBoxSizeGroupBox),
      MotionSearchGroupBox("MotionSearchGroupBox", &StabilizationControlPanel),
      MotionTrackEdit("MotionTrackEdit", &MotionSearchGroupBox),
      StabilizeGroupBox("StabilizeGroupBox", &StabilizationControlPanel),
      HorizMotionRadioButton("HorizMotionRadioButton", &StabilizeGroupBox),
      VertMotionRadioButton("VertMotionRadioButton", &StabilizeGroupBox),
      HorizAndVertRadioButton("HorizAndVertRadioButton", &StabilizeGroupBox),
      HorizVertRotRadioButton("HorizVertRotRadioButton", &StabilizeGroupBox),
      MotionGroupBox("MotionGroupBox", &StabilizationControlPanel),
      SmoothMotionRadioButton("SmoothMotionRadioButton", &MotionGroupBox),
      NoMotionRadioButton("NoMotionRadioButton", &MotionGroupBox),
      MatchRefRadioButton("MatchRefRadioButton", &MotionGroupBox),
      RefFrameTimeCodeEdit("RefFrameTimeCodeEdit", &MotionGroupBox),
      GoToRefframeButton("GoToRefframeButton", &MotionGroupBox),
      ResetRefFrameButton("ResetRefFrameButton", &MotionGroupBox),
      AnchorGroupBox("AnchorGroupBox", &StabilizationControlPanel),
      AnchorFirstRadioButton("AnchorFirstRadioButton", &AnchorGroupBox),
      AnchorLastRadioButton("AnchorLastRadioButton", &AnchorGroupBox),
      AnchorBothRadioButton("AnchorBothRadioButton", &AnchorGroupBox),
      AnchorNoneRadioButton("AnchorNoneRadioButton", &AnchorGroupBox),
      SmoothingGroupBox("SmoothingGroupBox", &StabilizationControlPanel),
      SmoothTrackEdit("SmoothTrackEdit", &SmoothingGroupBox),
      JitterGroupBox("JitterGroupBox", &StabilizationControlPanel),
      JitterTrackEdit("JitterTrackEdit", &JitterGroupBox),
      MissingDataGroupBox("MissingDataGroupBox", &StabilizationControlPanel),
      MissingDataBlackRadioButton("MissingDataBlackRadioButton", &MissingDataGroupBox),
      MissingDataWhiteRadioButton("MissingDataWhiteRadioButton", &MissingDataGroupBox),
      MissingDataPrevFrameRadioButton("MissingDataPrevFrameRadioButton", &MissingDataGroupBox),
      MissingDataZoomRadioButton("MissingDataZoomRadioButton", &MissingDataGroupBox),
      MattingGroupBox("MattingGroupBox", &StabilizationControlPanel),
      MattingBoxPicture("MattingBoxPicture", &MattingGroupBox),
      TopUpButton("TopUpButton", &MattingGroupBox),
      TopDownButton("TopDownButton", &MattingGroupBox),
      BottomUpButton("BottomUpButton", &MattingGroupBox),
      BottomDownButton("BottomDownButton", &MattingGroupBox),
      LeftLeftButton("LeftLeftButton", &MattingGroupBox),
      LeftRightButton("LeftRightButton", &MattingGroupBox),
      RightLeftButton("RightLeftButton", &MattingGroupBox),
      RightRightButton("RightRightButton", &MattingGroupBox),
      ColorPickButton("ColorPickButton", &MattingGroupBox),
      SetMatButton("SetMatButton", &MattingGroupBox),
      AllMatButton("AllMatButton", &MattingGroupBox),
      ShowMattingBoxCBox("ShowMattingBoxCBox", &MattingGroupBox),
      UseMattingCBox("UseMattingCBox", &MattingGroupBox),
      MotionGraphs("MotionGraphs", &StabilizationControlPanel),
      ExecButtonsToolbar("ExecButtonsToolbar", &StabilizationControlPanel),
      StatusMessageLabel("StatusMessageLabel", &StabilizationControlPanel),
      PointCountLabel("PointCountLabel", &StabilizationControlPanel),
      PointsLabel("PointsLabel", &StabilizationControlPanel),
      ExecStatusBar("ExecStatusBar", &StabilizationControlPanel),
      StatusBar("StatusBar", &StabilizationControlPanel),
      HiddenPanel("HiddenPanel", &StabilizationControlPanel),
      AnchorFramesGroupBox("AnchorFramesGroupBox", &HiddenPanel),
      GoodInSpinEdit("GoodInSpinEdit", &AnchorFramesGroupBox),
      GoodOutSpinEdit("GoodOutSpinEdit", &AnchorFramesGroupBox),
      AtMarkInCheckBox("AtMarkInCheckBox", &AnchorFramesGroupBox),
      AtMarkOutCheckBox("AtMarkOutCheckBox", &AnchorFramesGroupBox),
      WarnMarkOutMoveCheckBox("WarnMarkOutMoveCheckBox", &HiddenPanel),
      WarpLabel("WarpLabel", &HiddenPanel),
      UFunctionComboBox("UFunctionComboBox", &HiddenPanel) {
  caption();
  layOut();
}

void TStabilizationControls::caption() {
  StabilizationControlPanel.setCaption("Stabilization");
  captionPoints();
  captionChoices();
  captionMatting();
  captionHidden();
  StatusMessageLabel.setCaption("Idle");
  StatusMessageLabel.setBold(true);
  PointCountLabel.setCaption("0");
  PointCountLabel.setAlignment(EAlignment::right);
  PointsLabel.setCaption("points");
  StatusBar.setPanels({{"", 150}, {"", 260}});
}

void TStabilizationControls::captionPoints() {
  TrackingPointsGroupBox.setCaption(" Tracking Points ");
  set(TrackButton, "Track");
  set(ClearAllButton, "Clear");
  set(LoadPointsButton, "Load");
  set(SavePointsButton, "Save");
  set(PrevPointButton, "Prev");
  set(NextPointButton, "Next");
  tick(ShowPointCBox, "Show", true);
  tick(ClearOnShotChangeCBox, "Clear on Shot Change", true);
  tick(ShowRenderPointCBox, "Show in Render", true);
  tick(AutoLoadCBox, "Auto Load", false);
  tick(AutoSaveCBox, "Auto Save", true);
  for (TCheckBox* box : {&ShowRenderPointCBox, &AutoLoadCBox, &AutoSaveCBox}) {
    box->setVisible(false);
    box->setTabStop(false);
  }

  set(TrackingBoxSizeGroupBox, " Tracking Box Size ", "Size of box used in tracking");
  set(MotionSearchGroupBox, " Motion Search Area ", "How high or low the warp motion");
  set(SmoothingGroupBox, " Smoothing ", "How much to smooth all points");
  set(JitterGroupBox, " Add Jitter ", "How much to smooth all points");
  const char* const rough = "/\\/\\/\\";
  const char* const flat = "___";
  SmoothTrackEdit.MinLabel.setCaption(rough);
  SmoothTrackEdit.MaxLabel.setCaption(flat);
  JitterTrackEdit.MinLabel.setCaption(flat);
  JitterTrackEdit.MaxLabel.setCaption(rough);
  setSlider(TrackingBoxSizeTrackEdit, 5, 30, 10);
  setSlider(MotionTrackEdit, 5, 50, 20);
  setSlider(SmoothTrackEdit, LEAST_SMOOTHING, MOST_SMOOTHING, 6);
  setSlider(JitterTrackEdit, 0, 10, 0);
}

void TStabilizationControls::captionChoices() {
  StabilizeGroupBox.setCaption(" Stabilize ");
  set(HorizMotionRadioButton, "Horizontal");
  set(VertMotionRadioButton, "Vertical");
  set(HorizAndVertRadioButton, "Horiz && Vert");
  set(HorizVertRotRadioButton, "Horiz, Vert && Rotation");
  HorizAndVertRadioButton.setChecked(true);

  MotionGroupBox.setCaption(" Motion ");
  set(SmoothMotionRadioButton, "Smooth");
  set(NoMotionRadioButton, "Remove All");
  set(MatchRefRadioButton, "Match Reference:");
  NoMotionRadioButton.setChecked(true);
  set(GoToRefframeButton, "\u2192", "Go to this timecode");
  set(ResetRefFrameButton, "\u2190", "Set to displayed timecode");

  AnchorGroupBox.setCaption(" Anchor ");
  set(AnchorFirstRadioButton, "First Frame");
  set(AnchorLastRadioButton, "Last Frame");
  set(AnchorBothRadioButton, "Both");
  set(AnchorNoneRadioButton, "None");
  AnchorFirstRadioButton.setChecked(true);

  MissingDataGroupBox.setCaption(" Missing Data Fill ");
  set(MissingDataBlackRadioButton, "Black");
  set(MissingDataWhiteRadioButton, "White");
  set(MissingDataPrevFrameRadioButton, "Prev Frame");
  set(MissingDataZoomRadioButton, "Zoom");
  MissingDataPrevFrameRadioButton.setChecked(true);
}

void TStabilizationControls::captionMatting() {
  MattingGroupBox.setCaption(" Matting ");
  const struct {
    TToolButton& button;
    const char* arrow;
  } arrows[] = {{TopUpButton, "\u2191"},     {TopDownButton, "\u2193"},
                {BottomUpButton, "\u2191"},  {BottomDownButton, "\u2193"},
                {LeftLeftButton, "\u2190"},  {LeftRightButton, "\u2192"},
                {RightLeftButton, "\u2190"}, {RightRightButton, "\u2192"}};
  for (const auto& [button, arrow] : arrows) set(button, arrow, "Shift down increases speed by 10");
  set(ColorPickButton, "\u25C9");
  ColorPickButton.setStaysDown(true);
  set(SetMatButton, "&Auto");
  set(AllMatButton, "A&ll");
  tick(ShowMattingBoxCBox, "Show", true);
  tick(UseMattingCBox, "Processing Region", true);
}

void TStabilizationControls::captionHidden() {
  HiddenPanel.setVisible(false);
  set(AnchorFramesGroupBox, " # Anchor Frames ",
      "Tracking points on anchor frames are used as reference.\r\n"
      "Anchor frames are not dewarped.");
  GoodInSpinEdit.setHint("Number of anchor frames beginning at in point");
  GoodOutSpinEdit.setHint("Number of anchor frames before out point");
  for (TCSpinEdit* edit : {&GoodInSpinEdit, &GoodOutSpinEdit}) {
    edit->setMaximum(2);
    edit->setValue(1);
  }
  tick(AtMarkInCheckBox, "At first frame", true);
  tick(AtMarkOutCheckBox, "At last frame", true);
  tick(WarnMarkOutMoveCheckBox, "Warn on Mark Out Change", true);
  WarnMarkOutMoveCheckBox.setHint("Enables/Disables warning when the mark out is moved.");
  WarpLabel.setCaption("Warp Function");
  for (TControl* control :
       {static_cast<TControl*>(&GoodInSpinEdit), static_cast<TControl*>(&GoodOutSpinEdit),
        static_cast<TControl*>(&AtMarkInCheckBox), static_cast<TControl*>(&AtMarkOutCheckBox),
        static_cast<TControl*>(&WarnMarkOutMoveCheckBox),
        static_cast<TControl*>(&UFunctionComboBox)})
    control->setTabStop(false);
}
