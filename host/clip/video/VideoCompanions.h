#pragma once

#include <string>
#include <vector>

#include "VideoLibrary.h"

/// The sound and other streams of a source video on their way, packet by packet as they are, into
/// the video that is written. Streams that the new container cannot hold are named in the trace
/// (level 1). THREAD: one at a time.
class CVideoCompanions {
 public:
  /// Adds the streams to `output`, whose header is not written yet; `outputName`: what the trace
  /// calls it, whose file has a temporary name until it is whole. [begin, end): seconds of the
  /// source that are written, infinite where the whole is wanted; `origin` becomes 0.
  CVideoCompanions(const std::string& source, AVFormatContext& output,
                   const std::string& outputName, double origin, double begin, double end);
  /// Writes every packet that begins before `second` (of the source). Returns a library code.
  int writeUntil(double second);
  /// Writes the rest of the range.
  int writeRest() { return writeUntil(end_); }

 private:
  bool readPacket();
  double secondOf(const AVPacket& packet) const;

  AVFormatContext& output_;
  InputFile input_;
  std::vector<int> targets_;  ///< output stream of each source stream; -1: not carried
  double origin_ = 0.0;
  double begin_ = 0.0;
  double end_ = 0.0;
  Packet packet_;
  bool waits_ = false;  ///< packet_ is read and not yet written
};
