#include "MediaModules.h"

#include "support/LoadedLibrary.h"

namespace {

template <typename Entry>
auto& LoadModule(const std::string& name, const char* entryName) {
  std::string tried;
  std::string reason;
  const std::string path = FindOwnLibrary(name, tried);
  if (path.empty()) throw CClipError(name + " not found; tried " + tried);
  // Stays for the life of the process: readers and writers out of it may be the last to go.
  static CLoadedLibrary& library = *new CLoadedLibrary;  // one for each type of entry
  if (!library.load(path, reason)) throw CClipError(path + " cannot be loaded: " + reason);
  const auto entry = reinterpret_cast<Entry>(library.symbol(entryName));
  if (!entry) throw CClipError(path + " lacks the entry point " + entryName);
  return entry();
}

}  // namespace

const IImageLibrary& ImageLibrary() {
  static const IImageLibrary& library =
      LoadModule<ImageLibraryEntry>("stabilize-images.so", IMAGE_LIBRARY_ENTRY);
  return library;
}

const IVideoLibrary& VideoLibrary() {
  static const IVideoLibrary& library =
      LoadModule<VideoLibraryEntry>("stabilize-video.so", VIDEO_LIBRARY_ENTRY);
  return library;
}
