#pragma once

#include "doubles/CallLog.h"
#include "support/Trace.h"

/// Collects the trace lines of a scope at a trace level; the level and the sink are taken back at
/// its end. One at a time. THREAD: lines may come from any.
class CTraceCapture {
 public:
  explicit CTraceCapture(int level) : previousLevel_(ZRNQTraceLevel) {
    ZRNQTraceLevel = level;
    SetTraceSink([this](const std::string& line) { lines.add(line); });
  }
  ~CTraceCapture() {
    SetTraceSink({});
    ZRNQTraceLevel = previousLevel_;
  }
  CTraceCapture(const CTraceCapture&) = delete;
  CTraceCapture& operator=(const CTraceCapture&) = delete;

  CCallLog lines;

 private:
  const int previousLevel_;
};
