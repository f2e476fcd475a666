#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "TestShot.h"

namespace {

/// Five points on a texture that wanders; the test lays things over it.
class TrackerLoss : public ::testing::Test {
 protected:
  static constexpr int kVictim = 4;
  static constexpr double kNoise = 0.005;

  static SPoint2 shiftAt(int frame) {
    return {2.0 * std::sin(0.9 * frame) + 0.37 * frame, 1.5 * std::cos(0.7 * frame) - 1.5};
  }

  void open(const std::map<int, SPoint2>& points, const STrackSettings& settings) {
    points_ = points;
    tracker_.emplace(shot_.format(), settings, points);
    EXPECT_TRUE(tracker_->begin(shot_.draw(texture_, {}, kNoise)).empty());
  }
  std::map<int, STrackedPoint> next(const COverlay& overlay = {}) {
    ++frame_;
    return tracker_->follow(shot_.draw(texture_, shiftAt(frame_), kNoise, overlay));
  }
  /// How far a point is from where the texture has taken it.
  double errorOf(int index, const STrackedPoint& point) const {
    const SPoint2 shift = shiftAt(frame_);
    const SPoint2& from = points_.at(index);
    return std::hypot(point.position.x - from.x - shift.x, point.position.y - from.y - shift.y);
  }
  static std::map<int, SPoint2> fivePoints() {
    return {{0, {50, 45}}, {1, {170, 50}}, {2, {52, 140}}, {3, {165, 138}}, {kVictim, {110, 95}}};
  }

  CTestShot shot_{220, 190, 9};
  CTexture texture_{21, 6.0, 0.12, 200};
  CTexture other_{77, 5.0, 0.12, 200};
  std::map<int, SPoint2> points_;
  std::optional<CShotTracker> tracker_;
  int frame_ = 0;
};

}  // namespace

TEST_F(TrackerLoss, CoveredPointIsBridgedAndFoundAgain) {
  struct SCase {
    const char* name;
    std::function<SRectD(int frame)> cover;  ///< where it lies; empty: nowhere
    bool flat;
  };
  const auto fourFrames = [](int frame) {
    return frame < 5 || frame > 8 ? SRectD{} : SRectD{82, 63, 142, 123};
  };
  const auto passing = [](int frame) {
    return SRectD{26.0 + 2.5 * frame, 62, 56.0 + 2.5 * frame, 124};
  };
  const std::vector<SCase> cases = {{"another texture, at once", fourFrames, false},
                                    {"flat, at once", fourFrames, true},
                                    {"another texture, slowly across", passing, false},
                                    {"flat, slowly across", passing, true}};
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.name);
    frame_ = 0;
    open(fivePoints(), shot_.settings());
    STrackedPoint victim;
    int hidden = 0;
    for (int frame = 1; frame <= 50; ++frame) {
      const SRectD cover = c.cover(frame);
      const std::map<int, STrackedPoint> found = next([&](int x, int y, double v) {
        if (x < cover.left || x >= cover.right || y < cover.top || y >= cover.bottom) return v;
        return c.flat ? 0.3 : other_(x - cover.left, y);
      });
      victim = found.at(kVictim);
      SCOPED_TRACE("frame " + std::to_string(frame));
      EXPECT_LT(errorOf(kVictim, victim), 0.3);
      const double x = 110.0 + shiftAt(frame).x;
      if (x - 10.0 > cover.left && x + 10.0 < cover.right) {
        ++hidden;
        EXPECT_EQ(victim.state, EPointState::bridged);
        EXPECT_NE(victim.reason, ELossReason::none);
      }
      for (int i = 0; i < kVictim; ++i) EXPECT_EQ(found.at(i).state, EPointState::found);
    }
    EXPECT_EQ(victim.state, EPointState::found);
    EXPECT_LT(errorOf(kVictim, victim), 0.1);
    const SPointSummary summary = tracker_->summary().at(kVictim);
    EXPECT_EQ(summary.framesFound + summary.framesBridged, 51);
    EXPECT_GE(hidden, 2);
    EXPECT_GE(summary.framesBridged, hidden);
    EXPECT_GE(summary.firstLossFrameOffset, 5);
    EXPECT_EQ(summary.firstLossReason, ELossReason::noMatch);
    EXPECT_TRUE(tracker_->summary().at(0).usable);
  }
}

