#pragma once

#include <memory>
#include <string>

#include "clip/ClipReader.h"

/// Opens a video file of any kind that the decoder library reads.
std::unique_ptr<IClipReader> OpenVideo(const std::string& path, int threads);
