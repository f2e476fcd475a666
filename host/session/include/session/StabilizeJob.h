#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "session/JobObserver.h"
#include "session/MotionMeasure.h"
#include "session/PictureMove.h"
#include "session/StabilizeOptions.h"
#include "session/ToolOnShot.h"
#include "tracker/FeatureDetector.h"

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
  /// The same at the centre of the picture, also where the picture turns and is left to: `measured`
  /// is then the motion of the points' middle.
  std::vector<SFrameMotion> asShot;
  std::vector<SFrameMotion> intended;  ///< the path that the picture was put on
  std::vector<SPictureMove> moves;     ///< where the renderer put each frame
  CTrackingArray points;               ///< the points used, in every frame of the input
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
  void openShot();
  void savePoints();
  void render();
  void collectMotion();
  void keepRotation(const std::vector<SFrameMotion>& asShot);
  void verify();
  void writeExtras();

  SStabilizeOptions options_;
  const SJobObserver observer_;
  SStabilizeResult result_;
  std::unique_ptr<CToolOnShot> shot_;
  SMoveSettings moveSettings_;
  bool tracked_ = false;
};

/// Measures how steady the frames [first, end) of a finished clip are against the intended path.
/// Throws CClipError, CJobError (no point can be followed), CInterrupted.
SVerification VerifyOutput(const std::string& path, int first, int end,
                           const SStabilizeResult& result, const SJobObserver& observer,
                           int threads);
