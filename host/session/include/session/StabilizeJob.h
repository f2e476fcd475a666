#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "ToolObj/ProgressMonitor.h"
#include "session/MotionMeasure.h"
#include "session/PluginLibrary.h"
#include "session/ShotSession.h"
#include "session/StabilizeOptions.h"
#include "tracker/FeatureDetector.h"

/// A shot that could not be stabilised. `code` is the tool's own where it gave one, else -1.
class CJobError : public std::runtime_error {
 public:
  CJobError(int code, const std::string& text) : std::runtime_error(text), code(code) {}
  const int code;
};

/// The operator stopped the job.
class CInterrupted : public std::runtime_error {
 public:
  CInterrupted() : std::runtime_error("interrupted") {}
};

/// Whom a job tells how it goes. `monitor` gets every stage's progress; `note` single remarks.
struct SJobObserver {
  IToolProgressMonitor* monitor = nullptr;  ///< any thread; null: nobody
  std::function<void(const std::string&)> note = [](const std::string&) {};
  const std::atomic<bool>* interrupted = nullptr;  ///< becomes true when the job shall stop
};

/// How steady the written output is, measured on the output itself.
struct SVerification {
  std::vector<SFrameMotion> motion;  ///< of the output, against its first frame
  SSteadiness before;
  SSteadiness after;
  std::vector<SDeviation> worst;  ///< of the output, worst first
  int points = 0;                 ///< that the measurement stands on
};

/// What a finished job knows.
struct SStabilizeResult {
  SClipInfo clip;
  SStabilizeOptions options;  ///< completed
  std::string pluginVersion;
  SRect region;                    ///< processing region, inclusive
  std::vector<SFeature> features;  ///< as found, or as given (strength 0)
  STrackingOutcome tracking;
  std::vector<SFrameMotion> measured;  ///< motion of the input
  std::vector<SFrameMotion> intended;  ///< the path that the picture was put on
  std::vector<SPoint2> outputPoints;   ///< the points used, in the first frame of the output
  double zoom = 1.0;                   ///< how much larger the zoom fill made the picture
  std::optional<SVerification> verification;
  int framesWritten = 0;
  double trackSeconds = 0.0;
  double renderSeconds = 0.0;
  double verifySeconds = 0.0;
};

/// Stabilises one shot, from clip to clip, the way a batch host does: the tool gets its settings as
/// a process-list entry, its points through the editor, and one render request; tracking, smoothing
/// and rendering follow by the tool's own run control. THREAD: one thread, which becomes the
/// user-interface thread of the tool.
class CStabilizeJob {
 public:
  CStabilizeJob(const SStabilizeOptions& options, const SJobObserver& observer);
  ~CStabilizeJob();
  CStabilizeJob(const CStabilizeJob&) = delete;
  CStabilizeJob& operator=(const CStabilizeJob&) = delete;

  /// Throws CUsageError, CClipError, CPluginError, CJobError or CInterrupted. On every one of them
  /// the frames that were written are whole, and a video that is not complete does not exist.
  SStabilizeResult run();

 private:
  void openClip();
  void openTool();
  void applyEntry();
  void placePoints();
  void render();
  void pumpUntilIdle();
  void throwWhatFailed();
  void collectMotion();
  void keepRotation(const std::vector<SFrameMotion>& asShot);
  void applyZoom(const SRectD& source);
  void closeTool();
  void verify();
  void writeExtras();
  bool isInterrupted() const;
  void note(const std::string& text) const { observer_.note(text); }

  SStabilizeOptions options_;
  const SJobObserver observer_;
  SStabilizeResult result_;
  std::unique_ptr<IClipWriter> writer_;
  std::unique_ptr<CShotSession> session_;
  std::unique_ptr<CPluginLibrary> plugin_;
  CToolObject* tool_ = nullptr;
  int toolErrorCode_ = 0;
  std::string toolErrorText_;
};

/// Measures how steady the frames [first, end) of a finished clip are against the intended path.
/// Throws CClipError, CJobError (no point can be followed), CInterrupted.
SVerification VerifyOutput(const std::string& path, int first, int end,
                           const SStabilizeResult& result, const SJobObserver& observer,
                           int threads);
