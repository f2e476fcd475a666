#include "ui/ExecStatusBarFrame.h"

#include <utility>

TExecStatusBarFrame::SReadouts::SReadouts(const std::string& suffix, TControl* parent)
    : ElapsedLabel("ElapsedLabel" + suffix, parent),
      ElapsedValue("ElapsedValue" + suffix, parent),
      RemainingLabel("RemainingLabel" + suffix, parent),
      RemainingValue("RemainingValue" + suffix, parent),
      TotalLabel("TotalLabel" + suffix, parent),
      TotalValue("TotalValue" + suffix, parent),
      PerFrameValue("PerFrameValue" + suffix, parent),
      PercentValue("PercentValue" + suffix, parent) {}

TExecStatusBarFrame::TExecStatusBarFrame(std::string name, TControl* parent, Clock)
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
      ElapsedTimer(250) {}

void TExecStatusBarFrame::SetIdle(bool) {}
void TExecStatusBarFrame::SetStatusMessage(const std::string&) {}
void TExecStatusBarFrame::PushStatusMessage(const std::string&) {}
void TExecStatusBarFrame::PopStatusMessage() {}
void TExecStatusBarFrame::SetToolMessage(const std::string&) {}
void TExecStatusBarFrame::SetFrameCount(int, int) {}
void TExecStatusBarFrame::StartProgress() {}
void TExecStatusBarFrame::BumpProgress(int) {}
void TExecStatusBarFrame::StopProgress(bool) {}
std::string TExecStatusBarFrame::TimeText(double) {
  return {};
}
std::string TExecStatusBarFrame::SecondsPerFrameText(double) {
  return {};
}
