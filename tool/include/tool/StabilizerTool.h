#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "ToolObj/ColorPickTool.h"
#include "ToolObj/ToolObject.h"
#include "params/StabilizerParameters.h"
#include "smoothing/StabilizerShot.h"
#include "support/ErrorReport.h"
#include "support/HRTimer.h"
#include "support/Hook.h"
#include "support/Threads.h"
#include "tool/StabilizerWindow.h"
#include "tracking/TrackingArray.h"
#include "tracking/TrackingPointsEditor.h"

/// What window and commands ask of run control. Hosts hold these numbers; do not change.
enum ERunRequest {
  REQUEST_TRACK_IF_POSSIBLE = 1,
  REQUEST_TRACK = 2,
  REQUEST_PARAMETERS_CHANGED = 3,
  REQUEST_PREVIEW_FRAME = 4,
  REQUEST_PREVIEW_ALL = 6,
  REQUEST_RENDER_FRAME = 7,
  REQUEST_RENDER_ALL = 9,
  REQUEST_PAUSE = 10,
  REQUEST_RESUME = 11,
  REQUEST_STOP = 12
};

/// The stabiliser: owns a shot's points, settings, editor and window, answers the host, and moves
/// the shot through tracking, smoothing and rendering.
///
/// Work is a run state (ERunState) and at most one pending request; the host's heartbeat advances
/// them. THREAD: the host's user-interface thread. The smoothing thread and the processor's thread
/// know the tool only as an IStabilizerShot: what that gives them is atomic, under a lock of its
/// own, or a copy taken when their pass was set up, so an operator may go on editing meanwhile.
class CStabilizerTool : public CToolObject, public IStabilizerShot {
 public:
  static constexpr int TOOL_NUMBER = 20;
  using WindowFactory = std::function<std::unique_ptr<IStabilizerWindow>(CStabilizerTool&)>;

  /// Does not talk to the host. `makeWindow` is called when the tool is first shown.
  CStabilizerTool(const std::string& toolName, WindowFactory makeWindow);
  /// REQUIRES: `toolShutdown` was called if `toolInitialize` was, and the tool's processors are
  /// gone.
  ~CStabilizerTool() override;

  // Life and notifications (StabilizerTool.cpp).
  int toolInitialize(CNavSystemInterface* systemInterface) override;
  int toolShow() override;
  int toolHide() override;
  int toolActivate() override;
  int toolDeactivate() override;
  /// Destroys the window, once a smoothing run that is under way has ended.
  int toolShutdown() override;
  bool isToolShowing() override;
  bool canRenderWithoutAsking() override { return false; }
  int onMarksChange() override;
  int onClipChange() override;
  int onNewClip() override;
  int onFramingChange() override;
  int drawOverlay() override;
  int onMouseMove(CUserInput& input) override;
  int onUserInput(CUserInput& input) override;
  void showTrackingPoints() override;
  void onProcessingStateChanged(int state, bool renderFlag) override;

  // What commands do (CommandActions.cpp).
  /// While the window shows, performs an EStabilizerCommand or EExecutionCommand: 18 where it
  /// consumed its input, else 1. A picker that is on is switched off by what consumed its input.
  int onToolCommand(CToolCommand& command) override;
  /// The keys say that Shift is down: points are then loaded without their marks.
  bool isShiftHeld() const { return shiftHeld_; }

  // Settings and points as one process-list entry (ProcessListEntry.cpp).
  int capturePDLEntry(CPDLEntry& entry) override;
  int runPDLEntry(CPDLEntry& entry) override;

  // Run control (RunControl.cpp).
  /// Takes an ERunRequest. What does not fit the run state, and any other number, is ignored.
  void request(int number);
  int onHeartbeat() override;
  void StartTracking();
  /// In a batch run a pass whose tracking or path is not current is kept until it has been tracked
  /// and smoothed.
  int startProcessing(int command, bool flag) override;
  /// 3 (running) while tracking, smoothing or rendering is under way.
  int getToolProcessingState() override;
  /// Whether the tracking must be done again: it was asked for, the set is not tracked over the
  /// marks, or it was tracked with other box sizes. The answer is kept for the next pass.
  bool evaluateRetracking();
  /// The smoothed path no longer belongs to the settings. Request 3 makes a new one.
  void discardSmoothedPath();

