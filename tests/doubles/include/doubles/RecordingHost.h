#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ToolObj/ToolFrameBuffer.h"
#include "doubles/CallLog.h"
#include "host/NavSystemInterface.h"

/// A clip with settable answers; 24 frames per second, timecode 0 at its first frame.
class CClipDouble : public IClip {
 public:
  std::string clipPath = "/clips/shot.%04d.dpx";
  int first = 0;
  int end = 100;

  std::string path() const override { return clipPath; }
  int firstFrame() const override { return first; }
  int endFrame() const override { return end; }
  CTimecode startTimecode() const override { return CTimecode(0, 24, false); }
  CTimecode timecodeOfFrame(int frame) const override {
    return CTimecode(frame - first, 24, false);
  }
  int frameOfTimecode(const CTimecode& timecode) const override;
};

/// The host as a tool meets it. Requests and commands are recorded in `calls`; plain questions
/// (marks, displayed frame, clip, image format, batch run, ...) are answered from the public
/// members and not recorded. A test sets answers before it acts and reads the log afterwards.
///
/// Behaves like a small host: setMarkIn, setMarkOut and goToFrame change what the getters answer,
/// MakeSimpleToolSetup counts handles up from 0, SetActiveToolSetup is remembered. THREAD: what a
/// processor's thread may call (see CNavSystemInterface) is safe from any; the rest belongs to the
/// test's thread.
class CRecordingHost : public CNavSystemInterface {
 public:
  struct SToolSetup {
    std::string toolName;
    int kind = 0;
    CToolIOConfig config;
  };

  CRecordingHost();
  ~CRecordingHost() override;

  CCallLog calls;

  /// Results of calls that should fail, by operation: `failures["SetToolParameters"] = -5`. Works
  /// for MakeSimpleToolSetup, SetActiveToolSetup, SetToolFrameRange and SetToolParameters.
  std::map<std::string, int> failures;
  /// Called after a call was recorded, with its text: a test lets the host react here.
  std::function<void(const std::string& call)> onCall;

  // Answers.
  int markIn = -1;
  int markOut = -1;
  int displayedFrame = 0;
  bool clipOpen = true;
  CClipDouble clip;
  CImageFormat imageFormat{64, 48};
  std::vector<std::uint16_t> displayedSamples;  ///< empty: no frame to copy
  int pixelMaximum = 1023;
  float pixel[3] = {0.0F, 0.0F, 0.0F};  ///< every pixel of the displayed frame, as fractions
  std::string folderText = "/clips/shot";
  bool firstShow = false;
  bool renderPermitted = true;
  bool batchRun = false;
  int displayedFrameStatus = 0;
  int parameterValue = 0;
  bool displayAvailable = true;
  bool displaySetting = false;
  TControl* focusedControl = nullptr;
  bool hasFrameAllocator = true;
  int frameAllocatorLimit = 0;           ///< buffers of each pool made from now on; 0 unlimited
  std::map<int, int> toolSetupStatuses;  ///< by handle; a handle that is missing has status 0

  // What the tool left with the host.
  std::map<int, SToolSetup> toolSetups;  ///< by handle, destroyed ones removed
  int activeToolSetup = -1;
  std::unique_ptr<CToolFrameRange> frameRange;  ///< of the last SetToolFrameRange
  std::unique_ptr<CToolParameters> parameters;  ///< of the last SetToolParameters
  int renderMode = -1;
  const SCursorImage* cursor = nullptr;
  CTrackingPointsEditor* editor = nullptr;
  IToolProgressMonitor* toolProgressMonitor = nullptr;
  TControl* controlPanel = nullptr;
  CToolFrameCache toolFrameCache;

  /// The pool that getFrameAllocator gives for this size; made when there is none yet.
  CBufferPool& framePool(std::size_t bytesPerField);

  int getMarkIn() override { return markIn; }
  int getMarkOut() override { return markOut; }
  void setMarkIn(int frame) override;
  void setMarkOut(int frame) override;
  void goToFrame(int frame) override;
  int getDisplayedFrame() override { return displayedFrame; }

