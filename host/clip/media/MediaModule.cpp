#include "ImageLibrary.h"
#include "ImageTraits.h"
#include "MediaLibrary.h"
#include "VideoReader.h"
#include "VideoWriter.h"

// The module's entry point, and what it stands for.

namespace {

class CMediaLibrary final : public IMediaLibrary {
 public:
  SImageTraits readTraits(const std::string& path) const override {
    return TraitsOf(*OpenImage(path), path);
  }
  std::map<std::string, std::string> readMetadata(const std::string& path) const override {
    return MetadataOf(*OpenImage(path), path);
  }
  void readStored(const std::string& path, const SImageTraits& expected, int threads,
                  std::uint16_t* stored) const override {
    ReadStoredImage(path, expected, threads, stored);
  }
  void writeStored(const std::string& path, const std::string& temporary,
                   const SImageTarget& target, int threads,
                   const std::uint16_t* stored) const override {
    WriteStoredImage(path, temporary, target, threads, stored);
  }
  std::unique_ptr<IClipReader> openVideo(const std::string& path, int threads) const override {
    return OpenVideo(path, threads);
  }
  std::unique_ptr<IClipWriter> createVideo(const std::string& path, IClipReader& source, int first,
                                           int end, const SWriteOptions& options) const override {
    return CreateVideo(path, source, first, end, options);
  }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) const IMediaLibrary& StabilizeMediaLibrary() {
  static const CMediaLibrary library;
  return library;
}
