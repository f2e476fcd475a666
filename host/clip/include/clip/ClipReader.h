#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "clip/ClipInfo.h"

/// A clip that cannot be read or written as asked. The message names file and frame.
class CClipError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads frames of a clip as 16-bit RGB. Complete frames only; no colour conversion beyond what the
/// source's own encoding needs. An untouched pixel that is read and written back has the same code
/// value in the file.
/// THREAD: one at a time per reader, unless isParallel(). Owns its files.
class IClipReader {
 public:
  virtual ~IClipReader() = default;
  virtual const SClipInfo& info() const = 0;
  /// Fills `samples` (info().format.getBytesPerField() bytes) with frame `frame`.
  /// REQUIRES: firstFrame <= frame < endFrame. Throws CClipError naming file and frame; the reader
  /// stays usable. Sequential reading is fast everywhere; any order is correct everywhere.
  virtual void readFrame(int frame, std::uint16_t* samples) = 0;
  /// True: readFrame may be called from several threads at once.
  virtual bool isParallel() const { return false; }
  /// The file that holds this frame alone and whose header a writer carries over; empty when
  /// frames have no files of their own.
  virtual std::string sourceFile(int /*frame*/) const { return {}; }
};

/// Opens a clip: a video file; a sequence given as "name.%04d.dpx", "name.####.dpx",
/// "name.@@@@.dpx", a folder that holds one sequence, or any one file of it; or "test:..." for a
/// generated shot. `threads`: how many threads decoding may use. Throws CClipError: no such file,
/// an empty folder, a hole in the sequence (names the missing frames), a frame whose size differs
/// (when met), an unreadable file.
std::unique_ptr<IClipReader> OpenClip(const std::string& path, int threads);
