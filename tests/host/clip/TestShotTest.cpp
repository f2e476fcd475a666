#include "clip/TestShot.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "ExactMath.h"
#include "TemporaryFolder.h"

namespace {

using Samples = std::vector<std::uint16_t>;

STestShotSettings Small() {
  STestShotSettings settings;
  settings.width = 160;
  settings.height = 120;
  settings.frames = 12;
  return settings;
}

Samples Render(const CTestShot& shot, int frame) {
  Samples samples(shot.info().format.getBytesPerField() / 2);
  shot.renderFrame(frame, samples.data());
  return samples;
}

/// Green of a frame as numbers.
class CPlane {
 public:
  CPlane(const CTestShot& shot, int frame)
      : width_(shot.settings().width), samples_(Render(shot, frame)) {}
  double at(int x, int y) const {
    return samples_[(static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                     static_cast<std::size_t>(x)) *
                        3 +
                    1];
  }

 private:
  int width_;
  Samples samples_;
};

/// FNV-1a of the samples.
std::uint64_t DigestOf(const Samples& samples) {
  std::uint64_t digest = 14695981039346656037u;
  for (const std::uint16_t sample : samples) digest = (digest ^ sample) * 1099511628211u;
  return digest;
}

double Interpolated(const CPlane& plane, double x, double y) {
  const int left = static_cast<int>(std::floor(x)), top = static_cast<int>(std::floor(y));
  const auto weights = [](double t, double* w) {
    for (int i = 0; i < 6; ++i) {
      w[i] = 1.0;
      for (int k = 0; k < 6; ++k)
        if (k != i) w[i] *= (t + 2 - k) / (i - k);
    }
  };
  double wx[6], wy[6], sum = 0.0;
  weights(x - left, wx);
  weights(y - top, wy);
  for (int j = 0; j < 6; ++j)
    for (int i = 0; i < 6; ++i) sum += wx[i] * wy[j] * plane.at(left + i - 2, top + j - 2);
  return sum;
}

/// What is missing to the true motion: the least-squares shift (Lucas and Kanade, 1981) between a
/// window of the first plane and the same window of the second, read at the moved positions.
struct SShift {
  double x = 0.0, y = 0.0;
};

SShift MissingShift(const CTestShot& shot, int index, int x0, int y0, int half) {
  const int start = shot.settings().firstFrame;
  const CPlane first(shot, start), second(shot, start + index);
  const STestShotMotion& motion = shot.motion()[static_cast<std::size_t>(index)];
  const double c = std::cos(motion.angle * M_PI / 180), s = std::sin(motion.angle * M_PI / 180);
  const double cx = (shot.settings().width - 1) / 2.0, cy = (shot.settings().height - 1) / 2.0;
  SShift shift;
  for (int round = 0; round < 5; ++round) {
    double xx = 0, xy = 0, yy = 0, ex = 0, ey = 0;
    for (int y = y0 - half; y <= y0 + half; ++y)
      for (int x = x0 - half; x <= x0 + half; ++x) {
        const double px = c * (x - cx) - s * (y - cy) + cx + motion.x + shift.x;
        const double py = s * (x - cx) + c * (y - cy) + cy + motion.y + shift.y;
        const double gx = Interpolated(second, px + 0.5, py) - Interpolated(second, px - 0.5, py);
        const double gy = Interpolated(second, px, py + 0.5) - Interpolated(second, px, py - 0.5);
        const double error = first.at(x, y) - Interpolated(second, px, py);
        xx += gx * gx, xy += gx * gy, yy += gy * gy, ex += gx * error, ey += gy * error;
      }
    const double determinant = xx * yy - xy * xy;
    shift.x += (yy * ex - xy * ey) / determinant;
    shift.y += (xx * ey - xy * ex) / determinant;
  }
  return shift;
}

}  // namespace