  // Passes through a host tool setup (PassSetup.cpp); 0 or the failing call's code.
  bool ValidateMarks(int markIn, int markOut, int frame);
  int RunFrameProcessing(int frame) override;
  int RunFramePreprocessing() override;
  int ProcessSingleFrame(int kind) override;
  int previewDisplayedFrame() override;
  CToolProcessor* makeToolProcessorInstance(const CAbortFlag* abortFlag) override;
  int onToolProcessingStatus(const CAutotoolStatus* status) override;

  // The stabiliser's processing states (ProcessingStates.cpp).
  int onProcessingEvent(int event, const CAutotoolStatus& status, int frame) override;

  // Tracking passes and points (TrackingControl.cpp).
  bool onTrackingStart() override;
  void onTrackingEnd(int failed) override;
  /// Ask the operator where moved marks would cost points or tracking. False: refused, and the old
  /// mark was put back.
  bool checkMarkChanges();
  bool checkMarkInChange();
  bool checkMarkOutChange();
  void clearAllTrackingData();
  /// +1 and -1 step through the points, round and round.
  void selectRelativePoint(int delta);
  bool pointNeedsRetracking() { return editor_.needsRetracking(); }
  void setTrackingPointsVisible(bool visible);
  /// Sizes in pixels as CTrackingArray has them: track box x and y, search left, right, up, down.
  void setBoxExtents(int x, int y, int left, int right, int up, int down);
  /// The set holds points and is tracked over the marks.
  bool isTracked();
  /// ... and its smoothed path is valid.
  bool isSmoothed() { return isTracked() && smoothed_; }

  // Points files (PointsFile.cpp). What fails, and why, is told to the trace.
  /// Writes the live points, matting box and matting switch; an old file is replaced whole.
  bool SaveTrackingPoints(const std::string& path);
  /// The file's points become the live ones. With `setMarks` the marks are moved to their frames;
  /// where the host takes them, tracked points stay tracked and are smoothed. Else only the points
  /// of the file's first frame are taken, to mark IN, to be tracked anew. Refused while a tracking
  /// pass is under way, and for files above 256 megabytes. On false nothing has changed.
  bool LoadTrackingPoints(const std::string& path, bool setMarks);
  /// "stab_" and the timecode of mark IN.
  std::string SuggestedPointsFileName();
  void SavePointsWithDialog();
  void LoadPointsWithDialog(bool setMarks);

  // Matting box, frame pixels, inclusive (MattingBox.cpp).
  void setMattingBox(const SRect& box);
  SRect getMattingBox() const { return mattingBox_; }
  bool isMattingBoxValid() const { return mattingBoxValid_; }
  /// Switching on repairs the box: without a valid one it becomes the whole frame.
  void showMattingBox(bool show);
  bool isMattingBoxShown() const { return mattingBoxShown_; }
  /// Whether runs keep to the box. Noted in the tracked array, where the host reads it as well.
  void setUseMatting(bool use) { tracked_.SetUseMatting(use); }
  /// Finds the border on the displayed frame; colour in 8-bit code values whatever the clip's
  /// depth, seed a pixel of the border, or 0, 0 or a place outside the frame for none. Nothing
  /// happens without a frame.
  void findMattingBox(const std::array<int, 3>& color = {25, 25, 25}, int seedX = 0, int seedY = 0);
  /// While the colour picker is on, a click into the picture says which colour the border has and
  /// where it lies, and the box is found from that.
  void setColorPickerOn(bool on) { colorPicker_.setMode(on); }
  bool isColorPickerOn() const { return colorPicker_.isOn(); }

