#include "tool/StabilizerTool.h"

#include "support/IniFile.h"
#include "support/Memory.h"
#include "support/Trace.h"
#include "tool/StabilizerCommands.h"

namespace {

constexpr int POINTS_CHANGED_SLOT = 1;
constexpr int COLOR_CHANGED_SLOT = 2;
constexpr int PICKED_SLOT = 3;
constexpr int POINTS_EDITED_SLOT = 4;
// Readers of traces know these two assertions by this place.
constexpr const char* ASSERTION_FILE = ".\\StabilizerTool";

}  // namespace

CStabilizerTool::CStabilizerTool(const std::string& toolName, WindowFactory makeWindow)
    : CToolObject(toolName),
      makeWindow_(std::move(makeWindow)),
      settingsFileName_(IniFileNameFor("Stabilizer")) {
  smoothingEnded_.Set();
  // What the pointer passes over decides nothing; the click does.
  colorPicker_.colorChangedHook.subscribe(this, COLOR_CHANGED_SLOT, [] {});
  colorPicker_.pickedHook.subscribe(this, PICKED_SLOT, [this] { findMattingBoxOfPick(); });
}

CStabilizerTool::~CStabilizerTool() {
  BThreadWaitForAll();
  destroyWindow();
}

int CStabilizerTool::toolInitialize(CNavSystemInterface* systemInterface) {
  const int result = initBaseToolObject(TOOL_NUMBER, systemInterface, &StabilizerCommandTable(),
                                        &StabilizerKeyBindings());
  if (result != 0) {
    TraceAt(0, "Error in StabilizerTool Tool, initBaseToolObject failed " + std::to_string(result));
    return result;
  }
  editor_.setSystemAPI(systemInterface);
  colorPicker_.setSystemAPI(systemInterface);
  editor_.setTrackingArray(&tracked_, false);
  folderText_ = systemInterface->getFolderText();
  newClipPending_ = true;
  marksChangePending_ = false;
  deferredRender_ = false;
  trackingDuration_ = 0;
  renderCompleted_ = false;
  moveInAnswered_ = false;
  clearOnShotChange_ = false;
  singleFrameRun_ = false;
  return 0;
}

int CStabilizerTool::toolShow() {
  if (getSystemAPI()->isFirstShow()) editor_.resetMarks();
  if (!window_) window_ = makeWindow_(*this);
  if (window_) window_->showControlPanel();
  getSystemAPI()->SetHelpPages("StabilizeOperation.htm", "StabilizeHotKeys.htm", 0);
  refreshExecutionButtons();
  return 0;
}

int CStabilizerTool::toolHide() {
  getSystemAPI()->prepareForToolCall();
  if (window_) window_->hideControlPanel();
  return 0;
}

int CStabilizerTool::toolActivate() {
  CNavSystemInterface* host = getSystemAPI();
  if (!lockBufferPool() && QTXgetSizeOfPreallocPool(PREALLOC_POOL_BUFFER_HOLDERS) != 0) {
    TraceAssertion(ASSERTION_FILE, 293,
                   "QTXgetSizeOfPreallocPool(PREALLOC_POOL_BUFFER_HOLDERS) == 0");
  }
  QTXresetPreallocPool(PREALLOC_POOL_BUFFER_HOLDERS);
  savedDisplaySetting_ = host->getDisplaySetting();
  active_ = true;
  if (newClipPending_) {
    onNewClip();
  } else if (marksChangePending_) {
    if (refreshPending_) refresh();
    // A mark that was moved and put back is no other shot.
    const bool moved =
        host->getMarkIn() != editor_.markIn() || host->getMarkOut() != editor_.markOut();
    if (clearOnShotChange_ && moved) clearAllTrackingData();
    onMarksChange();
  }
  newClipPending_ = marksChangePending_ = refreshPending_ = pointsChanged_ = false;
  editor_.pointsChangedHook.subscribe(this, POINTS_CHANGED_SLOT, [this] { pointsChanged_ = true; });
  editor_.pointsEditedHook.subscribe(this, POINTS_EDITED_SLOT, [this] { discardSmoothedPath(); });
  if (!host->canToolTakeDisplay()) TraceAssertion(ASSERTION_FILE, 325, "success");
  host->setToolEditor(&editor_);
  host->setToolProgressMonitor(getProgressMonitor());
  host->setToolActive(true);
  editor_.refresh();
  loadMattingBox();
  return 0;
}

