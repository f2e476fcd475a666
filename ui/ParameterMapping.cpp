#include <algorithm>
#include <cmath>

#include "SavedEnables.h"
#include "params/SmoothingScale.h"
#include "tool/StabilizerTool.h"
#include "toolkit/Application.h"
#include "ui/StabilizerForm.h"

namespace {

int jitterPosition(double jitter, const TTrackEditFrame& slider) {
  if (!(jitter > 0.0)) return 0;
  return static_cast<int>(std::trunc(std::min<double>(jitter + 0.5, slider.maximum())));
}

}  // namespace

void TStabilizerForm::wireSettings() {
  const auto tellBoxSizes = [this] { sendBoxSizes(); };
  TrackingBoxSizeTrackEdit.NotifyWidget.onClick = tellBoxSizes;
  MotionTrackEdit.NotifyWidget.onClick = tellBoxSizes;
  const auto tellParameters = [this] { parametersChanged(); };
  SmoothTrackEdit.NotifyWidget.onClick = tellParameters;
  JitterTrackEdit.NotifyWidget.onClick = tellParameters;
  for (TRadioButton* button : buttonsOf(EButtonGroup::stabilize)) button->onClick = tellParameters;
  for (TRadioButton* button : buttonsOf(EButtonGroup::motion))
    button->onClick = [this] { HowToStabilizeRadioButtonClick(); };
  for (TRadioButton* button : buttonsOf(EButtonGroup::anchor))
    button->onClick = [this] { AnchorRadioButtonClick(); };
  AtMarkInCheckBox.onClick = AtMarkOutCheckBox.onClick = [this] { AtMarkCheckBoxClick(); };
  RefFrameTimeCodeEdit.onExit = [this] { RefFrameTimeCodeEditExit(); };
  ResetRefFrameButton.onClick = [this] { setReferenceFrame(host().getDisplayedFrame()); };
  GoToRefframeButton.onClick = [this] { goToReferenceFrame(); };
}

CStabilizerParameters TStabilizerForm::gatherParameters() {
  CStabilizerParameters record;
  record.TrackBoxExtentX = record.TrackBoxExtentY = TrackingBoxSizeTrackEdit.value();
  record.SearchBoxExtentLeft = record.SearchBoxExtentRight = MotionTrackEdit.value();
  record.SearchBoxExtentUp = record.SearchBoxExtentDown = MotionTrackEdit.value();
  record.GoodFramesIn = GoodInSpinEdit.value();
  record.GoodFramesOut = GoodOutSpinEdit.value();
  record.RefFrameIndex = gatherReferenceFrame();
  record.Jitter = JitterTrackEdit.value();
  record.Alpha2 = SmoothingWeight(SmoothTrackEdit.value());
  gatherModes(record);
  gatherWarpFunction(record);
  record.MissingDataFill = MissingDataWhiteRadioButton.isChecked()   ? MISSING_DATA_White
                           : MissingDataBlackRadioButton.isChecked() ? MISSING_DATA_Black
                           : MissingDataZoomRadioButton.isChecked()  ? MISSING_DATA_Zoom
                                                                     : MISSING_DATA_Previous_Frame;
  record.UseMatting = UseMattingCBox.isChecked();
  record.KeepOriginalMatValues = true;
  return record;
}

TStabilizerForm::EMotionChoice TStabilizerForm::motionChoice() const {
  if (SmoothMotionRadioButton.isChecked()) return EMotionChoice::smooth;
  if (NoMotionRadioButton.isChecked()) return EMotionChoice::removeAll;
  if (MatchRefRadioButton.isChecked()) return EMotionChoice::matchReference;
  return EMotionChoice::none;
}

void TStabilizerForm::gatherModes(CStabilizerParameters& record) const {
  const int mode = static_cast<int>(motionChoice());
  const bool rotation = HorizVertRotRadioButton.isChecked();
  const bool both = rotation || HorizAndVertRadioButton.isChecked();
  record.HMode = both || HorizMotionRadioButton.isChecked() ? mode : STABMODE_None;
  record.VMode = both || VertMotionRadioButton.isChecked() ? mode : STABMODE_None;
  record.RMode = rotation ? mode : STABMODE_None;
}

