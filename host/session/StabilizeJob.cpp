#include "session/StabilizeJob.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <utility>

#include "clip/ClipWriter.h"
#include "session/MotionExport.h"
#include "session/MotionGraph.h"
#include "session/PointsOutput.h"
#include "session/PreparedShot.h"
#include "session/ResultFiles.h"
#include "session/ShotReport.h"
#include "support/ErrorReport.h"
#include "support/Files.h"

namespace {

/// Says so before the first frame is written.
class CAnnouncingWriter : public IClipWriter {
 public:
  CAnnouncingWriter(IClipWriter& writer, const std::function<void()>& announce)
      : writer_(writer), announce_(announce) {}
  void writeFrame(int frame, const std::uint16_t* samples) override {
    std::call_once(announced_, announce_);
    writer_.writeFrame(frame, samples);
  }
  void finish() override { writer_.finish(); }
  bool isParallel() const override { return writer_.isParallel(); }

 private:
  IClipWriter& writer_;
  const std::function<void()>& announce_;
  std::once_flag announced_;
};

}  // namespace

CStabilizeJob::CStabilizeJob(const SStabilizeOptions& options, const SJobObserver& observer)
    : options_(options), observer_(observer) {}

CStabilizeJob::~CStabilizeJob() = default;

SStabilizeResult CStabilizeJob::run() {
  openShot();
  if (!options_.savePoints.empty()) savePoints();
  render();
  collectMotion();
  shot_.reset();
  std::exception_ptr failure;
  if (options_.verify) {
    try {
      verify();
    } catch (...) {
      failure = std::current_exception();  // what was measured until now is not lost for it
    }
  }
  writeExtras();
  if (failure) std::rethrow_exception(failure);
  return result_;
}

void CStabilizeJob::openShot() {
  std::unique_ptr<IClipReader> reader = OpenInput(options_);
  CheckResultFiles(options_);
  CheckOutput(options_.output, reader->info(), *options_.in, *options_.out, options_.overwrite);
  if (!options_.compare.empty())
    CheckOutput(options_.compare, reader->info(), *options_.in, *options_.out, options_.overwrite);
  CheckPointsOutput(options_);
  for (const std::string& extra : {options_.report, options_.graph, options_.exportMotion})
    CheckWritable(extra);
  result_.clip = reader->info();
  result_.options = options_;
  SPreparedShot prepared = PrepareShot(std::move(reader), options_, observer_);
  shot_ = std::move(prepared.tool);
  result_.pluginVersion = shot_->pluginVersion();
  result_.region = prepared.region;
  result_.features = std::move(prepared.features);
  tracked_ = prepared.tracked;
  moveSettings_ = prepared.moveSettings;
}

/// Before the render, so that nothing that ends it costs the points.
void CStabilizeJob::savePoints() {
  if (!tracked_) shot_->command(TOOL_TRACK);
  SavePoints(*shot_, options_);
}

void CStabilizeJob::render() {
  const std::unique_ptr<IClipWriter> writer =
      CreateClip(options_.output, shot_->session().reader(), *options_.in, *options_.out,
                 {options_.overwrite, options_.threads});
  CAnnouncingWriter announcing(*writer, observer_.beginsToWrite);
  const double trackedBefore = shot_->session().tracking().seconds;
  CHRTimer timer;
  result_.framesWritten = shot_->render(announcing);
  result_.tracking = shot_->session().tracking();
  result_.trackSeconds = result_.tracking.seconds;
  result_.renderSeconds = timer.Read() * 0.001 - (result_.trackSeconds - trackedBefore);
}

void CStabilizeJob::collectMotion() {
  const CTrackingPointsEditor& editor = *shot_->session().editor();
  const SPoint2 centre = CentreOf(result_.clip.format);
  if (!editor.originalMotion() || !editor.smoothedMotion()) return;
  result_.measured = MotionOfTriangles(*editor.originalMotion(), centre);
  result_.intended = MotionOfTriangles(*editor.smoothedMotion(), centre);
  if (options_.stabilize != EStabilize::rotation)
    keepRotation(FitMotion(*editor.trackingArray(), centre));
  result_.asShot = options_.stabilize == EStabilize::rotation
                       ? result_.measured
                       : FitMotion(*editor.trackingArray(), centre);
  const SZoom zoom{editor.zoomSource(), result_.region};
  result_.moves =
      PictureMoves(*editor.originalMotion(), *editor.smoothedMotion(), moveSettings_, zoom);
  result_.points = *editor.trackingArray();
  result_.zoom = zoom.factor();
}

/// The tool does not measure a rotation that it leaves alone; the picture keeps it as it was shot.
void CStabilizeJob::keepRotation(const std::vector<SFrameMotion>& asShot) {
  const std::size_t count = std::min(asShot.size(), result_.measured.size());
  for (std::size_t i = 0; i < count; ++i)
    result_.measured[i].angle = result_.intended[i].angle = asShot[i].angle;
}

void CStabilizeJob::verify() {
  CHRTimer timer;
  result_.verification = VerifyOutput(options_.output, *options_.in, *options_.out, result_,
                                      observer_, options_.threads);
  result_.verifySeconds = timer.Read() * 0.001;
}

void CStabilizeJob::writeExtras() {
  std::string failure;  // of the first; the others are written all the same
  const auto write = [&failure](const std::string& path, const std::string& text) {
    if (!path.empty() && !WriteFileWhole(path, text) && failure.empty())
      failure = theError.getMessage();
  };
  if (!options_.graph.empty()) {
    std::vector<SMotionCurve> curves = {{"as shot", "#d9822b", 1.5, result_.measured},
                                        {"intended", "#a9c8ec", 6.0, result_.intended}};
    if (result_.verification)
      curves.push_back({"output, measured again", "#20663f", 1.5, result_.verification->motion});
    write(options_.graph, MotionGraphAsSvg(options_.input, curves));
  }
  write(options_.exportMotion, options_.exportMotion.empty()
                                   ? std::string()
                                   : MotionAsText(result_, options_.exportMotion));
  write(options_.report, options_.report.empty() ? std::string() : ReportAsJson(result_));
  if (!failure.empty()) throw CJobError(-1, failure);
  if (options_.compare.empty()) return;
  observer_.note("writing " + options_.compare);
  WriteComparison(result_, observer_);
}
