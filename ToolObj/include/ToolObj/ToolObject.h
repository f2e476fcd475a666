#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "ToolObj/AutotoolStatus.h"
#include "ToolObj/ProgressMonitor.h"
#include "ToolObj/ToolCommand.h"
#include "ToolObj/ToolProcessor.h"
#include "ToolObj/UserInput.h"
#include "host/NavSystemInterface.h"
#include "support/PDLElement.h"

/// Base class of every tool: identity, the host's interface, the input map, the progress monitor,
/// and the state machine that turns processing requests and processor statuses into runs.
///
/// Results of input and notification operations: 1 not handled (the host goes on); bit 16 consumed;
/// 18 handled and consumed. Processing and set-up operations give 0 or an error code. THREAD: the
/// host's user-interface thread, for every operation; a processor's statuses come through the host.
///
/// Life: constructed by the plug-in, toolInitialize, any number of toolShow / toolActivate /
/// toolDeactivate / toolHide, toolShutdown, destroyed. REQUIRES: before initBaseToolObject nothing
/// but the getters is called.
class CToolObject {
 public:
  enum EResult { NOT_HANDLED = 1, CONSUMED = 16, HANDLED = 18 };
  static constexpr int PDL_NOT_IMPLEMENTED = -3000;

  /// What `onProcessingEvent` is told; known to hosts, do not change.
  enum EProcessingEvent {
    EVENT_STATUS = 0,
    EVENT_RESUME = 1,
    EVENT_PAUSE = 2,
    EVENT_PREVIEW_RANGE = 3,
    EVENT_PREVIEW_FRAME = 4,
    EVENT_RENDER_RANGE = 5,
    EVENT_RENDER_FRAME = 6,
    EVENT_STOP = 7,
    EVENT_PREPROCESS = 8
  };
  /// Known to hosts, do not change.
  enum EProcessingState {
    STATE_IDLE = 0,
    STATE_STOPPING = 1,
    STATE_PREPROCESSED = 2,  ///< not used by the base class
    STATE_RUNNING = 3,
    STATE_PAUSING = 4,
    STATE_PAUSED = 5,
    STATE_PREVIEW_FRAME = 7,         ///< one frame, from idle
    STATE_PREVIEW_FRAME_PAUSED = 8,  ///< one frame, from paused
    STATE_RENDER_FRAME = 9,
    STATE_RENDER_FRAME_PAUSED = 10
  };

  explicit CToolObject(const std::string& toolName);

  /// Stores the four and builds the input map; the first binding text that does not parse ends it
  /// with the parser's negative code. 0 on success.
  int initBaseToolObject(std::uint16_t toolNumber, CNavSystemInterface* systemInterface,
                         const CToolCommandTable* commandTable,
                         const CUserInputConfiguration* configuration);
  std::string getToolName() const { return toolName_; }
  std::uint16_t getToolNumber() const { return toolNumber_; }
  CNavSystemInterface* getSystemAPI() const { return systemInterface_; }
  const CToolCommandTable* getCommandTable() const { return commandTable_; }
  const CUserInputConfiguration* getInputConfiguration() const { return inputConfiguration_; }
  /// The flag of the last start request that was not refused.
  bool getStartFlag() const { return startFlag_; }
  /// The host's mark IN is 0 or more and lower than mark OUT.
  bool areMarksValid() const;
  /// Null restores the default monitor.
  void setProgressMonitor(IToolProgressMonitor* monitor);
  IToolProgressMonitor* getProgressMonitor() const { return progressMonitor_; }

