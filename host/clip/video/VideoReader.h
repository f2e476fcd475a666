#pragma once

#include <memory>
#include <optional>
#include <string>

#include "VideoDecoder.h"
#include "VideoFrame.h"
#include "VideoIndex.h"
#include "VideoPixels.h"
#include "clip/ClipReader.h"

/// The frames of a video file, numbered from 0 in the order of presentation; with a variable frame
/// rate every frame is one frame. Frames come as stored: a rotation or a pixel aspect that the file
/// asks its player for is named in the metadata and carried to a video that is written, not
/// applied. Interlaced pictures come with both fields, as one frame. A frame that the decoder could
/// not complete is refused.
class CVideoReader : public IClipReader {
 public:
  CVideoReader(const std::string& path, int threads);
  const SClipInfo& info() const override { return info_; }
  void readFrame(int frame, std::uint16_t* samples) override;
  std::unique_ptr<IClipFrame> openFrame(int frame, CBufferPool& pool) override;
  std::map<std::string, std::string> metadata() const override { return metadata_; }

  const CVideoIndex& index() const { return *index_; }
  AVRational timeBase() const { return decoder_.stream().time_base; }

 private:
  void fillInfo();
  void fillTiming();
  void fillMetadata();
  /// Makes the decoder's next picture one at or before `frame`.
  void positionFor(int frame);
  const AVFrame& decode(int frame);
  /// As decode, for a picture that is whole and of the clip's size.
  const AVFrame& decodeSound(int frame);

  std::string path_;
  CVideoDecoder decoder_;
  std::optional<CVideoIndex> index_;
  CVideoPixels pixels_;
  CPixelsPool framePixels_;
  SClipInfo info_;
  std::map<std::string, std::string> metadata_;
  Picture current_;        ///< the picture decoded last
  int currentFrame_ = -1;  ///< its frame; -1: the decoder stands at the beginning or at a key frame
  bool isPositioned_ = false;  ///< the decoder goes on right behind currentFrame_
};

/// Opens a video file of any kind that the decoder library reads.
std::unique_ptr<IClipReader> OpenVideo(const std::string& path, int threads);
