#pragma once

#include <cstdint>
#include <vector>

#include "VideoDecoder.h"

/// One frame of a video. Times in the stream's time base.
struct SVideoFrame {
  std::int64_t time = 0;          ///< of presentation
  std::int64_t decodingTime = 0;  ///< of its packet
  bool isKey = false;             ///< decoding can begin here
};

/// The frames of a video in the order of presentation. Made from the packets where every picture
/// has a packet with its time, else by decoding the video once. THREAD: const after construction.
class CVideoIndex {
 public:
  /// Leaves the decoder at some place of the file.
  explicit CVideoIndex(CVideoDecoder& decoder);

  int count() const { return static_cast<int>(frames_.size()); }
  const SVideoFrame& operator[](int frame) const {
    return frames_[static_cast<std::size_t>(frame)];
  }
  /// The frame shown at this time, or -1.
  int frameAt(std::int64_t time) const;
  /// The last frame not after `frame` where decoding can begin, or -1: only from the start.
  int keyBefore(int frame) const;
  /// True when all frames last equally long, to the precision of the time base.
  bool isConstantRate() const;

 private:
  bool indexPackets(CVideoDecoder& decoder);
  void indexPictures(CVideoDecoder& decoder);

  std::vector<SVideoFrame> frames_;
};
