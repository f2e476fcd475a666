#pragma once

#include <cstddef>
#include <cstdint>

#include "support/Rect.h"

/// One frame of a clip, opened: as much is decoded as any part of its picture needs, and no more.
/// Whoever looks at small parts (the tracker) is spared the rest, and a frame that waits to be read
/// again takes less memory than its samples would. THREAD: any for every operation, several at
/// once. The reader that opened it must outlive it.
class IClipFrame {
 public:
  virtual ~IClipFrame() = default;
  /// Fills `samples` with the whole frame, as IClipReader::readFrame does. Throws CClipError naming
  /// file and frame.
  virtual void read(std::uint16_t* samples) const = 0;
  /// Fills `samples` with the pixels of `part` alone (inclusive), row after row without gaps: the
  /// same values that `read` puts there. REQUIRES: the part lies in the frame and is not empty.
  /// Throws as `read` does.
  virtual void readPart(const SRect& part, std::uint16_t* samples) const = 0;
  /// False: a part takes as long as the whole frame, so whoever wants several reads that instead.
  virtual bool givesParts() const { return true; }
  /// Fetches what is not in memory from its disk, where parts of it would be slow to read. Throws
  /// as `read` does.
  virtual void fetch() const {}
  /// Memory that the frame holds; 0: nothing but a name, opening it again costs as little.
  virtual std::size_t bytes() const = 0;
};
