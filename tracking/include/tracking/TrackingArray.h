#pragma once

#include <map>

#include "support/IniFile.h"
#include "support/PDLElement.h"
#include "support/Rect.h"

/// The tracking data of one shot: where every point lies in every frame of the marked range. Plain
/// values on ordered maps. Frame indices are absolute clip frames; point indices name a point
/// across all frames; end indices are one past the last. Absent indices are answered with defaults,
/// never with an error. THREAD: no locks; the live array belongs to the user-interface thread.

/// One point in one frame; pixels, x the column, y the row.
struct CTrackPoint {
  double x = 0.0;
  double y = 0.0;
  bool highlight = false;
  bool valid = false;

  CTrackPoint() = default;
  /// A valid point.
  CTrackPoint(double x, double y, bool highlight = false)
      : x(x), y(y), highlight(highlight), valid(true) {}
  bool IsValid() const { return valid; }
  void WritePDLEntry(CPDLElement element) const;
  void ReadPDLEntry(const CPDLElement& element);
};

/// The points of one frame by point index - or one point's path by frame index (Trajectory). An
/// entry may exist and still be invalid.
class CTrackingPoints {
 public:
  int FirstIndex() const;
  int EndIndex() const;
  int ValidCount() const;
  /// Entries present, valid or not.
  int Count() const { return static_cast<int>(points_.size()); }
  bool IsValidPoint(int index) const;
  /// Creating access.
  CTrackPoint& Point(int index) { return points_[index]; }
  void RemovePoint(int index) { points_.erase(index); }
  /// Entries in order of index.
  const std::map<int, CTrackPoint>& Entries() const { return points_; }

  void WritePDLEntry(CPDLElement parent, int frame) const;
  /// Returns the element's frame index.
  int ReadPDLEntry(const CPDLElement& element);

 private:
  std::map<int, CTrackPoint> points_;
};

enum EAnchorType {
  ANCHOR_None = 0,
  ANCHOR_Horizontal = 1,
  ANCHOR_Vertical = 2,
  ANCHOR_Both = 3,
  ANCHOR_FixHorizontal = 4,
  ANCHOR_FixVertical = 5
};
/// Stored names of the anchor types.
const CIniAssociations& AnchorTypeNames();

enum ETrackStatus {
  TRACK_STATUS_Unknown = 1,
  TRACK_STATUS_Tracked = 2,
  TRACK_STATUS_NotTracked = 3,
  TRACK_STATUS_NeedsRetrack = 4
};
enum ETrackState { TRACK_STATE_Untracked = 0, TRACK_STATE_Tracked = 1, TRACK_STATE_Rendered = 2 };

/// Attributes of one point. The field names are the keys they are stored under.
struct CTrackAttribute {
  int Gr = 0;
  bool SmEn = false;
  int Sm = 0;
  double Al = 0.0001;
  int An = ANCHOR_None;
  int AnIn = -1;
  int trackStatus = TRACK_STATUS_Unknown;  ///< never stored

  void WritePDLEntry(CPDLElement parent, int point) const;
  /// Returns the element's point index.
  int ReadPDLEntry(const CPDLElement& element);
};

using CTrackingAttributes = std::map<int, CTrackAttribute>;

class CTrackingArray {
 public:
  using TrackingArrayType = std::map<int, CTrackingPoints>;

  TrackingArrayType frames;
  CTrackingAttributes attributes;
  SRect mattingBox;
  bool useMatting = false;
  int trackState = TRACK_STATE_Untracked;
  int TrackBoxExtentX = -1;
  int TrackBoxExtentY = -1;
  int SearchBoxExtentLeft = -1;
  int SearchBoxExtentRight = -1;
  int SearchBoxExtentUp = -1;
  int SearchBoxExtentDown = -1;

  int FirstFrame() const;
  int EndFrame() const;
  int FrameCount() const { return static_cast<int>(frames.size()); }
  bool HasFrame(int frame) const { return frames.contains(frame); }
  /// Creating access.
  CTrackingPoints& PointsAt(int frame) { return frames[frame]; }
  /// Frame `frame` when present, else the first frame. REQUIRES: the array holds a frame.
  const CTrackingPoints& FindPoints(int frame) const;
  /// Drops leading frames without a valid point, then counts the first frame's valid points.
  int NumberOfPoints();
  bool PointExists(int point) const;
  /// Valid in every frame of [in, out). Missing frames of that range are inserted empty.
  bool IsTrackedOver(int point, int in, int out);
  /// The point's path: entries keyed by frame.
  CTrackingPoints Trajectory(int point) const;
  int AnchorType(int point);
  int AnchorIndex(int point);
  int TrackStatus(int point);
  void SetTrackStatus(int point, int status);
  int TrackState() const { return trackState; }
  void SetTrackState(int state) { trackState = state; }
  void SetBoxExtents(int x, int y, int left, int right, int up, int down);
  void GetBoxExtents(int& x, int& y, int& left, int& right, int& up, int& down) const;
  bool BoxExtentsDiffer(int x, int y, int left, int right, int up, int down) const;
  const SRect& MattingBox() const { return mattingBox; }
  void SetMattingBox(const SRect& box) { mattingBox = box; }
  bool UseMatting() const { return useMatting; }
  void SetUseMatting(bool use) { useMatting = use; }
  void Clear();
  void DeletePoint(int point);
  void RenumberPoint(int from, int to);
  /// Drops empty frames and renumbers the points 0, 1, 2, ...; the entries of the first frame then.
  int Compact();
  void KeepOnlyFrame(int frame);
  void MoveToFrame(int frame);
  void RemoveEmptyFrames();
  void RemoveLeadingEmptyFrames();

  /// Appends a child "TrackingArray". Neither `useMatting` nor `trackState` is stored.
  void WritePDLEntry(CPDLElement parent) const;
  /// Reads a "TrackingArray" element into this array, which the caller has made afresh.
  void ReadPDLEntry(const CPDLElement& element);
};
