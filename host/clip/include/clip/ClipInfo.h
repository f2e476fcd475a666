#pragma once

#include <cstdint>
#include <string>

#include "support/ImageFormat.h"
#include "support/Timecode.h"

/// Exact frame rate, frames per second = numerator / denominator.
struct SFrameRate {
  int numerator = 24;
  int denominator = 1;
  double value() const { return static_cast<double>(numerator) / denominator; }
  friend bool operator==(const SFrameRate&, const SFrameRate&) = default;
};

/// What is known of a clip before its frames are read, and what a writer passes on.
struct SClipInfo {
  std::string path;     ///< as given: a file, or the pattern of a sequence
  std::string kind;     ///< "DPX sequence", "QuickTime, prores", ...
  CImageFormat format;  ///< as the frames come out: 16-bit RGB
  int bitDepth = 16;    ///< of a component in the source: 8, 10, 12, 16
  bool floatSamples = false;
  int firstFrame = 0;  ///< sequences: the number in the first file's name; video: 0
  int endFrame = 0;    ///< one past the last
  SFrameRate frameRate;
  bool frameRateKnown = false;
  CTimecode startTimecode;  ///< of firstFrame
  bool timecodeKnown = false;
  std::string fileExtension;  ///< of a sequence's files, lower case, no dot

  int frameCount() const { return endFrame - firstFrame; }
};
