#include "Player.h"

namespace {

// Finer than any screen's refresh.
constexpr int TICK_MILLISECONDS = 4;

}  // namespace

CPlayer::CPlayer(CDesk& desk) : desk_(desk) {
  timer_.setTimerType(Qt::PreciseTimer);
  timer_.setInterval(TICK_MILLISECONDS);
  QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { tick(); });
}
