#pragma once

#include <string>

#include "ToolObj/ProgressMonitor.h"
#include "params/StabilizerParameters.h"
#include "support/Rect.h"
#include "support/Threads.h"
#include "tracking/TrackingArray.h"

/// Run states of a shot's work; the labels of the window belong to these numbers.
enum ERunState {
  RUN_IDLE = 0,
  RUN_ERROR = 1,
  RUN_TRACKING_REQUESTED = 2,
  RUN_TRACKING = 3,
  RUN_TRACKED = 4,
  RUN_SMOOTHING_REQUESTED = 5,
  RUN_SMOOTHING = 6,
  RUN_SMOOTHED = 7,
  RUN_RENDER_REQUESTED = 8,
  RUN_RENDERING = 9,
  RUN_RENDERED = 10
};

/// The shot as the smoother and the frame processor see it; the tool is one.
/// THREAD: run state, smoothed flag, texts, progress monitor and smoothing wait: any. The tracked
/// array: the user-interface thread alone; a smoothing run copies it before its thread starts. The
/// synthetic arrays: the smoothing thread while the run state is RUN_SMOOTHING, so nobody else
/// looks at them then; the processor's thread (reading) while it is RUN_RENDERING; else the
/// user-interface thread. The run state is set after what it announces and read before it: it must
/// be atomic.
class IStabilizerShot {
 public:
  virtual ~IStabilizerShot() = default;

  virtual CTrackingArray& trackedArray() = 0;
  virtual CTrackingArray& syntheticOriginalArray() = 0;
  virtual CTrackingArray& syntheticSmoothedArray() = 0;

  virtual SRect mattingBox() = 0;
  /// Index of the point that the editor holds as its current one, -1 for none.
  virtual int selectedPoint() = 0;
  /// A frame of the running pass is done. Called by the processor's thread, and so is setRendered.
  virtual void frameRendered(int frame) = 0;
  /// The running pass has done every frame of its range.
  virtual void setRendered() = 0;
  /// The part of the picture that the running pass enlarges to its processing rectangle (zoom
  /// fill). Called by the processor's thread when the pass ends, before it says so.
  virtual void setZoomSource(const SRectD& source) = 0;

  virtual int runState() = 0;
  virtual void setRunState(int state) = 0;
  virtual void setSmoothedFlag(bool smoothed) = 0;

  virtual std::string getStatusMessage() = 0;
  virtual void setStatusMessage(const std::string& text) = 0;
  virtual std::string getTimeMessage() = 0;
  virtual void setTimeMessage(const std::string& text) = 0;
  virtual IToolProgressMonitor* progressMonitor() = 0;

  /// The settings as they were when the run was started. Called on the smoothing thread once a run:
  /// an implementation must not read a record that another thread may be changing.
  virtual CStabilizerParameters gatherParameters() = 0;
  /// Joins the path threads of a smoothing run.
  virtual CCountingWait& smoothingWait() = 0;
};
