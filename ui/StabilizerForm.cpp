#include "ui/StabilizerForm.h"

#include <utility>

#include "SavedEnables.h"
#include "support/ErrorReport.h"
#include "tool/StabilizerTool.h"
#include "ui/StabilizerPreferencesForm.h"

TStabilizerForm* StabilizerForm = nullptr;
TStabilizerPreferencesForm* StabilizerPreferencesForm = nullptr;

namespace {

constexpr int PANEL_NUMBER = 6;
enum ESlot { POINTS_CHANGED_SLOT = 1, CLIP_CHANGED_SLOT, NEW_CLIP_SLOT, MARKS_CHANGED_SLOT };

// A picture above this many pixels a line has boxes of twice the size.
constexpr int WIDE_PICTURE = 2048;

/// The slider's range and value for pictures up to WIDE_PICTURE, or doubled for wider ones.
void fitRange(TTrackEditFrame& frame, int minimum, int maximum, bool wide) {
  const int otherMaximum = wide ? maximum : 2 * maximum;
  int value = frame.value();
  if (frame.maximum() == otherMaximum) value = wide ? 2 * value : value / 2;
  const int scale = wide ? 2 : 1;
  frame.setRange(scale * minimum, scale * maximum);
  frame.setValue(value);
}

}  // namespace

TStabilizerForm::TStabilizerForm(CStabilizerTool& tool)
    : TQTXForm("StabilizerForm", nullptr, tool.settingsFileName()),
      UpdateTimer(500, [this] { onUpdateTimer(); }),
      DownTimer(250, [this] { onDownTimer(); }),
      ColorPickerStateTimer(100),
      tool_(tool),
      smoothingEnables_(std::make_unique<CSavedEnables>()),
      mattingEnables_(std::make_unique<CSavedEnables>()),
      warpFunction_(CStabilizerParameters().UFunction) {
  StabilizerForm = this;
  setUp();
  preferencesForm_ = std::make_unique<TStabilizerPreferencesForm>(this);
  StabilizerPreferencesForm = preferencesForm_.get();
  showParameters(CStabilizerParameters());
  // What was stored for a wide picture would else be cut to a narrow one's range and then doubled,
  // at each start again.
  fitRangesToPicture();
  if (hasOperator()) {
    CAutoErrorReporter reporter("TStabilizerForm::readAll");
    if (!readAll(FORM_MODE_NORMAL)) reporter.repeat();
  }
  host().setToolControlPanel("Stabilize", PANEL_NUMBER, &StabilizationControlPanel, 0);
}

TStabilizerForm::~TStabilizerForm() {
  if (isControlPanelVisible()) hideControlPanel();
  if (tool_.getProgressMonitor() == &ExecStatusBar) tool_.setProgressMonitor(nullptr);
  host().removeToolControlPanel(PANEL_NUMBER);
  StabilizerPreferencesForm = nullptr;
  StabilizerForm = nullptr;
}

CNavSystemInterface& TStabilizerForm::host() const {
  return *tool_.getSystemAPI();
}

bool TStabilizerForm::hasOperator() const {
  return !host().isBatchRun();
}

void TStabilizerForm::setUp() {
  setCaption("Stabilization");
  setBounds(StabilizationControlPanel.bounds());
  keepDesign();
  StabilizationControlPanel.setVisible(false);
  std::vector<std::string> warpFunctions;
  for (const SIniAssociation& row : UFunctionNames().Rows())
    warpFunctions.push_back(UFunctionNames().DisplayName(row.value));
  UFunctionComboBox.setItems(warpFunctions);
  UFunctionComboBox.setItemIndex(0);
  UFunctionComboBox.setVisible(false);
  WarpLabel.setVisible(false);
  MissingDataPrevFrameRadioButton.setChecked(true);
  SmoothTrackEdit.setDeferredUpdate(true);
  for (TTrackEditFrame* frame :
       {&TrackingBoxSizeTrackEdit, &MotionTrackEdit, &SmoothTrackEdit, &JitterTrackEdit}) {
    frame->enable(true);
    frame->Edit.setBold(false);
    frame->EditDisabledLabel.setBold(false);
  }

  for (SFileDialog* dialog : {&OpenTrackingPointsDialog, &SaveTrackingPointsDialog}) {
    dialog->defaultExtension = "points";
    dialog->filter = "Tracking Points|*.points|All Files|*.*";
  }
  OpenTrackingPointsDialog.kind = SFileDialog::EKind::open;
  OpenTrackingPointsDialog.title = "Load Tracking Points";
  OpenTrackingPointsDialog.pathMustExist = OpenTrackingPointsDialog.fileMustExist = true;
  SaveTrackingPointsDialog.kind = SFileDialog::EKind::save;
  SaveTrackingPointsDialog.title = "Save Tracking Points";

  wirePointControls();
  wireSettings();
  wireMatting();
  ExecButtonsToolbar.ButtonPressedNotifier.onClick = [this] {
    onExecutionCommand(ExecButtonsToolbar.lastCommand());
  };
  tool_.setProgressMonitor(&ExecStatusBar);
}

