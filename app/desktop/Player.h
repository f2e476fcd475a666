#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QTimer>
#include <functional>
#include <optional>

#include "Desk.h"
#include "session/Playback.h"

/// Plays the marked range at the clip's rate, on the screen's time, round and round. What is not
/// decoded in time is dropped and counted. THREAD: the user-interface thread.
class CPlayer {
 public:
  explicit CPlayer(CDesk& desk);

  bool isPlaying() const { return playback_.has_value(); }
  /// 1 and -1 while it plays; 0: it does not.
  int direction() const { return speed() > 0 ? 1 : speed() < 0 ? -1 : 0; }
  /// 'J', 'K' or 'L'.
  void key(char key);
  void toggle();
  void stop();
  /// "1x  25.0 fps  3 dropped"; empty while nothing plays.
  QString text() const;
  std::function<void()> onChange;

 private:
  int speed() const { return playback_ ? playback_->speed() : 0; }
  CPlayback playbackOf() const;
  void play(int speed);
  void tick();

  CDesk& desk_;
  std::optional<CPlayback> playback_;
  QElapsedTimer clock_;
  QTimer timer_;
};
