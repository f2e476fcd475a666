#pragma once

#include <map>

#include "support/IniFile.h"
#include "support/PDLElement.h"
#include "support/Rect.h"
#include "tracking/Entries.h"
#include "tracking/NodePool.h"

/// The tracking data of one shot: where every point lies in every frame of the marked range. Plain
/// values on ordered maps. Frame indices are absolute clip frames; point indices name a point
/// across all frames; end indices are one past the last. Absent indices are answered with defaults,
/// never with an error. In a fully tracked set every frame holds the same points, all valid.
/// Operations that are not const may insert what they look at; each says so. THREAD: no locks; the
/// live array belongs to the user-interface thread.

/// One point in one frame; pixels, x the column, y the row.
struct CTrackPoint {
  double x = 0.0;
  double y = 0.0;
  bool highlight = false;  ///< shown as picked; only the host's editing sets it, never stored
  bool valid = false;      ///< x and y mean something

  CTrackPoint() = default;
  /// A valid point.
  CTrackPoint(double x, double y, bool highlight = false)
      : x(x), y(y), highlight(highlight), valid(true) {}
  bool IsValid() const { return valid; }

  friend bool operator==(const CTrackPoint&, const CTrackPoint&) = default;

  /// Attributes "X" and "Y" of a point's element.
  void WritePDLEntry(CPDLElement element) const;
  /// Positions come back as whole pixels: process lists place points, a tracking pass measures
  /// them. The point is valid and without highlight afterwards.
  void ReadPDLEntry(const CPDLElement& element);
};

/// The points of one frame by point index - or one point's path by frame index (Trajectory). An
/// entry may exist and still be invalid.
class CTrackingPoints {
 public:
  /// Smallest index present; 0 when empty.
  int FirstIndex() const;
  /// Largest index present plus 1; 0 when empty.
  int EndIndex() const;
  int ValidCount() const;
  /// Entries present, valid or not.
  int Count() const { return static_cast<int>(points_.size()); }
  bool IsValidPoint(int index) const;
  /// Creating access: an absent entry is inserted invalid. The reference lives until another entry
  /// is inserted or removed.
  CTrackPoint& Point(int index) { return points_[index]; }
  void RemovePoint(int index) { points_.erase(index); }
  /// Entries in order of index. Not of a temporary, which would not outlive a loop over them.
  const CEntries<CTrackPoint>& Entries() const& { return points_; }
  void Entries() const&& = delete;

  friend bool operator==(const CTrackingPoints&, const CTrackingPoints&) = default;

  /// Appends a child "TPS" with every entry, valid or not.
  void WritePDLEntry(CPDLElement parent, int frame) const;
  /// Returns the element's frame index, -1 when it has none. Points without an index, or beyond
  /// LARGEST_POINT_INDEX, are left out.
  int ReadPDLEntry(const CPDLElement& element);

 private:
  CEntries<CTrackPoint> points_;
};

/// How a point is anchored to another. Stored by name; do not change the names.
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

/// A point's status for display.
enum ETrackStatus {
  TRACK_STATUS_Unknown = 1,      ///< evaluated when the point is next drawn
  TRACK_STATUS_Tracked = 2,      ///< valid in every marked frame, tracking current
  TRACK_STATUS_NotTracked = 3,   ///< missing or invalid in some marked frame
  TRACK_STATUS_NeedsRetrack = 4  ///< covers the marked frames, but the set is not tracked for them
};
/// State of a whole set. Every edit makes it untracked.
enum ETrackState { TRACK_STATE_Untracked = 0, TRACK_STATE_Tracked = 1, TRACK_STATE_Rendered = 2 };

/// Attributes of one point. The field names are the keys they are stored under. `Gr`, `SmEn`, `Sm`
/// and `Al` are carried for other programs and mean nothing here.
struct CTrackAttribute {
  int Gr = 0;
  bool SmEn = false;
  int Sm = 0;
  double Al = 0.0001;
  int An = ANCHOR_None;                    ///< EAnchorType; decides the anchor arrow
  int AnIn = -1;                           ///< index of the point it is anchored to
  int trackStatus = TRACK_STATUS_Unknown;  ///< ETrackStatus; never stored

  friend bool operator==(const CTrackAttribute&, const CTrackAttribute&) = default;

