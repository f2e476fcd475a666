#pragma once

#include <memory>
#include <string>

#include "ImageFile.h"
#include "clip/ClipReader.h"
#include "clip/ClipWriter.h"

// What image and video libraries do for clips. With all that they need themselves they take longer
// to load than many frames take to render, the image library ten times as long as the video
// library, so each comes as a module of its own, when it is needed: neither a help text nor a plain
// DPX sequence needs one, and a video needs no image library. THREAD: any; one file per call.

class IImageLibrary {
 public:
  virtual ~IImageLibrary() = default;

  virtual SImageTraits readTraits(const std::string& path) const = 0;
  virtual std::map<std::string, std::string> readMetadata(const std::string& path) const = 0;
  /// The samples as stored, channels times pixels; 8-bit and float samples already as 16-bit codes.
  virtual void readStored(const std::string& path, const SImageTraits& expected, int threads,
                          std::uint16_t* stored) const = 0;
  /// Writes `temporary`, which messages call `path`.
  virtual void writeStored(const std::string& path, const std::string& temporary,
                           const SImageTarget& target, int threads,
                           const std::uint16_t* stored) const = 0;
};

class IVideoLibrary {
 public:
  virtual ~IVideoLibrary() = default;

  virtual std::unique_ptr<IClipReader> openVideo(const std::string& path, int threads) const = 0;
  /// Writer of one video file. CheckOutput has been asked before. Frames keep the source's rate, or
  /// each its own time where the source has a variable rate; colour tags, pixel aspect, rotation,
  /// timecode, texts, and the sound of the written range come from a source video.
  virtual std::unique_ptr<IClipWriter> createVideo(const std::string& path, IClipReader& source,
                                                   int first, int end,
                                                   const SWriteOptions& options) const = 0;
};

/// The modules' entry points.
using ImageLibraryEntry = const IImageLibrary& (*)();
using VideoLibraryEntry = const IVideoLibrary& (*)();
constexpr const char* IMAGE_LIBRARY_ENTRY = "StabilizeImageLibrary";
constexpr const char* VIDEO_LIBRARY_ENTRY = "StabilizeVideoLibrary";

/// Each loads its module with the first call. Throws CClipError when it is not there.
const IImageLibrary& ImageLibrary();
const IVideoLibrary& VideoLibrary();