  bool isClipAvailable() override { return clipOpen; }
  const IClip* getClip() override { return clipOpen ? &clip : nullptr; }
  const CImageFormat* getClipImageFormat() override { return clipOpen ? &imageFormat : nullptr; }
  bool copyDisplayedFrame(std::uint16_t* samples) override;
  void prepareDisplayedPixels(int displayed) override {
    record("prepareDisplayedPixels", displayed);
  }
  bool readDisplayedPixel(int x, int y, int& maximum, float (&components)[3]) override;
  std::string getFolderText() override { return folderText; }

  int MakeSimpleToolSetup(const std::string& toolName, int kind,
                          const CToolIOConfig& config) override;
  int SetActiveToolSetup(int handle) override;
  int getActiveToolSetup() override { return activeToolSetup; }
  int getToolSetupStatus(int handle) override;
  void destroyToolSetup(int handle) override;
  int SetToolFrameRange(const CToolFrameRange& range) override;
  int SetToolParameters(CToolParameters* newParameters) override;
  void setRenderMode(int mode) override;
  void RunActiveToolSetup() override { record("RunActiveToolSetup"); }
  void pauseActiveToolSetup() override { record("pauseActiveToolSetup"); }
  void stopActiveToolSetup() override { record("stopActiveToolSetup"); }

  void StartTrackingRun() override { record("StartTrackingRun"); }
  void StopTrackingRun() override { record("StopTrackingRun"); }

  bool isRenderPermitted() override { return renderPermitted; }
  bool isBatchRun() override { return batchRun; }
  int getDisplayedFrameStatus() override { return displayedFrameStatus; }
  int getParameterValue() override { return parameterValue; }

  CToolFrameCache* getToolFrameCache() override { return &toolFrameCache; }
  void frameOutputHook(CToolFrameBuffer* frame, int toolNumber, const std::string& name,
                       bool processingStarted) override;
  CBufferPool* getFrameAllocator(std::size_t bytesPerField, int count, int valueA,
                                 int valueB) override;

  void notifyToolIdle() override { record("notifyToolIdle"); }
  void prepareForToolCall() override { record("prepareForToolCall"); }
  void SetHelpPages(const std::string& operation, const std::string& hotKeys, int flag) override;
  void setDisplayMode(int mode) override;
  void redrawDisplay(int flag) override;

  void setDrawingColor(int color) override;
  void drawRectangle(int color, const SRect& rect) override;
  void drawTrackBox(double x, double y, int halfWidth, int halfHeight, int searchHalfWidth,
                    int searchHalfHeight, bool highlight) override;
  void drawArrow(double fromX, double fromY, double toX, double toY, int length,
                 int width) override;

  void showCursor(const SCursorImage* newCursor) override;
  void setToolEditor(CTrackingPointsEditor* newEditor) override;
  void setToolProgressMonitor(IToolProgressMonitor* monitor) override;
  void setToolActive(bool active) override;
  bool canToolTakeDisplay() override { return displayAvailable; }
  bool getDisplaySetting() override { return displaySetting; }
  void setDisplaySetting(bool setting) override;
  bool isFirstShow() override { return firstShow; }

  void toggleFix(bool flag) override;
  void capturePDL(bool allEvents) override;
  void focusControl(TControl* control) override;
  TControl* getFocusedControl() override { return focusedControl; }
  void setToolControlPanel(const std::string& title, int number, TControl* panel,
                           int flag) override;
  void removeToolControlPanel(int number) override;

 private:
  template <typename... TArguments>
  void record(const std::string& operation, const TArguments&... arguments) {
    const std::string call = CCallLog::text(operation, arguments...);
    calls.add(call);
    if (onCall) onCall(call);
  }
  /// The injected result of the operation, or `result`.
  int answer(const std::string& operation, int result) const;

  int nextToolSetup_ = 0;
  std::mutex poolsMutex_;
  std::map<std::size_t, std::unique_ptr<CBufferPool>> pools_;
};
