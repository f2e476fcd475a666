#include "render/Resampler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "support/Kernels.h"

void PrintTo(const SResampler& resampler, std::ostream* out) {
  *out << resampler.kernel;
}

namespace {

using Frame = std::vector<std::uint16_t>;

constexpr std::uint16_t UNTOUCHED = 4711;

struct SPicture {
  int width;
  int height;
  Frame samples;

  SPicture(int width, int height, const std::string& content, unsigned seed)
      : width(width), height(height) {
    samples.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
    std::mt19937 random(seed);
    for (std::uint16_t& sample : samples) {
      sample = static_cast<std::uint16_t>(random());
      if (content == "extremes") sample = sample & 1 ? 65535 : 0;
      if (content == "flat") sample = static_cast<std::uint16_t>(65534 + (sample & 1));
    }
  }
};

Frame render(const SResampler& resampler, SResampleJob job, const SPicture& picture) {
  Frame output(picture.samples.size(), UNTOUCHED);
  job.source = picture.samples.data();
  job.output = output.data();
  job.pixelsPerLine = picture.width;
  resampler.resampleRows(job, job.area.top, job.area.bottom);
  return output;
}

const SResampler& scalar() {
  return AllResamplers().back();
}

class EveryResampler : public testing::TestWithParam<SResampler> {
 protected:
  void SetUp() override {
    if (!FindKernel(GetParam().kernel)) GTEST_SKIP() << "not usable here: " << GetParam().kernel;
  }
};

// A 4 x 3 picture whose red samples are 100 x + 1000 y; green 7, blue a step of white and black.
SPicture ramp() {
  SPicture picture(4, 3, "random", 1);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 4; ++x) {
      std::uint16_t* p = &picture.samples[static_cast<std::size_t>((y * 4 + x) * 3)];
      p[0] = static_cast<std::uint16_t>(100 * x + 1000 * y);
      p[1] = 7;
      p[2] = x == 0 ? 0 : 65535;
    }
  }
  return picture;
}

struct SHandCase {
  const char* name;
  float dx;
  float dy;
  int x;
  int y;
  int red;
  int blue;
};

TEST_P(EveryResampler, GivesTheHandComputedSample) {
  constexpr int FILL = 555;
  const SHandCase cases[] = {
      {"whole pixel", 1, 1, 0, 0, 1100, 65535},
      {"inside", 0.25F, 0.5F, 1, 1, 1625, 65535},
      {"truncates", 0.999F, 0, 0, 0, 99, 65469},
      {"last column: rows only", 0.5F, 0.5F, 3, 1, 1800, 65535},
      {"last row: columns only", 0.5F, 0.5F, 1, 2, 2150, 65535},
      {"last column and row", 0.5F, 0.5F, 3, 2, 2300, 65535},
      {"half a pixel before: extrapolated, never wrapped", -0.5F, 0, 0, 1, 950, 0},
      {"before the first row", 0, -0.25F, 2, 0, 0, 65535},
      {"a whole pixel before", -1, 0, 0, 1, FILL, FILL},
      {"behind the last column", 1, 0, 3, 0, FILL, FILL},
      {"above", 0, -1, 2, 0, FILL, FILL},
      {"below", 0, 1, 2, 2, FILL, FILL},
  };
  const SPicture picture = ramp();
  for (const SHandCase& c : cases) {
    SCOPED_TRACE(c.name);
    SResampleJob job;
    job.area = {0, 0, 3, 2};
    job.map.wx[0] = c.dx;
    job.map.wy[0] = c.dy;
    std::fill_n(job.fillColor, 3, static_cast<std::uint16_t>(FILL));
    const Frame out = render(GetParam(), job, picture);
    const std::size_t at = static_cast<std::size_t>((c.y * 4 + c.x) * 3);
    EXPECT_EQ(out[at], c.red);
    EXPECT_EQ(out[at + 2], c.blue);
  }
}

