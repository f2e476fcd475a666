#include "tracker/ShotTracker.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "PointFollower.h"
#include "WorkerPool.h"

namespace {

/// So many found points carry one that is not; fewer do when they are all the others.
constexpr int kEnoughToBridge = 3;
/// A point may be bridged in this share of the frames ...
constexpr double kMostBridged = 0.25;
/// ... and in this many frames at the end of the shot.
constexpr int kMostBridgedAtEnd = 3;
/// Movement against the other points that is out of the ordinary: pixels, and deviations of it.
constexpr double kJump = 0.5;
constexpr double kJumpDeviations = 4.0;
constexpr double kDriftShare = 0.1;

int Round(double value) {
  return static_cast<int>(std::floor(value + 0.5));
}

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  if (values.size() % 2 == 1) return *middle;
  return 0.5 * (*middle + *std::max_element(values.begin(), middle));
}

/// A point's movement against the others, as it usually is.
struct SDrift {
  SPoint2 mean;
  SPoint2 square{0.04, 0.04};

  bool isJump(const SPoint2& move) const {
    return std::abs(move.x - mean.x) > kJump + kJumpDeviations * std::sqrt(square.x) ||
           std::abs(move.y - mean.y) > kJump + kJumpDeviations * std::sqrt(square.y);
  }
  void add(const SPoint2& move) {
    const SPoint2 off = {move.x - mean.x, move.y - mean.y};
    square.x += kDriftShare * (off.x * off.x - square.x);
    square.y += kDriftShare * (off.y * off.y - square.y);
    mean.x += kDriftShare * off.x;
    mean.y += kDriftShare * off.y;
  }
};

struct SPoint {
  SPoint(const STrackSettings& settings, const SPoint2& position) : follower(settings, position) {}

  bool isSearched() const { return !left && state != EPointState::lost; }

  CPointFollower follower;
  EPointState state = EPointState::found;
  bool left = false;    ///< has left the picture; carried along, no longer searched
  bool passed = false;  ///< this frame: its match holds so far
  bool learn = false;   ///< this frame: the patch may adapt
  SDrift drift;
  SPoint2 lastMove;
  int bridgedAtEnd = 0;
  double sigmaSum = 0.0;
  SPointSummary summary;
};

}  // namespace

std::string ToText(ELossReason reason) {
  switch (reason) {
    case ELossReason::none: return "not lost";
    case ELossReason::leftPicture: return "left the picture";
    case ELossReason::noMatch: return "no match in the search area";
    case ELossReason::ambiguous: return "several places match alike";
  }
  return "unknown";
}

struct CShotTracker::SImpl {
  SImpl(const CImageFormat& f, const STrackSettings& s, const std::map<int, SPoint2>& p)
      : format(f), settings(s), pool(s.threads) {
    for (const auto& [index, position] : p) {
      indices.push_back(index);
      points.push_back(std::make_unique<SPoint>(settings, position));
    }
  }

  int count() const { return static_cast<int>(points.size()); }
  void forEach(const std::function<void(SPoint&)>& part) {
    pool.run(count(), [&](int i) { part(*points[static_cast<std::size_t>(i)]); });
  }

  void findConsensus();
  void settleAmbiguous();
  void weighDoubts();
  void decideLearning();
  bool canBridge() const;
  void place(SPoint& point, STrackedPoint& result);
  void miss(SPoint& point, STrackedPoint& result);

  const CImageFormat format;
  const STrackSettings settings;
  CWorkerPool pool;
  std::vector<int> indices;
  std::vector<std::unique_ptr<SPoint>> points;
  int frames = 0;

  // Of the frame at hand.
  SPoint2 consensus;  ///< median movement of the points found in this frame and in the last
  int movers = 0;     ///< how many those are
  int searched = 0;
  int passed = 0;
};

/// Counts only points that were also found in the last frame: a bridged position is no measurement.
void CShotTracker::SImpl::findConsensus() {
  std::vector<double> x;
  std::vector<double> y;
  searched = 0;
  passed = 0;
  for (const auto& point : points) {
    if (point->isSearched()) ++searched;
    if (!point->passed) continue;
    ++passed;
    if (point->state != EPointState::found) continue;
    const SPoint2 move = point->follower.move();
    x.push_back(move.x);
    y.push_back(move.y);
  }
  movers = static_cast<int>(x.size());
  if (movers > 0) consensus = {Median(std::move(x)), Median(std::move(y))};
}

