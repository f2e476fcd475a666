#include <gtest/gtest.h>

#include <array>
#include <string>

#include "TestShot.h"

namespace {

double Distance(const SPoint2& a, const SPoint2& b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

/// The least squared error that any method can have, both axes together: inverse of the Fisher
/// information of shift, gain and offset, with white noise in both frames.
double BoundSquared(const CTexture& texture, const SPoint2& at, int half, double noise) {
  constexpr std::size_t n = 4;
  std::array<std::array<double, 2 * n>, n> m{};
  for (std::size_t i = 0; i < n; ++i) m[i][n + i] = 1.0;
  for (int j = -half; j <= half; ++j) {
    for (int i = -half; i <= half; ++i) {
      constexpr double h = 1e-3;
      const double x = at.x + i;
      const double y = at.y + j;
      const std::array<double, n> column = {(texture(x + h, y) - texture(x - h, y)) / (2.0 * h),
                                            (texture(x, y + h) - texture(x, y - h)) / (2.0 * h),
                                            texture(x, y) - 0.45, 1.0};
      for (std::size_t a = 0; a < n; ++a) {
        for (std::size_t b = 0; b < n; ++b) m[a][b] += column[a] * column[b];
      }
    }
  }
  for (std::size_t p = 0; p < n; ++p) {
    const double pivot = m[p][p];
    for (double& v : m[p]) v /= pivot;
    for (std::size_t r = 0; r < n; ++r) {
      if (r == p) continue;
      const double factor = m[r][p];
      for (std::size_t c = 0; c < 2 * n; ++c) m[r][c] -= factor * m[p][c];
    }
  }
  return 2.0 * noise * noise * (m[0][n] + m[1][n + 1]);
}

}  // namespace

TEST(TrackerAccuracy, ErrorIsNearTheLeastPossibleAndIsToldAsSigma) {
  struct SCase {
    int half;
    double noise;
    int trials;
  };
  for (const SCase& c : {SCase{10, 0.01, 150}, SCase{10, 0.03, 150}, SCase{30, 0.01, 60}}) {
    SCOPED_TRACE("half " + std::to_string(c.half) + ", noise " + std::to_string(c.noise));
    CEven even(7);
    const int size = 2 * c.half + 41;
    double error = 0.0;
    double bound = 0.0;
    double told = 0.0;
    for (int trial = 0; trial < c.trials; ++trial) {
      const CTexture texture(100U + static_cast<unsigned>(trial), 6.0, 0.12, size);
      CTestShot shot(size, size, static_cast<unsigned>(trial));
      const SPoint2 from = {size / 2 + even(0.5), size / 2 + even(0.5)};
      const SPoint2 move = {even(6.0), even(6.0)};
      CShotTracker tracker(shot.format(), shot.settings(c.half, 8), {{3, from}});
      ASSERT_TRUE(tracker.begin(shot.draw(texture, {}, c.noise)).empty());
      const STrackedPoint to = tracker.follow(shot.draw(texture, move, c.noise)).at(3);
      ASSERT_EQ(to.state, EPointState::found) << "trial " << trial;
      const double distance = Distance(to.position, {from.x + move.x, from.y + move.y});
      error += distance * distance;
      bound += BoundSquared(texture, from, c.half, c.noise);
      told += 2.0 * to.sigma * to.sigma;
    }
    EXPECT_LE(std::sqrt(error / bound), 1.2);
    EXPECT_NEAR(std::sqrt(told / error), 1.0, 0.25);
    RecordProperty(
        "rms over bound, half " + std::to_string(c.half) + " noise " + std::to_string(c.noise),
        std::to_string(std::sqrt(error / bound)));
  }
}

TEST(TrackerAccuracy, NoBiasTowardWholePixels) {
  const CTexture texture(11);
  const SPoint2 from = {50.0, 50.0};
  for (const int half : {5, 10, 30}) {
    CTestShot shot(101, 101);
    for (int tenth = -10; tenth <= 10; ++tenth) {
      const SPoint2 move = {2.0 + 0.1 * tenth, -1.0 - 0.07 * tenth};
      CShotTracker tracker(shot.format(), shot.settings(half, 8), {{0, from}});
      ASSERT_TRUE(tracker.begin(shot.draw(texture, {})).empty());
      const STrackedPoint to = tracker.follow(shot.draw(texture, move)).at(0);
      EXPECT_NEAR(to.position.x - from.x, move.x, 0.002) << "half " << half;
      EXPECT_NEAR(to.position.y - from.y, move.y, 0.002) << "half " << half;
    }
  }
}

TEST(TrackerAccuracy, FlickerAndSmallTurnsDoNotMoveAPoint) {
  struct SCase {
    const char* name;
    double gain, offset, degrees, scale, tolerance;
  };
  const CTexture texture(12);
  const SPoint2 from = {60.0, 60.0};
  const SPoint2 move = {3.3, -2.6};
  for (const SCase& c :
       {SCase{"darker", 0.6, 0.0, 0.0, 1.0, 0.002}, SCase{"lifted", 1.0, 0.15, 0.0, 1.0, 0.002},
        SCase{"brighter and lowered", 1.3, -0.12, 0.0, 1.0, 0.002},
        SCase{"turned", 1.0, 0.0, 0.5, 1.0, 0.01}, SCase{"grown", 1.0, 0.0, 0.0, 1.008, 0.01}}) {
    SCOPED_TRACE(c.name);
    const double cosine = std::cos(c.degrees * std::numbers::pi / 180.0) / c.scale;
    const double sine = std::sin(c.degrees * std::numbers::pi / 180.0) / c.scale;
    CTestShot shot(121, 121);
    CShotTracker tracker(shot.format(), shot.settings(15, 8), {{0, from}});
    ASSERT_TRUE(tracker.begin(shot.draw(texture, {})).empty());
    const auto changed = [&](double x, double y) {
      const double ex = x - from.x - move.x;
      const double ey = y - from.y - move.y;
      return (texture(from.x + cosine * ex + sine * ey, from.y - sine * ex + cosine * ey) - 0.45) *
                 c.gain +
             0.45 + c.offset;
    };
    const STrackedPoint to = tracker.follow(shot.drawAny(changed)).at(0);
    EXPECT_EQ(to.state, EPointState::found);
    EXPECT_NEAR(to.position.x, from.x + move.x, c.tolerance);
    EXPECT_NEAR(to.position.y, from.y + move.y, c.tolerance);
  }
}

TEST(TrackerAccuracy, DoesNotDriftOver300Frames) {
  const CTexture texture(13, 6.0, 0.12, 260);
  CTestShot shot(260, 260, 5);
  std::map<int, SPoint2> points;
  for (int i = 0; i < 16; ++i) points[i] = {46.0 + 56.0 * (i % 4), 46.0 + 56.0 * (i / 4)};
  CShotTracker tracker(shot.format(), shot.settings(15, 8), points);
  ASSERT_TRUE(tracker.begin(shot.draw(texture, {}, 0.01)).empty());
  CEven even(3);
  SPoint2 shift;
  std::map<int, STrackedPoint> last;
  for (int frame = 1; frame <= 300; ++frame) {
    shift.x = std::clamp(shift.x + even(2.5), -20.0, 20.0);
    shift.y = std::clamp(shift.y + even(2.5), -20.0, 20.0);
    last = tracker.follow(shot.draw(texture, shift, 0.01));
  }
  double sum = 0.0;
  for (const auto& [index, point] : last) {
    EXPECT_EQ(point.state, EPointState::found);
    const SPoint2& from = points.at(index);
    const double distance = Distance(point.position, {from.x + shift.x, from.y + shift.y});
    sum += distance * distance / 2.0;
  }
  EXPECT_LE(std::sqrt(sum / 16.0), 0.03);
  RecordProperty("rms", std::to_string(std::sqrt(sum / 16.0)));
}