void TStabilizerForm::gatherWarpFunction(CStabilizerParameters& record) const {
  record.UFunction = warpFunction_;
  const std::string& name = UFunctionComboBox.text();
  if (!UFunctionNames().ValueByDisplayName(name, record.UFunction))
    _QTXErrorDialog("Unknown Warp Function\n" + name);
}

int TStabilizerForm::gatherReferenceFrame() const {
  const int in = host().getMarkIn();
  const IClip* const clip = host().getClip();
  if (clip == nullptr) return in;
  const int frame = clip->frameOfTimecode(RefFrameTimeCodeEdit.timecode());
  return frame >= in && frame < host().getMarkOut() ? frame : in;
}

void TStabilizerForm::showParameters(const CStabilizerParameters& shown) {
  CStabilizerParameters record = shown;
  const std::vector<SIniAssociation>& rows = UFunctionNames().Rows();
  for (std::size_t i = 0; i < rows.size(); ++i)
    if (rows[i].value == record.UFunction) UFunctionComboBox.setItemIndex(static_cast<int>(i));
  warpFunction_ = record.UFunction;
  switch (record.MissingDataFill) {
    case MISSING_DATA_White: MissingDataWhiteRadioButton.setChecked(true); break;
    case MISSING_DATA_Black: MissingDataBlackRadioButton.setChecked(true); break;
    case MISSING_DATA_Previous_Frame: MissingDataPrevFrameRadioButton.setChecked(true); break;
    case MISSING_DATA_Zoom: MissingDataZoomRadioButton.setChecked(true); break;
    default: break;
  }
  AtMarkInCheckBox.setChecked(record.GoodFramesIn > 0);
  AtMarkOutCheckBox.setChecked(record.GoodFramesOut > 0);
  AtMarkCheckBoxClick();
  SmoothTrackEdit.setValue(SmoothingPosition(record.Alpha2));
  TrackingBoxSizeTrackEdit.setValue(record.TrackBoxExtentX);
  MotionTrackEdit.setValue(record.SearchBoxExtentLeft);
  setUseMattingChecked(record.UseMatting);
  showMotionChoice(showAxes(record));
  showAnchors();
  JitterTrackEdit.setValue(jitterPosition(record.Jitter, JitterTrackEdit));
  showReferenceFrame(record.RefFrameIndex);
  if (isControlPanelVisible()) sendBoxSizes();
}

// One choice of motion stands for all chosen axes: rotation's first, then the horizontal one.
TStabilizerForm::EMotionChoice TStabilizerForm::showAxes(CStabilizerParameters& record) {
  TRadioButton* axes = &HorizAndVertRadioButton;
  int mode = STABMODE_Flat;
  if (record.RMode != STABMODE_None) {
    axes = &HorizVertRotRadioButton;
    mode = record.HMode = record.VMode = record.RMode;
  } else if (record.HMode != STABMODE_None) {
    mode = record.HMode;
    if (record.VMode == STABMODE_None) {
      axes = &HorizMotionRadioButton;
    } else {
      record.VMode = mode;
    }
  } else if (record.VMode != STABMODE_None) {
    axes = &VertMotionRadioButton;
    mode = record.VMode;
  }
  axes->setChecked(true);
  return static_cast<EMotionChoice>(mode);
}

void TStabilizerForm::showMotionChoice(EMotionChoice choice) {
  switch (choice) {
    case EMotionChoice::smooth:
      SmoothMotionRadioButton.setChecked(true);
      enableReferenceControls(false);
      enableAnchors(true, true, true, true);
      smoothingEnables_->restore();
      break;
    case EMotionChoice::removeAll:
      NoMotionRadioButton.setChecked(true);
      enableReferenceControls(false);
      if (GoodInSpinEdit.value() > 0 && GoodOutSpinEdit.value() > 0) GoodOutSpinEdit.setValue(0);
      enableAnchors(true, true, false, true);
      smoothingEnables_->disable(SmoothingGroupBox);
      break;
    case EMotionChoice::matchReference:
      MatchRefRadioButton.setChecked(true);
      enableReferenceControls(true);
      smoothingEnables_->disable(SmoothingGroupBox);
      break;
    case EMotionChoice::none: break;
  }
}