TEST(TestShot, TheMotionIsInThePicture) {
  STestShotSettings settings = Small();
  settings.grain = settings.flicker = settings.dust = 0.0;
  settings.subject = false;
  settings.depth = 16;
  for (const double rotation : {0.0, 0.3, 2.0}) {
    settings.rotation = rotation;
    const CTestShot shot(settings);
    for (const int index : {1, 5, 11})
      for (const auto& [x, y] : {std::pair{40, 40}, std::pair{120, 45}, std::pair{80, 80}}) {
        const SShift missing = MissingShift(shot, index, x, y, 16);
        EXPECT_NEAR(missing.x, 0.0, 0.002) << rotation << " " << index << " " << x << " " << y;
        EXPECT_NEAR(missing.y, 0.0, 0.002) << rotation << " " << index << " " << x << " " << y;
      }
  }
}

/// Written down once, so that another machine, compiler or kernel that renders otherwise is
/// noticed.
TEST(TestShot, EveryMachineRendersTheSameSamples) {
  const CTestShot shot(Small());
  EXPECT_EQ(DigestOf(Render(shot, 1001)), 13250709061632940746u);
  EXPECT_EQ(DigestOf(Render(shot, 1007)), 4372049472333856064u);
}

TEST(TestShot, FramesDoNotDependOnWhatWasRenderedBefore) {
  const CTestShot a(Small()), b(Small());
  const Samples late = Render(a, 1012), early = Render(a, 1001);
  EXPECT_TRUE(Render(b, 1001) == early);
  EXPECT_TRUE(Render(b, 1012) == late);
  STestShotSettings other = Small();
  other.seed = 2;
  EXPECT_FALSE(Render(CTestShot(other), 1001) == early);
}

TEST(TestShot, MotionHasTheAskedSizes) {
  STestShotSettings settings;
  settings.frames = 400;
  const CTestShot shot(settings);
  const std::vector<STestShotMotion>& motion = shot.motion();
  ASSERT_EQ(motion.size(), 400u);
  EXPECT_EQ(motion[0].x, 0.0);
  EXPECT_EQ(motion[0].y, 0.0);
  EXPECT_EQ(motion[0].angle, 0.0);
  double mean = 0.0, squares = 0.0;
  for (const STestShotMotion& m : motion) mean += m.angle / 400.0;
  for (const STestShotMotion& m : motion) squares += (m.angle - mean) * (m.angle - mean);
  EXPECT_NEAR(std::sqrt(squares / 400.0), settings.rotation, 1e-9);

  settings.weaveX = settings.weaveY = settings.rotation = 0.0;
  const CTestShot steady(settings);
  EXPECT_EQ(steady.motion()[399].x, settings.driftX);
  EXPECT_EQ(steady.motion()[399].y, settings.driftY);
}

TEST(TestShot, WhatIsSwitchedOffIsNotThere) {
  STestShotSettings settings = Small();
  settings.driftX = settings.driftY = settings.weaveX = settings.weaveY = settings.rotation = 0.0;
  settings.flicker = settings.dust = settings.grain = 0.0;
  settings.subject = false;
  const Samples first = Render(CTestShot(settings), 1001);
  EXPECT_TRUE(Render(CTestShot(settings), 1012) == first);
  const std::pair<const char*, double STestShotSettings::*> parts[] = {
      {"grain", &STestShotSettings::grain},   {"flicker", &STestShotSettings::flicker},
      {"dust", &STestShotSettings::dust},     {"driftX", &STestShotSettings::driftX},
      {"driftY", &STestShotSettings::driftY}, {"weaveX", &STestShotSettings::weaveX},
      {"weaveY", &STestShotSettings::weaveY}, {"rotation", &STestShotSettings::rotation}};
  for (const auto& [name, part] : parts) {
    STestShotSettings with = settings;
    with.*part = name == std::string("dust") ? 5.0 : 0.2;
    EXPECT_FALSE(Render(CTestShot(with), 1012) == first) << name;
  }
}