TEST_F(TrackerLoss, LonePointUnderCoverIsLost) {
  for (const bool flat : {false, true}) {
    frame_ = 0;
    open({{kVictim, {110, 95}}}, shot_.settings());
    EXPECT_EQ(next().at(kVictim).state, EPointState::found);
    const STrackedPoint gone =
        next([&](int x, int y, double) { return flat ? 0.3 : other_(x, y); }).at(kVictim);
    EXPECT_EQ(gone.state, EPointState::lost);
    EXPECT_EQ(gone.reason, ELossReason::noMatch);
    EXPECT_EQ(next().at(kVictim).state, EPointState::lost) << "a gap without position stays one";
    EXPECT_FALSE(tracker_->summary().at(kVictim).usable);
  }
}

TEST_F(TrackerLoss, LongOrFinalCoverMakesAPointUnusable) {
  struct SCase {
    const char* name;
    int from, to;
    bool usable;
  };
  for (const SCase& c :
       {SCase{"short", 5, 7, true}, SCase{"a third of the shot", 5, 12, false},
        SCase{"last two frames", 23, 24, true}, SCase{"last five frames", 20, 24, false}}) {
    SCOPED_TRACE(c.name);
    frame_ = 0;
    open(fivePoints(), shot_.settings());
    for (int frame = 1; frame <= 24; ++frame) {
      const bool covered = frame >= c.from && frame <= c.to;
      next([&](int x, int y, double v) {
        return covered && std::abs(x - 112) < 30 && std::abs(y - 93) < 30 ? 0.3 : v;
      });
    }
    EXPECT_EQ(tracker_->summary().at(kVictim).usable, c.usable);
    EXPECT_EQ(tracker_->summary().at(kVictim).framesBridged, c.to - c.from + 1);
  }
}

TEST_F(TrackerLoss, BlurAndFlashOfTheWholePictureAreNoCover) {
  open(fivePoints(), shot_.settings());
  for (int frame = 1; frame <= 8; ++frame) {
    std::vector<double> sum;
    COverlay overlay;
    if (frame == 5) {
      for (int k = -3; k <= 3; ++k) {  // the camera jerks by 6 pixels during the exposure
        const SPoint2 shift = shiftAt(frame);
        const std::vector<double> v = texture_.render(220, 190, shift.x + k, shift.y);
        if (sum.empty()) sum.resize(v.size());
        for (std::size_t i = 0; i < v.size(); ++i) sum[i] += v[i] / 7.0;
      }
      overlay = [&](int x, int y, double) { return sum[static_cast<std::size_t>(220 * y + x)]; };
    } else if (frame == 7) {
      overlay = [](int, int, double v) { return 0.5 * v + 0.45; };
    }
    for (const auto& [index, point] : next(overlay)) {
      EXPECT_EQ(point.state, EPointState::found) << "point " << index << ", frame " << frame;
      EXPECT_LT(errorOf(index, point), 0.25);
    }
  }
}

TEST_F(TrackerLoss, ACutIsNotFollowed) {
  open(fivePoints(), shot_.settings());
  next();
  for (const auto& [index, point] : next([&](int x, int y, double) { return other_(x, y); }))
    EXPECT_EQ(point.state, EPointState::lost) << "point " << index;
}

TEST_F(TrackerLoss, DustOnAPatchDoesNotThrowItOff) {
  open(fivePoints(), shot_.settings());
  for (int frame = 1; frame <= 12; ++frame) {
    const SPoint2 shift = shiftAt(frame);
    const bool dirty = frame % 4 == 0;
    const auto found = next([&](int x, int y, double v) {
      const double d = std::hypot(x - 115.0 - shift.x, y - 92.0 - shift.y);
      return dirty && d < 3.0 ? 0.02 : v;
    });
    EXPECT_LT(errorOf(kVictim, found.at(kVictim)), 0.3) << "frame " << frame;
  }
  EXPECT_EQ(next().at(kVictim).state, EPointState::found);
}

TEST(TrackerRange, FollowsToTheEndOfTheSearchAreaAndNotBeyond) {
  struct SCase {
    SPoint2 move;
    bool found;
  };
  const CTexture texture(31);
  for (const SCase& c : {SCase{{9, 0}, true}, SCase{{-6, 0}, true}, SCase{{0, 12}, true},
                         SCase{{0, -4}, true}, SCase{{9, 12}, true}, SCase{{8.7, -3.6}, true},
                         SCase{{11, 0}, false}, SCase{{-8, 0}, false}, SCase{{0, 14}, false},
                         SCase{{0, -6}, false}, SCase{{40, 40}, false}}) {
    SCOPED_TRACE("move " + std::to_string(c.move.x) + ", " + std::to_string(c.move.y));
    CTestShot shot(160, 160);
    STrackSettings settings = shot.settings();
    settings.searchLeft = 6;
    settings.searchRight = 9;
    settings.searchUp = 4;
    settings.searchDown = 12;
    for (const SPoint2 from : {SPoint2{70, 80}, SPoint2{70.4, 80.4}}) {
      CShotTracker tracker(shot.format(), settings, {{0, from}});
      ASSERT_TRUE(tracker.begin(shot.draw(texture, {}, 0.005)).empty());
      const STrackedPoint to = tracker.follow(shot.draw(texture, c.move, 0.005)).at(0);
      EXPECT_EQ(to.state, c.found ? EPointState::found : EPointState::lost);
      if (!c.found) {
        EXPECT_EQ(to.reason, ELossReason::noMatch);
        continue;
      }
      EXPECT_NEAR(to.position.x, from.x + c.move.x, 0.05);
      EXPECT_NEAR(to.position.y, from.y + c.move.y, 0.05);
    }
  }
}

