#include "session/QueueRun.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <utility>

#include "clip/ClipWriter.h"
#include "session/EntrySettings.h"
#include "session/PointsOutput.h"
#include "session/PreparedShot.h"
#include "session/ResultFiles.h"
#include "session/ShotReport.h"
#include "support/ErrorReport.h"

namespace fs = std::filesystem;

namespace {

std::string timeNow() {
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  gmtime_r(&now, &utc);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
  return text;
}

/// The list may be run from another folder. Links stay: where they lead is decided by the run.
void makeAbsolute(std::string& path) {
  if (path.empty() || path == "null:" || path == "test" || path.starts_with("test:")) return;
  fs::path whole;
  for (const fs::path& part : fs::absolute(path))
    if (part != ".") whole /= part;
  path = whole.string();
}

void refuseMissingFolder(const std::string& file) {
  if (file.empty()) return;
  std::error_code ignored;
  const fs::path folder = fs::path(file).parent_path();
  if (!fs::is_directory(folder, ignored)) throw CClipError(folder.string() + ": no such folder");
  if (fs::is_directory(file, ignored)) throw CClipError(file + ": is a folder");
}

void checkTargets(const SStabilizeOptions& options, const SClipInfo& clip) {
  for (const std::string& path : {options.output, options.compare})
    if (!path.empty()) CheckOutput(path, clip, *options.in, *options.out, options.overwrite);
  CheckResultFiles(options);
  CheckPointsOutput(options);
  for (const std::string& path :
       {options.report, options.graph, options.savePoints, options.exportMotion})
    refuseMissingFolder(path);
}

}  // namespace

SStabilizeOptions CaptureShot(SStabilizeOptions options, const SJobObserver& observer) {
  options.placeOnly = true;  // an entry's points are tracked when it is run
  for (auto path :
       {&SStabilizeOptions::input, &SStabilizeOptions::output, &SStabilizeOptions::report,
        &SStabilizeOptions::graph, &SStabilizeOptions::compare, &SStabilizeOptions::savePoints,
        &SStabilizeOptions::exportMotion})
    makeAbsolute(options.*path);
  std::unique_ptr<IClipReader> reader = OpenInput(options);
  const SClipInfo clip = reader->info();
  checkTargets(options, clip);
  const SPreparedShot shot = PrepareShot(std::move(reader), options, observer);
  options.entry = std::make_shared<const CPDLEntry>(shot.tool->capture());
  // Positions come back as whole pixels: what the run will get must be good, too.
  TakeEntrySettings(options, clip);
  return options;
}

CQueueRun::CQueueRun(const CProcessListFile& file, const SQueueSettings& settings,
                     const SJobObserver& observer)
    : file_(file), settings_(settings), observer_(observer), claim_(file.realPath()) {
  if (claim_.isHeld()) return;
  if (theError.getError() == -EAGAIN)
    throw CProcessListError(file.path() + ": the list is being run already");
  throw CProcessListError(theError.getMessage());
}

void CQueueRun::run(const std::function<void(const SShotOutcome&)>& ended) {
  while (std::optional<SQueuedShot> shot = takeNext()) ended(runShot(std::move(*shot)));
}

bool CQueueRun::isDue(const SQueuedShot& shot) const {
  switch (shot.state) {
    case EShotState::waiting: return true;
    case EShotState::running:  // and its runner is gone: the claim is ours
    case EShotState::interrupted: return !tried_.contains(shot.number);
    case EShotState::failed: return settings_.retryFailed && !tried_.contains(shot.number);
    case EShotState::done: break;
  }
  return false;
}

/// The list is read again each time, for it may have changed, and written only to take a shot.
std::optional<SQueuedShot> CQueueRun::takeNext() {
  if (observer_.isInterrupted()) throw CInterrupted();
  const auto due = [this](const SQueuedShot& shot) { return isDue(shot); };
  const CProcessList seen = file_.read();
  if (std::none_of(seen.shots().begin(), seen.shots().end(), due)) return std::nullopt;
  std::optional<SQueuedShot> taken;
  file_.change([&](CProcessList& list) {
    const auto found = std::find_if(list.shots().begin(), list.shots().end(), due);
    if (found == list.shots().end()) return;
    taken = *found;
    list.find(taken->number)->state = EShotState::running;
  });
  if (taken) tried_.insert(taken->number);
  return taken;
}

void CQueueRun::store(SQueuedShot& shot, const std::function<void(SQueuedShot&)>& edit) {
  edit(shot);
  file_.change([&](CProcessList& list) {
    SQueuedShot* stored = list.find(shot.number);
    if (!stored) return;
    edit(*stored);
    shot = *stored;
  });
}

SShotOutcome CQueueRun::runShot(SQueuedShot shot) {
  const EShotState before = shot.state;
  SShotOutcome outcome;
  const auto end = [&](EShotState state, const std::string& message) {
    store(shot, [&](SQueuedShot& stored) {
      stored.state = state;
      stored.message = message;
      if (state == EShotState::done) stored.beganWriting.clear();
    });
  };
  observer_.note("entry " + std::to_string(shot.number) + ": " + shot.options.input);
  try {
    outcome.result = runJob(shot);
    const std::string unsteady = TooUnsteady(*outcome.result);
    end(unsteady.empty() ? EShotState::done : EShotState::failed, unsteady);
  } catch (const CInterrupted&) {
    end(EShotState::interrupted, {});
    throw;
  } catch (const CPluginError&) {
    end(before, shot.message);
    throw;
  } catch (const CProcessListError&) {
    throw;
  } catch (const std::exception& error) {
    end(EShotState::failed, error.what());
  }
  outcome.shot = std::move(shot);
  return outcome;
}

SStabilizeResult CQueueRun::runJob(const SQueuedShot& shot) {
  SStabilizeOptions options = shot.options;
  options.threads = settings_.threads;
  options.cacheMemory = settings_.cacheMemory;
  if (!shot.beganWriting.empty()) options.overwrite = true;
  // Its points may have been saved before its first frame was.
  options.replacePoints = shot.state != EShotState::waiting;
  SJobObserver observer = observer_;
  observer.beginsToWrite = [this, shot = shot]() mutable {
    store(shot, [](SQueuedShot& stored) { stored.beganWriting = timeNow(); });
  };
  return CStabilizeJob(options, observer).run();
}
