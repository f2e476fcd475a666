#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <functional>

#include "Desk.h"
#include "session/Playback.h"

/// Plays the marked range at the clip's rate, on the screen's time. What is not decoded in time is
/// dropped and counted. THREAD: the user-interface thread.
class CPlayer {
 public:
  explicit CPlayer(CDesk& desk);

  bool isPlaying() const { return speed_ != 0; }
  /// 'J', 'K' or 'L'.
  void key(char key);
  void toggle();
  void stop();
  /// "25.0 fps, 3 dropped"; empty while nothing plays.
  QString text() const;
  std::function<void()> onChange;

 private:
  void play(int speed);
  void tick();

  CDesk& desk_;
  CPlayback playback_;
  QElapsedTimer clock_;
  QTimer timer_;
  int speed_ = 0;
};
