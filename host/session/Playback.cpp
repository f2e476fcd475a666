#include "session/Playback.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace {

constexpr std::int64_t SECOND = 1'000'000'000;
constexpr int TOP_SPEED = 8;

}  // namespace

CPlayback::CPlayback(const SFrameRate& rate, const SSettings& settings)
    : rate_(rate), settings_(settings) {}

void CPlayback::start(int frame, int speed, std::int64_t nowNs) {
  const bool inside = frame >= settings_.first && frame < settings_.end;
  const int entry = speed < 0 ? settings_.end - 1 : settings_.first;
  startFrame_ = inside || speed == 0 ? frame : entry;
  speed_ = speed;
  originNs_ = nowNs;
  dueTick_ = 0;
  shownTick_ = -1;
  dropped_ = 0;
  shownNs_.clear();
}

// Whole seconds and the rest are scaled apart: their product with the rate would not fit.
std::int64_t CPlayback::ticksAt(std::int64_t nowNs) const {
  const std::int64_t elapsed = std::max<std::int64_t>(0, nowNs - originNs_);
  const std::int64_t scaled = elapsed / SECOND * rate_.numerator;
  const std::int64_t rest =
      scaled % rate_.denominator * SECOND + elapsed % SECOND * rate_.numerator;
  return scaled / rate_.denominator + rest / (rate_.denominator * SECOND);
}

// The first nanosecond at which ticksAt() gives `tick`.
std::int64_t CPlayback::timeOfTick(std::int64_t tick) const {
  const std::int64_t scaled = tick * rate_.denominator;
  const std::int64_t rest = scaled % rate_.numerator * SECOND;
  const std::int64_t roundedUp = (rest + rate_.numerator - 1) / rate_.numerator;
  return originNs_ + scaled / rate_.numerator * SECOND + roundedUp;
}

std::int64_t CPlayback::lastTick() const {
  if (speed_ == 0) return 0;
  if (settings_.loop) return std::numeric_limits<std::int64_t>::max();
  const int left = speed_ > 0 ? settings_.end - 1 - startFrame_ : startFrame_ - settings_.first;
  const int step = std::abs(speed_);
  return (left + step - 1) / step;
}

int CPlayback::frameOfTick(std::int64_t tick) const {
  if (speed_ == 0) return startFrame_;
  const std::int64_t length = settings_.end - settings_.first;
  const std::int64_t at = startFrame_ - settings_.first + tick * speed_;
  if (settings_.loop) return settings_.first + static_cast<int>((at % length + length) % length);
  return settings_.first + static_cast<int>(std::clamp<std::int64_t>(at, 0, length - 1));
}

int CPlayback::due(std::int64_t nowNs) {
  dueTick_ = std::min(ticksAt(nowNs), lastTick());
  if (settings_.everyFrame) dueTick_ = std::min(dueTick_, shownTick_ + 1);
  return frameOfTick(dueTick_);
}

std::int64_t CPlayback::nextDueNs() const {
  return timeOfTick(dueTick_ + 1);
}

bool CPlayback::ended(std::int64_t nowNs) const {
  if (speed_ == 0 || settings_.loop) return false;
  const bool allShown = !settings_.everyFrame || shownTick_ == lastTick();
  return allShown && ticksAt(nowNs) > lastTick();
}

void CPlayback::shown(int frame, std::int64_t nowNs) {
  if (dueTick_ == shownTick_ || frame != frameOfTick(dueTick_)) return;
  dropped_ += dueTick_ - shownTick_ - 1;
  shownTick_ = dueTick_;
  if (settings_.everyFrame && ticksAt(nowNs) > dueTick_)
    originNs_ += nowNs - timeOfTick(dueTick_);  // a late frame has its whole time, too
  shownNs_.push_back(nowNs);
  while (shownNs_.size() > 1 && shownNs_[1] <= nowNs - SECOND) shownNs_.pop_front();
}

double CPlayback::measuredRate(std::int64_t nowNs) const {
  if (shownNs_.empty()) return 0.0;
  // The picture on the screen is not late before its own time is over.
  const std::int64_t frameNs = SECOND * rate_.denominator / rate_.numerator;
  const std::int64_t until = std::max(shownNs_.back(), nowNs - frameNs);
  auto from = std::upper_bound(shownNs_.begin(), shownNs_.end(), until - SECOND);
  if (from != shownNs_.begin()) --from;
  const auto intervals = shownNs_.end() - from - 1;
  if (intervals < 1) return 0.0;
  return static_cast<double>(intervals) * SECOND / static_cast<double>(until - *from);
}

int NextSpeed(int current, char key) {
  switch (key) {
    case 'L':
    case 'l': return current <= 0 ? 1 : std::min(current * 2, TOP_SPEED);
    case 'J':
    case 'j': return current >= 0 ? -1 : std::max(current * 2, -TOP_SPEED);
    case 'K':
    case 'k': return 0;
    default: return current;
  }
}
