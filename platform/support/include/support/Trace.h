#pragma once

#include <atomic>
#include <functional>
#include <string>

/// Trace and log. A line of level N is built only when the larger of the two levels is at least N.
/// Levels: 0 errors (mostly beginning "ERROR: "), 1 warnings, 2 and 3 detail.
extern std::atomic<int> ZRNQTraceLevel;
extern std::atomic<int> ZRNQLogLevel;

/// Sends one line to the log and / or the trace sink. Sinks are called one at a time; a line that
/// comes from inside a sink is dropped, since it could only breed the next. A sink must not wait
/// for another thread that may send a line. THREAD: any.
void SendZRNQMessage(const std::string& text, bool toLog, bool toTrace);

using TraceSink = std::function<void(const std::string& line)>;
/// Installs a sink; an empty function removes it. Afterwards the former one neither runs nor is
/// called again (unless it is itself the caller). THREAD: any.
void SetTraceSink(TraceSink sink);
void SetLogSink(TraceSink sink);

/// True when a line of this level has a reader.
inline bool TracesAt(int level) {
  return ZRNQTraceLevel >= level || ZRNQLogLevel >= level;
}

/// Sends a line at a level to whichever of log and trace want it.
void TraceAt(int level, const std::string& text);
/// Likewise, for handlers that must go on when there is no memory even for the line: it is left out
/// then. REQUIRES: `text` is not null; `detail` is added behind it.
void TraceFromHandler(int level, const char* text, const char* detail = "") noexcept;

/// "<file>:<line>: ASSERT (<expression>) FAILED!" at level 0, the file without its extension;
/// processing goes on.
void TraceAssertion(const char* file, int line, const char* expression);