  /// Appends a child "TA".
  void WritePDLEntry(CPDLElement parent, int point) const;
  /// Returns the element's point index, -1 when it has none. An attribute that is missing, or an
  /// anchor type of unknown name, leaves its field as it is.
  int ReadPDLEntry(const CPDLElement& element);
};

/// Attributes by point index.
class CTrackingAttributes : public std::map<int, CTrackAttribute> {
 public:
  using map::map;

  /// Appends a child "TAS".
  void WritePDLEntry(CPDLElement parent) const;
  /// Adds what a "TAS" element holds.
  void ReadPDLEntry(const CPDLElement& element);
};

class CTrackingArray {
 public:
  using TrackingArrayType = CPooledMap<int, CTrackingPoints>;

  TrackingArrayType frames;
  CTrackingAttributes attributes;
  SRect mattingBox;
  bool useMatting = false;
  int trackState = TRACK_STATE_Untracked;
  /// Half size of the track box and the reach of the search beyond it, pixels, with which the
  /// points were (or are to be) tracked; -1 unset.
  int TrackBoxExtentX = -1;
  int TrackBoxExtentY = -1;
  int SearchBoxExtentLeft = -1;
  int SearchBoxExtentRight = -1;
  int SearchBoxExtentUp = -1;
  int SearchBoxExtentDown = -1;

  friend bool operator==(const CTrackingArray&, const CTrackingArray&) = default;

  /// Smallest frame present; 0 when empty.
  int FirstFrame() const;
  /// Largest frame present plus 1; 0 when empty.
  int EndFrame() const;
  int FrameCount() const { return static_cast<int>(frames.size()); }
  bool HasFrame(int frame) const { return frames.contains(frame); }
  /// Creating access. The reference lives until the frame is removed.
  CTrackingPoints& PointsAt(int frame) { return frames[frame]; }
  /// Frame `frame` when present, else the first frame; no points when there is no frame at all.
  const CTrackingPoints& FindPoints(int frame) const;
  /// Drops leading frames without a valid point, then counts the first frame's valid points.
  int NumberOfPoints();
  /// Valid in at least one frame.
  bool PointExists(int point) const;
  /// Valid in every frame of [in, out); false when that is empty or begins below 0. Stops at the
  /// first frame where it is not; if that frame was missing it is there, empty, afterwards.
  bool IsTrackedOver(int point, int in, int out);
  /// The point's path: its valid entries keyed by frame.
  CTrackingPoints Trajectory(int point) const;
  /// ANCHOR_None for a point that does not exist. One without attributes gets default ones.
  int AnchorType(int point);
  /// -1 for a point that does not exist. One without attributes gets default ones.
  int AnchorIndex(int point);
  /// 0 for a point outside the span of attribute indices; inside it one without attributes gets
  /// default ones.
  int TrackStatus(int point);
  /// Nothing outside that span.
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
  /// Frames, attributes and state; matting and extents stay.
  void Clear();
  /// Points anchored to it lose their anchor (and keep its index). Frames missing between first and
  /// last are there, empty, afterwards - unless those are more than LARGEST_FRAME_SPAN apart.
  void DeletePoint(int point);
  /// Moves a point with its attributes, and the anchors that refer to it, to another index; whoever
  /// had that index is deleted.
  void RenumberPoint(int from, int to);
  /// Drops empty frames and renumbers the points 0, 1, 2, ... in the order of the first frame's
  /// valid ones, as RenumberPoint does it, in one pass; the number of entries of the first frame
  /// then, 0 when no frame is left.
  int Compact();
  /// Inserts the frame when it is absent. The attributes stay.
  void KeepOnlyFrame(int frame);
  /// The points of the first frame become those of `frame`, the only one. The attributes stay.
  void MoveToFrame(int frame);
  void RemoveEmptyFrames();
  void RemoveLeadingEmptyFrames();

  /// Appends a child "TrackingArray". Neither `useMatting` nor `trackState` is stored.
  void WritePDLEntry(CPDLElement parent) const;
  /// Reads a "TrackingArray" element into this array, which the caller has made afresh. A frame
  /// that would exceed LARGEST_FRAME_SPAN or LARGEST_POINT_TOTAL is left out.
  void ReadPDLEntry(const CPDLElement& element);

 private:
  void InsertMissingFrames();
  void ReadFrame(const CPDLElement& element, int& total);
};
