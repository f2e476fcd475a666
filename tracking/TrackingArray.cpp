#include "tracking/TrackingArray.h"

#include <algorithm>
#include <utility>

#include "tracking/TrackingLimits.h"

namespace {

template <typename TMap>
int FirstKey(const TMap& map) {
  return map.empty() ? 0 : map.begin()->first;
}

template <typename TMap>
int EndKey(const TMap& map) {
  return map.empty() ? 0 : map.rbegin()->first + 1;
}

void DropAnchorsTo(CTrackingAttributes& attributes, int point) {
  for (auto& [index, attribute] : attributes) {
    if (attribute.AnIn == point) attribute.An = ANCHOR_None;
  }
}

/// Where every point goes when the first frame's valid ones, in order, become 0, 1, 2, ...: a point
/// that is not among them makes room or stays.
class CRenumbering {
 public:
  explicit CRenumbering(const CTrackingPoints& first) {
    for (const auto& [index, point] : first.Entries()) {
      if (!point.IsValid()) continue;
      moves_ = moves_ || index != count();
      renumbered_.emplace_hint(renumbered_.end(), index, count());
    }
  }

  bool IsNeeded() const { return moves_; }
  CTrackingPoints Of(const CTrackingPoints& points) const;
  CTrackingAttributes Of(const CTrackingAttributes& attributes) const;

 private:
  int count() const { return static_cast<int>(renumbered_.size()); }
  bool isReplaced(int index) const {
    return index >= 0 && index < count() && !renumbered_.contains(index);
  }

  std::map<int, int> renumbered_;
  bool moves_ = false;
};

CTrackingPoints CRenumbering::Of(const CTrackingPoints& points) const {
  CTrackingPoints result;
  for (const auto& [index, point] : points.Entries()) {
    const auto found = renumbered_.find(index);
    if (found == renumbered_.end()) {
      if (!isReplaced(index)) result.Point(index) = point;
    } else if (point.IsValid() || found->second == index) {  // an invalid entry does not travel
      result.Point(found->second) = point;
    }
  }
  return result;
}

CTrackingAttributes CRenumbering::Of(const CTrackingAttributes& attributes) const {
  CTrackingAttributes result;
  for (const auto& [index, attribute] : attributes) {
    const auto found = renumbered_.find(index);
    if (found == renumbered_.end() && isReplaced(index)) continue;
    CTrackAttribute& moved = result[found == renumbered_.end() ? index : found->second];
    moved = attribute;
    if (isReplaced(moved.AnIn)) moved.An = ANCHOR_None;
    const auto anchor = renumbered_.find(moved.AnIn);
    if (anchor != renumbered_.end()) moved.AnIn = anchor->second;
  }
  for (const auto& [from, to] : renumbered_) {
    if (from != to) result.try_emplace(to);
  }
  return result;
}

}  // namespace

int CTrackingPoints::FirstIndex() const {
  return FirstKey(points_);
}

int CTrackingPoints::EndIndex() const {
  return EndKey(points_);
}

int CTrackingPoints::ValidCount() const {
  return static_cast<int>(
      std::ranges::count_if(points_, [](const auto& entry) { return entry.second.IsValid(); }));
}

bool CTrackingPoints::IsValidPoint(int index) const {
  const auto found = points_.find(index);
  return found != points_.end() && found->second.IsValid();
}

int CTrackingArray::FirstFrame() const {
  return FirstKey(frames);
}

int CTrackingArray::EndFrame() const {
  return EndKey(frames);
}

const CTrackingPoints& CTrackingArray::FindPoints(int frame) const {
  static const CTrackingPoints none;
  if (frames.empty()) return none;
  const auto found = frames.find(frame);
  return found != frames.end() ? found->second : frames.begin()->second;
}

int CTrackingArray::NumberOfPoints() {
  RemoveLeadingEmptyFrames();
  return frames.empty() ? 0 : frames.begin()->second.ValidCount();
}

bool CTrackingArray::PointExists(int point) const {
  return std::ranges::any_of(
      frames, [point](const auto& frame) { return frame.second.IsValidPoint(point); });
}

bool CTrackingArray::IsTrackedOver(int point, int in, int out) {
  if (out <= in || in < 0) return false;
  for (int frame = in; frame < out; ++frame) {
    if (!PointsAt(frame).IsValidPoint(point)) return false;
  }
  return true;
}

