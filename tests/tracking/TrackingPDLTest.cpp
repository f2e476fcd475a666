#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/PDLElement.h"
#include "tracking/TrackingArray.h"

namespace {

/// The array as it comes back from a process list's text.
CTrackingArray ThroughText(const CTrackingArray& array) {
  const CPDLEntry entry;
  array.WritePDLEntry(entry.FirstElement());
  const std::unique_ptr<CPDLEntry> read = CPDLEntry::FromText(entry.ToText());
  CTrackingArray result;
  if (read == nullptr || read->FirstElement().GetChildCount() != 1) {
    ADD_FAILURE() << entry.ToText();
    return result;
  }
  EXPECT_EQ(read->FirstElement().GetChild(0).GetName(), "TrackingArray");
  result.ReadPDLEntry(read->FirstElement().GetChild(0));
  return result;
}

TEST(TrackingPDL, TheSetComesBackButForFractionsStateAndMattingSwitch) {
  CTrackingArray array;
  array.PointsAt(100).Point(0) = {12.75, 300.0, true};
  array.PointsAt(100).Point(3) = {90.5, 88.0};
  array.PointsAt(101).Point(0) = {513.0, 301.5};
  array.attributes[0] = {7, true, 5, 0.25, ANCHOR_FixVertical, 3, TRACK_STATUS_Tracked};
  array.attributes[3].An = ANCHOR_Both;
  array.SetMattingBox({10, 8, 1909, 1071});
  array.SetBoxExtents(10, 11, 20, 21, 22, 23);
  array.SetUseMatting(true);
  array.SetTrackState(TRACK_STATE_Tracked);

  CTrackingArray expected = array;
  expected.PointsAt(100).Point(0) = {12.0, 300.0};
  expected.PointsAt(100).Point(3) = {90.0, 88.0};
  expected.PointsAt(101).Point(0) = {513.0, 301.0};
  expected.attributes[0].trackStatus = TRACK_STATUS_Unknown;
  expected.SetUseMatting(false);
  expected.SetTrackState(TRACK_STATE_Untracked);
  EXPECT_EQ(ThroughText(array), expected);
}

TEST(TrackingPDL, AnInvalidEntryIsWrittenAndComesBackValid) {
  CTrackingArray array;
  array.PointsAt(4).Point(1);
  EXPECT_TRUE(ThroughText(array).FindPoints(4).IsValidPoint(1));
}

TEST(TrackingPDL, UnsetExtentsStayUnset) {
  EXPECT_EQ(ThroughText(CTrackingArray()), CTrackingArray());
}

TEST(TrackingPDL, AnchorTypesAreStoredByName) {
  const char* const names[] = {"None",        "Anchor_Horizontal", "Anchor_Vertical",
                               "Anchor_Both", "Fix_Horizontal",    "Fix_Vertical"};
  for (int type = ANCHOR_None; type <= ANCHOR_FixVertical; ++type) {
    const CPDLEntry entry;
    CTrackAttribute attribute;
    attribute.An = type;
    attribute.WritePDLEntry(entry.FirstElement(), 2);
    const CPDLElement element = entry.FirstElement().GetChild(0);
    EXPECT_EQ(element.GetAttribString("An", ""), names[type]);
    CTrackAttribute read;
    EXPECT_EQ(read.ReadPDLEntry(element), 2);
    EXPECT_EQ(read, attribute);
  }
}

TEST(TrackingPDL, WhatIsMissingOrUnknownKeepsTheDefault) {
  const CPDLEntry entry;
  CPDLElement element = entry.FirstElement().MakeNewChild("TA");
  element.SetAttribInteger("TpNdx", 6);
  element.SetAttribString("An", "Anchor_Sideways");
  CTrackAttribute attribute;
  EXPECT_EQ(attribute.ReadPDLEntry(element), 6);
  EXPECT_EQ(attribute, CTrackAttribute());
}

void AddFrame(CPDLElement array, int frame, int point) {
  CPDLElement element = array.MakeNewChild("TPS");
  element.SetAttribInteger("FrNdx", frame);
  element.MakeNewChild("TP").SetAttribInteger("TpNdx", point);
}

TEST(TrackingPDL, EntriesWithoutAUsableIndexAreLeftOut) {
  struct SCase {
    const char* name;
    void (*fill)(CPDLElement array);
  };
  const SCase cases[] = {
      {"no frame index",
       [](CPDLElement a) {
         a.MakeNewChild("TPS").MakeNewChild("TP").SetAttribInteger("TpNdx", 0);
       }},
      {"negative frame", [](CPDLElement a) { AddFrame(a, -4, 0); }},
      {"frame that nothing can follow", [](CPDLElement a) { AddFrame(a, 2147483647, 0); }},
      {"no attribute index", [](CPDLElement a) { a.MakeNewChild("TAS").MakeNewChild("TA"); }},
      {"other child of the attributes",
       [](CPDLElement a) {
         a.MakeNewChild("TAS").MakeNewChild("Other").SetAttribInteger("TpNdx", 1);
       }},
      {"unheard of", [](CPDLElement a) { a.MakeNewChild("Other").SetAttribInteger("FrNdx", 1); }},
  };
  for (const SCase& c : cases) {
    const CPDLEntry entry;
    c.fill(entry.FirstElement());
    CTrackingArray array;
    array.ReadPDLEntry(entry.FirstElement());
    EXPECT_EQ(array, CTrackingArray()) << c.name;
  }
  const CPDLEntry entry;
  AddFrame(entry.FirstElement(), 5, -1);
  CTrackingArray array;
  array.ReadPDLEntry(entry.FirstElement());
  EXPECT_EQ(array.FindPoints(5).Count(), 0);
}

TEST(TrackingPDL, PointsAndFramesBeyondTheLimitsAreLeftOut) {
  const CPDLEntry entry;
  CPDLElement element = entry.FirstElement();
  AddFrame(element, 1000, 99999);
  AddFrame(element, 1001, 100000);
  AddFrame(element, 1000999, 0);  // a million frames with this one
  AddFrame(element, 1001000, 0);
  AddFrame(element, 999, 0);
  AddFrame(element, 2147483646, 0);
  CPDLElement attributes = element.MakeNewChild("TAS");
  attributes.MakeNewChild("TA").SetAttribInteger("TpNdx", 99999);
  attributes.MakeNewChild("TA").SetAttribInteger("TpNdx", 100000);
  CTrackingArray array;
  array.ReadPDLEntry(element);
  CTrackingArray expected;
  expected.PointsAt(1000).Point(99999) = {0, 0};
  expected.PointsAt(1001);
  expected.PointsAt(1000999).Point(0) = {0, 0};
  expected.attributes[99999];
  EXPECT_EQ(array, expected);
}

TEST(TrackingPDL, ExtremeBoxesAreReadWithoutOverflow) {
  const CPDLEntry entry;
  CPDLElement element = entry.FirstElement().MakeNewChild("TrackingArray");
  const int lowest = -2147483647 - 1;
  element.MakeNewChild("TrackBox").SetAttribRectangle("TrackBox", {lowest, lowest, 0, 0});
  element.MakeNewChild("SearchBox").SetAttribRectangle("SearchBox", {-9, -7, lowest, 6});
  CTrackingArray array;
  array.ReadPDLEntry(element);
  EXPECT_EQ(array.TrackBoxExtentX, lowest);
  EXPECT_EQ(array.SearchBoxExtentLeft, 9);
  EXPECT_EQ(array.SearchBoxExtentUp, 7);
  EXPECT_EQ(array.SearchBoxExtentDown, 5);
}

}  // namespace
