#include <algorithm>
#include <cmath>

#include "session/StabilizeJob.h"
#include "tracker/FeatureDetector.h"

namespace {

// The measurement uses its own points and more of them: it must not inherit the errors of those the
// shot was stabilised with.
constexpr int VERIFY_POINTS = 24;
constexpr int VERIFY_BOX = 15;
constexpr int WORST_FRAMES = 10;

/// How far the picture was moved at most: nearer to the edges there may be fill instead of picture.
int largestMove(const SStabilizeResult& result) {
  double largest = 0.0;
  const CImageFormat& format = result.clip.format;
  const double halfDiagonal =
      0.5 * std::hypot(format.getPixelsPerLine(), format.getLinesPerFrame());
  const std::size_t count = std::min(result.measured.size(), result.intended.size());
  for (std::size_t i = 0; i < count; ++i) {
    const SFrameMotion& from = result.measured[i];
    const SFrameMotion& to = result.intended[i];
    const double turn = std::abs(to.angle - from.angle) * 3.14159265358979 / 180.0;
    largest = std::max(largest, std::hypot(to.x - from.x, to.y - from.y) + turn * halfDiagonal);
  }
  return static_cast<int>(std::ceil(largest));
}

SFeatureSettings featureSettings(const SStabilizeResult& result) {
  SFeatureSettings settings;
  settings.count = VERIFY_POINTS;
  settings.region = result.region;
  const int smallerSide =
      std::min(result.region.right - result.region.left, result.region.bottom - result.region.top);
  const int search = *result.options.search;
  settings.margin = std::min(largestMove(result) + VERIFY_BOX + search + 2, smallerSide / 4);
  return settings;
}

STrackSettings trackSettings(const SStabilizeResult& result, int threads) {
  STrackSettings track;
  track.trackBoxExtentX = track.trackBoxExtentY = VERIFY_BOX;
  track.searchLeft = track.searchRight = track.searchUp = track.searchDown = *result.options.search;
  track.region = result.region;
  track.threads = threads;
  return track;
}

/// Puts what a tracking run found into an array; points that could not be followed leave it.
class CMeasuredShot {
 public:
  void take(CTrackingRun& run, IToolProgressMonitor* monitor) {
    for (const CTrackingRun::SFrameResult& result : run.takeResults()) {
      for (const auto& [index, point] : result.points)
        if (point.state == EPointState::found)
          array_.PointsAt(result.frame).Point(index) =
              CTrackPoint(point.position.x, point.position.y);
      if (monitor) monitor->BumpProgress(1);
    }
  }
  int finish(const CTrackingRun& run) {
    for (const auto& [index, point] : run.summary())
      if (!point.usable) array_.DeletePoint(index);
    return array_.NumberOfPoints();
  }
  const CTrackingArray& array() const { return array_; }

 private:
  CTrackingArray array_;
};

int trackOutput(CMeasuredShot& shot, CFrameStore& store, const SStabilizeResult& result, int first,
                int end, const SJobObserver& observer, int threads) {
  std::vector<std::uint16_t> samples(store.info().format.getBytesPerField() / 2);
  store.readNow(first, samples.data());
  const auto features =
      DetectFeatures(samples.data(), store.info().format, featureSettings(result));
  std::map<int, SPoint2> points;
  for (std::size_t i = 0; i < features.size(); ++i)
    points[static_cast<int>(i)] = {features[i].x, features[i].y};
  if (points.empty()) return 0;
  CTrackingRun run(store, trackSettings(result, threads), points, first, end);
  for (bool finished = false; !finished;) {
    if (observer.interrupted && *observer.interrupted) throw CInterrupted();
    finished = run.isFinished();
    shot.take(run, observer.monitor);
    if (!finished) QTXmillisleep(5);
  }
  if (!run.failure().empty()) throw CJobError(-1, store.info().path + ": " + run.failure());
  return shot.finish(run);
}

}  // namespace

SVerification VerifyOutput(const std::string& path, int first, int end,
                           const SStabilizeResult& result, const SJobObserver& observer,
                           int threads) {
  const std::unique_ptr<IClipReader> reader = OpenClip(path, threads);
  CFrameStore store(*reader, {4, threads});
  // A video counts its frames from 0 whatever the source called them.
  const int offset = reader->info().firstFrame <= first && end <= reader->info().endFrame
                         ? 0
                         : reader->info().firstFrame - first;
  if (observer.monitor) {
    observer.monitor->SetStatusMessage("Verifying");
    observer.monitor->SetFrameCount(end - first, 1);
    observer.monitor->StartProgress();
  }
  CMeasuredShot shot;
  SVerification verification;
  verification.points =
      trackOutput(shot, store, result, first + offset, end + offset, observer, threads);
  if (observer.monitor) observer.monitor->StopProgress(verification.points > 0);
  if (verification.points == 0)
    throw CJobError(-1, path + ": nothing in the output can be followed to verify it");
  const CImageFormat& format = reader->info().format;
  verification.motion = FitMotion(
      shot.array(), {(format.getPixelsPerLine() - 1) * 0.5, (format.getLinesPerFrame() - 1) * 0.5});
  for (SFrameMotion& motion : verification.motion) motion.frame -= offset;
  verification.before = Steadiness(Deviations(result.measured, result.intended));
  const std::vector<SDeviation> after = Deviations(verification.motion, result.intended);
  verification.after = Steadiness(after);
  verification.worst = WorstFrames(after, WORST_FRAMES);
  return verification;
}
