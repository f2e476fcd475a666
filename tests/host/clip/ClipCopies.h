#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "clip/ClipWriter.h"

using Samples = std::vector<std::uint16_t>;

inline Samples ReadFrame(IClipReader& clip, int frame) {
  Samples samples(clip.info().format.getBytesPerField() / 2);
  clip.readFrame(frame, samples.data());
  return samples;
}

inline void CopyRange(IClipReader& source, const std::string& path, int first, int end,
                      bool overwrite = false) {
  SWriteOptions options;
  options.overwrite = overwrite;
  const auto writer = CreateClip(path, source, first, end, options);
  for (int frame = first; frame < end; ++frame)
    writer->writeFrame(frame, ReadFrame(source, frame).data());
  writer->finish();
}

inline void CopyClip(IClipReader& source, const std::string& path, bool overwrite = false) {
  CopyRange(source, path, source.info().firstFrame, source.info().endFrame, overwrite);
}
