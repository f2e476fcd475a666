#include "Player.h"

namespace {

// Finer than any screen's refresh.
constexpr int TICK_MILLISECONDS = 4;
// A slower speed than any: what a clip without a rate of its own plays at.
constexpr SFrameRate USUAL_RATE = {24, 1};

}  // namespace

CPlayer::CPlayer(CDesk& desk) : desk_(desk) {
  clock_.start();
  timer_.setTimerType(Qt::PreciseTimer);
  timer_.setInterval(TICK_MILLISECONDS);
  QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { tick(); });
}

void CPlayer::key(char key) {
  play(NextSpeed(speed(), key));
}

void CPlayer::toggle() {
  play(isPlaying() ? 0 : 1);
}

void CPlayer::stop() {
  play(0);
}

// The marked range, unless what is displayed lies outside.
CPlayback CPlayer::playbackOf() const {
  CShotSession& session = desk_.session();
  const SClipInfo& info = desk_.info();
  const int in = session.getMarkIn();
  const int out = session.getMarkOut();
  const int frame = desk_.displayedFrame();
  CPlayback::SSettings settings;
  const bool marked = in >= 0 && in <= frame && frame < out;
  settings.first = marked ? in : info.firstFrame;
  settings.end = marked ? out : info.endFrame;
  return CPlayback(info.frameRate.numerator > 0 ? info.frameRate : USUAL_RATE, settings);
}

void CPlayer::play(int speed) {
  if (!desk_.isOpen() || desk_.isDisplayTaken()) speed = 0;
  if (speed == this->speed()) return;
  if (speed == 0) {
    playback_.reset();
    timer_.stop();
  } else {
    playback_.emplace(playbackOf());
    playback_->start(desk_.displayedFrame(), speed, clock_.nsecsElapsed());
    timer_.start();
  }
  desk_.setDirection(direction());
  if (onChange) onChange();
}

void CPlayer::tick() {
  if (desk_.isDisplayTaken()) return stop();
  const int frame = playback_->due(clock_.nsecsElapsed());
  if (frame == desk_.displayedFrame()) return;
  // What cannot be read is not waited for: its place in time is shown with what is wrong.
  const bool there = desk_.frameBefore(frame) || !desk_.frameFailure(frame).empty();
  if (!there) return desk_.lookAhead(frame);
  desk_.goToFrame(frame);
  playback_->shown(frame, clock_.nsecsElapsed());
  if (onChange) onChange();
}

QString CPlayer::text() const {
  if (!playback_) return {};
  return QString("%1x  %2 fps  %3 dropped")
      .arg(speed())
      .arg(playback_->measuredRate(clock_.nsecsElapsed()), 0, 'f', 1)
      .arg(playback_->dropped());
}
