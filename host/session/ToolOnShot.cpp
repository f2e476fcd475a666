#include "session/ToolOnShot.h"

#include <utility>

#include "ToolCalls.h"
#include "support/ErrorReport.h"
#include "support/Threads.h"
#include "toolkit/HeadlessApplication.h"

namespace {

// Frames in flight are what the memory of a run consists of; these bounds keep a 4096 x 2160 shot
// far below 1.5 GiB at any length.
constexpr int READ_AHEAD = 4;
constexpr int OUTPUT_LIMIT = 3;

CShotSession::SSettings sessionSettings(int threads, std::size_t keptBytes) {
  CShotSession::SSettings settings;
  settings.threads = threads;
  settings.keptBytes = keptBytes;
  settings.readAhead = READ_AHEAD;
  settings.outputLimit = OUTPUT_LIMIT;
  return settings;
}

}  // namespace

CToolOnShot::SToolErrors::SToolErrors() {
  SetErrorSink([this](const std::string&, int newCode, const std::string& newText) {
    const std::lock_guard lock(mutex);
    // The first failure is the cause; what follows are its consequences.
    if (!text.empty()) return;
    code = newCode;
    text = newText;
  });
}

void CToolOnShot::SToolErrors::setCode(int newCode) {
  const std::lock_guard lock(mutex);
  code = newCode;
}

CToolOnShot::SToolErrors::~SToolErrors() {
  SetErrorSink({});
}

CToolOnShot::CToolOnShot(std::unique_ptr<IClipReader> reader, int threads, std::size_t keptBytes,
                         int in, int out, const SJobObserver& observer)
    : observer_(observer),
      application_(std::make_unique<THeadlessApplication>()),
      plugin_(CPluginLibrary::find("stabilize.so")),
      session_(std::move(reader), sessionSettings(threads, keptBytes)) {
  plugin_.handOverApplication(application_.get());
  try {
    openTool(in, out);
  } catch (...) {
    close();
    throw;
  }
}

CToolOnShot::~CToolOnShot() {
  close();
}

void CToolOnShot::openTool(int in, int out) {
  tool_ = StartTool(plugin_, session_);
  session_.goToFrame(in);
  tool_->toolShow();
  // Nobody looks at the monitor that the tool's window brought; without ours, the tool's own
  // traces.
  tool_->setProgressMonitor(observer_.monitor);
  tool_->toolActivate();
  session_.setMarks(in, out);
}

void CToolOnShot::close() {
  EndTool(std::exchange(tool_, nullptr), session_);
}

void CToolOnShot::apply(CPDLEntry& entry) {
  ApplyEntry(*tool_, entry);
}

CPDLEntry CToolOnShot::capture() {
  return CaptureEntry(*tool_);
}

void CToolOnShot::tellPointsChanged() {
  session_.editor()->pointsChangedHook.notify();
}

void CToolOnShot::command(int number, const std::string& fileAnswer) {
  application_->file = fileAnswer;
  CToolCommand(tool_, number).execute();
  application_->file.clear();
  pumpUntilIdle();
  throwWhatFailed();
}

int CToolOnShot::render(IClipWriter& writer) {
  session_.setWriter(&writer);
  try {
    const int written = renderInto();
    writer.finish();
    session_.setWriter(nullptr);
    return written;
  } catch (...) {
    close();  // while the writer still stands
    throw;
  }
}

int CToolOnShot::renderInto() {
  const int code = tool_->startProcessing(CToolObject::EVENT_RENDER_RANGE, false);
  if (code != 0) errors_.setCode(code);
  pumpUntilIdle();
  const int written = session_.finishWriting();
  throwWhatFailed();
  const int wanted = session_.getMarkOut() - session_.getMarkIn();
  if (written != wanted)
    throw CJobError(-1, "only " + std::to_string(written) + " of " + std::to_string(wanted) +
                            " frames were written");
  return written;
}

// The window's timers run on the application's clock.
void CToolOnShot::pumpUntilIdle() {
  constexpr int ROUND_MILLISECONDS = 2;
  // After the tool reports idle it still wants one beat to take its last run state back.
  int idleRounds = 0;
  bool stopping = false;
  while (idleRounds < 3) {
    session_.pump();
    if (observer_.isInterrupted() && !stopping) {
      stopping = true;
      session_.StopTrackingRun();
      tool_->stopProcessing();
    }
    idleRounds = tool_->getToolProcessingState() == CToolObject::STATE_IDLE ? idleRounds + 1 : 0;
    QTXmillisleep(ROUND_MILLISECONDS);
    application_->advanceClock(ROUND_MILLISECONDS);
  }
}

void CToolOnShot::throwWhatFailed() {
  if (observer_.isInterrupted()) throw CInterrupted();
  if (!session_.tracking().failure.empty())
    throw CJobError(-1, session_.info().path + ": " + session_.tracking().failure);
  if (!session_.frameFailure().empty()) throw CJobError(-1, session_.frameFailure());
  const std::lock_guard lock(errors_.mutex);
  const int code = errors_.code != 0 ? errors_.code : tool_->getLastProcessingError();
  if (code != 0) throw CJobError(code, errors_.text.empty() ? "the tool failed" : errors_.text);
}
