#include "session/TrackingRun.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

#include "ClipPicture.h"

CTrackingRun::CTrackingRun(CFrameStore& store, const STrackSettings& settings,
                           const std::map<int, SPoint2>& points, int in, int out)
    : store_(store), settings_(settings), points_(points), in_(in), out_(out) {
  thread_ = std::thread([this] { body(); });
}

CTrackingRun::~CTrackingRun() {
  cancel();
  thread_.join();
}

namespace {

/// "15 no match in the search area, 1 left the picture".
std::string reasonsOf(const std::map<int, STrackedPoint>& points) {
  std::map<ELossReason, int> counts;
  for (const auto& [index, point] : points) ++counts[point.reason];
  std::string text;
  for (const auto& [reason, count] : counts)
    text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + ToText(reason);
  return text;
}

}  // namespace

void CTrackingRun::cancel() {
  cancelled_ = true;
  store_.wake();
}

std::vector<CTrackingRun::SFrameResult> CTrackingRun::takeResults() {
  std::lock_guard<std::mutex> lock(mutex_);
  return std::exchange(results_, {});
}

void CTrackingRun::add(SFrameResult result) {
  std::lock_guard<std::mutex> lock(mutex_);
  results_.push_back(std::move(result));
}

void CTrackingRun::body() {
  try {
    trackShot();
  } catch (const std::exception& error) {
    failure_ = error.what();
  }
  store_.stop();
  finished_ = true;
}

void CTrackingRun::trackShot() {
  CShotTracker tracker(store_.info().format, settings_, points_);
  store_.start(in_, out_, form());
  trackFirstFrame(tracker);
  for (int frame = in_ + 1; frame < out_ && !cancelled_; ++frame)
    if (!trackFrame(tracker, frame)) break;
  summary_ = tracker.summary();
}

/// Small parts are read one by one, at several times the cost of a pixel of the whole picture; many
/// large ones, which lie over each other, take longer than the picture.
EFrameForm CTrackingRun::form() const {
  constexpr double COST = 4.0;
  constexpr int AROUND = 40;  // pixels that a part is larger by, both sides together
  const int width = 2 * settings_.trackBoxExtentX + settings_.searchLeft + settings_.searchRight;
  const int height = 2 * settings_.trackBoxExtentY + settings_.searchUp + settings_.searchDown;
  const double part = static_cast<double>(width + AROUND) * (height + AROUND);
  const CImageFormat& format = store_.info().format;
  const double picture = static_cast<double>(format.getPixelsPerLine()) * format.getLinesPerFrame();
  const bool few = COST * part * static_cast<double>(points_.size()) < picture;
  return few ? EFrameForm::opened : EFrameForm::both;
}

void CTrackingRun::trackFirstFrame(CShotTracker& tracker) {
  SOpenedFrame frame = store_.waitForOpened(in_, cancelled_);
  if (!frame) return;
  // Its noise is measured all over.
  if (!frame.samples) frame.samples = store_.decode(in_, *frame.clipFrame);
  withoutTexture_ = tracker.begin(frame.samples->samples());
  SFrameResult result{in_, {}};
  for (const auto& [index, position] : points_)
    if (std::find(withoutTexture_.begin(), withoutTexture_.end(), index) == withoutTexture_.end())
      result.points[index] =
          STrackedPoint{position, EPointState::found, ELossReason::none, 1.0, 0.0};
  if (result.points.empty())
    throw std::runtime_error("frame " + std::to_string(in_) +
                             ": none of the points lies on texture that can be tracked");
  store_.keep(in_, std::move(frame.clipFrame));
  add(std::move(result));
}

bool CTrackingRun::trackFrame(CShotTracker& tracker, int frame) {
  SOpenedFrame opened = store_.waitForOpened(frame, cancelled_);
  if (!opened) return false;
  SFrameResult result{frame, opened.samples ? tracker.follow(opened.samples->samples())
                                            : tracker.follow(CClipPicture(*opened.clipFrame))};
  store_.keep(frame, std::move(opened.clipFrame));
  const bool allLost =
      std::all_of(result.points.begin(), result.points.end(),
                  [](const auto& point) { return point.second.state == EPointState::lost; });
  if (allLost) {
    const std::string number = std::to_string(frame);
    failure_ = "frame " + number + ": every tracking point was lost (" + reasonsOf(result.points) +
               "); where the shot ends there, mark OUT is " + number +
               ", else more points or a larger search area may hold";
    return false;
  }
  add(std::move(result));
  return true;
}
