#pragma once

#include <memory>
#include <string>

#include "clip/ClipWriter.h"

/// See IVideoLibrary. The extension decides: ".mkv": FFV1 of 16-bit RGB, lossless. ".mov": ProRes,
/// 4444 for sources of RGB, else 422 HQ. ".mp4": H.264 at a high quality (constant rate factor 16).
std::unique_ptr<IClipWriter> CreateVideo(const std::string& path, IClipReader& source, int first,
                                         int end, const SWriteOptions& options);
