#include "ImageLibrary.h"
#include "ImageTraits.h"
#include "MediaModules.h"

// The module's entry point, and what it stands for.

namespace {

class CImageLibrary final : public IImageLibrary {
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
};

}  // namespace

extern "C" __attribute__((visibility("default"))) const IImageLibrary& StabilizeImageLibrary() {
  static const CImageLibrary library;
  return library;
}
