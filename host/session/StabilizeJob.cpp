#include "session/StabilizeJob.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "clip/ClipWriter.h"
#include "session/MotionGraph.h"
#include "session/PreparedShot.h"
#include "session/ShotReport.h"
#include "support/ErrorReport.h"
#include "support/Files.h"

namespace {

SPoint2 centreOf(const CImageFormat& format) {
  return {(format.getPixelsPerLine() - 1) * 0.5, (format.getLinesPerFrame() - 1) * 0.5};
}

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
  render();
  collectMotion();
  shot_.reset();
  if (options_.verify) verify();
  writeExtras();
  return result_;
}

void CStabilizeJob::openShot() {
  std::unique_ptr<IClipReader> reader = OpenInput(options_);
  CheckOutput(options_.output, reader->info(), *options_.in, *options_.out, options_.overwrite);
  if (!options_.compare.empty())
    CheckOutput(options_.compare, reader->info(), *options_.in, *options_.out, options_.overwrite);
  result_.clip = reader->info();
  result_.options = options_;
  SPreparedShot prepared = PrepareShot(std::move(reader), options_, observer_);
  shot_ = std::move(prepared.tool);
  result_.pluginVersion = shot_->pluginVersion();
  result_.region = prepared.region;
  result_.features = std::move(prepared.features);
}

void CStabilizeJob::render() {
  const std::unique_ptr<IClipWriter> writer =
      CreateClip(options_.output, shot_->session().reader(), *options_.in, *options_.out,
                 {options_.overwrite, options_.threads});
  CAnnouncingWriter announcing(*writer, observer_.beginsToWrite);
  CHRTimer timer;
  result_.framesWritten = shot_->render(announcing);
  result_.tracking = shot_->session().tracking();
  result_.trackSeconds = result_.tracking.seconds;
  result_.renderSeconds = timer.Read() * 0.001 - result_.trackSeconds;
}

void CStabilizeJob::collectMotion() {
  const CTrackingPointsEditor& editor = *shot_->session().editor();
  const SPoint2 centre = centreOf(result_.clip.format);
  if (!editor.originalMotion() || !editor.smoothedMotion()) return;
  result_.measured = MotionOfTriangles(*editor.originalMotion(), centre);
  result_.intended = MotionOfTriangles(*editor.smoothedMotion(), centre);
  if (options_.stabilize != EStabilize::rotation)
    keepRotation(FitMotion(*editor.trackingArray(), centre));
  const CTrackingPoints& from = editor.originalMotion()->frames.at(*options_.in);
  const CTrackingPoints& to = editor.smoothedMotion()->frames.at(*options_.in);
  for (const auto& [index, point] : editor.trackingArray()->FindPoints(*options_.in).Entries())
    result_.outputPoints.push_back(MovedPoint({point.x, point.y}, from, to));
  applyZoom(editor.zoomSource());
}

/// The tool does not measure a rotation that it leaves alone; the picture keeps it as it was shot.
void CStabilizeJob::keepRotation(const std::vector<SFrameMotion>& asShot) {
  const std::size_t count = std::min(asShot.size(), result_.measured.size());
  for (std::size_t i = 0; i < count; ++i)
    result_.measured[i].angle = result_.intended[i].angle = asShot[i].angle;
}

void CStabilizeJob::applyZoom(const SRectD& source) {
  if (source == SRectD{}) return;
  const SRect& region = result_.region;
  result_.zoom = (region.right - region.left + 1) / (source.right - source.left);
  // Pixel i covers [i, i + 1): rectangles speak of edges, points of centres.
  for (SPoint2& point : result_.outputPoints)
    point = {region.left + (point.x + 0.5 - source.left) * result_.zoom - 0.5,
             region.top + (point.y + 0.5 - source.top) * result_.zoom - 0.5};
}

void CStabilizeJob::verify() {
  CHRTimer timer;
  result_.verification = VerifyOutput(options_.output, *options_.in, *options_.out, result_,
                                      observer_, options_.threads);
  result_.verifySeconds = timer.Read() * 0.001;
}

void CStabilizeJob::writeExtras() {
  const auto write = [](const std::string& path, const std::string& text) {
    if (!path.empty() && !WriteFileWhole(path, text)) throw CJobError(-1, theError.getMessage());
  };
  if (!options_.graph.empty()) {
    std::vector<SMotionCurve> curves = {{"as shot", "#d9822b", 1.5, result_.measured},
                                        {"intended", "#a9c8ec", 6.0, result_.intended}};
    if (result_.verification)
      curves.push_back({"output, measured again", "#20663f", 1.5, result_.verification->motion});
    write(options_.graph, MotionGraphAsSvg(options_.input, curves));
  }
  write(options_.report, options_.report.empty() ? std::string() : ReportAsJson(result_));
  if (options_.compare.empty()) return;
  observer_.note("writing " + options_.compare);
  WriteComparison(result_, observer_);
}