TEST(TestShot, GrainHasTheAskedStrength) {
  STestShotSettings settings = Small();
  settings.depth = 16;
  settings.dust = 0.0;
  settings.flicker = 0.0;
  settings.grain = 0.02;
  const Samples with = Render(CTestShot(settings), 1001);
  settings.grain = 0.0;
  const Samples without = Render(CTestShot(settings), 1001);
  double sum = 0.0, squares = 0.0;
  for (std::size_t i = 0; i < with.size(); ++i) {
    const double grain = (with[i] - without[i]) / 65535.0;
    sum += grain, squares += grain * grain;
  }
  const double count = static_cast<double>(with.size());
  EXPECT_NEAR(sum / count, 0.0, 3.5 * 0.02 / std::sqrt(count));
  EXPECT_NEAR(std::sqrt(squares / count), 0.02, 0.0004);
}

TEST(TestShot, TheMatteIsDarkAndAtRest) {
  STestShotSettings settings = Small();
  settings.matte = 10;
  settings.grain = 0.0;
  settings.dust = 0.0;
  const CTestShot shot(settings);
  const CPlane first(shot, 1001), last(shot, 1012);
  for (const auto& [x, y] : {std::pair{0, 0}, std::pair{9, 60}, std::pair{150, 60},
                             std::pair{80, 9}, std::pair{80, 110}, std::pair{159, 119}}) {
    EXPECT_LT(first.at(x, y), 0.03 * 65535) << x << ", " << y;
    EXPECT_EQ(first.at(x, y), last.at(x, y)) << x << ", " << y;
  }
  EXPECT_GT(first.at(10, 10), 0.05 * 65535);
  EXPECT_GT(first.at(149, 109), 0.05 * 65535);
}

TEST(TestShot, SettingsAreReadFromTextAndWrongOnesAreNamed) {
  const STestShotSettings settings =
      ParseTestShot("test:width=64,height=48,seed=7,driftX=-1.5,subject=false,depth=12");
  EXPECT_EQ(settings.width, 64);
  EXPECT_EQ(settings.height, 48);
  EXPECT_EQ(settings.seed, 7u);
  EXPECT_EQ(settings.driftX, -1.5);
  EXPECT_FALSE(settings.subject);
  EXPECT_EQ(settings.depth, 12);
  EXPECT_EQ(ParseTestShot("test:").frames, STestShotSettings{}.frames);
  struct SCase {
    const char* text;
    std::vector<std::string> message;
  };
  const SCase cases[] = {{"test:colour=3", {"unknown setting \"colour\"", "driftX", "matte"}},
                         {"test:width=", {"width"}},
                         {"test:width=2k", {"2k", "width"}},
                         {"test:width=4", {"width", "16"}},
                         {"test:frames=0", {"frames"}},
                         {"test:grain=nan", {"grain"}},
                         {"test:depth=9", {"depth"}},
                         {"test:subject=perhaps", {"subject"}}};
  for (const SCase& c : cases) ExpectMentions(ErrorOf([&] { OpenClip(c.text, 1); }), c.message);
}

TEST(TestShot, TheTruthIsWrittenDown) {
  const CTestShot shot(Small());
  const nlohmann::json truth = nlohmann::json::parse(shot.truthAsJson());
  EXPECT_EQ(truth["settings"]["width"], 160);
  ASSERT_EQ(truth["frames"].size(), 12u);
  EXPECT_EQ(truth["frames"][3]["frame"], 1004);
  EXPECT_EQ(truth["frames"][3]["x"].get<double>(), shot.motion()[3].x);
  EXPECT_EQ(truth["frames"][3]["angle"].get<double>(), shot.motion()[3].angle);
}

TEST(ExactMath, CosineAndSineAreThoseOfTheAngle) {
  for (int i = -4000; i <= 4000; ++i) {
    const double turns = i / 977.0;
    const SCosSin value = CosSinOfTurns(turns);
    ASSERT_NEAR(value.cosine, std::cos(2 * M_PI * turns), 1e-13) << turns;
    ASSERT_NEAR(value.sine, std::sin(2 * M_PI * turns), 1e-13) << turns;
  }
}
