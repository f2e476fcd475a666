#include "VideoLibrary.h"

#include <cstdarg>
#include <mutex>

#include "clip/ClipReader.h"
#include "support/Trace.h"

namespace {

void TraceLibraryMessage(void*, int level, const char* format, va_list arguments) {
  if (level > AV_LOG_WARNING || !TracesAt(3)) return;
  char line[512];
  std::vsnprintf(line, sizeof line, format, arguments);
  std::string text(line);
  while (!text.empty() && text.back() == '\n') text.pop_back();
  TraceAt(3, "video library: " + text);
}

template <class Owner, class Object>
Owner Require(Object* object) {
  if (object == nullptr) throw std::bad_alloc();
  return Owner(object);
}

}  // namespace

Picture MakePicture() {
  return Require<Picture>(av_frame_alloc());
}

Packet MakePacket() {
  return Require<Packet>(av_packet_alloc());
}

void TraceVideoLibrary() {
  static std::once_flag once;
  std::call_once(once, [] { av_log_set_callback(TraceLibraryMessage); });
}

InputFile OpenInput(const std::string& path) {
  TraceVideoLibrary();
  AVFormatContext* context = nullptr;
  // The prefix keeps names with colons and percent signs from being read as protocols or patterns.
  const int opened = avformat_open_input(&context, ("file:" + path).c_str(), nullptr, nullptr);
  if (opened < 0) ThrowVideoError(path, "cannot be opened: ", opened);
  InputFile file(context);
  const int found = avformat_find_stream_info(context, nullptr);
  if (found < 0) ThrowVideoError(path, "cannot be read: ", found);
  return file;
}

void ThrowVideoError(const std::string& path, const std::string& what, int code) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(code, text, sizeof text);
  throw CClipError(path + ": " + what + text);
}

std::string MetadataText(const AVDictionary* dictionary, const char* key) {
  const AVDictionaryEntry* entry = av_dict_get(dictionary, key, nullptr, 0);
  return entry != nullptr ? entry->value : "";
}
