#pragma once

#include <memory>

#include "clip/ClipFrame.h"
#include "support/Memory.h"

class IClipReader;

/// A frame whose samples are all decoded when it is opened, in memory of the pool: for sources that
/// cannot give less. Throws CClipError when the frame cannot be read, or has no memory.
std::unique_ptr<IClipFrame> DecodeFrame(IClipReader& reader, int frame, CBufferPool& pool);
