#include "support/Trace.h"

#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

std::atomic<int> ZRNQTraceLevel{0};
std::atomic<int> ZRNQLogLevel{0};

namespace {

using SharedSink = std::shared_ptr<const TraceSink>;

struct SSinks {
  // Held while a sink runs, which is what lets a sink write without a lock of its own. Recursive,
  // so that a sink may take itself out.
  std::recursive_mutex mutex;
  SharedSink trace;
  SharedSink log;
};

SSinks& sinks() {
  static auto* const theSinks = new SSinks;  // lines may come after main
  return *theSinks;
}

thread_local bool insideSink = false;

void install(SharedSink SSinks::*which, TraceSink sink) {
  auto fresh = sink ? std::make_shared<const TraceSink>(std::move(sink)) : nullptr;
  std::lock_guard lock(sinks().mutex);
  (sinks().*which).swap(fresh);
}

void send(const SharedSink& sink, const std::string& line) {
  const SharedSink kept = sink;  // the sink may replace itself
  if (kept != nullptr) (*kept)(line);
}

/// "support/Trace.cpp" gives "support/Trace"; a dot in a folder's name stays.
std::string_view withoutExtension(std::string_view file) {
  const std::size_t separator = file.find_last_of("/\\");
  const std::size_t base = separator == std::string_view::npos ? 0 : separator + 1;
  const std::size_t dot = file.rfind('.');
  return dot != std::string_view::npos && dot > base ? file.substr(0, dot) : file;
}

struct SInsideSink {
  SInsideSink() { insideSink = true; }
  ~SInsideSink() { insideSink = false; }
};

}  // namespace

void SendZRNQMessage(const std::string& text, bool toLog, bool toTrace) {
  if (insideSink) return;
  std::lock_guard lock(sinks().mutex);
  const SInsideSink mark;
  if (toLog) send(sinks().log, text);
  if (toTrace) send(sinks().trace, text);
}

void SetTraceSink(TraceSink sink) {
  install(&SSinks::trace, std::move(sink));
}

void SetLogSink(TraceSink sink) {
  install(&SSinks::log, std::move(sink));
}

void TraceAt(int level, const std::string& text) {
  if (TracesAt(level)) SendZRNQMessage(text, ZRNQLogLevel >= level, ZRNQTraceLevel >= level);
}

void TraceFromHandler(int level, const char* text, const char* detail) noexcept {
  try {
    TraceAt(level, std::string(text) + detail);
  } catch (...) {  // there is nobody left to tell
  }
}

void TraceAssertion(const char* file, int line, const char* expression) {
  TraceAt(0, std::string(withoutExtension(file)) + ":" + std::to_string(line) + ": ASSERT (" +
                 expression + ") FAILED!");
}
