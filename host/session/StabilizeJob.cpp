#include "session/StabilizeJob.h"

#include <algorithm>
#include <utility>

#include "clip/ClipWriter.h"
#include "session/MotionGraph.h"
#include "session/PointFinder.h"
#include "session/ShotReport.h"
#include "support/ErrorReport.h"
#include "support/Files.h"
#include "support/Threads.h"
#include "toolkit/Application.h"

namespace {

constexpr const char* TOOL_NAME = "Stabilize";
// Frames in flight are what the memory of a run consists of; these bounds keep a 4096 x 2160 shot
// far below 1.5 GiB at any length.
constexpr int READ_AHEAD = 4;
constexpr int OUTPUT_LIMIT = 3;

SPoint2 centreOf(const CImageFormat& format) {
  return {(format.getPixelsPerLine() - 1) * 0.5, (format.getLinesPerFrame() - 1) * 0.5};
}

}  // namespace

CStabilizeJob::CStabilizeJob(const SStabilizeOptions& options, const SJobObserver& observer)
    : options_(options), observer_(observer) {
  SetErrorSink([this](const std::string&, int code, const std::string& text) {
    // The first failure is the cause; what follows are its consequences.
    if (toolErrorText_.empty()) {
      toolErrorCode_ = code;
      toolErrorText_ = text;
    }
  });
}

CStabilizeJob::~CStabilizeJob() {
  closeTool();
  SetErrorSink({});
}

bool CStabilizeJob::isInterrupted() const {
  return observer_.interrupted && *observer_.interrupted;
}

SStabilizeResult CStabilizeJob::run() {
  openClip();
  openTool();
  applyEntry();
  placePoints();
  render();
  collectMotion();
  closeTool();
  if (options_.verify) verify();
  writeExtras();
  return result_;
}

void CStabilizeJob::openClip() {
  const int threads = options_.threads > 0 ? options_.threads : AvailableProcessorCoreCount();
  SetAvailableProcessorCoreCount(options_.threads);
  std::unique_ptr<IClipReader> reader = OpenClip(options_.input, threads);
  CheckAndComplete(options_, reader->info());
  options_.threads = threads;
  CheckOutput(options_.output, reader->info(), *options_.in, *options_.out, options_.overwrite);
  if (!options_.compare.empty())
    CheckOutput(options_.compare, reader->info(), *options_.in, *options_.out, options_.overwrite);
  result_.clip = reader->info();
  result_.options = options_;
  CShotSession::SSettings settings;
  settings.threads = threads;
  settings.readAhead = READ_AHEAD;
  settings.outputLimit = OUTPUT_LIMIT;
  session_ = std::make_unique<CShotSession>(std::move(reader), settings);
}

void CStabilizeJob::openTool() {
  plugin_ = std::make_unique<CPluginLibrary>(CPluginLibrary::find("stabilize.so"));
  plugin_->handOverApplication(Application());
  result_.pluginVersion = plugin_->version();
  CToolObject* tool = plugin_->createTool(TOOL_NAME);
  const int code = tool->toolInitialize(session_.get());
  if (code != 0)
    throw CJobError(code, "the tool cannot be initialised (" + std::to_string(code) + ")");
  tool_ = tool;
  if (observer_.monitor) tool_->setProgressMonitor(observer_.monitor);
  session_->setTool(tool_);
  session_->goToFrame(*options_.in);
  tool_->toolShow();
  tool_->toolActivate();
  session_->setMarks(*options_.in, *options_.out);
}

void CStabilizeJob::applyEntry() {
  CPDLEntry entry = MakeEntry(options_);
  const int code = tool_->runPDLEntry(entry);
  if (code != 0)
    throw CJobError(code, "the tool refused its settings (" + std::to_string(code) + ")");
  result_.region = options_.matting == EMatting::off
                       ? result_.clip.format.getActivePictureRect()
                       : session_->editor()->trackingArray()->MattingBox();
  session_->setTrackingRegion(result_.region);
}

