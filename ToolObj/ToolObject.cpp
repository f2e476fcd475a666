#include "ToolObj/ToolObject.h"

CToolObject::CToolObject(const std::string& toolName)
    : toolName_(toolName),
      inputMap_(std::make_unique<CToolUserInputMap>()),
      defaultMonitor_(std::make_unique<CDefaultToolProgressMonitor>()),
      progressMonitor_(defaultMonitor_.get()) {}

CToolObject::~CToolObject() = default;

int CToolObject::initBaseToolObject(std::uint16_t toolNumber, CNavSystemInterface* systemInterface,
                                    const CToolCommandTable* commandTable,
                                    const CUserInputConfiguration* configuration) {
  toolNumber_ = toolNumber;
  systemInterface_ = systemInterface;
  commandTable_ = commandTable;
  inputConfiguration_ = configuration;
  CUserInput input;
  for (int i = 0; i < configuration->getCount(); ++i) {
    const SUserInputConfigEntry* entry = configuration->getEntry(i);
    const int result = input.parse(entry->bindingText);
    if (result < 0) return result;
    inputMap_->add(input, entry->commandNumber);
  }
  return 0;
}

bool CToolObject::areMarksValid() const {
  const int markIn = systemInterface_->getMarkIn();
  return markIn >= 0 && markIn < systemInterface_->getMarkOut();
}

void CToolObject::setProgressMonitor(IToolProgressMonitor* monitor) {
  progressMonitor_ = monitor ? monitor : defaultMonitor_.get();
}

int CToolObject::capturePDLEntry(CPDLEntry&) {
  return PDL_NOT_IMPLEMENTED;
}

int CToolObject::runPDLEntry(CPDLEntry&) {
  return PDL_NOT_IMPLEMENTED;
}

int CToolObject::onMouseMove(CUserInput&) {
  return NOT_HANDLED;
}

int CToolObject::onToolCommand(CToolCommand&) {
  return NOT_HANDLED;
}

std::unique_ptr<CToolCommand> CToolObject::translateUserInput(const CUserInput& input) {
  const CToolUserInputMapEntry* entry = inputMap_->find(input);
  return entry ? std::make_unique<CToolCommand>(this, entry->commandNumber) : nullptr;
}

int CToolObject::onUserInput(CUserInput& input) {
  if (const std::unique_ptr<CToolCommand> command = translateUserInput(input)) {
    return command->execute();
  }
  return consumesUnmappedInput() ? CONSUMED : NOT_HANDLED;
}

bool CToolObject::toolPrepare() {
  systemInterface_->prepareForToolCall();
  return true;
}

int CToolObject::hook11() {
  return systemInterface_->getToolSetupStatus(0);
}

bool CToolObject::unlockBufferPool() {
  if (processingState_ != STATE_IDLE) return false;
  QTXunlockPreallocPool(PREALLOC_POOL_BUFFER_HOLDERS);
  return true;
}

bool CToolObject::lockBufferPool() {
  return QTXlockPreallocPool(PREALLOC_POOL_BUFFER_HOLDERS);
}

void CToolObject::onTrackingEnd(int) {}

int CToolObject::startProcessing(int command, bool flag) {
  systemInterface_->prepareForToolCall();
  const bool renders = command == EVENT_RENDER_RANGE || command == EVENT_RENDER_FRAME;
  if (renders && !canRenderWithoutAsking() && !systemInterface_->isRenderPermitted()) return 0;
  startFlag_ = flag;
  return onProcessingEvent(command, {}, -1);
}

int CToolObject::resumeProcessing(int frame) {
  progressMonitor_->PopStatusMessage();
  progressMonitor_->StartProgress();
  return onProcessingEvent(EVENT_RESUME, {}, frame);
}

int CToolObject::pauseProcessing() {
  progressMonitor_->PushStatusMessage("Paused");
  progressMonitor_->StopProgress(false);
  return onProcessingEvent(EVENT_PAUSE, {}, -1);
}

int CToolObject::stopProcessing() {
  progressMonitor_->SetStatusMessage("Stopped");
  progressMonitor_->StopProgress(false);
  return onProcessingEvent(EVENT_STOP, {}, -1);
}

int CToolObject::onToolProcessingStatus(const CAutotoolStatus* status) {
  return onProcessingEvent(EVENT_STATUS, *status, -1);
}

int CToolObject::onProcessingEvent(int event, const CAutotoolStatus& status, int frame) {
  const int state = processingState_;
  int newState = state;
  const int result = performProcessingEvent(state, event, status, frame, newState);
  if (newState == state) return result;
  processingState_ = newState;
  onProcessingStateChanged(newState, renderFlag_);
  if (getToolProcessingState() == STATE_IDLE) systemInterface_->notifyToolIdle();
  return result;
}

int CToolObject::pauseRun() {
  systemInterface_->pauseActiveToolSetup();
  return 0;
}

int CToolObject::ProcessSingleFrame(int) {
  return 0;
}

int CToolObject::RunFrameProcessing(int) {
  return 0;
}

int CToolObject::stopRun() {
  systemInterface_->stopActiveToolSetup();
  return 0;
}

int CToolObject::stopSingleFrame() {
  systemInterface_->stopActiveToolSetup();
  return 0;
}

void CToolObject::onProcessingStateChanged(int, bool) {}
