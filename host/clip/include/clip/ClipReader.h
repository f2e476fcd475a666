#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

#include "clip/ClipFrame.h"
#include "clip/ClipInfo.h"
#include "support/Memory.h"

/// A clip that cannot be read or written as asked. The message names file and frame.
class CClipError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads frames of a clip as 16-bit RGB. Complete frames only; no colour conversion beyond what the
/// source's own encoding needs. An untouched pixel that is read and written back to the same kind
/// of file has the same code value there. (Not so in YUV video: eight bits with halved chroma do
/// not go through RGB bit by bit.) Codes of 8 to 12 bits are widened by repeating their bits.
/// Half-precision numbers are carried as their bit patterns times two, so that 1.0 is 30720 (the
/// format's white) and blending is linear within an octave of light; negative, infinite and
/// undefined numbers, and floats that are no halves, are refused. Alpha is carried where it is
/// opaque and refused elsewhere; grey is shown as three equal components and goes back as one.
/// THREAD: one at a time per reader, unless isParallel(). Owns its files.
class IClipReader {
 public:
  virtual ~IClipReader() = default;
  virtual const SClipInfo& info() const = 0;
  /// Fills `samples` (info().format.getBytesPerField() bytes) with frame `frame`.
  /// REQUIRES: firstFrame <= frame < endFrame. Throws CClipError naming file and frame; the reader
  /// stays usable. Sequential reading is fast everywhere; any order is correct everywhere.
  virtual void readFrame(int frame, std::uint16_t* samples) = 0;
  /// Opens a frame, whose picture is then read whole or in parts. REQUIRES and throws as readFrame.
  /// `pool`: buffers of a frame's size, for sources that must decode all of it; it must outlive the
  /// frame.
  virtual std::unique_ptr<IClipFrame> openFrame(int frame, CBufferPool& pool);
  /// True: readFrame and openFrame may be called from several threads at once.
  virtual bool isParallel() const { return false; }
  /// The file that holds this frame alone and whose header a writer carries over; empty when
  /// frames have no files of their own.
  virtual std::string sourceFile(int /*frame*/) const { return {}; }
  /// What else the source says of itself, for display: colour tags, film edge code, ...
  virtual std::map<std::string, std::string> metadata() const { return {}; }
};

/// Opens a clip: a video file; a sequence given as "name.%04d.dpx", "name.####.dpx",
/// "name.@@@@.dpx", a folder that holds one sequence, or any one file of it; or "test:..." for a
/// generated shot. `threads`: how many threads decoding may use. Throws CClipError: no such file,
/// an empty folder, a hole in the sequence (names the missing frames), a frame whose size differs
/// (when met), an unreadable file.
std::unique_ptr<IClipReader> OpenClip(const std::string& path, int threads);
