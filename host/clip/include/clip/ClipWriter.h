#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "clip/ClipReader.h"

/// An output that is there already, and would be replaced if one said so.
class CClipExists : public CClipError {
 public:
  using CClipError::CClipError;
};

/// Writes frames of a clip. THREAD: one at a time per writer.
class IClipWriter {
 public:
  virtual ~IClipWriter() = default;
  /// Writes one frame whole: under a temporary name, then renamed. `samples` as a reader gives
  /// them; only read during the call. Frames may come in any order for sequences, in rising order
  /// for video. Throws CClipError naming file and frame; whole frames stay.
  virtual void writeFrame(int frame, const std::uint16_t* samples) = 0;
  /// Completes the clip. A video exists under its own name only after this. Throws CClipError.
  virtual void finish() = 0;
  /// True: several frames may be written at once from different threads.
  virtual bool isParallel() const { return false; }
};

struct SWriteOptions {
  bool overwrite = false;
  int threads = 1;  ///< for a video encoder
};

/// Throws CClipError when the output is the input (also through links and relative paths), when the
/// path names no output that this source can be written to, when the folder to write in is missing
/// (the folder of a sequence is made if the one above it is there), or, without `overwrite`, as
/// CClipExists, when the output exists (names the first file). Does no other work and leaves
/// nothing behind. [first, end): the frames that would be written.
void CheckOutput(const std::string& path, const SClipInfo& source, int first, int end,
                 bool overwrite);

/// Writer for `path`: a sequence pattern as OpenClip takes it (or a folder: the source's own names
/// and type), or a video file; "null:" writes nowhere. Depth, rate, timecode and other metadata
/// follow `source`; a sequence into the same type of file takes each frame's header from the source
/// frame of the same number. Frames of an existing sequence are replaced one by one. Refuses what
/// CheckOutput refuses. `source` must outlive the writer.
std::unique_ptr<IClipWriter> CreateClip(const std::string& path, IClipReader& source, int first,
                                        int end, const SWriteOptions& options);
