#pragma once

#include <memory>
#include <string>

#include "clip/ClipWriter.h"

/// Throws CClipError, listing the known extensions, when the path has none of them.
void RequireVideoExtension(const std::string& path);
/// Writer of one video file. CheckOutput has been asked before.
std::unique_ptr<IClipWriter> CreateVideo(const std::string& path, IClipReader& source, int first,
                                         int end, const SWriteOptions& options);
