#include "support/ErrorReport.h"

#include <memory>
#include <mutex>
#include <utility>

#include "support/Trace.h"

namespace {

struct SLastError {
  int code = 0;
  std::string text;
};
thread_local SLastError lastError;

struct SErrorSink {
  std::mutex mutex;
  std::shared_ptr<const ErrorSink> sink;
};

SErrorSink& installed() {
  static auto* const theSink = new SErrorSink;  // reporters may end after main
  return *theSink;
}

}  // namespace

CQTXErrReport theError;

void CQTXErrReport::set(int code, const std::string& text) {
  lastError.text = text;
  lastError.code = code;
}

int CQTXErrReport::getError() const {
  return lastError.code;
}

std::string CQTXErrReport::getMessage() const {
  return lastError.text;
}

void SetErrorSink(ErrorSink sink) {
  auto fresh = sink ? std::make_shared<const ErrorSink>(std::move(sink)) : nullptr;
  SErrorSink& target = installed();
  std::lock_guard lock(target.mutex);
  target.sink.swap(fresh);
}

CAutoErrorReporter::CAutoErrorReporter(std::string operation) : operation_(std::move(operation)) {}

CAutoErrorReporter::~CAutoErrorReporter() {
  if (code_ == 0) return;
  try {
    TraceAt(0, "ERROR: " + operation_ + ": " + text_);
    std::shared_ptr<const ErrorSink> sink;
    {
      std::lock_guard lock(installed().mutex);
      sink = installed().sink;
    }
    if (sink != nullptr) (*sink)(operation_, code_, text_);
  } catch (...) {
    // A reporter often ends while a failure unwinds: a sink's own failure must not end the process.
  }
}

void CAutoErrorReporter::set(int code, const std::string& text) {
  code_ = code;
  text_ = text;
  theError.set(code, text);
}

void CAutoErrorReporter::repeat() {
  code_ = theError.getError();
  text_ = theError.getMessage();
}
