#include "MediaLibrary.h"

#include "support/LoadedLibrary.h"

namespace {

const IMediaLibrary& loadMediaLibrary() {
  constexpr const char* NAME = "stabilize-media.so";
  std::string tried;
  std::string reason;
  const std::string path = FindOwnLibrary(NAME, tried);
  if (path.empty()) throw CClipError(std::string(NAME) + " not found; tried " + tried);
  // Stays for the life of the process: readers and writers out of it may be the last to go.
  static CLoadedLibrary& library = *new CLoadedLibrary;
  if (!library.load(path, reason)) throw CClipError(path + " cannot be loaded: " + reason);
  const auto entry = reinterpret_cast<MediaLibraryEntry>(library.symbol(MEDIA_LIBRARY_ENTRY));
  if (!entry) throw CClipError(path + " lacks the entry point " + MEDIA_LIBRARY_ENTRY);
  return entry();
}

}  // namespace

const IMediaLibrary& MediaLibrary() {
  static const IMediaLibrary& library = loadMediaLibrary();
  return library;
}