void CShotTracker::SImpl::settleAmbiguous() {
  for (const auto& point : points) {
    if (!point->isSearched() || point->follower.attempt().reason != ELossReason::ambiguous)
      continue;
    const bool enough = movers >= kEnoughToBridge || (movers > 0 && movers >= searched - 1);
    if (!enough) continue;
    const SPoint2 from = point->follower.position();
    const SPoint2 predicted = {from.x + consensus.x + point->drift.mean.x,
                               from.y + consensus.y + point->drift.mean.y};
    point->passed = point->follower.settle(predicted).reason == ELossReason::none;
  }
}

/// A doubtful match of one point among many is a cover; of most at once, all moving alike, it is
/// the picture that has changed (blur, a flash), and the matches stand.
void CShotTracker::SImpl::weighDoubts() {
  const auto agrees = [&](const SPoint& point) {
    const SPoint2 move = point.follower.move();
    return !point.drift.isJump({move.x - consensus.x, move.y - consensus.y});
  };
  int alike = 0;
  for (const auto& point : points) {
    if (point->passed && point->state == EPointState::found &&
        point->follower.attempt().doubt == EDoubt::strong && agrees(*point)) {
      ++alike;
    }
  }
  const bool common = movers >= kEnoughToBridge && 2 * alike > passed;
  for (const auto& point : points) {
    if (!point->passed) continue;
    const EDoubt doubt = point->follower.attempt().doubt;
    const bool wasSeen = point->state == EPointState::found;
    if (doubt == EDoubt::strong) point->passed = common && wasSeen && agrees(*point);
    if (doubt == EDoubt::mild && movers > kEnoughToBridge) point->passed = agrees(*point);
  }
}

void CShotTracker::SImpl::decideLearning() {
  int doubtful = 0;
  for (const auto& point : points) {
    if (point->passed && point->follower.attempt().doubt != EDoubt::none) ++doubtful;
  }
  const bool common = movers >= kEnoughToBridge && 2 * doubtful > passed;
  constexpr double kSure = 0.8;
  for (const auto& point : points) {
    const SAttempt& attempt = point->follower.attempt();
    point->learn = attempt.doubt == EDoubt::none || (common && attempt.fit.correlation >= kSure);
  }
}

bool CShotTracker::SImpl::canBridge() const {
  return movers >= kEnoughToBridge || (movers > 0 && movers >= searched - 1);
}

void CShotTracker::SImpl::place(SPoint& point, STrackedPoint& result) {
  const SAttempt& attempt = point.follower.attempt();
  point.lastMove = point.follower.move();
  if (movers >= kEnoughToBridge && point.state == EPointState::found) {
    point.drift.add({point.lastMove.x - consensus.x, point.lastMove.y - consensus.y});
  }
  point.state = EPointState::found;
  point.bridgedAtEnd = 0;
  ++point.summary.framesFound;
  point.sigmaSum += attempt.fit.sigma;
  result.state = EPointState::found;
  result.correlation = attempt.fit.correlation;
  result.sigma = attempt.fit.sigma;
}

void CShotTracker::SImpl::miss(SPoint& point, STrackedPoint& result) {
  const SPoint2 from = point.follower.position();
  const bool bridge = canBridge() && point.state != EPointState::lost;
  const SPoint2 move = bridge ? consensus : SPoint2{};
  const SPoint2 expected = bridge ? consensus : point.lastMove;
  if (point.isSearched()) {
    result.reason = point.follower.attempt().reason;
    if (result.reason == ELossReason::none) result.reason = ELossReason::noMatch;
    result.correlation = point.follower.attempt().fit.correlation;
    if (!point.follower.isInside({from.x + expected.x, from.y + expected.y}, 1)) {
      result.reason = ELossReason::leftPicture;
    }
    if (point.summary.firstLossFrameOffset < 0) {
      point.summary.firstLossFrameOffset = frames;
      point.summary.firstLossReason = result.reason;
    }
    point.left = result.reason == ELossReason::leftPicture;
  } else {
    result.reason = point.left ? ELossReason::leftPicture : point.summary.firstLossReason;
  }
  point.follower.moveTo({from.x + move.x, from.y + move.y});
  point.state = bridge ? EPointState::bridged : EPointState::lost;
  result.state = point.state;
  if (bridge) {
    ++point.bridgedAtEnd;
    ++point.summary.framesBridged;
  }
}