  // What the window shows (ShotAccess.cpp).
  int runState() override { return runState_; }
  std::string getStatusMessage() override;
  void setStatusMessage(const std::string& text) override;
  std::string getTimeMessage() override;
  void setTimeMessage(const std::string& text) override;
  /// The live points. Passes under way work on a copy of their own.
  CTrackingArray& livePoints() { return tracked_; }
  CTrackingPointsEditor& editor() { return editor_; }
  /// The motion as measured and as intended, three points a frame. Not to be read while the run
  /// state is RUN_SMOOTHING.
  CTrackingArray& syntheticOriginalArray() override { return syntheticOriginal_; }
  CTrackingArray& syntheticSmoothedArray() override { return syntheticSmoothed_; }
  int resumeFrame() const { return resumeFrame_; }
  void setResumeFrame(int frame) { resumeFrame_ = frame; }
  /// Frame of a one-frame preview, -1 for a range pass.
  int singleFrame() const { return singleFrame_; }
  /// Whole seconds of the last tracking pass.
  int trackingDuration() const { return trackingDuration_; }
  void setClearOnShotChange(bool clear) { clearOnShotChange_ = clear; }
  void setMarkOutWarnings(bool warn) { markOutWarnings_ = warn; }
  /// 1 move and copy the points, 2 move and clear, 3 prompt.
  int markInMovePreference() const { return markInMovePreference_; }
  void setMarkInMovePreference(int preference) { markInMovePreference_ = preference; }
  /// Full name of the settings file.
  const std::string& settingsFileName() const { return settingsFileName_; }
  /// The host's text for the current clip, as it was when the clip was opened.
  const std::string& folderText() const { return folderText_; }
  void refresh();

  CBHook pointsChangedHook;  ///< from the heartbeat, after the points changed
  CBHook clipChangedHook;    ///< before the host leaves the clip
  CBHook newClipHook;
  CBHook marksChangedHook;

 protected:
  /// Milliseconds since the tracking pass began. A test brings a clock of its own.
  virtual double trackingMilliseconds() const { return trackingTimer_.Read(); }

 private:
  // The shot as smoothing thread and processor see it (ShotAccess.cpp).
  CStabilizerParameters gatherParameters() override { return pass_.parameters; }
  CTrackingArray& trackedArray() override { return pass_.points; }
  SRect mattingBox() override { return pass_.mattingBox; }
  int selectedPoint() override { return pass_.selectedPoint; }
  void frameRendered(int frame) override;
  void setRendered() override { passCompleted_ = true; }
  void setZoomSource(const SRectD& source) override { passZoomSource_ = source; }
  void setRunState(int state) override;
  void setSmoothedFlag(bool smoothed) override { smoothed_ = smoothed; }
  IToolProgressMonitor* progressMonitor() override { return getProgressMonitor(); }
  CCountingWait& smoothingWait() override { return smoothingWait_; }
  void takePassCopies();

  void refreshExecutionButtons();
  void updateWindow();
  void destroyWindow();
  void releaseToolSetups(bool keepRunning);

  // Actions of commands. REQUIRES: a window.
  int performCommand(int number);
  void togglePointVisibility();
  void toggleMattingBoxVisibility();
  void setMarksFromPoints();
  void focusOn(EFocusTarget target);
  void focusOnChoice(EButtonGroup group);
  void stepOrFocusFill();

  void requestTracking();
  void requestTrackIfPossible();
  void requestSmoothing();
  void requestPass(int event);
  void stop();
  void forgetPendingRequest();
  void startSmoothing();
  void onSmoothingCompleted();
  void onStalePathCompleted();
  void startRequestedPass();
  void onPassEnded();
  bool lacksPath();
  void deferPass(int event, bool retrack);
  void doPostponedClear();
  bool areArraysInUse();

  int failPass(CAutoErrorReporter& reporter, int code, const std::string& text);
  int activateRangeSetup(CAutoErrorReporter& reporter);
  int activateSetup(int handle, CAutoErrorReporter& reporter);
  int sendFrameRange(const CToolFrameRange& range, const char* who, CAutoErrorReporter& reporter);
  int sendParameters(const char* who, CAutoErrorReporter& reporter);
  void countFrom(int first);
  bool checkMarksAndClip(CAutoErrorReporter& reporter);

