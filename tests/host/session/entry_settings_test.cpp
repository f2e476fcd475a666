#include "session/EntrySettings.h"

#include <gtest/gtest.h>

#include <functional>

#include "Complaint.h"
#include "tracking/TrackingArray.h"

namespace {

SClipInfo clipOf(int width = 1920, int height = 1080) {
  SClipInfo clip;
  clip.format = CImageFormat(width, height);
  clip.firstFrame = 1001;
  clip.endFrame = 1101;
  return clip;
}

/// What the tool captures: the record of the options, and the array.
std::shared_ptr<CPDLEntry> captured(const SStabilizeOptions& options,
                                    const std::vector<SPoint2>& points) {
  SStabilizeOptions record = options;
  record.matting = EMatting::automatic;  // so that MakeEntry holds no array of its own
  auto entry = std::make_shared<CPDLEntry>(MakeEntry(record));
  entry->FirstElement().GetChild(0).SetAttribBool("UseMatting", options.matting != EMatting::off);
  CTrackingArray array;
  array.SetMattingBox(options.matting == EMatting::box ? options.mattingBox
                                                       : SRect{0, 0, 1919, 1079});
  const int box = *options.trackBox;
  const int reach = *options.search;
  array.SetBoxExtents(box, box, reach, reach, reach, reach);
  int index = 0;
  for (const SPoint2& point : points)
    array.PointsAt(*options.in).Point(index++) = CTrackPoint(point.x, point.y);
  array.WritePDLEntry(entry->FirstElement());
  return entry;
}

SStabilizeOptions completed(SStabilizeOptions options) {
  CheckAndComplete(options, clipOf());
  return options;
}

SStabilizeOptions takenFrom(std::shared_ptr<CPDLEntry> entry) {
  SStabilizeOptions options;
  options.entry = std::move(entry);
  return completed(options);
}

TEST(EntrySettings, WhatTheOptionsAskedForComesBack) {
  const std::function<void(SStabilizeOptions&)> wishes[] = {
      [](auto&) {},
      [](auto& o) { o.stabilize = EStabilize::horizontal; },
      [](auto& o) {
        o.stabilize = EStabilize::vertical, o.motion = EMotion::match, o.reference = 1050,
        o.warp = EWarp::none;
      },
      [](auto& o) {
        o.stabilize = EStabilize::rotation, o.motion = EMotion::smooth, o.anchor = EAnchor::both,
        o.smoothing = 10, o.warp = EWarp::logarithmic, o.fill = EFill::zoom;
      },
      [](auto& o) {
        o.motion = EMotion::smooth, o.smoothing = 0, o.jitter = 10, o.trackBox = 30, o.search = 50,
        o.fill = EFill::previous;
      },
      [](auto& o) {
        o.motion = EMotion::smooth, o.smoothing = 1, o.anchor = EAnchor::none,
        o.matting = EMatting::off, o.warp = EWarp::thinPlate, o.fill = EFill::black;
      },
  };
  int number = 0;
  for (const auto& wish : wishes) {
    SCOPED_TRACE(number++);
    SStabilizeOptions asked;
    wish(asked);
    asked = completed(asked);
    const SStabilizeOptions back = takenFrom(captured(asked, {{300.75, 400.25}, {700.0, 800.0}}));
    EXPECT_EQ(back.stabilize, asked.stabilize);
    EXPECT_EQ(back.trackBox, asked.trackBox);
    EXPECT_EQ(back.search, asked.search);
    EXPECT_EQ(back.matting == EMatting::off, asked.matting == EMatting::off);
    ASSERT_EQ(back.points.size(), 2u);
    EXPECT_EQ(back.points[0].x, 300.0) << "entries place points on whole pixels";
    EXPECT_EQ(back.points[1].y, 800.0);
  }
}

TEST(EntrySettings, WithoutPointsTheyAreFoundAndTheBorderToo) {
  SStabilizeOptions asked = completed({});
  const SStabilizeOptions back = takenFrom(std::make_shared<CPDLEntry>(MakeEntry(asked)));
  EXPECT_TRUE(back.points.empty());
  EXPECT_EQ(back.matting, EMatting::automatic);
}

TEST(EntrySettings, PointsOfAnotherFrameServeWhereInHasNone) {
  SStabilizeOptions asked = completed({});
  asked.in = 1040;
  EXPECT_EQ(takenFrom(captured(asked, {{300.0, 400.0}})).points.size(), 1u);
}

struct SHostile {
  const char* name;
  std::function<void(CPDLElement record, CPDLElement array)> spoil;
  const char* says;
};

auto attribute(const char* key, const char* value) {
  return [key, value](CPDLElement record, CPDLElement) { record.SetAttribString(key, value); };
}

auto child(const char* name, const char* value) {
  return [name, value](CPDLElement, CPDLElement array) {
    for (int i = 0; i < array.GetChildCount(); ++i)
      if (array.GetChild(i).GetName() == name) array.GetChild(i).SetAttribString(name, value);
  };
}

void addPoints(CPDLElement array, const char* frame, const char* x, int count, int firstIndex) {
  CPDLElement points = array.MakeNewChild("TPS");
  points.SetAttribString("FrNdx", frame);
  for (int i = 0; i < count; ++i) {
    CPDLElement point = points.MakeNewChild("TP");
    point.SetAttribInteger("TpNdx", firstIndex + i);
    point.SetAttribString("X", x);
    point.SetAttribString("Y", "400");
  }
}

auto points(const char* frame, const char* x, int count = 1, int firstIndex = 0) {
  return [=](CPDLElement, CPDLElement array) { addPoints(array, frame, x, count, firstIndex); };
}

const SHostile HOSTILE[] = {
    {"BoxHuge", attribute("TrackBoxExtentX", "1000000000"), "TrackBoxExtentX=\"1000000000\""},
    {"BoxTooLargeForAnInt", attribute("TrackBoxExtentX", "1e10"), "TrackBoxExtentX"},
    {"BoxesDiffer", attribute("TrackBoxExtentY", "11"), "differ"},
    {"SearchNegative", attribute("SearchBoxExtentLeft", "-5"), "SearchBoxExtentLeft=\"-5\""},
    {"SearchSmallest", attribute("SearchBoxExtentDown", "-2147483648"), "SearchBoxExtentDown"},
    {"SearchesDiffer", attribute("SearchBoxExtentUp", "21"), "differ"},
    {"NotANumber", attribute("GoodFramesIn", "many"), "GoodFramesIn=\"many\""},
    {"AnchorsNegative", attribute("GoodFramesIn", "-1"), "GoodFramesIn"},
    {"AnchorsHuge", attribute("GoodFramesOut", "2147483647"), "GoodFramesOut"},
    {"JitterHuge", attribute("Jitter", "1e300"), "Jitter=\"1e300\""},
    {"JitterNan", attribute("Jitter", "nan"), "Jitter=\"nan\""},
    {"AlphaInfinite", attribute("Alpha2", "-inf"), "Alpha2"},
    {"AlphaHuge", attribute("Alpha2", "1e9"), "Alpha2"},
    {"AnchorsMany", attribute("GoodFramesIn", "2"), "GoodFramesIn=\"2\""},
    {"JitterBetween", attribute("Jitter", "2.5"), "Jitter=\"2.5\" is between"},
    {"AlphaBetween", attribute("Alpha2", "0.002"), "Alpha2=\"0.002\" is between"},
    {"AxesDiffer", attribute("VMode", "STABMODE_Smoothed"), "HMode and VMode differ"},
    {"AxisUnknown", attribute("HMode", "STABMODE_Wobble"), "HMode=\"STABMODE_Wobble\""},
    {"NoAxis",
     [](CPDLElement record, CPDLElement) {
       for (const char* key : {"HMode", "VMode", "RMode"})
         record.SetAttribString(key, "STABMODE_None");
     },
     "no axis"},
    {"WarpUnknown", attribute("UFunction", "9"), "UFunction"},
    {"FillUnknown", attribute("MissingDataFill", ""), "MissingDataFill"},
    {"MattingPerhaps", attribute("UseMatting", "perhaps"), "UseMatting"},
    {"ReferenceBeforeIn", attribute("RefFrameIndex", "1000"), "RefFrameIndex"},
    {"ReferenceAtOut", attribute("RefFrameIndex", "1101"), "RefFrameIndex"},
    {"MattingOutside", child("BoundingBox", "0 0 1920 1079"), "BoundingBox"},
    {"MattingHuge", child("BoundingBox", "-2147483648 0 2147483647 2147483647"), "BoundingBox"},
    {"MattingEmpty", child("BoundingBox", "0 0 0 0"), "BoundingBox"},
    {"TrackBoxOfItsOwn", child("TrackBox", "-2147483648 -10 11 11"), "TrackBox"},
    {"SearchBoxOfItsOwn", child("SearchBox", "-20 -20 2147483647 21"), "SearchBox"},
    {"FrameHuge", points("2147483646", "300"), "FrNdx=\"2147483646\""},
    {"FrameOutsideTheClip", points("1101", "300"), "FrNdx=\"1101\""},
    {"FrameNegative", points("-1", "300"), "FrNdx=\"-1\""},
    {"IndexHuge", points("1001", "300", 1, 2147483647), "TpNdx=\"2147483647\""},
    {"IndexNegative", points("1001", "300", 1, -2147483647), "TpNdx"},
    {"PointNegative", points("1001", "-300"), "point 0 at -300,400"},
    {"PointAtTheEdge", points("1001", "1915"), "point 0 at 1915,400"},
    {"PointNan", points("1001", "nan"), "point 0 at 0,400"},
    {"PointInfinite", points("1001", "1e300"), "point 0 at 0,400"},
    {"PointsWithoutEnd", points("1001", "300", 100000), "more than 1000 points"},
};

TEST(EntrySettings, HostileOnesAreRefusedByName) {
  for (const SHostile& hostile : HOSTILE) {
    const auto entry = captured(completed({}), {});
    hostile.spoil(entry->FirstElement().GetChild(0), entry->FirstElement().GetChild(1));
    const std::string complaint = complaintOf<CUsageError>([&] { takenFrom(entry); });
    EXPECT_NE(complaint.find(hostile.says), std::string::npos) << hostile.name << ": " << complaint;
  }
}

TEST(EntrySettings, ARecordMustBeThereOnce) {
  EXPECT_THROW(takenFrom(std::make_shared<CPDLEntry>()), CUsageError);
  const auto entry = captured(completed({}), {});
  entry->FirstElement().AppendCopy(entry->FirstElement().GetChild(0));
  EXPECT_THROW(takenFrom(entry), CUsageError);
}

}  // namespace
