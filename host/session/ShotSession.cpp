#include "session/ShotSession.h"

#include <algorithm>
#include <filesystem>

#include "session/MotionMeasure.h"
#include "support/ErrorReport.h"
#include "support/Files.h"

namespace {

/// The open clip as tools see it.
class CSessionClip : public IClip {
 public:
  explicit CSessionClip(const SClipInfo& info) : info_(info) {}
  std::string path() const override { return info_.path; }
  int firstFrame() const override { return info_.firstFrame; }
  int endFrame() const override { return info_.endFrame; }
  CTimecode startTimecode() const override { return info_.startTimecode; }
  CTimecode timecodeOfFrame(int frame) const override {
    const CTimecode& start = info_.startTimecode;
    return CTimecode(start.frameCount() + frame - info_.firstFrame, start.framesPerSecond(),
                     start.isDropFrame());
  }
  int frameOfTimecode(const CTimecode& timecode) const override {
    const int offset = timecode.frameCount() - info_.startTimecode.frameCount();
    return offset < 0 ? -1 : info_.firstFrame + offset;
  }

 private:
  const SClipInfo& info_;
};

/// A sequence may have been opened by its folder's name: its files say where it lies. A generated
/// clip lies nowhere: what is kept with it gets a folder of its own, or it would lie in the current
/// one, over what is kept there with another clip.
std::string folderTextOf(const IClipReader& reader) {
  const SClipInfo& info = reader.info();
  const std::string file = reader.sourceFile(info.firstFrame);
  if (!file.empty()) return file;
  if (!info.path.starts_with("test:")) return info.path;
  return StateFolder() + "/stabilize/generated/clip";
}

}  // namespace

CShotSession::SShot::SShot(std::unique_ptr<IClipReader> clipReader, const SSettings& settings)
    : reader(std::move(clipReader)),
      clip(std::make_unique<CSessionClip>(reader->info())),
      folderText(folderTextOf(*reader)),
      store(*reader, {settings.readAhead, settings.threads, settings.keptBytes}),
      setups(store, {settings.outputLimit, settings.threads}) {}

CShotSession::CShotSession(std::unique_ptr<IClipReader> reader, const SSettings& settings)
    : settings_(settings) {
  takeShot(std::move(reader));
  // Frames are decoded ahead in order; a cache of frames that are over would only hold memory.
  toolFrameCache_.setEnabled(false);
}

CShotSession::~CShotSession() {
  endPasses();
}

void CShotSession::endPasses() {
  trackingRun_.reset();
  shot_->setups.clear();
}

void CShotSession::takeShot(std::unique_ptr<IClipReader> reader) {
  shot_ = std::make_unique<SShot>(std::move(reader), settings_);
  std::error_code ignored;  // whoever writes there will say it
  if (!settings_.batch)
    std::filesystem::create_directories(GetFilePath(shot_->folderText), ignored);
  displayedFrame_ = info().firstFrame;
  // The tool offers to go on from what is displayed: a render then has neither gap nor repetition.
  shot_->setups.onPausedAt = [this](int frame) {
    resultFrame_ = NO_FRAME;
    if (display_) goToFrame(frame);
  };
}

void CShotSession::changeClip(std::unique_ptr<IClipReader> reader) {
  if (tool_) tool_->onClipChange();
  endPasses();
  writer_ = nullptr;
  tracking_ = {};
  knownPaths_ = {};
  displayedPixels_ = {};
  resultFrame_ = NO_FRAME;
  takeShot(std::move(reader));
  shot_->setups.setTool(tool_);
  trackingRegion_.reset();
  // While the tool still remembers the old clip: points of another picture go unasked.
  setMarks(-1, -1);
  if (tool_) tool_->onNewClip();
  if (display_) display_->onDisplayedFrame();
}

bool CShotSession::isBusy() const {
  return trackingRun_ || (tool_ && tool_->getToolProcessingState() != CToolObject::STATE_IDLE);
}

bool CShotSession::isPaused() const {
  return shot_->setups.isPaused();
}

void CShotSession::setTool(CToolObject* tool) {
  tool_ = tool;
  shot_->setups.setTool(tool);
}

void CShotSession::setWriter(IClipWriter* writer) {
  writer_ = writer;
  shot_->setups.setWriter(writer);
}

void CShotSession::setMarks(int in, int out) {
  markIn_ = in;
  markOut_ = out;
  tellMarksChanged();
}

void CShotSession::setMarkIn(int frame) {
  markIn_ = frame;
  tellMarksChanged();
}

void CShotSession::setMarkOut(int frame) {
  markOut_ = frame;
  tellMarksChanged();
}

void CShotSession::tellMarksChanged() {
  // A tool that answers by putting a mark back is not told of its own change.
  if (tellingMarks_) return;
  tellingMarks_ = true;
  if (tool_) tool_->onMarksChange();
  tellingMarks_ = false;
  if (display_) display_->onMarks();
}

