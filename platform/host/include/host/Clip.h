#pragma once

#include <string>

#include "support/Timecode.h"

/// What a tool may ask about the open clip. Owned by the host. THREAD: the user-interface thread.
class IClip {
 public:
  virtual ~IClip() = default;
  /// The clip's file, or the pattern of its sequence.
  virtual std::string path() const = 0;
  virtual int firstFrame() const = 0;
  /// One past the last.
  virtual int endFrame() const = 0;
  virtual CTimecode startTimecode() const = 0;
  virtual CTimecode timecodeOfFrame(int frame) const = 0;
  /// -1 when the timecode lies before the clip.
  virtual int frameOfTimecode(const CTimecode& timecode) const = 0;
};