CShotTracker::CShotTracker(const CImageFormat& format, const STrackSettings& settings,
                           const std::map<int, SPoint2>& points)
    : impl_(std::make_unique<SImpl>(format, settings, points)) {}

CShotTracker::~CShotTracker() = default;

bool CShotTracker::canTrack(const SPoint2& position, const STrackSettings& settings) {
  constexpr int kLeastExtent = 2;
  if (settings.trackBoxExtentX < kLeastExtent || settings.trackBoxExtentY < kLeastExtent) {
    return false;
  }
  const int x = Round(position.x);
  const int y = Round(position.y);
  return x - settings.trackBoxExtentX >= settings.region.left &&
         x + settings.trackBoxExtentX <= settings.region.right &&
         y - settings.trackBoxExtentY >= settings.region.top &&
         y + settings.trackBoxExtentY <= settings.region.bottom;
}

std::vector<int> CShotTracker::begin(const IPicture& picture) {
  SImpl& impl = *impl_;
  const double noise = EstimateNoise(picture, impl.settings.region);
  std::vector<char> textured(impl.points.size());
  impl.pool.run(impl.count(), [&](int i) {
    const auto at = static_cast<std::size_t>(i);
    textured[at] = impl.points[at]->follower.begin(picture, noise) ? 1 : 0;
  });
  std::vector<int> dropped;
  std::vector<int> indices;
  std::vector<std::unique_ptr<SPoint>> points;
  for (std::size_t i = 0; i < impl.points.size(); ++i) {
    if (textured[i] == 0) {
      dropped.push_back(impl.indices[i]);
      continue;
    }
    indices.push_back(impl.indices[i]);
    points.push_back(std::move(impl.points[i]));
    ++points.back()->summary.framesFound;
  }
  impl.indices = std::move(indices);
  impl.points = std::move(points);
  impl.frames = 1;
  return dropped;
}

std::map<int, STrackedPoint> CShotTracker::follow(const IPicture& picture) {
  SImpl& impl = *impl_;
  impl.forEach([&picture](SPoint& point) {
    point.passed = point.isSearched() && point.follower.search(picture).reason == ELossReason::none;
  });
  impl.findConsensus();
  impl.settleAmbiguous();
  impl.findConsensus();
  impl.weighDoubts();
  impl.findConsensus();
  impl.decideLearning();

  std::vector<STrackedPoint> results(impl.points.size());
  for (std::size_t i = 0; i < results.size(); ++i) {
    SPoint& point = *impl.points[i];
    if (point.passed) {
      impl.place(point, results[i]);
    } else {
      impl.miss(point, results[i]);
    }
  }
  impl.forEach([](SPoint& point) {
    if (point.passed) point.follower.accept(point.learn);
  });
  std::map<int, STrackedPoint> named;
  for (std::size_t i = 0; i < results.size(); ++i) {
    results[i].position = impl.points[i]->follower.position();
    named.emplace(impl.indices[i], results[i]);
  }
  ++impl.frames;
  return named;
}

std::vector<int> CShotTracker::begin(const std::uint16_t* samples) {
  return begin(CWholePicture(samples, impl_->format));
}

std::map<int, STrackedPoint> CShotTracker::follow(const std::uint16_t* samples) {
  return follow(CWholePicture(samples, impl_->format));
}

std::map<int, SPointSummary> CShotTracker::summary() const {
  std::map<int, SPointSummary> named;
  for (std::size_t i = 0; i < impl_->points.size(); ++i) {
    const SPoint& point = *impl_->points[i];
    SPointSummary summary = point.summary;
    const int measured = summary.framesFound - 1;
    summary.meanSigma = measured > 0 ? point.sigmaSum / measured : 0.0;
    summary.usable = point.state != EPointState::lost && !point.left &&
                     point.bridgedAtEnd <= kMostBridgedAtEnd &&
                     summary.framesBridged <= kMostBridged * impl_->frames;
    named.emplace(impl_->indices[i], summary);
  }
  return named;
}