  // Virtual operations, in the order of their slots. Unnamed hooks belong to other tools.
  virtual ~CToolObject();
  virtual int hook1() { return 1; }
  virtual int capturePDLEntry(CPDLEntry& entry);
  virtual int runPDLEntry(CPDLEntry& entry);
  virtual int hook2() { return 0; }
  virtual int hook3() { return 1; }
  virtual int hook4() { return 1; }
  virtual int onMouseMove(CUserInput& input);
  virtual int onMarksChange() { return NOT_HANDLED; }
  virtual int onClipChange() { return NOT_HANDLED; }
  virtual int onNewClip() { return NOT_HANDLED; }
  virtual int hook5() { return 1; }
  virtual int onFramingChange() { return NOT_HANDLED; }
  virtual int hook6() { return 1; }
  virtual int drawOverlay() { return NOT_HANDLED; }
  virtual int hook7() { return 1; }
  virtual int hook8() { return 1; }
  virtual int hook9() { return 1; }
  virtual int onToolCommand(CToolCommand& command);
  virtual int hook10() { return 1; }
  virtual int onUserInput(CUserInput& input);
  virtual int onHeartbeat() { return NOT_HANDLED; }
  virtual int toolActivate() { return 0; }
  virtual int toolDeactivate() { return 0; }
  virtual int toolHide() { return 0; }
  virtual bool toolPrepare();
  virtual int toolInitialize(CNavSystemInterface* systemInterface) = 0;
  virtual int toolShow() { return 0; }
  virtual int toolShutdown() = 0;
  /// A processor's status, forwarded by the host. REQUIRES: not null.
  virtual int onToolProcessingStatus(const CAutotoolStatus* status);
  virtual bool isToolShowing() { return false; }
  virtual bool canRenderWithoutAsking() { return true; }
  /// The host's answer for tool setup 0.
  virtual int hook11();
  /// Unlocks the support library's pool of buffer holders when idle; whether it was idle.
  virtual bool unlockBufferPool();
  virtual bool lockBufferPool();
  virtual void hook12() {}
  virtual void hook13() {}
  /// True lets the host's tracking pass run.
  virtual bool onTrackingStart() { return false; }
  virtual void onTrackingEnd(int failed);
  virtual void showTrackingPoints() {}
  virtual bool hook14() { return true; }
  virtual bool hook15() { return false; }
  virtual void hook16() {}
  /// The host owns the processor.
  virtual CToolProcessor* makeToolProcessorInstance(const CAbortFlag* abortFlag) = 0;
  virtual int resumeProcessing(int frame);
  virtual int pauseProcessing();
  /// `command` is one of the EProcessingEvents that start something. 0 and no effect when the host
  /// does not permit the render that it asks for.
  virtual int startProcessing(int command, bool flag);
  virtual int stopProcessing();
  virtual void setToolProcessingState(int state) { processingState_ = state; }
  virtual int getToolProcessingState() { return processingState_; }
  virtual int getLastProcessingError() { return lastProcessingError_; }
  virtual bool getRenderFlag() { return renderFlag_; }
  virtual int hook17() { return 1; }
  /// A new command, or none.
  virtual std::unique_ptr<CToolCommand> translateUserInput(const CUserInput& input);
  virtual bool consumesUnmappedInput() { return false; }
  /// The processing state machine. The result of the run operation that the input led to, else 0;
  /// a run operation that fails leaves the state as it is.
  virtual int onProcessingEvent(int event, const CAutotoolStatus& status, int frame);
  virtual int pauseRun();
  virtual int processFrameKind4() { return ProcessSingleFrame(4); }
  virtual int previewDisplayedFrame() { return previewFrameOnly(); }
  virtual int previewFrameOnly() { return ProcessSingleFrame(3); }
  virtual int renderDisplayedFrame() { return ProcessSingleFrame(1); }
  virtual int ProcessSingleFrame(int kind);
  virtual int RunFramePreview(int frame) { return RunFrameProcessing(frame); }
  virtual int RunFrameProcessing(int frame);
  virtual int RunFramePreprocessing() { return 0; }
  virtual int stopRun();
  virtual int stopSingleFrame();
  virtual void onProcessingStateChanged(int state, bool renderFlag);

 protected:
  /// The table of the state machine: performs what `status` or `event` asks for in `state` and
  /// returns the result of the run operation. `newState` becomes the state to take; it stays where
  /// nothing changes. Stores no state and notifies nobody.
  int performProcessingEvent(int state, int event, const CAutotoolStatus& status, int frame,
                             int& newState);
  void setRenderFlag(bool flag) { renderFlag_ = flag; }
  void setLastProcessingError(int code) { lastProcessingError_ = code; }
  int processingState() const { return processingState_; }

 private:
  struct SInputOfEvent {
    const CAutotoolStatus& status;
    int frame;
  };
  struct SStateRow;
  static const SStateRow* findStateRow(int state, int event, int status);

  void preparePass(bool render);
  int startFramePreview(const SInputOfEvent&);
  int startRangePreview(const SInputOfEvent&);
  int startFrameRender(const SInputOfEvent&);
  int startRangeRender(const SInputOfEvent&);
  int startPreprocessing(const SInputOfEvent&);
  int keepError(const SInputOfEvent&);
  int doStop(const SInputOfEvent&) { return stopRun(); }
  int doStopFrame(const SInputOfEvent&) { return stopSingleFrame(); }
  int doPause(const SInputOfEvent&) { return pauseRun(); }
  int doResume(const SInputOfEvent& input) { return RunFrameProcessing(input.frame); }
  int doPreviewFrame(const SInputOfEvent&) { return previewDisplayedFrame(); }
  int doRenderFrame(const SInputOfEvent&) { return renderDisplayedFrame(); }

  bool renderFlag_ = false;
  bool startFlag_ = true;
  int processingState_ = STATE_IDLE;
  int lastProcessingError_ = 0;
  std::string toolName_;
  std::uint16_t toolNumber_ = 0;
  const CToolCommandTable* commandTable_ = nullptr;
  std::unique_ptr<CToolUserInputMap> inputMap_;
  const CUserInputConfiguration* inputConfiguration_ = nullptr;
  CNavSystemInterface* systemInterface_ = nullptr;
  std::unique_ptr<CDefaultToolProgressMonitor> defaultMonitor_;
  IToolProgressMonitor* progressMonitor_;
};