void TStabilizerForm::showAnchors() {
  const bool in = GoodInSpinEdit.value() > 0;
  const bool out = GoodOutSpinEdit.value() > 0;
  TRadioButton& button = in && out ? AnchorBothRadioButton
                         : in      ? AnchorFirstRadioButton
                         : out     ? AnchorLastRadioButton
                                   : AnchorNoneRadioButton;
  button.setChecked(true);
}

void TStabilizerForm::enableReferenceControls(bool enabled) {
  GoToRefframeButton.setEnabled(enabled);
  RefFrameTimeCodeEdit.setEnabled(enabled);
  ResetRefFrameButton.setEnabled(enabled);
}

void TStabilizerForm::enableAnchors(bool first, bool last, bool both, bool none) {
  AnchorFirstRadioButton.setEnabled(first);
  AnchorLastRadioButton.setEnabled(last);
  AnchorBothRadioButton.setEnabled(both);
  AnchorNoneRadioButton.setEnabled(none);
}

void TStabilizerForm::HowToStabilizeRadioButtonClick() {
  const EMotionChoice choice = motionChoice();
  // No motion at all cannot hold both ends where they are.
  if (choice == EMotionChoice::removeAll && AnchorBothRadioButton.isChecked()) {
    AnchorFirstRadioButton.setChecked(true);
    applyAnchorChoice();
  }
  showMotionChoice(choice);
  if (choice == EMotionChoice::matchReference) enableAnchors(false, false, false, false);
  parametersChanged();
}

void TStabilizerForm::AnchorRadioButtonClick() {
  applyAnchorChoice();
  parametersChanged();
}

void TStabilizerForm::applyAnchorChoice() {
  const bool both = AnchorBothRadioButton.isChecked();
  GoodInSpinEdit.setValue(both || AnchorFirstRadioButton.isChecked() ? 1 : 0);
  GoodOutSpinEdit.setValue(both || AnchorLastRadioButton.isChecked() ? 1 : 0);
}

void TStabilizerForm::AtMarkCheckBoxClick() {
  GoodInSpinEdit.setValue(AtMarkInCheckBox.isChecked() ? 1 : 0);
  GoodOutSpinEdit.setValue(AtMarkOutCheckBox.isChecked() ? 1 : 0);
}

void TStabilizerForm::RefFrameTimeCodeEditExit() {
  if (MatchRefRadioButton.isChecked()) parametersChanged();
}

void TStabilizerForm::setReferenceFrame(int frame) {
  const IClip* const clip = host().getClip();
  if (clip == nullptr) return;
  const CTimecode timecode = clip->timecodeOfFrame(frame < 0 ? clip->firstFrame() : frame);
  const bool differs = timecode != RefFrameTimeCodeEdit.timecode();
  RefFrameTimeCodeEdit.setTimecode(timecode);  // in place of what is being typed, too
  if (differs) RefFrameTimeCodeEditExit();
}

// The reference of another shot says nothing in this one.
void TStabilizerForm::showReferenceFrame(int frame) {
  const IClip* const clip = host().getClip();
  if (clip == nullptr || frame < host().getMarkIn() || frame >= host().getMarkOut()) return;
  RefFrameTimeCodeEdit.setTimecode(clip->timecodeOfFrame(frame));
}

void TStabilizerForm::goToReferenceFrame() {
  RefFrameTimeCodeEdit.commit();
  const IClip* const clip = host().getClip();
  if (clip == nullptr) return;
  const int frame = clip->frameOfTimecode(RefFrameTimeCodeEdit.timecode());
  host().goToFrame(frame < 0 ? clip->firstFrame() : frame);
  const int displayed = host().getDisplayedFrame();
  if (displayed != frame) setReferenceFrame(displayed);
}

void TStabilizerForm::parametersChanged() {
  tool_.discardSmoothedPath();
  tool_.request(REQUEST_PARAMETERS_CHANGED);
}
