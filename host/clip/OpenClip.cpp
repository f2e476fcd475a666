#include <filesystem>

#include "MediaModules.h"
#include "SequencePattern.h"
#include "SequenceReader.h"
#include "clip/ClipReader.h"
#include "clip/TestShot.h"

std::unique_ptr<IClipReader> OpenClip(const std::string& path, int threads) {
  if (path.starts_with("test:") || path == "test") return MakeTestShotReader(ParseTestShot(path));
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  const bool isFile = std::filesystem::is_regular_file(status);
  // Opening a pipe would wait for whoever writes into it, perhaps for ever.
  if (std::filesystem::is_other(status)) throw CClipError(path + ": neither a file nor a folder");
  if (isFile && !IsImageExtension(ExtensionOf(path)))
    return VideoLibrary().openVideo(path, threads);
  if (!isFile && HasFramePlaceholder(path) && !IsImageExtension(ExtensionOf(path)))
    throw CClipError(path + ": image sequences are DPX, TIFF, PNG or EXR files");
  return std::make_unique<CSequenceReader>(path, threads);
}
