#pragma once

#include <functional>
#include <optional>
#include <set>

#include "session/JobObserver.h"
#include "session/ProcessListFile.h"
#include "session/StabilizeJob.h"
#include "support/FileLock.h"

/// What is done about the shots of a list: one is made ready and added, or all are run.

/// Makes the shot ready as a job would, and gives the options completed, with absolute paths and
/// with what the tool captured as their entry. Everything that can be known at once is checked, on
/// what was captured too. Throws what CStabilizeJob::run throws; nothing is written but the matting
/// box that is kept with a clip.
SStabilizeOptions CaptureShot(SStabilizeOptions options, const SJobObserver& observer);

struct SQueueSettings {
  bool retryFailed = false;
  int threads = 0;                         ///< 0: the machine's cores
  std::optional<std::size_t> cacheMemory;  ///< as SStabilizeOptions has it
};

/// One shot of a run, ended.
struct SShotOutcome {
  SQueuedShot shot;                        ///< as stored
  std::optional<SStabilizeResult> result;  ///< of a job that came to its end
};

/// Runs the shots of a list one after another. One run of a list at a time; shots that are added
/// meanwhile are run too. Each shot's state is in the file before and after its job, so that a run
/// that ends in the middle, by whatever, is taken up by the next: a shot that had begun to write
/// replaces the frames that it wrote, any other one only when it was asked to. THREAD: as
/// CStabilizeJob.
class CQueueRun {
 public:
  /// Claims the list. Throws CProcessListError when somebody runs it.
  CQueueRun(const CProcessListFile& file, const SQueueSettings& settings,
            const SJobObserver& observer);

  /// Runs what waits or was interrupted, and with `retryFailed` what failed, each once. Whatever
  /// is wrong with a shot fails that shot; `ended` hears of each. Throws CInterrupted (the shot is
  /// stored as interrupted), CPluginError (it stays as it was), CProcessListError.
  void run(const std::function<void(const SShotOutcome&)>& ended);

 private:
  /// Marks the next shot as running; its state from before is in what it gives.
  std::optional<SQueuedShot> takeNext();
  bool isDue(const SQueuedShot& shot) const;
  SShotOutcome runShot(SQueuedShot shot);
  SStabilizeResult runJob(const SQueuedShot& shot);
  /// Changes the shot in the list, and `shot` likewise. One that is no longer listed only here.
  void store(SQueuedShot& shot, const std::function<void(SQueuedShot&)>& edit);

  const CProcessListFile& file_;
  const SQueueSettings settings_;
  const SJobObserver& observer_;
  const CFileClaim claim_;
  std::set<int> tried_;
};
