#pragma once

#include "ToolObj/ProgressMonitor.h"
#include "doubles/CallLog.h"

/// A progress monitor that only records: "SetFrameCount 10 1", "BumpProgress 1", "StopProgress 1".
/// THREAD: any.
class CRecordingProgressMonitor : public IToolProgressMonitor {
 public:
  CCallLog calls;

  void SetIdle(bool setText) override { calls.add(CCallLog::text("SetIdle", setText)); }
  void SetStatusMessage(const std::string& text) override {
    calls.add(CCallLog::text("SetStatusMessage", text));
  }
  void PushStatusMessage(const std::string& text) override {
    calls.add(CCallLog::text("PushStatusMessage", text));
  }
  void PopStatusMessage() override { calls.add("PopStatusMessage"); }
  void SetToolMessage(const std::string& text) override {
    calls.add(CCallLog::text("SetToolMessage", text));
  }
  void SetFrameCount(int total, int step) override {
    calls.add(CCallLog::text("SetFrameCount", total, step));
  }
  void StartProgress() override { calls.add("StartProgress"); }
  void BumpProgress(int units) override { calls.add(CCallLog::text("BumpProgress", units)); }
  void StopProgress(bool completed) override {
    calls.add(CCallLog::text("StopProgress", completed));
  }
};
