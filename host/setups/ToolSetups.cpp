#include "setups/ToolSetups.h"

CToolSetups::CToolSetups(CFrameStore& store, const SSettings& settings)
    : store_(store), settings_(settings) {}

CToolSetups::~CToolSetups() {
  clear();
}

void CToolSetups::clear() {
  setups_.clear();
  active_ = -1;
}

CToolSetup* CToolSetups::activeSetup() const {
  const auto found = setups_.find(active_);
  return found == setups_.end() ? nullptr : found->second.get();
}

int CToolSetups::make(int kind, const CToolIOConfig& config) {
  if (!tool_ || config.inputPortCount != 1 || config.outputPortCount != 1) return NO_SUCH_SETUP;
  const int handle = nextHandle_++;
  setups_[handle] =
      std::make_unique<CToolSetup>(*tool_, store_, kind, config, settings_.outputLimit);
  return handle;
}

int CToolSetups::activate(int handle) {
  if (handle >= 0 && !setups_.contains(handle)) return NO_SUCH_SETUP;
  active_ = handle < 0 ? -1 : handle;
  return 0;
}

int CToolSetups::status(int handle) const {
  const auto found = setups_.find(handle);
  return found == setups_.end() ? NO_SUCH_SETUP : found->second->status();
}

void CToolSetups::destroy(int handle) {
  setups_.erase(handle);
  if (active_ == handle) active_ = -1;
}

int CToolSetups::setFrameRange(const CToolFrameRange& range) {
  CToolSetup* setup = activeSetup();
  if (!setup || range.inputs.empty()) return NO_SUCH_SETUP;
  setup->setFrameRange(range);
  return 0;
}

int CToolSetups::setParameters(CToolParameters* parameters) {
  std::unique_ptr<CToolParameters> owned(parameters);
  CToolSetup* setup = activeSetup();
  if (!setup) return NO_SUCH_SETUP;
  setup->setParameters(owned.release());
  return 0;
}

bool CToolSetups::writes(const CToolSetup& setup) const {
  if (setup.kind() == CNavSystemInterface::SETUP_RANGE) return renders_;
  return setup.kind() == CNavSystemInterface::SETUP_RENDER_FRAME;
}

void CToolSetups::run() {
  CToolSetup* setup = activeSetup();
  if (!setup) return;
  failure_.clear();
  startFailure_ = setup->run(writes(*setup) ? writer_ : nullptr, settings_.writerThreads);
}

void CToolSetups::pause() {
  if (CToolSetup* setup = activeSetup()) setup->post(CAutotoolCommand::PAUSE);
}

void CToolSetups::stop() {
  if (CToolSetup* setup = activeSetup()) setup->post(CAutotoolCommand::STOP);
}

void CToolSetups::pump() {
  CToolSetup* setup = activeSetup();
  if (!setup || !tool_) return;
  if (startFailure_ != 0) {
    // The tool took the run for started: it hears of the failure as of any other.
    const CAutotoolStatus failed{CAutotoolStatus::ERROR_STATUS, startFailure_, -1, -1};
    const CAutotoolStatus stopped{CAutotoolStatus::STOPPED, 0, -1, -1};
    startFailure_ = 0;
    tool_->onToolProcessingStatus(&failed);
    tool_->onToolProcessingStatus(&stopped);
  }
  for (const CAutotoolStatus& status : setup->takeStatuses()) {
    const bool paused = status.status == CAutotoolStatus::PAUSED;
    const int frame = paused ? setup->firstUnwritten() : CToolSetup::NO_FRAME;
    if (frame != CToolSetup::NO_FRAME && onPausedAt) onPausedAt(frame);
    tool_->onToolProcessingStatus(&status);
    // The tool may have destroyed its setups in answer.
    if (activeSetup() != setup) return;
  }
  if (!failure_.empty()) return;
  failure_ = setup->failure();
  if (failure_.empty()) return;
  // In a pass of one frame the tool waits for its end, whatever it is told.
  if (setup->kind() != CNavSystemInterface::SETUP_RANGE) setup->post(CAutotoolCommand::STOP);
  tool_->stopProcessing();
}

bool CToolSetups::isPaused() const {
  const CToolSetup* setup = activeSetup();
  return setup && setup->status() == CToolSetup::STATUS_PAUSED;
}

int CToolSetups::finishWriting() {
  CToolSetup* setup = activeSetup();
  if (!setup) return 0;
  const int written = setup->finishWriting();
  if (failure_.empty()) failure_ = setup->failure();
  return written;
}
