#include "ui/ExecStatusBarFrame.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <thread>

#include "toolkit/HeadlessApplication.h"

namespace {

class ExecStatusBar : public testing::Test {
 protected:
  ExecStatusBar() {
    SetApplication(&application);
    frame.emplace("Frame", nullptr, [this] { return milliseconds.load(); });
    frame->setBounds({0, 0, 400, 40});
  }
  ~ExecStatusBar() override {
    frame.reset();
    SetApplication(nullptr);
  }
  void redraw() { application.advanceClock(10); }
  std::string readouts() const {
    const TExecStatusBarFrame::SReadouts& r = frame->Light;
    EXPECT_EQ(r.ElapsedValue.caption(), frame->Dark.ElapsedValue.caption());
    return r.ElapsedValue.caption() + " " + r.RemainingValue.caption() + " " +
           r.TotalValue.caption() + " " + r.PercentValue.caption() + " " +
           r.PerFrameValue.caption() + " " +
           std::to_string(frame->ProgressPanelDark.bounds().width);
  }

  THeadlessApplication application;
  std::atomic<double> milliseconds{0.0};
  std::optional<TExecStatusBarFrame> frame;
};

TEST_F(ExecStatusBar, TextsOfTimes) {
  struct SCase {
    double seconds;
    const char* text;
  };
  const SCase times[] = {{0.0, "0:00"},
                         {75.9, "1:15"},
                         {3599.0, "59:59"},
                         {3725.0, "1:02:05"},
                         {-4.0, "0:00"},
                         {36000.0, "10:00:00"},
                         {std::numeric_limits<double>::quiet_NaN(), "0:00"}};
  for (const SCase& c : times) EXPECT_EQ(TExecStatusBarFrame::TimeText(c.seconds), c.text);
  EXPECT_FALSE(TExecStatusBarFrame::TimeText(std::numeric_limits<double>::infinity()).empty());
  const SCase perFrame[] = {{0.5, "0.500"},   {0.29, "0.290"},   {9.9999, "9.999"},
                            {12.25, "12.25"}, {99.999, "99.99"}, {123.45, "123.4"},
                            {1234.9, "1234"}, {0.0004, "0.000"}, {-1.0, "0.000"}};
  for (const SCase& c : perFrame)
    EXPECT_EQ(TExecStatusBarFrame::SecondsPerFrameText(c.seconds), c.text);
}

TEST_F(ExecStatusBar, CountsUnitsAndShowsThemWithinTenMilliseconds) {
  EXPECT_TRUE(frame->DisabledPanel.isVisible());
  frame->SetFrameCount(100, 3);
  frame->StartProgress();
  redraw();
  EXPECT_FALSE(frame->DisabledPanel.isVisible());
  EXPECT_EQ(readouts(), "0:00 -:-- -:-- 0 -.--- 0");
  milliseconds = 10000.0;
  for (int i = 0; i < 3 * 29 + 2; ++i) frame->BumpProgress(1);
  EXPECT_EQ(readouts(), "0:00 -:-- -:-- 0 -.--- 0") << "no control is touched by a report";
  redraw();
  EXPECT_EQ(readouts(), "0:10 0:24 0:34 29% 0.344 sec/f 116");
  milliseconds = 12000.0;
  frame->StopProgress(true);
  redraw();
  EXPECT_EQ(readouts(), "0:12 0:00 0:12 100% 0.120 sec/f 400");
  milliseconds = 99000.0;
  application.advanceClock(5000);
  EXPECT_FALSE(frame->ElapsedTimer.isEnabled()) << "idle, it rests";
  EXPECT_EQ(readouts(), "0:12 0:00 0:12 100% 0.120 sec/f 400");
  frame->BumpProgress(300);
  frame->SetIdle(true);
  redraw();
  EXPECT_TRUE(frame->DisabledPanel.isVisible());
  EXPECT_EQ(frame->Disabled.PerFrameValue.caption(), "         sec/f");
}

TEST_F(ExecStatusBar, APauseTakesNoTimeAndOneItemHasNoBar) {
  frame->SetFrameCount(10, 1);
  frame->StartProgress();
  milliseconds = 4000.0;
  frame->BumpProgress(2);
  frame->StopProgress(false);
  redraw();
  milliseconds = 60000.0;
  frame->StartProgress();
  milliseconds = 64000.0;
  frame->BumpProgress(2);
  redraw();
  EXPECT_EQ(readouts(), "0:08 0:12 0:20 40% 2.000 sec/f 160");
  frame->SetFrameCount(1, 0);
  frame->StartProgress();
  redraw();
  EXPECT_EQ(readouts(), "-:-- -:-- -:-- 0 -.--- 0");
  milliseconds = 64500.0;
  frame->BumpProgress(1);
  redraw();
  EXPECT_EQ(frame->Light.PerFrameValue.caption(), "0.500 sec/f");
}

TEST_F(ExecStatusBar, MessagesAreStacked) {
  const auto shown = [this] {
    redraw();
    return frame->StatusMessageValue.caption() + "|" + frame->ToolMessageValue.caption();
  };
  frame->PopStatusMessage();
  EXPECT_EQ(shown(), "Idle|");
  frame->SetStatusMessage("Rendering");
  frame->PushStatusMessage("Paused");
  frame->PushStatusMessage("Stopped");
  frame->SetToolMessage("2 points");
  EXPECT_EQ(shown(), "Stopped|2 points");
  frame->PopStatusMessage();
  EXPECT_EQ(shown(), "Paused|2 points");
  frame->PopStatusMessage();
  frame->SetIdle(false);
  EXPECT_EQ(shown(), "Rendering|2 points");
}

TEST_F(ExecStatusBar, AnotherThreadReportsWhileTheWindowDraws) {
  frame->SetFrameCount(2000, 1);
  frame->StartProgress();
  std::thread worker([this] {
    for (int i = 0; i < 2000; ++i) {
      milliseconds = i;
      frame->BumpProgress(1);
      frame->SetStatusMessage(std::to_string(i));
      if (i % 100 == 0) frame->SetToolMessage(std::to_string(i));
    }
    frame->StopProgress(true);
  });
  for (int i = 0; i < 500; ++i) application.advanceClock(10);
  worker.join();
  redraw();
  EXPECT_EQ(frame->Light.PercentValue.caption(), "100%");
  EXPECT_EQ(frame->StatusMessageValue.caption(), "1999");
}

}  // namespace
