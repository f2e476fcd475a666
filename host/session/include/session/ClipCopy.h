#pragma once

#include <string>

#include "clip/ClipWriter.h"
#include "session/StabilizeJob.h"

/// Writes frames [first, end) of a clip, on `threads` threads where reader and writer are parallel,
/// and finishes the writer. Progress goes to the observer under the name `stage`. Throws CClipError
/// or CInterrupted; frames that were written stay.
void CopyClip(IClipReader& reader, IClipWriter& writer, int first, int end, int threads,
              const std::string& stage, const SJobObserver& observer);
