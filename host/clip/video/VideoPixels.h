#pragma once

#include <cstdint>

#include "VideoLibrary.h"

/// Pictures of the video library from and to 16-bit RGB, full range. RGB pictures are widened and
/// narrowed exactly. YUV goes through the matrix and range that the stream names (without a name:
/// ITU-R BT.709 from 720 lines on, BT.601 below; limited range), with bicubic chroma and full
/// accuracy; a YUV code value is not kept through RGB bit by bit, which is in the nature of the
/// two. THREAD: one per object.
class CVideoPixels {
 public:
  /// `threads`: how many share a picture; the result is the same.
  explicit CVideoPixels(int threads) : threads_(threads) {}
  /// Fills width * height * 3 samples. Throws CClipError when the kind of picture is not known.
  void toSamples(const AVFrame& picture, std::uint16_t* samples);
  /// Fills the picture, whose format, size, colour space and range are set and whose memory is
  /// there.
  void fromSamples(const std::uint16_t* samples, AVFrame& picture);

 private:
  SwsContext* scaler(const AVFrame& picture, bool reading);
  /// Memory for the picture's planes, kept for the next one of its size.
  AVFrame& planesFor(const AVFrame& picture);
  const int threads_;
  Scaler scaler_;
  Picture planes_;
  int key_[6] = {};
};

/// The matrix that a picture of this size is taken to have when it does not say.
AVColorSpace MatrixOf(AVColorSpace said, int height);