TEST(TrackerRange, APointThatLeavesThePictureIsToldAndDropped) {
  struct SCase {
    const char* name;
    SPoint2 point, step;
  };
  const CTexture texture(51, 6.0, 0.12, 200);
  for (const SCase& c :
       {SCase{"left", {30, 95}, {-1.7, 0.2}}, SCase{"right", {190, 95}, {1.7, 0.2}},
        SCase{"top", {110, 30}, {0.2, -1.7}}, SCase{"bottom", {110, 160}, {-0.2, 1.7}}}) {
    SCOPED_TRACE(c.name);
    CTestShot shot(220, 190);
    STrackSettings settings = shot.settings();
    settings.region = {2, 3, 217, 186};
    const std::map<int, SPoint2> points = {
        {0, {95, 80}}, {1, {125, 80}}, {2, {95, 110}}, {3, {125, 110}}, {7, c.point}};
    CShotTracker tracker(shot.format(), settings, points);
    ASSERT_TRUE(tracker.begin(shot.draw(texture, {}, 0.005)).empty());
    bool gone = false;
    for (int frame = 1; frame <= 16; ++frame) {
      const SPoint2 shift = {c.step.x * frame, c.step.y * frame};
      const STrackedPoint point = tracker.follow(shot.draw(texture, shift, 0.005)).at(7);
      const SPoint2 truth = {c.point.x + shift.x, c.point.y + shift.y};
      EXPECT_NEAR(point.position.x, truth.x, 0.2) << "frame " << frame;
      EXPECT_NEAR(point.position.y, truth.y, 0.2) << "frame " << frame;
      const bool inside = CShotTracker::canTrack(truth, settings);
      if (gone || !inside) {
        EXPECT_EQ(point.state, EPointState::bridged) << "frame " << frame;
        EXPECT_EQ(point.reason, ELossReason::leftPicture);
      }
      gone = gone || point.state != EPointState::found;
    }
    EXPECT_TRUE(gone);
    EXPECT_FALSE(tracker.summary().at(7).usable);
    EXPECT_EQ(tracker.summary().at(7).firstLossReason, ELossReason::leftPicture);
    EXPECT_TRUE(tracker.summary().at(0).usable);
  }
}

TEST(TrackerAmbiguity, OtherPointsTellWhichOfManyLikePlacesIsRight) {
  const CTexture texture(61);
  CTestShot shot(220, 190);
  const auto picture = [&](SPoint2 shift) {
    return [&texture, shift](double x, double y) {
      const double u = x - shift.x;
      const double v = y - shift.y;
      if (std::abs(u - 110) > 45 || std::abs(v - 95) > 45) return texture(u, v);
      constexpr double w = 2.0 * std::numbers::pi / 9.0;
      return 0.5 + 0.15 * std::sin(w * u) + 0.15 * std::sin(w * v);
    };
  };
  const SPoint2 pattern = {110, 95};
  for (const bool alone : {false, true}) {
    std::map<int, SPoint2> points = {{9, pattern}};
    if (!alone) {
      points.insert({{0, {40, 25}}, {1, {180, 25}}, {2, {40, 165}}, {3, {180, 165}}});
    }
    CShotTracker tracker(shot.format(), shot.settings(10, 15), points);
    ASSERT_TRUE(tracker.begin(shot.drawAny(picture({}), 0.005)).empty());
    SPoint2 shift;
    for (int frame = 1; frame <= 5; ++frame) {
      shift = {1.3 * frame, (frame % 2 == 0 ? 6.2 : -5.4)};
      const STrackedPoint point = tracker.follow(shot.drawAny(picture(shift), 0.005)).at(9);
      if (alone) {
        EXPECT_EQ(point.state, EPointState::lost);
        EXPECT_EQ(point.reason, ELossReason::ambiguous);
        continue;
      }
      EXPECT_EQ(point.state, EPointState::found) << "frame " << frame;
      EXPECT_NEAR(point.position.x, pattern.x + shift.x, 0.1) << "frame " << frame;
      EXPECT_NEAR(point.position.y, pattern.y + shift.y, 0.1) << "frame " << frame;
    }
  }
}