std::vector<SWarpMap> awkwardMaps(std::mt19937& random) {
  constexpr float NO_NUMBER = std::numeric_limits<float>::quiet_NaN();
  std::vector<SWarpMap> maps{
      {{NO_NUMBER, 1, 0}, {0, 0, 1}}, {{0, 1, 0}, {-3e38F, 0, 1}}, {{3e38F, 1, 0}, {0, 0, 1}},
      {{0, 1.01F, 0}, {0, 0, 1}},     {{0, -1, 0}, {0, 0.3F, 1}},  {{0, 1, 0.7F}, {0, -0.7F, 1}},
  };
  for (const float offset :
       {0.0F, 1e-6F, -1e-6F, 0.5F, -0.5F, -0.999F, 1.0F, -1.0F, 7.0F, -40.25F, 1000.0F, -1000.0F}) {
    maps.push_back({{offset, 1, 0}, {-offset, 0, 1}});
    maps.push_back({{0.3F, 1, 0}, {offset, 0, 1}});
    maps.push_back({{offset, 1, -0.003F}, {0.125F, 0.003F, 1}});
  }
  // Row 0 alone has the finest fractions; beside whole or coarse columns they must not pass for
  // less.
  for (const float offset : {0.0F, 0.0625F, 1e-6F})
    for (const float finest : {1e-16F, 1e-10F, 1e-7F, 0.001F, 0.0039F})
      maps.push_back({{offset, 1, 0}, {finest, 0, 1}});
  for (int i = 0; i < 25; ++i) {
    std::normal_distribution<float> shift(0, 12);
    std::normal_distribution<float> turn(0, i % 2 ? 0.01F : 0.0003F);
    const float angle = turn(random);
    maps.push_back({{shift(random), 1, -angle}, {shift(random), angle, 1}});
  }
  return maps;
}

TEST_P(EveryResampler, GivesTheScalarBits) {
  std::mt19937 random(20);
  unsigned seed = 0;
  for (const auto& [width, height] : {std::pair{1, 1}, {7, 5}, {130, 33}, {601, 17}, {1100, 9}}) {
    const std::vector<SRect> areas{{0, 0, width - 1, height - 1},
                                   {width / 3, height / 4, width - 1 - width / 5, height - 1},
                                   {width / 2, height / 2, width / 2, height - 1}};
    for (const char* content : {"random", "extremes", "flat"}) {
      const SPicture picture(width, height, content, ++seed);
      const SPicture before(width, height, "random", ++seed);
      for (const SWarpMap& map : awkwardMaps(random)) {
        SResampleJob job;
        job.area = areas[random() % areas.size()];
        job.map = map;
        if (random() % 2) job.previous = before.samples.data();
        job.fillColor[1] = 65535;
        ASSERT_EQ(render(GetParam(), job, picture), render(scalar(), job, picture))
            << width << "x" << height << " " << content << " x " << map.wx[0] << " " << map.wx[1]
            << " " << map.wx[2] << " y " << map.wy[0] << " " << map.wy[1] << " " << map.wy[2]
            << " area " << job.area.left << " " << job.area.top << " " << job.area.right << " "
            << job.area.bottom;
      }
    }
  }
}

// Far from the first column and row positions have fewer fraction bits, and kernels may use them:
// the rows here lie on both sides of 256 and 512, the columns on both sides of 512 and 1024.
TEST_P(EveryResampler, GivesTheScalarBitsWhereFractionsAreCoarse) {
  constexpr int WIDTH = 1100;
  constexpr int HEIGHT = 540;
  const SRect areas[] = {{0, 236, WIDTH - 1, 276},
                         {0, 490, WIDTH - 1, HEIGHT - 1},
                         {37, 500, 1013, 530},
                         {700, 0, WIDTH - 1, 24}};
  std::mt19937 random(21);
  std::normal_distribution<float> shift(0, 9);
  for (const char* content : {"random", "extremes", "flat"}) {
    const SPicture picture(WIDTH, HEIGHT, content, static_cast<unsigned>(random()));
    for (const SRect& area : areas) {
      for (const float turn : {0.0F, 1e-6F, 0.0001F, -0.003F, 0.02F, -0.09F, 0.11F}) {
        SResampleJob job;
        job.area = area;
        job.map = {{shift(random), 1, -turn}, {shift(random), turn, 1}};
        if (turn == 0.0F) job.map.wx[0] = std::round(job.map.wx[0] * 64) / 64;
        ASSERT_EQ(render(GetParam(), job, picture), render(scalar(), job, picture))
            << content << " turn " << turn << " shift " << job.map.wx[0] << " " << job.map.wy[0]
            << " area " << area.left << " " << area.top;
      }
    }
  }
}

