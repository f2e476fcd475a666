#include "MediaModules.h"
#include "VideoReader.h"
#include "VideoWriter.h"

// The module's entry point, and what it stands for.

namespace {

class CVideoLibrary final : public IVideoLibrary {
 public:
  std::unique_ptr<IClipReader> openVideo(const std::string& path, int threads) const override {
    return OpenVideo(path, threads);
  }
  std::unique_ptr<IClipWriter> createVideo(const std::string& path, IClipReader& source, int first,
                                           int end, const SWriteOptions& options) const override {
    return CreateVideo(path, source, first, end, options);
  }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) const IVideoLibrary& StabilizeVideoLibrary() {
  static const CVideoLibrary library;
  return library;
}
