#include "ToolObj/ProgressMonitor.h"

#include <gtest/gtest.h>

#include "doubles/TraceCapture.h"

namespace {

using Lines = std::vector<std::string>;

// A line that contains measured times, up to the first of them.
std::string untilTime(const std::string& line) {
  return line.substr(0, line.find(" / "));
}

}  // namespace

TEST(ProgressMonitor, WritesTimesAsPeopleReadThem) {
  const struct {
    double seconds;
    const char* longForm;
    const char* shortForm;
  } cases[] = {
      {0.0, "0:00", "0.000"},     {0.0421, "0:00", "0.042"},      {1.5, "0:01", "1.500"},
      {5.0, "0:05", "5.000"},     {9.9996, "0:10", "10.00"},      {12.345, "0:12", "12.35"},
      {12.997, "0:12", "12.99"},  {59.9996, "1:00", "1:00"},      {65.0, "1:05", "1:05"},
      {3599.0, "59:59", "59:59"}, {3725.0, "1:02:05", "1:02:05"}, {36000.0, "10:00:00", "10:00:00"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CDefaultToolProgressMonitor::TimeText(c.seconds, false), c.longForm);
    EXPECT_EQ(CDefaultToolProgressMonitor::TimeText(c.seconds, true), c.shortForm);
  }
}

TEST(ProgressMonitor, ReportsEveryStepOfAPass) {
  const CTraceCapture trace(2);
  CDefaultToolProgressMonitor monitor;
  monitor.SetStatusMessage("Stabilizing");
  monitor.SetFrameCount(10, 1);
  monitor.StartProgress();
  EXPECT_EQ(trace.lines.texts(), Lines{"TPM: [Stabilizing] Total: Total: 10 / -:--  So far: 0 / "
                                       "-:-- (0% / -.---)  To go: 10 / -:--"});

  monitor.BumpProgress(7);
  const std::string report = trace.lines.texts().back();
  EXPECT_EQ(untilTime(report), "TPM: [Stabilizing] Total: Total: 10");
  EXPECT_NE(report.find("  So far: 7 / 0:0"), std::string::npos) << report;
  EXPECT_NE(report.find(" (70% / 0."), std::string::npos) << report;
  EXPECT_NE(report.find(")  To go: 3 / 0:0"), std::string::npos) << report;

  monitor.StopProgress(true);
  const Lines lines = trace.lines.texts();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_NE(lines[2].find("So far: 10 / "), std::string::npos) << lines[2];
  EXPECT_NE(lines[2].find("(100% / "), std::string::npos) << lines[2];
  EXPECT_EQ(lines[3], "TPM: Stabilizing STOP");
}

TEST(ProgressMonitor, SaysNothingNewWithoutGrowth) {
  const CTraceCapture trace(2);
  CDefaultToolProgressMonitor monitor;
  monitor.StartProgress();  // no total yet
  monitor.SetFrameCount(2, 3);
  monitor.BumpProgress(2);
  monitor.StopProgress(false);
  monitor.SetIdle(true);
  EXPECT_EQ(trace.lines.texts(), (Lines{"TPM:  STOP", "TPM: IDLE"}));
  EXPECT_EQ(monitor.statusMessage(), "Idle");
}

TEST(ProgressMonitor, CountsWholeItemsAndNeverBeyondTheTotal) {
  CDefaultToolProgressMonitor monitor;
  const auto state = [&monitor](int total, int done, int pending, const char* when) {
    EXPECT_EQ(monitor.total(), total) << when;
    EXPECT_EQ(monitor.done(), done) << when;
    EXPECT_EQ(monitor.pendingUnits(), pending) << when;
  };
  monitor.SetFrameCount(4, 2);
  monitor.BumpProgress(3);
  state(4, 1, 1, "three units of two");
  monitor.BumpProgress(1);
  state(4, 2, 0, "the fourth completes an item");
  monitor.BumpProgress(101);
  state(4, 4, 1, "more than there is");
  monitor.StopProgress(false);
  state(4, 4, 1, "stopped early");
  monitor.SetFrameCount(3, 0);
  monitor.BumpProgress(1);
  state(3, 1, 0, "a step below one counts as one");
  monitor.StopProgress(true);
  state(3, 3, 0, "completed");
  monitor.SetIdle(false);
  state(0, 0, 0, "idle");
}

TEST(ProgressMonitor, StacksStatusTexts) {
  CDefaultToolProgressMonitor monitor;
  monitor.SetStatusMessage("Stabilizing");
  monitor.PopStatusMessage();
  EXPECT_EQ(monitor.statusMessage(), "Stabilizing") << "nothing was saved";
  monitor.PushStatusMessage("Paused");
  monitor.PushStatusMessage("Waiting");
  monitor.PopStatusMessage();
  EXPECT_EQ(monitor.statusMessage(), "Paused");
  monitor.PopStatusMessage();
  EXPECT_EQ(monitor.statusMessage(), "Stabilizing");
  monitor.SetToolMessage("second");
  EXPECT_EQ(monitor.toolMessage(), "second");
}