void CShotSession::goToFrame(int frame) {
  displayedFrame_ = std::clamp(frame, info().firstFrame, info().endFrame - 1);
  if (display_) display_->onDisplayedFrame();
}

bool CShotSession::copyDisplayedFrame(std::uint16_t* samples) {
  if (display_ && display_->copyShownFrame(displayedFrame_, samples)) return true;
  try {
    shot_->store.readNow(displayedFrame_, samples);
    return true;
  } catch (const CClipError& error) {
    theError.set(-1, error.what());
    return false;
  }
}

bool CShotSession::readDisplayedPixel(int x, int y, int& maximum, float (&components)[3]) {
  const CImageFormat& format = info().format;
  const int width = format.getPixelsPerLine();
  if (x < 0 || y < 0 || x >= width || y >= format.getLinesPerFrame()) return false;
  if (displayedPixels_.frame != displayedFrame_) {
    displayedPixels_.frame = -1;
    displayedPixels_.samples.resize(format.getBytesPerField() / sizeof(std::uint16_t));
    if (!copyDisplayedFrame(displayedPixels_.samples.data())) return false;
    displayedPixels_.frame = displayedFrame_;
  }
  constexpr int COMPONENTS = 3;
  const std::size_t pixel = static_cast<std::size_t>(y) * width + x;
  maximum = 65535;
  for (int c = 0; c < COMPONENTS; ++c)
    components[c] = static_cast<float>(displayedPixels_.samples[pixel * COMPONENTS + c]) / 65535.0F;
  return true;
}

std::string CShotSession::getFolderText() {
  return shot_->folderText;
}

int CShotSession::MakeSimpleToolSetup(const std::string&, int kind, const CToolIOConfig& config) {
  return shot_->setups.make(kind, config);
}

CBufferPool* CShotSession::getFrameAllocator(std::size_t bytesPerField, int, int, int) {
  std::lock_guard<std::mutex> lock(poolMutex_);
  std::unique_ptr<CBufferPool>& pool = pools_[bytesPerField];
  // No limit of its own: what is in flight is bounded by the read-ahead and the write queue.
  if (!pool) pool = std::make_unique<CBufferPool>(bytesPerField, 0);
  return pool.get();
}

void CShotSession::pump() {
  if (trackingRun_) pumpTracking();
  followPass();
  shot_->setups.pump();
  if (tool_) tool_->onHeartbeat();
}

// Before the statuses: a pass that pauses does so at the frame that it showed last.
void CShotSession::followPass() {
  const int frame = resultFrame_.exchange(NO_FRAME);
  if (frame != NO_FRAME && display_) goToFrame(frame);
}

SRect CShotSession::processedRegion() const {
  const CTrackingArray& array = *editor_->trackingArray();
  // A box that is kept with a clip may be of another one, which stood there before.
  const bool uses = array.UseMatting() && info().format.isBoxInPicture(array.MattingBox());
  return uses ? array.MattingBox() : info().format.getActivePictureRect();
}

STrackSettings CShotSession::trackSettings() const {
  STrackSettings track;
  editor_->trackingArray()->GetBoxExtents(track.trackBoxExtentX, track.trackBoxExtentY,
                                          track.searchLeft, track.searchRight, track.searchUp,
                                          track.searchDown);
  track.region = trackingRegion_ ? *trackingRegion_ : processedRegion();
  track.threads = settings_.threads;
  return track;
}

void CShotSession::StartTrackingRun() {
  trackingRun_.reset();
  tracking_ = {};
  if (!tool_) return;
  if (!hasTrackingData()) return failTracking("the tool is not active");
  if (!tool_->onTrackingStart())
    return failTracking("the tool has no points to track between the marks");
  // The points lie on the first frame of the set, which may have been tracked from another mark IN.
  CTrackingArray& array = *editor_->trackingArray();
  if (array.FirstFrame() != markIn_) array.MoveToFrame(markIn_);
  if (areKnown(array.FindPoints(markIn_))) {
    array.frames = knownPaths_.frames;
    adoptTrackedPoints();
    tool_->onTrackingEnd(0);
    return;
  }
  std::map<int, SPoint2> points;
  for (const auto& [index, point] : array.FindPoints(markIn_).Entries())
    if (point.IsValid()) points[index] = {point.x, point.y};
  tracking_.ran = true;
  trackingTimer_.Start();
  if (monitor_) {
    monitor_->SetStatusMessage("Tracking");
    monitor_->SetFrameCount(markOut_ - markIn_, 1);
    monitor_->StartProgress();
  }
  trackingRun_ =
      std::make_unique<CTrackingRun>(shot_->store, trackSettings(), points, markIn_, markOut_);
}

// Whoever stops it may change the points next: what it has found until now is put in its place, and
// nothing that it finds on its way out.
void CShotSession::StopTrackingRun() {
  if (!trackingRun_) return;
  if (hasTrackingData()) takeTrackingResults();
  trackingRun_->cancel();
}

