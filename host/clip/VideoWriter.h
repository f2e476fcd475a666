#pragma once

#include <memory>
#include <string>

#include "clip/ClipWriter.h"

/// What a video file's extension stands for. ".mkv": FFV1 of 16-bit RGB, lossless. ".mov": ProRes,
/// 4444 for sources of RGB, else 422 HQ. ".mp4": H.264 at a high quality (constant rate factor 16).
/// Throws CClipError, listing the known extensions, when the path has none of them.
void RequireVideoExtension(const std::string& path);

/// Writer of one video file. CheckOutput has been asked before. Frames keep the source's rate, or
/// each its own time where the source has a variable rate; colour tags, pixel aspect, rotation,
/// timecode, texts, and the sound of the written range come from a source video.
std::unique_ptr<IClipWriter> CreateVideo(const std::string& path, IClipReader& source, int first,
                                         int end, const SWriteOptions& options);
