#pragma once

#include <cstdint>
#include <deque>

#include "clip/ClipInfo.h"

/// The arithmetic of playing at a clip's exact rate: which frame should be on the screen at a given
/// moment, and how well that was kept. Has no clock of its own: moments are nanoseconds of any
/// clock that does not go backwards. THREAD: one at a time.
///
/// At speed n every n-th frame is due, at the clip's rate: what lies between is skipped by design.
class CPlayback {
 public:
  struct SSettings {
    int first = 0;  ///< plays [first, end); not empty
    int end = 1;
    bool loop = true;  ///< false: stays on the last frame of its direction
    bool everyFrame =
        false;  ///< the clock waits for frames that are late, instead of dropping them
  };

  /// REQUIRES: a rate above 0.
  CPlayback(const SFrameRate& rate, const SSettings& settings);

  /// `frame` is due now, and others follow: `speed` +-1, +-2, +-4 or +-8; 0 stands still. From
  /// outside the range playing begins at the end of the range where it comes in. Counts anew.
  void start(int frame, int speed, std::int64_t nowNs);
  int speed() const { return speed_; }

  /// The frame that should be on the screen.
  int due(std::int64_t nowNs);
  /// When due() will next give another frame, unless the clock has to wait. REQUIRES: speed() != 0.
  std::int64_t nextDueNs() const;
  /// True: the range was played to its end, and its last frame had its time. Never when looped.
  bool ended(std::int64_t nowNs) const;

  /// `frame` is on the screen since now. Frames other than the one that due() gave last are
  /// repetitions, of a caller whose due frame was not ready, and count for nothing. With
  /// `everyFrame` the clock waits for this call; a frame that will never come (it cannot be read)
  /// must be told as shown too.
  void shown(int frame, std::int64_t nowNs);
  /// Frames that were due since start() and passed over.
  std::int64_t dropped() const { return dropped_; }
  /// New pictures per second, over the last second; 0 before there are two.
  double measuredRate(std::int64_t nowNs) const;

 private:
  std::int64_t ticksAt(std::int64_t nowNs) const;
  std::int64_t timeOfTick(std::int64_t tick) const;
  std::int64_t lastTick() const;
  int frameOfTick(std::int64_t tick) const;

  const SFrameRate rate_;
  const SSettings settings_;
  int startFrame_ = 0;
  int speed_ = 0;
  std::int64_t originNs_ = 0;  // of tick 0; a tick is the time of one frame at the clip's rate
  std::int64_t dueTick_ = 0;
  std::int64_t shownTick_ = -1;
  std::int64_t dropped_ = 0;
  std::deque<std::int64_t> shownNs_;  // of the last second, and one before
};

/// The speed after pressing J, K or L, the keys of a tape deck: L and J play forwards and
/// backwards, each further press twice as fast up to 8; the opposite key begins again at 1; K
/// stops. Other keys change nothing.
int NextSpeed(int current, char key);