  int performShotEvent(int event, const CAutotoolStatus& status, int frame, int& newState);
  int startPass(int event, const CAutotoolStatus& status, int frame, int& newState);
  void onRunStopped();

  bool isTrackingPassUnderWay() const;
  /// False: the host or the operator refused, and the marks are where they were.
  bool takeMarksOf(const CTrackingArray& points);
  void placeAtMarkIn(CTrackingArray& points);
  void forgetWhatHasNotBegun();
  void installPoints(const CTrackingArray& points, bool tracked);
  void onTrackedPointsLoaded();

  bool isTrackingWorthProtecting();
  bool mayMoveMarkIn();
  bool mayDeleteMarkIn();
  /// Asks; on cancel puts the mark back and answers false.
  bool confirmMark(const char* question, void (CNavSystemInterface::*putBack)(int), int oldMark);

  void keepMattingBox(const SRect& box);
  void loadMattingBox();
  void saveMattingBox();
  void findMattingBoxOfPick();
  void turnColorPickerOff();

  // The shot.
  CTrackingArray tracked_;
  CTrackingArray syntheticOriginal_;
  CTrackingArray syntheticSmoothed_;
  CTrackingPointsEditor editor_;
  CColorPickTool colorPicker_;
  WindowFactory makeWindow_;
  std::unique_ptr<IStabilizerWindow> window_;
  int boxExtents_[6] = {10, 10, 10, 10, 10, 10};
  SRect mattingBox_;
  bool mattingBoxValid_ = false;
  bool mattingBoxShown_ = true;
  std::string folderText_;
  std::string settingsFileName_;
  int markInMovePreference_ = 3;
  int resumeFrame_ = -1;
  bool shiftHeld_ = false;

  // Host notifications.
  bool active_ = false;
  bool newClipPending_ = false;
  bool marksChangePending_ = false;
  bool refreshPending_ = false;
  bool pointsChanged_ = false;
  bool savedDisplaySetting_ = false;

  // Run control.
  int pendingRequest_ = RUN_IDLE;  ///< run state to take when smoothing completes
  int pendingArgument_ = 0;        ///< processing event of a pending render
  bool needsRetracking_ = true;
  bool deferredRender_ = false;
  bool smoothedPathStale_ = false;  ///< settings changed while their path was being made
  bool clearPostponed_ = false;     ///< a pass was reading the synthetic points
  int rangeSetup_ = -1;
  int previewFrameSetup_ = -1;
  int renderFrameSetup_ = -1;
  int singleFrame_ = -1;
  bool singleFrameRun_ = false;
  static constexpr int NO_FRAME = -1;
  int passEnd_ = NO_FRAME;       ///< of a pass up to mark OUT; NO_FRAME: another one
  int renderedFrom_ = NO_FRAME;  ///< where the frames that are done began

  // Mark questions.
  CHRTimer trackingTimer_;
  int trackingDuration_ = 0;
  bool renderCompleted_ = false;
  bool moveInAnswered_ = false;
  bool clearOnShotChange_ = false;
  bool markOutWarnings_ = true;

  // Shared with the smoothing thread and the processor's thread.
  std::atomic<int> runState_{RUN_IDLE};
  std::atomic<bool> smoothed_{false};
  std::atomic<bool> passCompleted_{false};
  /// Every frame from `renderedFrom_` to here is done, be it with pauses.
  std::atomic<int> renderedUpTo_{NO_FRAME};
  SRectD passZoomSource_;  // the processor's until it reports "stopped", then this thread's
  CThreadLock statusLock_;
  std::string statusMessage_;
  CThreadLock timeLock_;
  std::string timeMessage_;
  CCountingWait smoothingWait_;
  CThreadEvent smoothingEnded_;
  /// What a pass reads of the live data. Written while no pass runs; the start of the thread, or
  /// the run command to it, hands it over.
  struct SPassCopies {
    CStabilizerParameters parameters;
    CTrackingArray points;
    SRect mattingBox;
    int selectedPoint = -1;
  } pass_;
};
