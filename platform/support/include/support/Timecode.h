#pragma once

#include <string>

/// Timecode of a frame count at a rate (SMPTE ST 12-1). Drop-frame counting skips two frame numbers
/// (four at 60) at every minute that is not a multiple of ten. A plain value.
class CTimecode {
 public:
  CTimecode() = default;
  /// `framesPerSecond`: nominal integer rate (24, 25, 30, 48, 50, 60). Drop-frame only at 30
  /// and 60.
  CTimecode(int frameCount, int framesPerSecond, bool dropFrame);

  /// "HH:MM:SS:FF", with ";" before the frames when dropping.
  std::string toText() const;
  /// False leaves the timecode as it is.
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
