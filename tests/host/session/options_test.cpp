#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "Complaint.h"
#include "session/StabilizeOptions.h"

namespace {

SClipInfo clipOf(int width, int height) {
  SClipInfo clip;
  clip.format = CImageFormat(width, height);
  clip.firstFrame = 1001;
  clip.endFrame = 1101;
  return clip;
}

TEST(Options, ARefusalNamesTheOption) {
  const SRect insideOut{100, 100, 50, 200};
  const SRect outside{0, 0, 1920, 500};
  const auto placePoint = [](SStabilizeOptions& o, double x) { o.points.push_back({x, 5.0}); };
  const struct {
    const char* name;
    std::function<void(SStabilizeOptions&)> set;
    const char* says;
  } cases[] = {
      {"InIsOut", [](auto& o) { o.in = o.out = 1010; }, "--in 1010 is not below --out 1010"},
      {"InBeforeClip", [](auto& o) { o.in = 1000; }, "1001 to 1100"},
      {"OutAfterClip", [](auto& o) { o.out = 1102; }, "--out 1102"},
      {"SmoothingTooLarge", [](auto& o) { o.motion = EMotion::smooth, o.smoothing = 11; },
       "--smoothing 11"},
      {"SmoothingWithoutSmooth", [](auto& o) { o.smoothing = 3; }, "--motion smooth"},
      {"ReferenceWithoutMatch", [](auto& o) { o.reference = 1002; }, "--motion match"},
      {"ReferenceOutsideMarks",
       [](auto& o) { o.motion = EMotion::match, o.in = 1010, o.reference = 1009; },
       "--reference 1009"},
      {"BothEndsHeld", [](auto& o) { o.anchor = EAnchor::both; }, "--anchor both"},
      {"BoxTooLarge", [](auto& o) { o.trackBox = 31; }, "--track-box 31"},
      {"SearchTooSmall", [](auto& o) { o.search = 4; }, "--search 4"},
      {"NoPointsWanted", [](auto& o) { o.autoPoints = 0; }, "--auto 0"},
      {"JitterNegative", [](auto& o) { o.jitter = -1; }, "--jitter -1"},
      {"PointOutside", [&](auto& o) { placePoint(o, 1920.0); }, "1920x1080"},
      {"PointNotANumber", [&](auto& o) { placePoint(o, std::nan("")); }, "--point"},
      {"MattingInsideOut", [&](auto& o) { o.matting = EMatting::box, o.mattingBox = insideOut; },
       "--matting"},
      {"MattingOutside", [&](auto& o) { o.matting = EMatting::box, o.mattingBox = outside; },
       "--matting"},
      {"PointsTwice", [&](auto& o) { placePoint(o, 5.0), o.pointsFile = "shot.points"; },
       "--points and --point"},
      {"PointsSavedAsWhatTheyAreNot", [](auto& o) { o.savePoints = "shot.dpx"; }, "shot.dpx"},
      {"MotionOfUnknownForm", [](auto& o) { o.exportMotion = "shot.xml"; },
       "--export-motion shot.xml"},
      {"MotionWithJitter", [](auto& o) { o.exportMotion = "shot.csv", o.jitter = 1; }, "--jitter"},
      {"ResidualNegative", [](auto& o) { o.maxResidual = -0.1; }, "--max-residual"},
  };
  for (const auto& c : cases) {
    SStabilizeOptions options;
    c.set(options);
    const std::string complaint =
        complaintOf<CUsageError>([&] { CheckAndComplete(options, clipOf(1920, 1080)); });
    EXPECT_NE(complaint.find(c.says), std::string::npos) << c.name << ": " << complaint;
  }
}

TEST(Options, WhatIsNotSaidFollowsTheClip) {
  SStabilizeOptions options;
  CheckAndComplete(options, clipOf(1920, 1080));
  EXPECT_EQ(options.in, 1001);
  EXPECT_EQ(options.out, 1101);
  EXPECT_EQ(options.trackBox, 10);
  EXPECT_EQ(options.search, 20);
  EXPECT_EQ(options.reference, 1001);
  SStabilizeOptions wide;
  CheckAndComplete(wide, clipOf(4096, 2160));
  EXPECT_EQ(wide.trackBox, 20);
  EXPECT_EQ(wide.search, 40);
}

/// The tool's entry of such options, whose first child is the record.
CPDLEntry entryOf(SStabilizeOptions options) {
  CheckAndComplete(options, clipOf(1920, 1080));
  return MakeEntry(options);
}

TEST(Entry, CarriesTheAxesThatAreStabilised) {
  const struct {
    EStabilize what;
    const char *h, *v, *r;
  } cases[] = {
      {EStabilize::horizontal, "STABMODE_Registered", "STABMODE_None", "STABMODE_None"},
      {EStabilize::vertical, "STABMODE_None", "STABMODE_Registered", "STABMODE_None"},
      {EStabilize::both, "STABMODE_Registered", "STABMODE_Registered", "STABMODE_None"},
      {EStabilize::rotation, "STABMODE_Registered", "STABMODE_Registered", "STABMODE_Registered"}};
  for (const auto& wanted : cases) {
    SStabilizeOptions options;
    options.stabilize = wanted.what;
    options.motion = EMotion::match;
    const CPDLEntry entry = entryOf(options);
    const CPDLElement record = entry.FirstElement().GetChild(0);
    EXPECT_EQ(record.GetAttribString("HMode", ""), wanted.h);
    EXPECT_EQ(record.GetAttribString("VMode", ""), wanted.v);
    EXPECT_EQ(record.GetAttribString("RMode", ""), wanted.r);
  }
}

TEST(Entry, SmoothingPositionsBecomeWeights) {
  const struct {
    int position;
    double alpha;
  } cases[] = {{0, -1.0}, {1, 1.0}, {5, 1e-3}, {9, 1e-6}, {10, 0.0}};
  for (const auto& wanted : cases) {
    SStabilizeOptions options;
    options.motion = EMotion::smooth;
    options.smoothing = wanted.position;
    const CPDLEntry entry = entryOf(options);
    EXPECT_NEAR(entry.FirstElement().GetChild(0).GetAttribDouble("Alpha2", 99.0), wanted.alpha,
                1e-9)
        << wanted.position;
  }
}

TEST(Entry, HoldsBoxesOnlyWhenAMattingBoxIsGiven) {
  SStabilizeOptions options;
  EXPECT_EQ(entryOf(options).FirstElement().GetChildCount(), 1);
  options.matting = EMatting::box;
  options.mattingBox = {10, 20, 1900, 1000};
  const CPDLEntry entry = entryOf(options);
  ASSERT_EQ(entry.FirstElement().GetChildCount(), 2);
  EXPECT_EQ(entry.FirstElement().GetChild(1).GetName(), "TrackingArray");
}

}  // namespace
