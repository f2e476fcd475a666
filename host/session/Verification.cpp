#include "session/PointFinder.h"
#include "session/StabilizeJob.h"
#include "support/Threads.h"

namespace {

constexpr int WORST_FRAMES = 10;

/// The points that the shot was stabilised on, where they lie in the first frame of the output:
/// they say which part of the picture was meant to become steady. They are followed afresh.
std::map<int, SPoint2> pointsToFollow(const SStabilizeResult& result, const STrackSettings& track) {
  std::map<int, SPoint2> points;
  if (result.moves.empty()) return points;
  for (const auto& [index, point] : result.points.FindPoints(*result.options.in).Entries()) {
    const SPoint2 there = result.moves.front().at({point.x, point.y});
    if (CShotTracker::canTrack(there, track)) points[static_cast<int>(points.size())] = there;
  }
  return points;
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
  STrackSettings track = TrackSettingsOf(result.options, result.region);
  track.threads = threads;
  const std::map<int, SPoint2> points = pointsToFollow(result, track);
  if (points.empty()) return 0;
  CTrackingRun run(store, track, points, first, end);
  for (bool finished = false; !finished;) {
    if (observer.isInterrupted()) throw CInterrupted();
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
  verification.motion = FitMotion(shot.array(), CentreOf(reader->info().format));
  for (SFrameMotion& motion : verification.motion) {
    motion.frame -= offset;
    motion.x /= result.zoom;  // pixels of the picture as it was shot
    motion.y /= result.zoom;
  }
  verification.before = Steadiness(Deviations(result.measured, result.intended));
  const std::vector<SDeviation> after = Deviations(verification.motion, result.intended);
  verification.after = Steadiness(after);
  verification.worst = WorstFrames(after, WORST_FRAMES);
  return verification;
}
