// The tracking data as elements of a process-list entry. Names are stored; do not change.

#include <string>

#include "tracking/TrackingArray.h"
#include "tracking/TrackingLimits.h"

namespace {

const SIniAssociation ANCHOR_TYPES[] = {
    {"None", "", ANCHOR_None},
    {"Anchor_Horizontal", "", ANCHOR_Horizontal},
    {"Anchor_Vertical", "", ANCHOR_Vertical},
    {"Anchor_Both", "", ANCHOR_Both},
    {"Fix_Horizontal", "", ANCHOR_FixHorizontal},
    {"Fix_Vertical", "", ANCHOR_FixVertical},
    {"", "", -1},
};

/// An index as stored, or -1 for none that may be stored.
int ReadFrameIndex(const CPDLElement& element) {
  const int index = element.GetAttribInteger("FrNdx", -1);
  return IsStorableFrame(index) ? index : -1;
}
int ReadPointIndex(const CPDLElement& element) {
  const int index = element.GetAttribInteger("TpNdx", -1);
  return IsStorablePoint(index) ? index : -1;
}

/// Boxes of text from outside may hold any integer; these wrap round instead of overflowing.
int Minus(int a, int b) {
  return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
}
int OneMore(int value) {
  return Minus(value, -1);
}

void WriteRectangle(CPDLElement parent, const char* name, const SRect& rect) {
  parent.MakeNewChild(name).SetAttribRectangle(name, rect);
}

}  // namespace

const CIniAssociations& AnchorTypeNames() {
  static const CIniAssociations names(ANCHOR_TYPES, "", -1);
  return names;
}

void CTrackPoint::WritePDLEntry(CPDLElement element) const {
  element.SetAttribDouble("X", x);
  element.SetAttribDouble("Y", y);
}

void CTrackPoint::ReadPDLEntry(const CPDLElement& element) {
  *this = CTrackPoint(element.GetAttribInteger("X", static_cast<int>(x)),
                      element.GetAttribInteger("Y", static_cast<int>(y)));
}

void CTrackingPoints::WritePDLEntry(CPDLElement parent, int frame) const {
  CPDLElement element = parent.MakeNewChild("TPS");
  element.SetAttribInteger("FrNdx", frame);
  for (const auto& [index, point] : points_) {
    CPDLElement child = element.MakeNewChild("TP");
    child.SetAttribInteger("TpNdx", index);
    point.WritePDLEntry(child);
  }
}

int CTrackingPoints::ReadPDLEntry(const CPDLElement& element) {
  const int count = element.GetChildCount();
  for (int i = 0; i < count; ++i) {
    const CPDLElement child = element.GetChild(i);
    const int index = ReadPointIndex(child);
    if (child.GetName() == "TP" && index >= 0) Point(index).ReadPDLEntry(child);
  }
  return ReadFrameIndex(element);
}

void CTrackAttribute::WritePDLEntry(CPDLElement parent, int point) const {
  CPDLElement element = parent.MakeNewChild("TA");
  element.SetAttribInteger("TpNdx", point);
  element.SetAttribInteger("Gr", Gr);
  element.SetAttribBool("SmEn", SmEn);
  element.SetAttribInteger("Sm", Sm);
  element.SetAttribDouble("Al", Al);
  element.SetAttribString("An", AnchorTypeNames().SymbolicName(An));
  element.SetAttribInteger("AnIn", AnIn);
}

int CTrackAttribute::ReadPDLEntry(const CPDLElement& element) {
  Gr = element.GetAttribInteger("Gr", Gr);
  SmEn = element.GetAttribBool("SmEn", SmEn);
  Sm = element.GetAttribInteger("Sm", Sm);
  Al = element.GetAttribDouble("Al", Al);
  AnchorTypeNames().ValueBySymbolicName(element.GetAttribString("An", ""), An);
  AnIn = element.GetAttribInteger("AnIn", AnIn);
  return ReadPointIndex(element);
}

void CTrackingAttributes::WritePDLEntry(CPDLElement parent) const {
  CPDLElement element = parent.MakeNewChild("TAS");
  for (const auto& [point, attribute] : *this) attribute.WritePDLEntry(element, point);
}

void CTrackingAttributes::ReadPDLEntry(const CPDLElement& element) {
  const int count = element.GetChildCount();
  for (int i = 0; i < count; ++i) {
    const CPDLElement child = element.GetChild(i);
    if (child.GetName() != "TA") continue;
    CTrackAttribute attribute;
    const int point = attribute.ReadPDLEntry(child);
    if (point >= 0) (*this)[point] = attribute;
  }
}

void CTrackingArray::WritePDLEntry(CPDLElement parent) const {
  CPDLElement element = parent.MakeNewChild("TrackingArray");
  for (const auto& [frame, points] : frames) points.WritePDLEntry(element, frame);
  attributes.WritePDLEntry(element);
  WriteRectangle(element, "BoundingBox", mattingBox);
  WriteRectangle(element, "TrackBox",
                 {Minus(0, TrackBoxExtentX), Minus(0, TrackBoxExtentY), OneMore(TrackBoxExtentX),
                  OneMore(TrackBoxExtentY)});
  WriteRectangle(element, "SearchBox",
                 {Minus(0, SearchBoxExtentLeft), Minus(0, SearchBoxExtentUp),
                  OneMore(SearchBoxExtentRight), OneMore(SearchBoxExtentDown)});
}

/// `total` counts the entries of all frames, also those that a later frame of this index replaces.
void CTrackingArray::ReadFrame(const CPDLElement& element, int& total) {
  const int count = element.GetChildCount();
  if (count > LARGEST_POINT_TOTAL - total) return;
  CTrackingPoints points;
  const int frame = points.ReadPDLEntry(element);
  if (frame < 0) return;
  if (!frames.empty() && (!IsStorableSpan(frame, frames.rbegin()->first) ||
                          !IsStorableSpan(frames.begin()->first, frame))) {
    return;
  }
  total += count;
  frames[frame] = std::move(points);
}

void CTrackingArray::ReadPDLEntry(const CPDLElement& element) {
  const int count = element.GetChildCount();
  int total = 0;
  for (int i = 0; i < count; ++i) {
    const CPDLElement child = element.GetChild(i);
    const std::string name = child.GetName();
    if (name == "TPS") {
      ReadFrame(child, total);
    } else if (name == "TAS") {
      attributes.ReadPDLEntry(child);
    } else if (name == "BoundingBox") {
      mattingBox = child.GetAttribRectangle(name, mattingBox);
    } else if (name == "TrackBox") {
      const SRect box = child.GetAttribRectangle(name, {1, 1, 0, 0});
      TrackBoxExtentX = Minus(0, box.left);
      TrackBoxExtentY = Minus(0, box.top);
    } else if (name == "SearchBox") {
      const SRect box = child.GetAttribRectangle(name, {1, 1, 0, 0});
      SearchBoxExtentLeft = Minus(0, box.left);
      SearchBoxExtentRight = Minus(box.right, 1);
      SearchBoxExtentUp = Minus(0, box.top);
      SearchBoxExtentDown = Minus(box.bottom, 1);
    }
  }
}