TEST(TrackerBegin, PatchesWithoutTextureAreLeftOut) {
  struct SCase {
    const char* name;
    std::function<double(double, double)> picture;
    double noise;
    bool textured;
  };
  const CTexture texture(71);
  const CTexture faint(71, 6.0, 0.008);
  for (const SCase& c :
       {SCase{"flat", [](double, double) { return 0.4; }, 0.0, false},
        SCase{"flat with grain", [](double, double) { return 0.4; }, 0.02, false},
        SCase{"ramp", [](double x, double) { return 0.2 + 0.004 * x; }, 0.01, false},
        SCase{"straight edge",
              [](double x, double y) { return 0.45 + 0.25 * std::tanh(x + 0.3 * y - 78.0); }, 0.01,
              false},
        SCase{"texture", [&](double x, double y) { return texture(x, y); }, 0.02, true},
        SCase{"faint texture", [&](double x, double y) { return faint(x, y); }, 0.0, true},
        SCase{"faint texture under grain", [&](double x, double y) { return faint(x, y); }, 0.05,
              false},
        SCase{"corner", [](double x, double y) { return x < 60 && y < 60 ? 0.2 : 0.7; }, 0.01,
              true}}) {
    CTestShot shot(120, 120);
    CShotTracker tracker(shot.format(), shot.settings(), {{5, {60, 60}}});
    const std::vector<int> dropped = tracker.begin(shot.drawAny(c.picture, c.noise));
    EXPECT_EQ(dropped, c.textured ? std::vector<int>{} : std::vector<int>{5}) << c.name;
    EXPECT_EQ(tracker.follow(shot.drawAny(c.picture, c.noise)).size(), c.textured ? 1U : 0U)
        << c.name;
  }
}

TEST(TrackerBegin, PatchMustLieInsideTheRegion) {
  STrackSettings settings;
  settings.region = {10, 20, 110, 120};
  settings.trackBoxExtentX = 8;
  settings.trackBoxExtentY = 5;
  struct SCase {
    SPoint2 point;
    bool inside;
  };
  for (const SCase& c : {SCase{{18, 25}, true}, SCase{{17, 25}, false}, SCase{{18, 24}, false},
                         SCase{{17.6, 24.6}, true}, SCase{{102, 115}, true},
                         SCase{{103, 115}, false}, SCase{{102, 116}, false}}) {
    EXPECT_EQ(CShotTracker::canTrack(c.point, settings), c.inside)
        << c.point.x << ", " << c.point.y;
  }
}

TEST(TrackerDeterminism, ThreadsAndThePictureOutsideTheRegionDoNotMatter) {
  const CTexture texture(81, 6.0, 0.12, 200);
  const auto run = [&](int threads, double outside) {
    CTestShot shot(220, 190, 4);
    STrackSettings settings = shot.settings();
    settings.region = {20, 16, 203, 170};
    settings.threads = threads;
    std::map<int, SPoint2> points;
    for (int i = 0; i < 9; ++i) points[i] = {35.0 + 70.0 * (i % 3), 32.0 + 60.0 * (i / 3)};
    const COverlay overlay = [&](int x, int y, double v) {
      return x < 20 || x > 203 || y < 16 || y > 170 ? outside : v;
    };
    CShotTracker tracker(shot.format(), settings, points);
    EXPECT_TRUE(tracker.begin(shot.draw(texture, {}, 0.01, overlay)).empty());
    std::vector<double> numbers;
    for (int frame = 1; frame <= 6; ++frame) {
      const SPoint2 shift = {2.1 * std::sin(frame), 1.7 * frame};
      for (const auto& [index, p] : tracker.follow(shot.draw(texture, shift, 0.01, overlay))) {
        numbers.insert(numbers.end(), {static_cast<double>(index), p.position.x, p.position.y,
                                       static_cast<double>(p.state), p.correlation, p.sigma});
      }
    }
    return numbers;
  };
  const std::vector<double> expected = run(1, 0.0);
  EXPECT_EQ(expected.size(), 9U * 6U * 6U);
  EXPECT_EQ(run(1, 1.0), expected);
  EXPECT_EQ(run(2, 0.0), expected);
  EXPECT_EQ(run(5, 0.0), expected);
}
