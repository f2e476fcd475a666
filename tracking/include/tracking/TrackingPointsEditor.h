#pragma once

#include "host/NavSystemInterface.h"
#include "support/Hook.h"
#include "tracking/TrackingArray.h"

/// The object through which host and tool share the live tracking data: selection, visibility,
/// change notifiers, what a change of the marks does to the data, and drawing. The tool owns it and
/// hands it to the host while it is active. Without an array operations on data do nothing (0,
/// false). THREAD: the host's user-interface thread.
class CTrackingPointsEditor {
 public:
  CTrackingPointsEditor();
  CTrackingPointsEditor(const CTrackingPointsEditor&) = delete;
  CTrackingPointsEditor& operator=(const CTrackingPointsEditor&) = delete;

 private:
  int selectedPointValue_ = -1;
  bool showPointsValue_ = true;

 public:
  /// Index of the selected point, -1 for none.
  lValueProperty<int> selectedPoint;
  lValueProperty<bool> showPoints;
  CBHook marksChangedHook;
  CBHook pointsChangedHook;

  void setSystemAPI(CNavSystemInterface* host);
  /// Not owned. keepState false makes the set untracked and adjusts it to the marks.
  void setTrackingArray(CTrackingArray* array, bool keepState);
  CTrackingArray* trackingArray() const { return array_; }

  /// The motion that the tool last smoothed, three points a frame: as measured and as intended.
  /// Null until there is one; not owned. The host draws and reports from them while no smoothing
  /// runs.
  void setMotionArrays(const CTrackingArray* original, const CTrackingArray* smoothed);
  const CTrackingArray* originalMotion() const { return originalMotion_; }
  const CTrackingArray* smoothedMotion() const { return smoothedMotion_; }

  void resetMarks();
  void setTracked();
  void setRendered();
  bool isTrackingValid() const;
  bool needsRetracking() const { return !isTrackingValid(); }
  bool isFrameTracked(int frame) const;
  void keepFirstFrame();
  void clearAll();
  /// 0 nothing to say, 1 mark deleted, 2 moved inside the tracked frames, 3 moved outside.
  int markInChange() const;
  int markOutChange() const;
  void applyMarks(int in, int out);
  void updateMarks();
  void evaluatePointStatus(int point);
  void drawTrackingPoints();
  void refresh();
  int markIn() const { return markIn_; }
  int markOut() const { return markOut_; }
  /// While set, the data is not adjusted to the marks and drawing is not limited to them.
  void setSuspended(bool suspended) { suspended_ = suspended; }

 private:
  int boxCache_[6] = {-1, -1, -1, -1, -1, -1};
  CNavSystemInterface* host_ = nullptr;
  CTrackingArray* array_ = nullptr;
  const CTrackingArray* originalMotion_ = nullptr;
  const CTrackingArray* smoothedMotion_ = nullptr;
  int markIn_ = -1;
  int markOut_ = -1;
  bool suspended_ = false;
};
