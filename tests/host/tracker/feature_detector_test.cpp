#include "tracker/FeatureDetector.h"

#include <gtest/gtest.h>

#include <map>

#include "TestShot.h"

namespace {

SFeatureSettings SettingsFor(const CTestShot& shot, int count) {
  SFeatureSettings settings;
  settings.count = count;
  settings.region = shot.frame();
  return settings;
}

}  // namespace

TEST(FeatureDetector, FeaturesAreSpreadKeepTheirDistanceAndTheMargin) {
  struct SCase {
    int count, margin;
    double distance;
    SRect region;
    int expected;
  };
  const CTexture texture(3, 6.0, 0.12, 400);
  CTestShot shot(420, 300);
  const std::uint16_t* samples = shot.draw(texture, {}, 0.01);
  for (const SCase& c :
       {SCase{16, 30, 0.0, {0, 0, 419, 299}, 16}, SCase{9, 40, 60.0, {30, 20, 389, 279}, 9},
        SCase{1, 30, 0.0, {0, 0, 419, 299}, 1}, SCase{5, 12, 25.0, {100, 100, 199, 179}, 5},
        SCase{0, 30, 0.0, {0, 0, 419, 299}, 0}, SCase{4, 30, 0.0, {100, 100, 150, 150}, 0}}) {
    SFeatureSettings settings;
    settings.count = c.count;
    settings.margin = c.margin;
    settings.minDistance = c.distance;
    settings.region = c.region;
    const std::vector<SFeature> found = DetectFeatures(samples, shot.format(), settings);
    EXPECT_EQ(static_cast<int>(found.size()), c.expected) << "count " << c.count;
    for (std::size_t i = 0; i < found.size(); ++i) {
      EXPECT_GE(found[i].x - c.margin, c.region.left);
      EXPECT_LE(found[i].x + c.margin, c.region.right);
      EXPECT_GE(found[i].y - c.margin, c.region.top);
      EXPECT_LE(found[i].y + c.margin, c.region.bottom);
      for (std::size_t k = 0; k < i; ++k) {
        EXPECT_GE(found[k].strength, found[i].strength);
        EXPECT_GE(std::hypot(found[k].x - found[i].x, found[k].y - found[i].y), c.distance);
      }
    }
  }
}

TEST(FeatureDetector, EachQuarterGetsItsShareThoughOneIsMuchStronger) {
  const CTexture strong(3, 6.0, 0.12, 400);
  const CTexture weak(4, 6.0, 0.03, 400);
  CTestShot shot(400, 400);
  const std::uint16_t* samples = shot.drawAny(
      [&](double x, double y) { return x < 200 && y < 200 ? strong(x, y) : weak(x, y); }, 0.002);
  std::map<int, int> quarters;
  for (const SFeature& f : DetectFeatures(samples, shot.format(), SettingsFor(shot, 16))) {
    ++quarters[(f.x < 200 ? 0 : 1) + (f.y < 200 ? 0 : 2)];
  }
  for (int q = 0; q < 4; ++q) EXPECT_GE(quarters[q], 2) << "quarter " << q;
}

TEST(FeatureDetector, NothingIsFoundWhereThereIsNoTexture) {
  struct SCase {
    const char* name;
    std::function<double(double, double)> picture;
    double noise;
  };
  for (const SCase& c :
       {SCase{"flat", [](double, double) { return 0.5; }, 0.0},
        SCase{"fine grain", [](double, double) { return 0.5; }, 0.005},
        SCase{"coarse grain", [](double, double) { return 0.5; }, 0.06},
        SCase{"ramp", [](double x, double y) { return 0.2 + 0.001 * x + 0.0005 * y; }, 0.01},
        SCase{"straight edge", [](double x, double) { return x < 170 ? 0.3 : 0.6; }, 0.01}}) {
    CTestShot shot(400, 300);
    EXPECT_TRUE(
        DetectFeatures(shot.drawAny(c.picture, c.noise), shot.format(), SettingsFor(shot, 16))
            .empty())
        << c.name;
  }
}

TEST(FeatureDetector, ThePictureOutsideTheRegionDoesNotCount) {
  const CTexture texture(8, 6.0, 0.1, 300);
  std::vector<std::vector<SFeature>> lists;
  for (const double outside : {0.0, 1.0}) {
    CTestShot shot(320, 240);
    SFeatureSettings settings = SettingsFor(shot, 12);
    settings.region = {40, 30, 279, 209};
    settings.margin = 0;
    lists.push_back(
        DetectFeatures(shot.draw(texture, {}, 0.0,
                                 [&](int x, int y, double v) {
                                   const bool in = x >= 40 && x <= 279 && y >= 30 && y <= 209;
                                   return in ? v : ((x / 7 + y / 7) % 2 == 0 ? outside : 0.5);
                                 }),
                       shot.format(), settings));
  }
  ASSERT_EQ(lists[0].size(), 12U);
  ASSERT_EQ(lists[1].size(), 12U);
  for (std::size_t i = 0; i < lists[0].size(); ++i) {
    EXPECT_EQ(lists[0][i].x, lists[1][i].x);
    EXPECT_EQ(lists[0][i].y, lists[1][i].y);
    EXPECT_EQ(lists[0][i].strength, lists[1][i].strength);
  }
}

TEST(FeatureDetector, TextureRanksAboveASpeckOfDust) {
  const CTexture texture(6, 8.0, 0.05, 100);
  CTestShot shot(300, 200);
  const std::uint16_t* samples = shot.drawAny(
      [&](double x, double y) {
        if (std::hypot(x - 220.0, y - 100.0) < 1.5) return 0.0;
        return std::abs(x - 80.0) < 25 && std::abs(y - 100.0) < 25 ? texture(x, y) : 0.45;
      },
      0.002);
  const std::vector<SFeature> found = DetectFeatures(samples, shot.format(), SettingsFor(shot, 1));
  ASSERT_EQ(found.size(), 1U);
  EXPECT_LT(found[0].x, 150.0);
}