int CStabilizerTool::toolDeactivate() {
  CNavSystemInterface* host = getSystemAPI();
  host->prepareForToolCall();
  host->setDisplayMode(1);
  host->setToolEditor(nullptr);
  host->setToolProgressMonitor(nullptr);
  host->setToolActive(false);
  host->redrawDisplay(0);
  pointsChanged_ = false;
  editor_.pointsChangedHook.unsubscribe(this, POINTS_CHANGED_SLOT);
  editor_.pointsEditedHook.unsubscribe(this, POINTS_EDITED_SLOT);
  host->setDisplaySetting(savedDisplaySetting_);
  releaseToolSetups(true);
  QTXunlockPreallocPool(PREALLOC_POOL_BUFFER_HOLDERS);
  active_ = false;
  saveMattingBox();
  turnColorPickerOff();
  getProgressMonitor()->SetIdle(true);
  host->setToolProgressMonitor(nullptr);
  return 0;
}

int CStabilizerTool::toolShutdown() {
  getSystemAPI()->prepareForToolCall();
  smoothingEnded_.Wait();  // the run reports to the window's monitor
  destroyWindow();
  return 0;
}

// Until it is gone it is the tool's window: it saves settings and points on its way out, and what
// is saved asks for it. A reset of the pointer would take it away first.
void CStabilizerTool::destroyWindow() {
  delete window_.get();
  static_cast<void>(window_.release());
}

bool CStabilizerTool::isToolShowing() {
  return window_ && window_->isControlPanelVisible();
}

int CStabilizerTool::onMarksChange() {
  if (!active_ || !isToolShowing()) {
    marksChangePending_ = true;
    return NOT_HANDLED;
  }
  if (checkMarkChanges()) editor_.updateMarks();
  marksChangedHook.notify();
  editor_.refresh();
  return HANDLED;
}

int CStabilizerTool::onClipChange() {
  if (!active_ || !isToolShowing()) return NOT_HANDLED;
  clipChangedHook.notify();
  saveMattingBox();
  getSystemAPI()->prepareForToolCall();
  getSystemAPI()->setDisplayMode(0);
  releaseToolSetups(false);
  turnColorPickerOff();
  refresh();
  return HANDLED;
}

int CStabilizerTool::onNewClip() {
  if (!active_ || !isToolShowing()) {
    newClipPending_ = true;
    return NOT_HANDLED;
  }
  folderText_ = getSystemAPI()->getFolderText();
  loadMattingBox();
  refresh();
  if (!mattingBoxValid_) findMattingBox();
  newClipHook.notify();
  return HANDLED;
}

int CStabilizerTool::onFramingChange() {
  if (!active_ || !isToolShowing()) {
    refreshPending_ = true;
    return NOT_HANDLED;
  }
  getSystemAPI()->prepareForToolCall();
  getSystemAPI()->setDisplayMode(1);
  releaseToolSetups(false);
  refresh();
  return HANDLED;
}

int CStabilizerTool::drawOverlay() {
  if (!isToolShowing()) return NOT_HANDLED;
  if (mattingBoxShown_ && mattingBoxValid_) getSystemAPI()->drawRectangle(4, mattingBox_);
  return CONSUMED;
}

int CStabilizerTool::onMouseMove(CUserInput& input) {
  if (isToolShowing() && getSystemAPI()->isClipAvailable()) colorPicker_.sample(input);
  return NOT_HANDLED;
}

int CStabilizerTool::onUserInput(CUserInput& input) {
  if (!isToolShowing() || !getSystemAPI()->isClipAvailable()) return NOT_HANDLED;
  int result = NOT_HANDLED;
  if (input.action == CUserInput::ACTION_BUTTON_DOWN) result = colorPicker_.buttonDown(input);
  if (input.action == CUserInput::ACTION_BUTTON_UP) result = colorPicker_.buttonUp(input);
  return result != NOT_HANDLED ? result : CToolObject::onUserInput(input);
}

void CStabilizerTool::showTrackingPoints() {
  if (window_) window_->setShowPointsChecked(true);
  setTrackingPointsVisible(true);
}

void CStabilizerTool::onProcessingStateChanged(int state, bool renderFlag) {
  if (window_) window_->updateExecutionButtons(state, renderFlag);
}

void CStabilizerTool::refresh() {
  editor_.refresh();
  getProgressMonitor()->SetIdle(true);
  onProcessingStateChanged(STATE_IDLE, false);
  if (window_) window_->updateStatusLine();
}

// The buttons follow the shot's work, tracking and smoothing included, not the processor alone.
void CStabilizerTool::refreshExecutionButtons() {
  // A pass that pauses or stops has said so to the window: told again by the shot's work, which
  // still goes on, it would offer a pause in place of the way back.
  const int own = processingState();
  if (own != STATE_IDLE && own != STATE_PREPROCESSED && own != STATE_RUNNING) return;
  onProcessingStateChanged(getToolProcessingState(), getRenderFlag());
}

void CStabilizerTool::updateWindow() {
  if (!window_) return;
  window_->updatePointButtons();
  window_->updateGraphs();
  window_->updateStatusLine();
}
