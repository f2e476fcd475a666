#pragma once

#include <memory>
#include <string>

#include "clip/ClipWriter.h"

/// Writer of one file per frame. CheckOutput has been asked before.
std::unique_ptr<IClipWriter> CreateSequence(const std::string& path, IClipReader& source, int first,
                                            int end, const SWriteOptions& options);
