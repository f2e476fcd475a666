#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "DpxPicture.h"
#include "clip/ClipInfo.h"

/// One image file of a sequence. Alpha: the system carries three components, so a file with alpha
/// is taken only where it is opaque everywhere, and gets opaque alpha back; any other alpha is
/// refused. Grey is shown to the system as three equal components and goes back as one. What cannot
/// be given back as it was is refused: negative, infinite or undefined numbers, floats finer than a
/// half, components that are not RGB (CMYK, 4:2:2), several images in one file. Palettes become
/// RGB; lossy compression inside a file is replaced by a lossless one. Messages of the CClipErrors
/// thrown here begin with the file's name. THREAD: any; one file per call.
struct SImageTraits {
  std::string extension;  ///< "dpx", "tif", "png", "exr"
  int width = 0;
  int height = 0;
  int originX = 0;  ///< of the stored pixels in the picture (EXR data window)
  int originY = 0;
  int channels = 3;  ///< 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA
  int bitDepth = 16;
  bool isFloat = false;        ///< half or float
  bool isSingleFloat = false;  ///< 32 bits
  bool isPlain = false;        ///< stored as it comes: nothing to decompress
  std::optional<SFrameRate> frameRate;
  std::optional<CTimecode> timecode;

  /// True when frames of both can stand in one clip.
  bool isSameKind(const SImageTraits& other) const;
  /// "2048 x 1556, 3 x 10 bit".
  std::string text() const;
  std::size_t storedCount() const;  ///< samples in the file: pixels times channels
  /// "pixel (x, y)" of a stored sample.
  std::string pixelText(std::size_t sample) const;
};

SImageTraits ReadImageTraits(const std::string& path);
/// What else the file says of its picture, for display.
std::map<std::string, std::string> ReadImageMetadata(const std::string& path);
/// Frame rate and timecode of a DPX header.
void AddTiming(const CDpxHeader& header, SImageTraits& traits);

/// The file's picture, opened; null when its layout needs the library. Throws when it is not of the
/// expected kind, or not whole.
std::unique_ptr<CDpxPicture> OpenPlainPicture(const std::string& path,
                                              const SImageTraits& expected);

/// Reads the whole file as 16-bit RGB, width * height * 3 samples. Throws when it is not of the
/// expected kind, is truncated or damaged, or cannot be carried.
void ReadImage(const std::string& path, const SImageTraits& expected, int threads,
               std::uint16_t* samples);

/// How a frame is to be written.
struct SImageTarget {
  SImageTraits traits;       ///< size, channels, depth, type of file
  std::string templateFile;  ///< file whose header is carried over; empty: none
  std::optional<CTimecode> timecode;
  std::optional<SFrameRate> frameRate;
  int frame = 0;
};

/// Writes a whole file under a temporary name beside `path` and renames it. On failure nothing is
/// left behind and an old file stands as it was.
void WriteImage(const std::string& path, const SImageTarget& target, int threads,
                const std::uint16_t* samples);
