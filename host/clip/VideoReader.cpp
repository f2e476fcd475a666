#include "VideoReader.h"

std::unique_ptr<IClipReader> OpenVideo(const std::string& path, int) {
  throw CClipError(path + ": video is not read yet");
}