bool CShotSession::hasTrackingData() const {
  return editor_ && editor_->trackingArray();
}

bool CShotSession::areKnown(const CTrackingPoints& points) const {
  return knownPaths_.FrameCount() > 0 && knownPaths_.FirstFrame() == markIn_ &&
         knownPaths_.EndFrame() == markOut_ && knownPaths_.FindPoints(markIn_) == points;
}

void CShotSession::adoptTrackedPoints() {
  CTrackingArray& array = *editor_->trackingArray();
  const int count = array.Compact();
  tracking_ = {};
  for (const auto& [frame, points] : array.frames) tracking_.frames.push_back({frame, count, 0});
  for (int index = 0; index < count; ++index) {
    tracking_.points[index].framesFound = array.FrameCount();
    tracking_.indexInSet[index] = index;
  }
  editor_->setTracked();
  selectTypicalPoint();
}

/// A tool that waits for a pass hears of its end, whatever kept it from running.
void CShotSession::failTracking(const std::string& why) {
  trackingRun_.reset();
  tracking_.failure = why;
  if (monitor_) monitor_->StopProgress(false);
  if (tool_) tool_->onTrackingEnd(1);
}

void CShotSession::pumpTracking() {
  if (!tool_ || !hasTrackingData()) return failTracking("the tool was deactivated while tracking");
  const bool finished = trackingRun_->isFinished();  // before taking: nothing comes after it
  if (!trackingRun_->wasCancelled()) takeTrackingResults();
  if (finished) finishTracking();
}

void CShotSession::takeTrackingResults() {
  CTrackingArray& array = *editor_->trackingArray();
  for (const CTrackingRun::SFrameResult& result : trackingRun_->takeResults()) {
    STrackingOutcome::SFrame frame{result.frame, 0, 0};
    CTrackingPoints& points = array.PointsAt(result.frame);
    for (const auto& [index, point] : result.points) {
      points.Point(index) = point.state == EPointState::lost
                                ? CTrackPoint()
                                : CTrackPoint(point.position.x, point.position.y);
      if (point.state == EPointState::found) ++frame.found;
      if (point.state == EPointState::bridged) ++frame.bridged;
    }
    tracking_.frames.push_back(frame);
    if (monitor_) monitor_->BumpProgress(1);
  }
}

void CShotSession::finishTracking() {
  const std::unique_ptr<CTrackingRun> run = std::move(trackingRun_);
  tracking_.failure = run->failure();
  tracking_.points = run->summary();
  tracking_.withoutTexture = run->withoutTexture();
  tracking_.seconds = trackingTimer_.Read() * 0.001;
  if (run->wasCancelled() && tracking_.failure.empty()) tracking_.failure = "tracking was stopped";
  if (tracking_.failure.empty() && !keepUsablePoints()) {
    tracking_.failure = "no tracking point could be followed through frames " +
                        std::to_string(markIn_) + " to " + std::to_string(markOut_ - 1) +
                        LostPoints(tracking_, markIn_);
  }
  const bool tracked = tracking_.failure.empty();
  if (monitor_) monitor_->StopProgress(tracked);
  if (tracked) {
    editor_->setTracked();
    selectTypicalPoint();
  }
  tool_->onTrackingEnd(tracked ? 0 : 1);
}

std::string LostPoints(const STrackingOutcome& outcome, int in) {
  std::string text;
  for (const int index : outcome.withoutTexture)
    text += "; point " + std::to_string(index) + " lies on nothing that can be tracked";
  for (const auto& [index, point] : outcome.points)
    if (!point.usable && point.firstLossFrameOffset >= 0)
      text += "; point " + std::to_string(index) + " was lost at frame " +
              std::to_string(in + point.firstLossFrameOffset) + " (" +
              ToText(point.firstLossReason) + ")";
  return text;
}

/// The zoom fill takes its extent from the path of the selected point. In a batch run nobody
/// selects one; a point on a moving subject would be the wrong one.
void CShotSession::selectTypicalPoint() {
  if (!settings_.batch) return;
  const SPoint2 centre = CentreOf(info().format);
  const CTrackingArray& array = *editor_->trackingArray();
  editor_->selectedPoint = MostTypicalPoint(array, FitMotion(array, centre), centre);
}

/// The set must hold every point in every frame, numbered without gaps: points that could not be
/// followed leave it as a whole. False when none is left.
bool CShotSession::keepUsablePoints() {
  CTrackingArray& array = *editor_->trackingArray();
  std::vector<int> dropped = tracking_.withoutTexture;
  for (const auto& [index, point] : tracking_.points)
    if (!point.usable) dropped.push_back(index);
  for (int index : dropped) array.DeletePoint(index);
  int next = 0;
  for (const auto& [index, point] : tracking_.points)
    if (point.usable) tracking_.indexInSet[index] = next++;
  return array.Compact() > 0;
}
