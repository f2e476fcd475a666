#include "VideoWriter.h"

void RequireVideoExtension(const std::string& path) {
  throw CClipError(path + ": video is not written yet");
}

std::unique_ptr<IClipWriter> CreateVideo(const std::string& path, IClipReader&, int, int,
                                         const SWriteOptions&) {
  throw CClipError(path + ": video is not written yet");
}