void TStabilizerForm::wirePointControls() {
  TrackButton.onClick = [this] { tool_.request(REQUEST_TRACK); };
  ClearAllButton.onClick = [this] { tool_.clearAllTrackingData(); };
  PrevPointButton.onClick = [this] { tool_.selectRelativePoint(-1); };
  NextPointButton.onClick = [this] { tool_.selectRelativePoint(+1); };
  SavePointsButton.onClick = [this] { tool_.SavePointsWithDialog(); };
  LoadPointsButton.onClick = [this] { tool_.LoadPointsWithDialog(!tool_.isShiftHeld()); };
  ShowPointCBox.onClick = [this] { tool_.setTrackingPointsVisible(ShowPointCBox.isChecked()); };
  ClearOnShotChangeCBox.onClick = [this] {
    tool_.setClearOnShotChange(ClearOnShotChangeCBox.isChecked());
  };
  WarnMarkOutMoveCheckBox.onClick = [this] {
    tool_.setMarkOutWarnings(WarnMarkOutMoveCheckBox.isChecked());
  };
}

void TStabilizerForm::showControlPanel() {
  StabilizationControlPanel.setVisible(true);
  connect();
}

void TStabilizerForm::hideControlPanel() {
  StabilizationControlPanel.setVisible(false);
  disconnect();
}

void TStabilizerForm::tellSwitches() {
  tool_.setUseMatting(UseMattingCBox.isChecked());
  tool_.showMattingBox(ShowMattingBoxCBox.isChecked() && UseMattingCBox.isChecked());
  tool_.setTrackingPointsVisible(ShowPointCBox.isChecked());
  tool_.setClearOnShotChange(ClearOnShotChangeCBox.isChecked());
  tool_.setMarkOutWarnings(WarnMarkOutMoveCheckBox.isChecked());
  tool_.setMarkInMovePreference(markInMovePreference_);
}

void TStabilizerForm::connect() {
  tellSwitches();
  tool_.pointsChangedHook.subscribe(this, POINTS_CHANGED_SLOT, [this] { onPointsChanged(); });
  tool_.clipChangedHook.subscribe(this, CLIP_CHANGED_SLOT, [this] { saveAutoPoints(); });
  tool_.newClipHook.subscribe(this, NEW_CLIP_SLOT, [this] { onNewClip(); });
  tool_.marksChangedHook.subscribe(this, MARKS_CHANGED_SLOT, [this] { onMarksChanged(); });
  updatePointButtons();
  updateGraphs();
  updateExecutionButtons(CToolObject::STATE_IDLE, false);
  sendBoxSizes();
  UpdateTimer.setEnabled(true);
}

void TStabilizerForm::disconnect() {
  tool_.showMattingBox(false);
  tool_.setTrackingPointsVisible(false);
  tool_.pointsChangedHook.unsubscribe(this, POINTS_CHANGED_SLOT);
  tool_.clipChangedHook.unsubscribe(this, CLIP_CHANGED_SLOT);
  tool_.newClipHook.unsubscribe(this, NEW_CLIP_SLOT);
  tool_.marksChangedHook.unsubscribe(this, MARKS_CHANGED_SLOT);
  saveAutoPoints();
  releaseMattingButton();
  releaseColorPickButton();
  UpdateTimer.setEnabled(false);
}

bool TStabilizerForm::isIdle() const {
  return tool_.getToolProcessingState() == CToolObject::STATE_IDLE;
}

// Idle buttons bring the graphs up to date themselves.
void TStabilizerForm::onPointsChanged() {
  if (!isIdle()) return updateGraphs();
  updatePointButtons();
  updateExecutionButtons(CToolObject::STATE_IDLE, false);
}

void TStabilizerForm::onMarksChanged() {
  if (!isIdle()) return;
  updatePointButtons();
  updateExecutionButtons(CToolObject::STATE_IDLE, false);
  ShowPointCBox.setChecked(true);
  tool_.setTrackingPointsVisible(true);
}

