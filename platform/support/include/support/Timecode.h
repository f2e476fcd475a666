#pragma once

#include <string>

/// Timecode of a frame count at a rate (SMPTE ST 12-1). Drop-frame counting skips two frame numbers
/// (four at 60) at every minute that is not a multiple of ten. The frame count runs on over any
/// number of days and below 0; its text is the time of day, so it wraps at 24 hours both ways. A
/// plain value.
class CTimecode {
 public:
  CTimecode() = default;
  /// `framesPerSecond`: nominal integer rate (24, 25, 30, 48, 50, 60; below 1 counts as 1).
  /// Drop-frame only at 30 and 60, ignored at any other rate.
  CTimecode(int frameCount, int framesPerSecond, bool dropFrame);

  /// "HH:MM:SS:FF", with ";" before the frames when dropping.
  std::string toText() const;
  /// Takes a time of day at this rate, fields parted by ":", ";" or ".". False, and the timecode as
  /// it was, for anything else, labels that drop-frame counting skips among it.
  bool fromText(const std::string& text);
  int frameCount() const { return frameCount_; }
  int framesPerSecond() const { return framesPerSecond_; }
  bool isDropFrame() const { return dropFrame_; }

  friend bool operator==(const CTimecode&, const CTimecode&) = default;

 private:
  int frameCount_ = 0;
  int framesPerSecond_ = 24;
  bool dropFrame_ = false;
};

using PTimecode = CTimecode;
