#include "ui/ExecStatusBarFrame.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace {

constexpr int REDRAW_SOON = 10;  // milliseconds
constexpr int REDRAW_OFTEN = 250;
constexpr double LONGEST = 1e9;  // seconds; more is a fault of the clock

double machineMilliseconds() {
  using namespace std::chrono;
  return duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
}

/// Seconds that a text can show. Nothing counts from before its start.
double sane(double seconds) {
  return seconds > 0.0 ? std::min(seconds, LONGEST) : 0.0;
}

std::string digits(int value, int count) {
  std::string text = std::to_string(value);
  if (static_cast<int>(text.size()) < count) text.insert(0, count - text.size(), '0');
  return text;
}

}  // namespace

std::string TExecStatusBarFrame::TimeText(double seconds) {
  const int whole = static_cast<int>(sane(seconds));
  const std::string rest = digits(whole % 60, 2);
  if (whole < 3600) return std::to_string(whole / 60) + ":" + rest;
  return std::to_string(whole / 3600) + ":" + digits(whole % 3600 / 60, 2) + ":" + rest;
}

std::string TExecStatusBarFrame::SecondsPerFrameText(double seconds) {
  const double x = sane(seconds);
  const int whole = static_cast<int>(x);
  const int decimals = whole < 10 ? 3 : whole < 100 ? 2 : whole < 1000 ? 1 : 0;
  if (decimals == 0) return std::to_string(whole);
  // Cut, not rounded: but 0.29 is meant where the nearest double lies a hair below it.
  const double scale = std::pow(10.0, decimals);
  const int fraction = static_cast<int>((x - whole) * scale + 1e-6);
  return std::to_string(whole) + "." +
         digits(std::min(fraction, static_cast<int>(scale) - 1), decimals);
}

TExecStatusBarFrame::SReadouts::SReadouts(const std::string& suffix, TControl* parent)
    : ElapsedLabel("ElapsedLabel" + suffix, parent),
      ElapsedValue("ElapsedValue" + suffix, parent),
      RemainingLabel("RemainingLabel" + suffix, parent),
      RemainingValue("RemainingValue" + suffix, parent),
      TotalLabel("TotalLabel" + suffix, parent),
      TotalValue("TotalValue" + suffix, parent),
      PerFrameValue("PerFrameValue" + suffix, parent),
      PercentValue("PercentValue" + suffix, parent) {
  ElapsedLabel.setCaption("Elapsed:");
  RemainingLabel.setCaption("Remaining:");
  TotalLabel.setCaption("Total: ");
  PercentValue.setAlignment(EAlignment::right);
}

void TExecStatusBarFrame::SReadouts::layOut(int width) {
  constexpr int HEIGHT = 16;
  const struct {
    TLabel* label;
    int width;
  } columns[] = {{&ElapsedLabel, 54},   {&ElapsedValue, 50}, {&RemainingLabel, 68},
                 {&RemainingValue, 50}, {&TotalLabel, 42},   {&TotalValue, 50},
                 {&PerFrameValue, 84}};
  int left = 6;
  for (const auto& column : columns) {
    column.label->setBounds({left, 2, column.width, HEIGHT});
    left += column.width;
  }
  PercentValue.setBounds({left, 2, std::max(0, width - left - 6), HEIGHT});
}