CTrackingPoints CTrackingArray::Trajectory(int point) const {
  CTrackingPoints path;
  for (const auto& [frame, points] : frames) {
    const auto found = points.Entries().find(point);
    if (found != points.Entries().end() && found->second.IsValid()) {
      path.Point(frame) = found->second;
    }
  }
  return path;
}

int CTrackingArray::AnchorType(int point) {
  return PointExists(point) ? attributes[point].An : static_cast<int>(ANCHOR_None);
}

int CTrackingArray::AnchorIndex(int point) {
  return PointExists(point) ? attributes[point].AnIn : -1;
}

int CTrackingArray::TrackStatus(int point) {
  if (point < FirstKey(attributes) || point >= EndKey(attributes)) return 0;
  return attributes[point].trackStatus;
}

void CTrackingArray::SetTrackStatus(int point, int status) {
  if (point < FirstKey(attributes) || point >= EndKey(attributes)) return;
  attributes[point].trackStatus = status;
}

void CTrackingArray::SetBoxExtents(int x, int y, int left, int right, int up, int down) {
  TrackBoxExtentX = x;
  TrackBoxExtentY = y;
  SearchBoxExtentLeft = left;
  SearchBoxExtentRight = right;
  SearchBoxExtentUp = up;
  SearchBoxExtentDown = down;
}

void CTrackingArray::GetBoxExtents(int& x, int& y, int& left, int& right, int& up,
                                   int& down) const {
  x = TrackBoxExtentX;
  y = TrackBoxExtentY;
  left = SearchBoxExtentLeft;
  right = SearchBoxExtentRight;
  up = SearchBoxExtentUp;
  down = SearchBoxExtentDown;
}

bool CTrackingArray::BoxExtentsDiffer(int x, int y, int left, int right, int up, int down) const {
  return x != TrackBoxExtentX || y != TrackBoxExtentY || left != SearchBoxExtentLeft ||
         right != SearchBoxExtentRight || up != SearchBoxExtentUp || down != SearchBoxExtentDown;
}

void CTrackingArray::Clear() {
  frames.clear();
  attributes.clear();
  trackState = TRACK_STATE_Untracked;
}

void CTrackingArray::InsertMissingFrames() {
  if (frames.empty() || !IsStorableSpan(frames.begin()->first, frames.rbegin()->first)) return;
  for (auto frame = frames.begin(); std::next(frame) != frames.end(); ++frame) {
    const auto next = std::next(frame);
    if (next->first - frame->first > 1) frames.try_emplace(next, frame->first + 1);
  }
}

void CTrackingArray::DeletePoint(int point) {
  DropAnchorsTo(attributes, point);
  attributes.erase(point);
  InsertMissingFrames();
  for (auto& [frame, points] : frames) points.RemovePoint(point);
  trackState = TRACK_STATE_Untracked;
}

void CTrackingArray::RenumberPoint(int from, int to) {
  if (from == to) return;
  DeletePoint(to);
  for (auto& [index, attribute] : attributes) {
    if (attribute.AnIn == from) attribute.AnIn = to;
  }
  for (auto& [frame, points] : frames) {
    if (!points.IsValidPoint(from)) continue;
    const CTrackPoint moved = points.Point(from);
    points.Point(to) = moved;
  }
  attributes[to] = attributes[from];
  DeletePoint(from);
}

int CTrackingArray::Compact() {
  RemoveEmptyFrames();
  if (frames.empty()) return 0;
  const CRenumbering renumbering(frames.begin()->second);
  if (renumbering.IsNeeded()) {
    InsertMissingFrames();
    for (auto& [frame, points] : frames) points = renumbering.Of(points);
    attributes = renumbering.Of(attributes);
    trackState = TRACK_STATE_Untracked;
  }
  return frames.begin()->second.Count();
}

void CTrackingArray::KeepOnlyFrame(int frame) {
  CTrackingPoints kept = std::move(PointsAt(frame));
  frames.clear();
  frames.emplace(frame, std::move(kept));
  trackState = TRACK_STATE_Untracked;
}

void CTrackingArray::MoveToFrame(int frame) {
  trackState = TRACK_STATE_Untracked;
  if (frames.empty()) return;
  CTrackingPoints moved = std::move(frames.begin()->second);
  frames.clear();
  frames.emplace(frame, std::move(moved));
}

void CTrackingArray::RemoveEmptyFrames() {
  std::erase_if(frames, [](const auto& frame) { return frame.second.ValidCount() == 0; });
}

void CTrackingArray::RemoveLeadingEmptyFrames() {
  while (!frames.empty() && frames.begin()->second.ValidCount() == 0) {
    frames.erase(frames.begin());
  }
}
