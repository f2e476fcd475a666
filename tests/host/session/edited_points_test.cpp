#include <gtest/gtest.h>

#include <vector>

#include "session/PointEditing.h"
#include "session/ToolOnShot.h"
#include "tracker/FeatureDetector.h"

namespace {

constexpr int IN = 2;
constexpr int OUT = 8;
constexpr int TOOL_PREVIEW_ALL = 20003;

std::unique_ptr<IClipReader> openShot() {
  return OpenClip("test:width=256,height=192,frames=10,firstFrame=0,subject=0,dust=0", 1);
}

/// Places that a pass can follow.
std::vector<SFeature> goodPlaces() {
  const std::unique_ptr<IClipReader> reader = openShot();
  const CImageFormat& format = reader->info().format;
  std::vector<std::uint16_t> samples(format.getBytesPerField() / sizeof(std::uint16_t));
  reader->readFrame(IN, samples.data());
  SFeatureSettings settings;
  settings.region = {30, 30, 225, 161};
  std::vector<SFeature> places = DetectFeatures(samples.data(), format, settings);
  places.resize(3);
  return places;
}

/// The stabiliser with points that were placed by hand, tracked and smoothed.
struct SEditedShot {
  explicit SEditedShot(const std::vector<SFeature>& places)
      : tool(openShot(), 1, 0, IN, OUT, observer), editing(tool.session()) {
    for (const SFeature& place : places) EXPECT_GE(editing.place(place.x, place.y), 0);
    tool.command(TOOL_TRACK);
    EXPECT_EQ(tool.points().TrackState(), TRACK_STATE_Tracked);
  }

  CTrackingPointsEditor& editor() { return *tool.session().editor(); }
  /// What the last smoothing made of the points as they were then.
  CTrackingArray motion() { return *editor().originalMotion(); }

  SJobObserver observer;
  CToolOnShot tool;
  CPointEditing editing;
};

TEST(EditedPoints, APreviewAfterADeletedPointSmoothsTheOthersAndTracksNothing) {
  const std::vector<SFeature> places = goodPlaces();
  const CTrackingArray withoutTheFirst = SEditedShot({places[1], places[2]}).motion();
  SEditedShot shot(places);
  ASSERT_NE(shot.editor().originalMotion(), nullptr);
  const CTrackingArray ofThree = shot.motion();
  const CTrackingPoints path = shot.tool.points().Trajectory(2);

  shot.editing.select(0);
  ASSERT_TRUE(shot.editing.remove(0));
  EXPECT_EQ(shot.tool.points().TrackState(), TRACK_STATE_Tracked);
  EXPECT_EQ(shot.tool.points().Trajectory(1), path);
  EXPECT_EQ(shot.editor().smoothedMotion(), nullptr) << "that of the three is out of date";
  shot.tool.command(TOOL_PREVIEW_ALL);
  EXPECT_EQ(shot.tool.session().tracking().points.size(), 3u) << "still that of the first pass";
  EXPECT_EQ(shot.tool.points().TrackState(), TRACK_STATE_Rendered);
  ASSERT_NE(shot.editor().originalMotion(), nullptr);
  EXPECT_NE(shot.motion().frames, ofThree.frames);
  EXPECT_EQ(shot.motion().frames, withoutTheFirst.frames) << "as if it had never been there";

  shot.editing.undo();
  EXPECT_EQ(shot.editor().smoothedMotion(), nullptr);
  shot.tool.command(TOOL_PREVIEW_ALL);
  ASSERT_NE(shot.editor().originalMotion(), nullptr);
  EXPECT_EQ(shot.motion().frames, ofThree.frames) << "its tracking came back";
}

TEST(EditedPoints, APreviewAfterAMovedPointTracksAllAnew) {
  SEditedShot shot(goodPlaces());
  const CTrackingArray before = shot.motion();
  const double seconds = shot.tool.session().tracking().seconds;
  ASSERT_TRUE(shot.editing.nudge(1, 2.0, -1.0));
  EXPECT_EQ(shot.tool.points().FrameCount(), 1);
  shot.tool.command(TOOL_PREVIEW_ALL);
  EXPECT_NE(shot.tool.session().tracking().seconds, seconds);
  EXPECT_EQ(shot.tool.points().FrameCount(), OUT - IN);
  EXPECT_NE(shot.motion().frames, before.frames);
  shot.editing.undo();
  shot.tool.command(TOOL_PREVIEW_ALL);
  EXPECT_EQ(shot.motion().frames, before.frames);
}

}  // namespace