TExecStatusBarFrame::TExecStatusBarFrame(std::string name, TControl* parent, Clock clock)
    : TControl(std::move(name), parent),
      StatusMessageLabel("StatusMessageLabel", this),
      StatusMessageValue("StatusMessageValue", this),
      ToolMessageValue("ToolMessageValue", this),
      ReadoutPanel("ReadoutPanel", this),
      ProgressPanelLight("ProgressPanelLight", &ReadoutPanel),
      Light("Light", &ProgressPanelLight),
      ProgressPanelDark("ProgressPanelDark", &ReadoutPanel),
      Dark("Dark", &ProgressPanelDark),
      DisabledPanel("DisabledPanel", &ReadoutPanel),
      Disabled("Disabled", &DisabledPanel),
      ElapsedTimer(REDRAW_OFTEN, [this] { onElapsedTimer(); }),
      clock_(clock ? std::move(clock) : Clock(machineMilliseconds)),
      timerStart_(clock_()) {
  StatusMessageLabel.setCaption("Status:");
  StatusMessageValue.setCaption("Idle");
  ToolMessageValue.setAlignment(EAlignment::right);
  ProgressPanelDark.setColor(EColor::navy);
  Disabled.PerFrameValue.setCaption("         sec/f");
  Disabled.PercentValue.setCaption("%");
  for (TControl* label : DisabledPanel.children()) label->setEnabled(false);
  onResize = [this] { layOut(); };
  layOut();
  showReadouts({});
}

void TExecStatusBarFrame::SetIdle(bool setText) {
  {
    const CAutoThreadLock lock(lock_, "SetIdle");
    if (setText) progress_.statusMessage = "Idle";
    setCount(0, 1);
  }
  requestRedraw();
}

void TExecStatusBarFrame::SetStatusMessage(const std::string& text) {
  {
    const CAutoThreadLock lock(lock_, "SetStatusMessage");
    progress_.statusMessage = text;
  }
  requestRedraw();
}

void TExecStatusBarFrame::PushStatusMessage(const std::string& text) {
  {
    const CAutoThreadLock lock(lock_, "PushStatusMessage");
    savedStatusMessages_.push_back(std::exchange(progress_.statusMessage, text));
  }
  requestRedraw();
}

void TExecStatusBarFrame::PopStatusMessage() {
  {
    const CAutoThreadLock lock(lock_, "PopStatusMessage");
    if (!savedStatusMessages_.empty()) {
      progress_.statusMessage = savedStatusMessages_.back();
      savedStatusMessages_.pop_back();
    }
  }
  requestRedraw();
}

// The window says its message again and again; an idle display stays idle.
void TExecStatusBarFrame::SetToolMessage(const std::string& text) {
  {
    const CAutoThreadLock lock(lock_, "SetToolMessage");
    if (progress_.toolMessage == text) return;
    progress_.toolMessage = text;
  }
  requestRedraw();
}

void TExecStatusBarFrame::SetFrameCount(int total, int step) {
  {
    const CAutoThreadLock lock(lock_, "SetFrameCount");
    setCount(total, step);
  }
  requestRedraw();
}

void TExecStatusBarFrame::StartProgress() {
  {
    const CAutoThreadLock lock(lock_, "StartProgress");
    if (progress_.total > 0) {
      timerStart_ = clock_();
      run_ = ERun::running;
    }
  }
  requestRedraw();
}

void TExecStatusBarFrame::BumpProgress(int units) {
  {
    const CAutoThreadLock lock(lock_, "BumpProgress");
    if (run_ == ERun::running) {
      progress_.partialSteps += units;
      if (progress_.partialSteps >= progress_.step) {
        advance(progress_.partialSteps / progress_.step);
        progress_.partialSteps %= progress_.step;
      }
    }
  }
  requestRedraw();
}

void TExecStatusBarFrame::StopProgress(bool completed) {
  {
    const CAutoThreadLock lock(lock_, "StopProgress");
    if (run_ == ERun::running) {
      if (completed) {
        progress_.partialSteps = 0;
        advance(progress_.total - progress_.done);
      }
      run_ = ERun::stopping;
    }
  }
  requestRedraw();
}

void TExecStatusBarFrame::setCount(int total, int step) {
  progress_.total = total;
  progress_.step = std::max(1, step);
  progress_.done = progress_.partialSteps = 0;
  progress_.elapsedSeconds = progress_.secondsPerUnit = 0.0;
}

