#pragma once

#include "host/NavSystemInterface.h"
#include "support/Hook.h"
#include "tracking/TrackingArray.h"

/// What a moved mark would do to the tracking data: nothing to say, the mark was deleted, it moved
/// inside the tracked frames, or outside. Hosts hold these numbers; do not change.
enum EMarkChange { MARK_UNCHANGED = 0, MARK_DELETED = 1, MARK_INSIDE = 2, MARK_OUTSIDE = 3 };

/// The object through which host and tool share the live tracking data: selection, visibility,
/// change notifiers, what a change of the marks does to the data, and drawing. The tool owns it and
/// hands it to the host while it is active. Without an array operations on data do nothing (0,
/// false); without a host, what would ask it for marks or draw does nothing. Questions about the
/// data drop its leading empty frames first, so none of them is const.
/// THREAD: the host's user-interface thread.
class CTrackingPointsEditor {
 public:
  CTrackingPointsEditor();
  CTrackingPointsEditor(const CTrackingPointsEditor&) = delete;
  CTrackingPointsEditor& operator=(const CTrackingPointsEditor&) = delete;

 private:
  int selectedPointValue_ = -1;
  bool showPointsValue_ = true;

 public:
  /// Index of the selected point, -1 for none. Another value fires pointsChangedHook.
  lValueProperty<int> selectedPoint;
  /// Whether points are drawn. Another value refreshes the display.
  lValueProperty<bool> showPoints;
  /// The remembered marks have followed the host's.
  CBHook marksChangedHook;
  /// Data or selection have changed.
  CBHook pointsChangedHook;
  /// The operator has edited the points: what was made of their paths is out of date, also where
  /// they are still tracked. Fired before pointsChangedHook.
  CBHook pointsEditedHook;

  /// Not owned. Forgets the remembered marks and draws.
  void setSystemAPI(CNavSystemInterface* host);
  /// Not owned; null detaches. keepState false makes the set untracked and adjusts it to the marks;
  /// keepState true makes a rendered set a tracked one. Deselects.
  void setTrackingArray(CTrackingArray* array, bool keepState);
  CTrackingArray* trackingArray() const { return array_; }

  /// The motion that the tool last smoothed, three points a frame: as measured and as intended.
  /// Null until there is one; not owned. The host draws and reports from them while no smoothing
  /// runs.
  void setMotionArrays(const CTrackingArray* original, const CTrackingArray* smoothed);
  const CTrackingArray* originalMotion() const { return originalMotion_; }
  const CTrackingArray* smoothedMotion() const { return smoothedMotion_; }

  /// The part of the picture that the last pass enlarged to its processing region; empty (all zero)
  /// when it enlarged nothing.
  void setZoomSource(const SRectD& source) { zoomSource_ = source; }
  const SRectD& zoomSource() const { return zoomSource_; }

  /// Forgets the marks and clears all points.
  void resetMarks();
  void setTracked();
  void setRendered();
  /// To be called after editing the array directly. Every point's status is evaluated anew when it
  /// is next drawn; both hooks are fired and the display refreshed.
  void setEdited();
  /// True when the set is tracked and covers the remembered marks.
  bool isTrackingValid();
  bool needsRetracking() { return !isTrackingValid(); }
  bool isFrameTracked(int frame);
  /// Drops all but the first frame with a point; the set is untracked then.
  void keepFirstFrame();
  void clearAll();
  /// What the host's current mark would do to the data, an EMarkChange.
  int markInChange();
  int markOutChange();
  /// Adjusts the data to new marks (negative: unset) and remembers them. No mark IN, now or before:
  /// the points go. IN outside the tracked frames: the points move there, untracked. No mark OUT:
  /// only the frame at IN stays.
  void applyMarks(int in, int out);
  /// applyMarks with the host's marks.
  void updateMarks();
  /// Stores the point's status for the remembered marks with its attributes.
  void evaluatePointStatus(int point);
  /// Draws boxes and anchor arrows of the displayed frame through the host.
  void drawTrackingPoints();
  /// Deselects when there is no point left, and lets the host draw its display again.
  void refresh();
  int markIn() const { return markIn_; }
  int markOut() const { return markOut_; }
  /// While set, the data is not adjusted to the marks and drawing is not limited to them.
  void setSuspended(bool suspended) { suspended_ = suspended; }

 private:
  bool hasPoints() { return array_ != nullptr && array_->NumberOfPoints() > 0; }
  int classify(int mark);
  bool drawingColor(int frame, int& color) const;
  void drawPoint(int point, const CTrackingPoints& points, int color, int arrowLength);

  int boxCache_[6] = {-1, -1, -1, -1, -1, -1};  ///< extents as last drawn
  CNavSystemInterface* host_ = nullptr;
  CTrackingArray* array_ = nullptr;
  const CTrackingArray* originalMotion_ = nullptr;
  const CTrackingArray* smoothedMotion_ = nullptr;
  SRectD zoomSource_;
  int markIn_ = -1;
  int markOut_ = -1;
  bool suspended_ = false;
};