// A turn that is nearly none changes the source row where single precision rounds over it: anywhere
// in the row, once, or never; and the frame may begin at any sample of a cache line.
TEST_P(EveryResampler, GivesTheScalarBitsForTheSmallestTurnsAndAnyAlignment) {
  constexpr int WIDTH = 1500;
  constexpr int HEIGHT = 540;
  std::mt19937 random(24);
  const SPicture picture(WIDTH, HEIGHT, "random", 25);
  Frame memory[2] = {Frame(picture.samples.size() + 64), Frame(picture.samples.size() + 64)};
  for (const float turn : {1e-30F, 3e-9F, -3e-8F, 1e-7F, -2e-6F, 3e-5F, -0.0009F}) {
    for (const float below : {0.0F, 0.0001F, -0.0001F, 0.49F}) {
      SResampleJob job;
      job.source = picture.samples.data();
      job.pixelsPerLine = WIDTH;
      job.area = {static_cast<int>(random() % 9), 500, WIDTH - 1 - static_cast<int>(random() % 9),
                  530};
      job.map = {{static_cast<float>(random() % 999) / 64.0F, 1, -turn}, {4 + below, turn, 1}};
      const std::size_t begin = random() % 64;
      for (std::size_t i = 0; i < 2; ++i) {
        std::fill(memory[i].begin(), memory[i].end(), UNTOUCHED);
        job.output = memory[i].data() + begin;
        (i == 0 ? GetParam() : scalar()).resampleRows(job, job.area.top, job.area.bottom);
      }
      ASSERT_EQ(memory[0], memory[1]) << "turn " << turn << " shift " << job.map.wx[0] << " "
                                      << job.map.wy[0] << " begin " << begin;
    }
  }
}

TEST_P(EveryResampler, KeepsAFlatPictureWhateverTheShift) {
  constexpr int WIDTH = 600;
  constexpr int HEIGHT = 300;
  constexpr int ROW = 280;
  std::mt19937 random(22);
  std::uniform_real_distribution<float> shift(0, 1);
  SPicture picture(WIDTH, HEIGHT, "random", 1);
  Frame out(picture.samples.size());
  for (const int level : {0, 65535}) {
    std::fill(picture.samples.begin(), picture.samples.end(), static_cast<std::uint16_t>(level));
    for (int i = 0; i < 100; ++i) {
      SResampleJob job;
      job.source = picture.samples.data();
      job.output = out.data();
      job.pixelsPerLine = WIDTH;
      job.area = {0, 0, WIDTH - 1, HEIGHT - 1};
      job.map.wx[0] = shift(random);
      job.map.wy[0] = shift(random) - (i % 2 ? 20.0F : 270.0F);
      GetParam().resampleRows(job, ROW, ROW);
      const auto row = out.begin() + ROW * WIDTH * 3L;
      ASSERT_EQ(std::count(row, row + WIDTH * 3L, level), WIDTH * 3L)
          << "shift " << job.map.wx[0] << " " << job.map.wy[0];
    }
  }
}

TEST_P(EveryResampler, NeitherReadsNorWritesOutsideTheArea) {
  SResampleJob job;
  job.area = {10, 3, 120, 20};
  job.map = {{2.4F, 1, 0.002F}, {-1.3F, -0.002F, 1}};
  SPicture picture(140, 24, "random", 5);
  const Frame expected = render(GetParam(), job, picture);
  SPicture otherBorder(140, 24, "extremes", 6);
  for (int y = 0; y < 24; ++y) {
    for (int i = 0; i < 140 * 3; ++i) {
      const bool inside = y >= 3 && y <= 20 && i >= 30 && i < 121 * 3;
      const std::size_t at = static_cast<std::size_t>(y * 420 + i);
      if (inside) otherBorder.samples[at] = picture.samples[at];
      ASSERT_TRUE(inside || expected[at] == UNTOUCHED) << i << " " << y;
    }
  }
  EXPECT_EQ(render(GetParam(), job, otherBorder), expected);
}

INSTANTIATE_TEST_SUITE_P(Kernels, EveryResampler,
                         testing::ValuesIn(AllResamplers().begin(), AllResamplers().end()),
                         [](const auto& info) { return info.param.kernel; });

TEST(Resampler, ThereIsOneForEachKernelAndItSaysThatItRan) {
  ASSERT_EQ(AllResamplers().size(), AllKernels().size());
  const SPicture picture(8, 4, "random", 1);
  for (std::size_t i = 0; i < AllKernels().size(); ++i) {
    const SResampler& resampler = AllResamplers()[i];
    EXPECT_STREQ(resampler.kernel, AllKernels()[i].name);
    if (!AllKernels()[i].usable()) continue;
    SResampleJob job;
    job.area = {0, 0, 7, 3};
    render(resampler, job, picture);
    EXPECT_STREQ(LastResamplerKernel(), resampler.kernel);
  }
  EXPECT_STREQ(TheResampler()->kernel, TheKernel()->name);
}

}  // namespace
