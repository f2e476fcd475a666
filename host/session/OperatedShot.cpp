#include "session/OperatedShot.h"

#include <chrono>
#include <utility>

#include "ToolCalls.h"
#include "support/ErrorReport.h"
#include "support/Threads.h"
#include "toolkit/Application.h"

namespace {

// The window's own messages that have it write its settings and its geometry, unasked.
constexpr unsigned MESSAGE_WRITE_SETTINGS = 0x80ED;
constexpr unsigned MESSAGE_WRITE_GEOMETRY = 0x80EF;
constexpr int UNASKED = 2;

CShotSession::SSettings operatorsSettings(int threads) {
  CShotSession::SSettings settings;
  settings.threads = threads;
  settings.batch = false;
  return settings;
}

}  // namespace

COperatedShot::SToolErrors::SToolErrors() {
  SetErrorSink([this](const std::string&, int, const std::string& text) {
    const std::lock_guard lock(mutex);
    texts.push_back(text);
  });
}

COperatedShot::SToolErrors::~SToolErrors() {
  SetErrorSink({});
}

COperatedShot::COperatedShot(std::unique_ptr<IClipReader> reader, int threads,
                             TApplication& application, IShotDisplay& display)
    : application_(application),
      plugin_(CPluginLibrary::find("stabilize.so")),
      session_(std::move(reader), operatorsSettings(threads)) {
  session_.setDisplay(&display);
  plugin_.handOverApplication(&application);
  try {
    openTool();
  } catch (...) {
    close();
    throw;
  }
}

COperatedShot::~COperatedShot() {
  close();
}

void COperatedShot::openTool() {
  tool_ = StartTool(plugin_, session_);
  tool_->toolShow();
  session_.noteShown();
  tool_->toolActivate();
  session_.setMarks(info().firstFrame, info().endFrame);
}

void COperatedShot::changeClip(std::unique_ptr<IClipReader> reader) {
  if (finishing_.valid()) takeFinished();
  session_.changeClip(std::move(reader));
  writer_.reset();
  session_.setMarks(info().firstFrame, info().endFrame);
}

// A window that goes takes its messages along: they are sent, not posted.
void COperatedShot::saveSettings() {
  const std::vector<TForm*> forms = application_.forms();
  for (TForm* form : forms) {
    form->handleMessage({MESSAGE_WRITE_SETTINGS, UNASKED, nullptr});
    form->handleMessage({MESSAGE_WRITE_GEOMETRY, UNASKED, nullptr});
  }
}

void COperatedShot::close() {
  if (tool_) {
    stop();
    saveSettings();
  }
  if (finishing_.valid()) takeFinished();
  EndTool(std::exchange(tool_, nullptr), session_);
  session_.setDisplay(nullptr);
}

bool COperatedShot::input(CUserInput& input) {
  return held_ == 0 && (tool_->onUserInput(input) & CToolObject::CONSUMED) != 0;
}

bool COperatedShot::knows(const CUserInput& input) {
  return tool_->translateUserInput(input) != nullptr;
}

void COperatedShot::pointerMoved(CUserInput& input) {
  if (held_ == 0) tool_->onMouseMove(input);
}

void COperatedShot::command(int number) {
  if (held_ == 0) CToolCommand(tool_, number).execute();
}

void COperatedShot::showPoints() {
  const CTrackingPointsEditor* editor = session_.editor();
  if (held_ == 0 && editor && !editor->showPoints) tool_->showTrackingPoints();
}

void COperatedShot::stop() {
  session_.StopTrackingRun();
  tool_->stopProcessing();
}

void COperatedShot::pump() {
  if (held_ > 0) return;
  session_.pump();
  if (finishing_.valid() &&
      finishing_.wait_for(std::chrono::seconds(0)) == std::future_status::ready)
    takeFinished();
  if (std::exchange(wasTracking_, session_.isTracking()) && !wasTracking_) noteLostPoints();
  const bool busy = session_.isBusy();
  if (!session_.frameFailure().empty()) noteFailure(session_.frameFailure());
  if (wasBusy_ && !busy) {
    if (!session_.tracking().failure.empty())
      noteFailure(info().path + ": " + session_.tracking().failure);
    endRender();
  }
  if (busy && !wasBusy_) lastFailure_.clear();
  wasBusy_ = busy;
}

void COperatedShot::setWriter(std::unique_ptr<IClipWriter> writer) {
  if (finishing_.valid()) takeFinished();
  session_.setWriter(writer.get());
  writer_ = std::move(writer);
  wanted_ = session_.getMarkOut() - session_.getMarkIn();
}

// A video that lacks frames is given up; of a sequence, what is written stays.
void COperatedShot::endRender() {
  if (!writer_ || finishing_.valid()) return;
  finished_ = {session_.finishWriting(), wanted_};
  session_.setWriter(nullptr);
  if (!session_.frameFailure().empty()) noteFailure(session_.frameFailure());
  const bool complete = finished_.written == finished_.wanted;
  finishing_ = std::async(std::launch::async, [this, complete]() -> std::string {
    try {
      if (complete) writer_->finish();
    } catch (const std::exception& error) {
      return error.what();
    }
    return {};
  });
}

void COperatedShot::takeFinished() {
  const std::string failure = finishing_.get();
  writer_.reset();
  ended_ = finished_;
  if (!failure.empty()) noteFailure(failure);
}

// The set that is left may do; whether it does is the operator's to say.
void COperatedShot::noteLostPoints() {
  const STrackingOutcome& outcome = session_.tracking();
  const std::string lost = LostPoints(outcome, session_.getMarkIn());
  if (outcome.failure.empty() && !lost.empty())
    noteFailure("Some points were left out, the others were followed" + lost);
}

void COperatedShot::noteFailure(const std::string& text) {
  if (text == lastFailure_) return;
  lastFailure_ = text;
  failures_.push_back(text);
}

std::vector<std::string> COperatedShot::takeFailures() {
  std::vector<std::string> texts = std::exchange(failures_, {});
  const std::lock_guard lock(errors_.mutex);
  for (std::string& text : std::exchange(errors_.texts, {})) texts.push_back(std::move(text));
  return texts;
}

std::optional<COperatedShot::SRender> COperatedShot::takeRender() {
  return std::exchange(ended_, std::nullopt);
}

CPDLEntry COperatedShot::capture() {
  return CaptureEntry(*tool_);
}

void COperatedShot::apply(CPDLEntry& entry) {
  ApplyEntry(*tool_, entry);
}
