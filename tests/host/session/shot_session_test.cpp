#include "session/ShotSession.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "support/Threads.h"
#include "tracker/FeatureDetector.h"

namespace {

/// A tool that is there for its tracking passes.
class CTrackingTool : public CToolObject {
 public:
  CTrackingTool() : CToolObject("Tracking") { editor.setTrackingArray(&array, true); }
  int toolInitialize(CNavSystemInterface*) override { return 0; }
  int toolShutdown() override { return 0; }
  CToolProcessor* makeToolProcessorInstance(const CAbortFlag*) override { return nullptr; }
  bool onTrackingStart() override {
    editor.keepFirstFrame();
    return true;
  }
  void onTrackingEnd(int failed) override { ends.push_back(failed); }

  CTrackingArray array;
  CTrackingPointsEditor editor;
  std::vector<int> ends;
};

/// A generated shot of frames [100, 108) with one point that was tracked over [100, 104).
class ShotSession : public ::testing::Test {
 protected:
  static constexpr int IN = 102;

  ShotSession()
      : session_(OpenClip("test:width=256,height=192,frames=8,firstFrame=100,subject=0,dust=0", 1),
                 CShotSession::SSettings()) {
    session_.setTool(&tool_);
    session_.setToolEditor(&tool_.editor);
    tool_.array.SetBoxExtents(10, 10, 10, 10, 10, 10);
    feature_ = strongestFeature();
    for (int frame = 100; frame < 104; ++frame)
      tool_.array.PointsAt(frame).Point(0) = CTrackPoint(feature_.x, feature_.y);
    tool_.editor.setTracked();
  }
  ~ShotSession() override { session_.setTool(nullptr); }

  SFeature strongestFeature() {
    const CImageFormat& format = session_.info().format;
    std::vector<std::uint16_t> samples(format.getBytesPerField() / sizeof(std::uint16_t));
    session_.reader().readFrame(IN, samples.data());
    SFeatureSettings settings;
    settings.region = format.getActivePictureRect();
    return DetectFeatures(samples.data(), format, settings).at(0);
  }

  void pumpUntilTracked() {
    while (tool_.ends.empty()) {
      session_.pump();
      QTXmillisleep(1);
    }
  }

  CTrackingTool tool_;
  CShotSession session_;
  SFeature feature_;
};

TEST_F(ShotSession, APassTracksTheFirstFramesPointsOverTheMarks) {
  session_.setMarks(IN, 106);
  session_.StartTrackingRun();
  pumpUntilTracked();
  EXPECT_EQ(tool_.ends, std::vector<int>{0}) << session_.tracking().failure;
  EXPECT_EQ(tool_.array.TrackState(), TRACK_STATE_Tracked);
  std::vector<int> frames;
  for (const auto& [frame, points] : tool_.array.frames) {
    frames.push_back(frame);
    EXPECT_TRUE(points.IsValidPoint(0)) << frame;
  }
  EXPECT_EQ(frames, (std::vector<int>{102, 103, 104, 105}));
  const CTrackPoint& first = tool_.array.FindPoints(IN).Entries().at(0);
  EXPECT_EQ(first.x, feature_.x);
  EXPECT_EQ(first.y, feature_.y);
}

/// Paths that no tracker would find.
CTrackingArray madeUpPaths(const CTrackPoint& start, int in, int out) {
  CTrackingArray paths;
  for (int frame = in; frame < out; ++frame)
    paths.PointsAt(frame).Point(0) = CTrackPoint(start.x + (frame - in) / 3.0, start.y);
  return paths;
}

TEST_F(ShotSession, KnownPathsAreTheResultsOfThePassThatBeginsOnThem) {
  session_.setMarks(IN, 106);
  const CTrackingArray paths = madeUpPaths(CTrackPoint(feature_.x, feature_.y), IN, 106);
  session_.setKnownPaths(paths);
  session_.StartTrackingRun();
  pumpUntilTracked();
  EXPECT_EQ(tool_.ends, std::vector<int>{0});
  EXPECT_EQ(tool_.array.TrackState(), TRACK_STATE_Tracked);
  EXPECT_EQ(tool_.array.frames, paths.frames);
  EXPECT_FALSE(session_.tracking().ran);
  EXPECT_EQ(session_.tracking().frames.size(), 4u);
  EXPECT_EQ(session_.tracking().indexInSet.size(), 1u);
  EXPECT_EQ(tool_.editor.selectedPoint, 0) << "the zoom fill follows it";
}

TEST_F(ShotSession, APassOverOtherFramesOrFromOtherPlacesTracks) {
  session_.setMarks(IN, 106);
  const CTrackPoint start(feature_.x, feature_.y);
  for (const CTrackingArray& others :
       {madeUpPaths(start, IN, 105), madeUpPaths(start, 101, 106),
        madeUpPaths(CTrackPoint(feature_.x + 0.5, feature_.y), IN, 106)}) {
    tool_.ends.clear();
    session_.setKnownPaths(others);
    session_.StartTrackingRun();
    pumpUntilTracked();
    EXPECT_EQ(tool_.ends, std::vector<int>{0}) << session_.tracking().failure;
    EXPECT_TRUE(session_.tracking().ran);
  }
}

TEST_F(ShotSession, AStoppedPassPutsNothingMoreIntoThePoints) {
  session_.setMarks(100, 108);
  for (int waited : {0, 3, 20}) {
    tool_.ends.clear();
    tool_.array.PointsAt(100).Point(0) = CTrackPoint(feature_.x, feature_.y);
    session_.StartTrackingRun();
    QTXmillisleep(waited);  // results wait to be taken
    session_.StopTrackingRun();
    tool_.array.Clear();
    pumpUntilTracked();
    EXPECT_EQ(tool_.array.FrameCount(), 0) << waited;
    EXPECT_EQ(tool_.ends, std::vector<int>{1});
    EXPECT_NE(tool_.array.TrackState(), TRACK_STATE_Tracked);
  }
}

TEST_F(ShotSession, AToolThatTakesItsEditorBackHearsThatThePassFailed) {
  session_.setMarks(100, 108);
  session_.StartTrackingRun();
  session_.setToolEditor(nullptr);
  pumpUntilTracked();
  session_.StartTrackingRun();
  EXPECT_EQ(tool_.ends, (std::vector<int>{1, 1}));
  EXPECT_FALSE(session_.tracking().failure.empty());
  session_.pump();
  EXPECT_EQ(tool_.ends.size(), 2u) << "once a pass";
}

}  // namespace
