#pragma once

#include <cstdint>
#include <string>

#include "PictureMemory.h"
#include "VideoLibrary.h"

/// Decodes one video stream forward from where it stands. THREAD: one at a time.
class CVideoDecoder {
 public:
  /// Throws CClipError: cannot be opened, no video in it, no decoder for it.
  CVideoDecoder(const std::string& path, int threads);

  const AVFormatContext& file() const { return *file_; }
  const AVStream& stream() const { return *file_->streams[stream_]; }
  int streamIndex() const { return stream_; }

  /// The next packet of the stream; false at the end. Decodes nothing.
  bool readPacket(AVPacket& packet);
  /// The next picture in the order of presentation, or null at the end of the stream.
  const AVFrame* nextPicture();
  /// Goes on at the packet with this decoding time, which must begin a group of pictures. False:
  /// the file cannot be positioned there.
  bool seekToPacket(std::int64_t decodingTime);
  /// Back to the beginning of the file, by opening it again.
  void restart();

 private:
  void open();
  void sendPacket(const AVPacket* packet);

  std::string path_;
  int threads_ = 1;
  int stream_ = -1;
  InputFile file_;
  CPictureMemory memory_;  ///< before its user
  Codec codec_;
  Packet packet_;
  Picture picture_;
  bool drained_ = false;
  bool packetWaits_ = false;  ///< packet_ was read while seeking and is the next to decode
};

/// Presentation time of a decoded picture, in the stream's time base.
std::int64_t TimeOf(const AVFrame& picture);
