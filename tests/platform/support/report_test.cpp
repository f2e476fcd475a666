#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/ErrorReport.h"
#include "support/Trace.h"

namespace {

/// Collects what the sinks receive and puts levels and sinks back.
class Report : public testing::Test {
 protected:
  Report() {
    SetTraceSink([this](const std::string& line) { traced.push_back(line); });
    SetLogSink([this](const std::string& line) { logged.push_back(line); });
    SetErrorSink([this](const std::string& operation, int code, const std::string& text) {
      failures.push_back(operation + "|" + std::to_string(code) + "|" + text);
    });
    theError.clear();
  }
  ~Report() override {
    SetTraceSink({});
    SetLogSink({});
    SetErrorSink({});
    ZRNQTraceLevel = 0;
    ZRNQLogLevel = 0;
    theError.clear();
  }

  std::vector<std::string> traced, logged, failures;
};

TEST_F(Report, EachThreadHasItsOwnLastError) {
  theError.set(-8500, "here");
  std::thread other([] {
    EXPECT_EQ(theError.getError(), 0);
    theError.set(-1, "there");
    EXPECT_EQ(theError.getMessage(), "there");
  });
  other.join();
  EXPECT_EQ(theError.getError(), -8500);
  EXPECT_EQ(theError.getMessage(), "here");
}

TEST_F(Report, ScopeReportsItsFinalFailureOnce) {
  {
    CAutoErrorReporter reporter("CStabilizerTool::RunFrameProcessing");
    reporter.set(-1, "first");
    reporter.set(-8507, "Can't spawn thread");
    EXPECT_TRUE(failures.empty());
    EXPECT_EQ(theError.getError(), -8507);
  }
  EXPECT_EQ(failures, std::vector<std::string>(
                          {"CStabilizerTool::RunFrameProcessing|-8507|Can't spawn thread"}));
  EXPECT_EQ(traced, std::vector<std::string>(
                        {"ERROR: CStabilizerTool::RunFrameProcessing: Can't spawn thread"}));
}

TEST_F(Report, ScopeWithoutAFailureOfItsOwnIsSilent) {
  theError.set(-3, "somebody else's");
  { CAutoErrorReporter untouched("a"); }
  {
    CAutoErrorReporter recovered("b");
    recovered.set(-1, "x");
    recovered.set(0, "");
  }
  EXPECT_TRUE(failures.empty());
  theError.set(-4, "taken over");
  { CAutoErrorReporter("c").repeat(); }
  EXPECT_EQ(failures, std::vector<std::string>({"c|-4|taken over"}));
}

TEST_F(Report, SinkMayReportChangeSinksAndThrow) {
  SetErrorSink([this](const std::string& operation, int, const std::string&) {
    SetErrorSink({});
    { CAutoErrorReporter("inner").set(-2, "lost"); }
    failures.push_back(operation);
    throw std::runtime_error("sink");
  });
  { CAutoErrorReporter("outer").set(-1, "x"); }
  EXPECT_EQ(failures, std::vector<std::string>({"outer"}));
}

TEST_F(Report, LinesGoWhereTheirLevelIsWanted) {
  const struct {
    int level, traceLevel, logLevel;
    bool traces, logs;
  } cases[] = {{0, 0, 0, true, true},    {1, 0, 0, false, false}, {2, 3, 1, true, false},
               {2, 1, 2, false, true},   {3, 3, 3, true, true},   {0, -1, 0, false, true},
               {0, -1, -1, false, false}};
  for (const auto& c : cases) {
    traced.clear();
    logged.clear();
    ZRNQTraceLevel = c.traceLevel;
    ZRNQLogLevel = c.logLevel;
    TraceAt(c.level, "line");
    const std::string where = "level " + std::to_string(c.level) + " trace " +
                              std::to_string(c.traceLevel) + " log " + std::to_string(c.logLevel);
    EXPECT_EQ(traced.size(), c.traces ? 1u : 0u) << where;
    EXPECT_EQ(logged.size(), c.logs ? 1u : 0u) << where;
    EXPECT_EQ(TracesAt(c.level), c.traces || c.logs) << where;
  }
}

TEST_F(Report, AssertionLinesNameTheFileWithoutExtension) {
  const struct {
    const char* file;
    const char* shown;
  } cases[] = {{"..\\ToolObj\\ToolFrameBuffer", "..\\ToolObj\\ToolFrameBuffer"},
               {".\\StabilizerTool.cpp", ".\\StabilizerTool"},
               {"/a.b/Tool.cpp", "/a.b/Tool"},
               {"/a.b/Tool", "/a.b/Tool"},
               {".hidden", ".hidden"},
               {"", ""}};
  for (const auto& c : cases) {
    traced.clear();
    TraceAssertion(c.file, 64, "width < 10000");
    EXPECT_EQ(traced, std::vector<std::string>(
                          {std::string(c.shown) + ":64: ASSERT (width < 10000) FAILED!"}));
  }
}

TEST_F(Report, SinksRunOneAtATimeAndAfterRemovalNotAtAll) {
  int lines = 0, logLines = 0;  // plain: that nobody else runs meanwhile is the promise
  SetTraceSink([&lines](const std::string&) { ++lines; });
  SetLogSink([&](const std::string&) { ++lines, ++logLines; });
  std::vector<std::thread> senders;
  for (int i = 0; i < 4; ++i) {
    senders.emplace_back([] {
      for (int n = 0; n < 200; ++n) SendZRNQMessage("x", true, true);
    });
  }
  SetLogSink({});
  const int logLinesAtRemoval = logLines;
  for (std::thread& sender : senders) sender.join();
  EXPECT_EQ(logLines, logLinesAtRemoval);
  EXPECT_EQ(lines, 800 + logLines);
}

TEST_F(Report, SinkThatTracesAndTakesItselfOutNeitherDeadlocksNorRecurses) {
  SetTraceSink([this](const std::string& line) {
    TraceAt(0, "echo of " + line);
    SetTraceSink({});
    traced.push_back(line);
  });
  TraceAt(0, "one");
  TraceAt(0, "two");
  EXPECT_EQ(traced, std::vector<std::string>({"one"}));
}

}  // namespace