void TStabilizerForm::fitRangesToPicture() {
  const CImageFormat* const format = host().getClipImageFormat();
  const bool wide = format != nullptr && format->getPixelsPerLine() > WIDE_PICTURE;
  fitRange(TrackingBoxSizeTrackEdit, 5, 30, wide);
  fitRange(MotionTrackEdit, 5, 50, wide);
}

void TStabilizerForm::onNewClip() {
  fitRangesToPicture();
  sendBoxSizes();
  setDialogFolders();
  autoLoadPoints();
  updateStatusLine();
  setResumeFrame(host().getMarkIn());
  setReferenceFrame(host().getMarkIn());
  updatePointButtons();
  updateExecutionButtons(CToolObject::STATE_IDLE, false);
}

void TStabilizerForm::sendBoxSizes() {
  const int box = TrackingBoxSizeTrackEdit.value();
  const int reach = MotionTrackEdit.value();
  tool_.setBoxExtents(box, box, reach, reach, reach, reach);
}

void TStabilizerForm::updatePointButtons() {
  const int count = tool_.livePoints().NumberOfPoints();
  for (TButton* button : {&TrackButton, &ClearAllButton, &SavePointsButton})
    button->setEnabled(count >= 1);
  for (TButton* button : {&PrevPointButton, &NextPointButton}) button->setEnabled(count > 1);
}

void TStabilizerForm::updateStatusLine() {
  static constexpr const char* RUN_STATES[] = {"Idle",      "Error",     "Tracking",  "Tracking",
                                               "Tracking",  "Smoothing", "Smoothing", "Smoothing",
                                               "Rendering", "Rendering", "Rendering"};
  const int state = tool_.runState();
  StatusMessageLabel.setCaption(state >= 0 && state < static_cast<int>(std::size(RUN_STATES))
                                    ? RUN_STATES[state]
                                    : "Unknown");
  const CTrackingArray& points = tool_.livePoints();
  const int count = points.FindPoints(points.FirstFrame()).ValidCount();
  PointCountLabel.setCaption(std::to_string(count));
  PointsLabel.setCaption(count == 1 ? "point" : "points");
  ExecStatusBar.SetToolMessage(PointCountLabel.caption() + " " + PointsLabel.caption());
  StatusBar.setPanelText(0, tool_.getStatusMessage());
  StatusBar.setPanelText(1, tool_.getTimeMessage());
}

void TStabilizerForm::updateGraphs() {
  updateStatusLine();
  MotionGraphs.update(tool_);
}

// The points would hide what is being rendered. They stay hidden until the operator wants them.
void TStabilizerForm::onUpdateTimer() {
  const bool rendering = tool_.runState() == RUN_RENDERING;
  const bool wasRendering = lastRunState_ == RUN_RENDERING;
  if (rendering != wasRendering) {
    ShowPointCBox.setChecked(false);
    tool_.setTrackingPointsVisible(false);
    lastRunState_ = rendering ? RUN_RENDERING : RUN_IDLE;
  }
  updateStatusLine();
}

TControl* TStabilizerForm::focusTarget(EFocusTarget target) {
  switch (target) {
    case EFocusTarget::trackBoxSize: return &TrackingBoxSizeTrackEdit.TrackBar;
    case EFocusTarget::motionSearchArea: return &MotionTrackEdit.TrackBar;
    case EFocusTarget::smoothing:
      return SmoothTrackEdit.isFrameEnabled() ? &SmoothTrackEdit.TrackBar : nullptr;
    case EFocusTarget::addJitter: return &JitterTrackEdit.TrackBar;
  }
  return nullptr;
}

std::vector<TRadioButton*> TStabilizerForm::buttonsOf(EButtonGroup group) {
  switch (group) {
    case EButtonGroup::motion:
      return {&SmoothMotionRadioButton, &NoMotionRadioButton, &MatchRefRadioButton};
    case EButtonGroup::anchor:
      return {&AnchorFirstRadioButton, &AnchorLastRadioButton, &AnchorBothRadioButton,
              &AnchorNoneRadioButton};
    case EButtonGroup::stabilize:
      return {&HorizMotionRadioButton, &VertMotionRadioButton, &HorizAndVertRadioButton,
              &HorizVertRotRadioButton};
    case EButtonGroup::fill:
      return {&MissingDataBlackRadioButton, &MissingDataWhiteRadioButton,
              &MissingDataPrevFrameRadioButton, &MissingDataZoomRadioButton};
  }
  return {};
}
