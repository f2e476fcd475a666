#pragma once

#include <functional>
#include <string>

/// The last failure of the calling thread: code and text. One object per thread stands behind the
/// global name `theError`.
class CQTXErrReport {
 public:
  void set(int code, const std::string& text);
  int getError() const;
  std::string getMessage() const;
  void clear() { set(0, {}); }
};

extern CQTXErrReport theError;

/// Receives final failures: operation ("CStabilizerTool::StartTracking"), code, text. Called on the
/// thread of the failing operation, without a lock; what it throws is ignored.
using ErrorSink =
    std::function<void(const std::string& operation, int code, const std::string& text)>;
/// Installs the host's sink; an empty function removes it. Set it while no tool runs.
void SetErrorSink(ErrorSink sink);

/// Scoped reporter of one operation: whatever was set as its error when the scope ends goes to the
/// sink (and to the trace as "ERROR: " operation ": " text). Code 0: nothing is reported.
class CAutoErrorReporter {
 public:
  explicit CAutoErrorReporter(std::string operation);
  ~CAutoErrorReporter();
  CAutoErrorReporter(const CAutoErrorReporter&) = delete;
  CAutoErrorReporter& operator=(const CAutoErrorReporter&) = delete;

  /// Sets code and text here and in `theError`.
  void set(int code, const std::string& text);
  /// Takes code and text over from `theError`.
  void repeat();
  int code() const { return code_; }
  const std::string& text() const { return text_; }

 private:
  std::string operation_;
  int code_ = 0;
  std::string text_;
};
