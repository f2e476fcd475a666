#include "doubles/RecordingHost.h"

#include <algorithm>
#include <iterator>

int CClipDouble::frameOfTimecode(const CTimecode& timecode) const {
  return timecode.frameCount() < 0 ? -1 : first + timecode.frameCount();
}

CRecordingHost::CRecordingHost() = default;

// Cached frames give their samples back to the pools, so they go first.
CRecordingHost::~CRecordingHost() {
  toolFrameCache.clear();
}

int CRecordingHost::answer(const std::string& operation, int result) const {
  const auto failure = failures.find(operation);
  return failure == failures.end() ? result : failure->second;
}

void CRecordingHost::setMarkIn(int frame) {
  markIn = frame;
  record("setMarkIn", frame);
}

void CRecordingHost::setMarkOut(int frame) {
  markOut = frame;
  record("setMarkOut", frame);
}

void CRecordingHost::goToFrame(int frame) {
  displayedFrame = frame;
  record("goToFrame", frame);
}

bool CRecordingHost::copyDisplayedFrame(std::uint16_t* samples) {
  if (displayedSamples.empty()) return false;
  std::copy(displayedSamples.begin(), displayedSamples.end(), samples);
  return true;
}

bool CRecordingHost::readDisplayedPixel(int x, int y, int& maximum, float (&components)[3]) {
  record("readDisplayedPixel", x, y);
  if (!clipOpen) return false;
  maximum = pixelMaximum;
  std::copy(std::begin(pixel), std::end(pixel), components);
  return true;
}

int CRecordingHost::MakeSimpleToolSetup(const std::string& toolName, int kind,
                                        const CToolIOConfig& config) {
  record("MakeSimpleToolSetup", toolName, kind);
  const int handle = answer("MakeSimpleToolSetup", nextToolSetup_);
  if (handle >= 0) {
    toolSetups[handle] = {toolName, kind, config};
    ++nextToolSetup_;
  }
  return handle;
}

int CRecordingHost::SetActiveToolSetup(int handle) {
  record("SetActiveToolSetup", handle);
  const int result = answer("SetActiveToolSetup", 0);
  if (result == 0) activeToolSetup = handle;
  return result;
}

int CRecordingHost::getToolSetupStatus(int handle) {
  const auto status = toolSetupStatuses.find(handle);
  return status == toolSetupStatuses.end() ? 0 : status->second;
}

void CRecordingHost::destroyToolSetup(int handle) {
  toolSetups.erase(handle);
  record("destroyToolSetup", handle);
}

int CRecordingHost::SetToolFrameRange(const CToolFrameRange& range) {
  frameRange = std::make_unique<CToolFrameRange>(range);
  const CToolFrameRange::SFrameRange& input = range.inputs.at(0);
  record("SetToolFrameRange", input.flag, input.firstFrame, input.endFrame);
  return answer("SetToolFrameRange", 0);
}

int CRecordingHost::SetToolParameters(CToolParameters* newParameters) {
  parameters.reset(newParameters);
  record("SetToolParameters");
  return answer("SetToolParameters", 0);
}

void CRecordingHost::setRenderMode(int mode) {
  renderMode = mode;
  record("setRenderMode", mode);
}

void CRecordingHost::frameOutputHook(CToolFrameBuffer* frame, int toolNumber,
                                     const std::string& name, bool processingStarted) {
  record("frameOutputHook", frame->frameIndex(), toolNumber, name, processingStarted);
}

CBufferPool& CRecordingHost::framePool(std::size_t bytesPerField) {
  const std::lock_guard lock(poolsMutex_);
  std::unique_ptr<CBufferPool>& pool = pools_[bytesPerField];
  if (!pool) pool = std::make_unique<CBufferPool>(bytesPerField, frameAllocatorLimit);
  return *pool;
}

CBufferPool* CRecordingHost::getFrameAllocator(std::size_t bytesPerField, int count, int valueA,
                                               int valueB) {
  record("getFrameAllocator", bytesPerField, count, valueA, valueB);
  return hasFrameAllocator ? &framePool(bytesPerField) : nullptr;
}

void CRecordingHost::SetHelpPages(const std::string& operation, const std::string& hotKeys,
                                  int flag) {
  record("SetHelpPages", operation, hotKeys, flag);
}

void CRecordingHost::setDisplayMode(int mode) {
  record("setDisplayMode", mode);
}

void CRecordingHost::redrawDisplay(int flag) {
  record("redrawDisplay", flag);
}

void CRecordingHost::setDrawingColor(int color) {
  record("setDrawingColor", color);
}

void CRecordingHost::drawRectangle(int color, const SRect& rect) {
  record("drawRectangle", color, rect.left, rect.top, rect.right, rect.bottom);
}

void CRecordingHost::drawTrackBox(double x, double y, int halfWidth, int halfHeight,
                                  int searchHalfWidth, int searchHalfHeight, bool highlight) {
  record("drawTrackBox", x, y, halfWidth, halfHeight, searchHalfWidth, searchHalfHeight, highlight);
}

void CRecordingHost::drawArrow(double fromX, double fromY, double toX, double toY, int length,
                               int width) {
  record("drawArrow", fromX, fromY, toX, toY, length, width);
}

void CRecordingHost::showCursor(const SCursorImage* newCursor) {
  cursor = newCursor;
  record("showCursor", newCursor != nullptr);
}

void CRecordingHost::setToolEditor(CTrackingPointsEditor* newEditor) {
  editor = newEditor;
  record("setToolEditor", static_cast<const void*>(newEditor));
}

void CRecordingHost::setToolProgressMonitor(IToolProgressMonitor* monitor) {
  toolProgressMonitor = monitor;
  record("setToolProgressMonitor", static_cast<const void*>(monitor));
}

void CRecordingHost::setToolActive(bool active) {
  record("setToolActive", active);
}

void CRecordingHost::setDisplaySetting(bool setting) {
  displaySetting = setting;
  record("setDisplaySetting", setting);
}

void CRecordingHost::toggleFix(bool flag) {
  record("toggleFix", flag);
}

void CRecordingHost::capturePDL(bool allEvents) {
  record("capturePDL", allEvents);
}

void CRecordingHost::focusControl(TControl* control) {
  focusedControl = control;
  record("focusControl", static_cast<const void*>(control));
}

void CRecordingHost::setToolControlPanel(const std::string& title, int number, TControl* panel,
                                         int flag) {
  controlPanel = panel;
  record("setToolControlPanel", title, number, static_cast<const void*>(panel), flag);
}

void CRecordingHost::removeToolControlPanel(int number) {
  controlPanel = nullptr;
  record("removeToolControlPanel", number);
}