void TExecStatusBarFrame::advance(int units) {
  SProgress& p = progress_;
  p.done = static_cast<int>(std::min<long long>(static_cast<long long>(p.done) + units, p.total));
  if (p.done > 0) p.secondsPerUnit = (timerSeconds() + p.elapsedSeconds) / p.done;
}

void TExecStatusBarFrame::requestRedraw() {
  ElapsedTimer.setInterval(REDRAW_SOON);
  ElapsedTimer.setEnabled(true);
}

// Set back before the state is read: a report that comes in between asks for a redraw of its own.
void TExecStatusBarFrame::onElapsedTimer() {
  if (ElapsedTimer.interval() < REDRAW_OFTEN) ElapsedTimer.setInterval(REDRAW_OFTEN);
  ElapsedTimer.setEnabled(false);
  SProgress shown;
  bool goOn = false;
  {
    const CAutoThreadLock lock(lock_, "onElapsedTimer");
    if (run_ != ERun::idle) progress_.elapsedSeconds += timerSeconds();
    timerStart_ = clock_();
    goOn = run_ != ERun::idle;
    if (run_ == ERun::stopping) run_ = ERun::idle;
    shown = progress_;
  }
  if (goOn) ElapsedTimer.setEnabled(true);
  StatusMessageValue.setCaption(shown.statusMessage);
  ToolMessageValue.setCaption(shown.toolMessage);
  showReadouts(shown);
}

void TExecStatusBarFrame::showReadouts(const SProgress& progress) {
  DisabledPanel.setVisible(progress.total < 1);
  ProgressPanelLight.setVisible(progress.total >= 1);
  ProgressPanelDark.setVisible(progress.total >= 2);
  if (progress.total >= 1) showCounted(progress);
}

void TExecStatusBarFrame::showCounted(const SProgress& p) {
  std::string elapsed = "-:--";
  std::string remaining = "-:--";
  std::string total = "-:--";
  std::string percent = "0";
  std::string perFrame = "-.---";
  int darkWidth = 0;
  if (p.total >= 2) {
    elapsed = TimeText(p.elapsedSeconds);
    if (p.done > 0) {
      const double estimate = p.total * p.secondsPerUnit;
      total = TimeText(estimate);
      remaining = p.elapsedSeconds <= estimate ? TimeText(estimate - p.elapsedSeconds) : "0:00";
      // In whole numbers: 29 of 100 are 29 %, not 28.99...
      percent = std::to_string(100LL * p.done / p.total) + "%";
      darkWidth = static_cast<int>(static_cast<long long>(ProgressPanelLight.bounds().width) *
                                   p.done / p.total);
    }
  }
  if (p.total == 1 ? p.secondsPerUnit != 0.0 : p.done > 0)
    perFrame = SecondsPerFrameText(p.secondsPerUnit) + " sec/f";
  for (SReadouts* readouts : {&Light, &Dark}) {
    readouts->ElapsedValue.setCaption(elapsed);
    readouts->RemainingValue.setCaption(remaining);
    readouts->TotalValue.setCaption(total);
    readouts->PercentValue.setCaption(percent);
    readouts->PerFrameValue.setCaption(perFrame);
  }
  SBounds dark = ProgressPanelDark.bounds();
  dark.width = darkWidth;
  ProgressPanelDark.setBounds(dark);
}

void TExecStatusBarFrame::layOut() {
  constexpr int LINE = 18;
  const int width = bounds().width;
  StatusMessageLabel.setBounds({0, 0, 44, LINE});
  StatusMessageValue.setBounds({44, 0, width - 44 - 120, LINE});
  ToolMessageValue.setBounds({width - 120, 0, 120, LINE});
  const SBounds all = {0, 0, width, 20};
  ReadoutPanel.setBounds({0, LINE + 2, width, 20});
  ProgressPanelLight.setBounds(all);
  DisabledPanel.setBounds(all);
  ProgressPanelDark.setBounds({0, 0, 0, 20});
  for (SReadouts* readouts : {&Light, &Dark, &Disabled}) readouts->layOut(width);
}