void CStabilizeJob::placePoints() {
  const STrackSettings track = TrackSettingsOf(options_, result_.region);
  for (const SPoint2& point : options_.points) {
    if (!CShotTracker::canTrack(point, track))
      throw CUsageError("--point " + std::to_string(point.x) + "," + std::to_string(point.y) +
                        ": its track box would leave the picture");
    result_.features.push_back({point.x, point.y, 0.0});
  }
  if (options_.points.empty()) {
    result_.features = FindPoints(session_->reader(), options_, result_.region);
    if (result_.features.empty())
      throw CJobError(-1, options_.input + ": frame " + std::to_string(*options_.in) +
                              ": nothing in the picture can be tracked (no texture above the "
                              "noise); give points with --point X,Y");
    note(std::to_string(result_.features.size()) + " points found");
  }
  CTrackingPoints& points = session_->editor()->trackingArray()->PointsAt(*options_.in);
  int index = 0;
  for (const SFeature& feature : result_.features)
    points.Point(index++) = CTrackPoint(feature.x, feature.y);
  session_->editor()->pointsChangedHook.notify();
}

void CStabilizeJob::render() {
  writer_ = CreateClip(options_.output, session_->reader(), *options_.in, *options_.out,
                       {options_.overwrite, options_.threads});
  session_->setWriter(writer_.get());
  CHRTimer timer;
  const int code = tool_->startProcessing(CToolObject::EVENT_RENDER_RANGE, false);
  if (code != 0) toolErrorCode_ = code;
  pumpUntilIdle();
  result_.framesWritten = session_->finishWriting();
  result_.tracking = session_->tracking();
  result_.trackSeconds = result_.tracking.seconds;
  result_.renderSeconds = timer.Read() * 0.001 - result_.trackSeconds;
  throwWhatFailed();
  writer_->finish();
  session_->setWriter(nullptr);
}

void CStabilizeJob::pumpUntilIdle() {
  // After the tool reports idle it still wants one beat to take its last run state back.
  int idleRounds = 0;
  bool stopping = false;
  while (idleRounds < 3) {
    session_->pump();
    if (isInterrupted() && !stopping) {
      stopping = true;
      session_->StopTrackingRun();
      tool_->stopProcessing();
    }
    idleRounds = tool_->getToolProcessingState() == CToolObject::STATE_IDLE ? idleRounds + 1 : 0;
    QTXmillisleep(2);
  }
}

void CStabilizeJob::throwWhatFailed() {
  if (isInterrupted()) throw CInterrupted();
  if (!result_.tracking.failure.empty())
    throw CJobError(-1, options_.input + ": " + result_.tracking.failure);
  if (!session_->frameFailure().empty()) throw CJobError(-1, session_->frameFailure());
  const int code = toolErrorCode_ != 0 ? toolErrorCode_ : tool_->getLastProcessingError();
  if (code != 0) throw CJobError(code, toolErrorText_.empty() ? "the tool failed" : toolErrorText_);
  const int wanted = *options_.out - *options_.in;
  if (result_.framesWritten != wanted)
    throw CJobError(-1, "only " + std::to_string(result_.framesWritten) + " of " +
                            std::to_string(wanted) + " frames were written");
}

void CStabilizeJob::collectMotion() {
  const CTrackingPointsEditor& editor = *session_->editor();
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

void CStabilizeJob::closeTool() {
  if (tool_) {
    tool_->toolDeactivate();
    tool_->toolHide();
    tool_->toolShutdown();
    session_->setTool(nullptr);
    tool_ = nullptr;
  }
  // Processors are the plug-in's code and write through the writer, which reads from the clip.
  if (session_) session_->endPasses();
  writer_.reset();
  session_.reset();
  plugin_.reset();
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
  note("writing " + options_.compare);
  WriteComparison(result_, observer_);
}
