#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "support/MatBox.h"

namespace {

constexpr int WIDTH = 320;
constexpr int HEIGHT = 240;
constexpr SRect WHOLE{0, 0, WIDTH - 1, HEIGHT - 1};
constexpr SRect PICTURE{31, 18, 290, 215};

// A frame painted in 8-bit code values, with grain in the fractions that 16 bits leave.
class CScan {
 public:
  using Painter = std::function<double(int x, int y)>;

  CScan(const SRect& picture, double mat, double grain, const Painter& paint) {
    std::mt19937 random(9);
    for (int y = 0; y < HEIGHT; ++y) {
      for (int x = 0; x < WIDTH; ++x) {
        const bool isPicture =
            x >= picture.left && x <= picture.right && y >= picture.top && y <= picture.bottom;
        for (int c = 0; c < 3; ++c) {
          double noise = 0.0;
          for (int i = 0; i < 12; ++i) noise += random() / 4294967296.0 - 0.5;
          samples_.push_back(code((isPicture ? paint(x, y) : mat) + grain * noise));
        }
      }
    }
  }

  void spot(int x, int y, int width, int height, double value) {
    for (int row = y; row < y + height; ++row)
      for (int column = x; column < x + width; ++column)
        for (int c = 0; c < 3; ++c)
          samples_[(static_cast<std::size_t>(row) * WIDTH + column) * 3 + c] = code(value);
  }

  // Luma stays; the colour differences become neutral with a little grain.
  void makeYuv() {
    for (std::size_t i = 0; i < samples_.size(); i += 3)
      samples_[i + 1] = samples_[i + 2] = static_cast<std::uint16_t>(128 * 257 + i % 5 * 20);
  }

  SRect find(const std::array<int, 3>& color = {25, 25, 25}, int tolerance = 50,
             const SRect& active = WHOLE, bool yuv = false, int seedX = 0, int seedY = 0) const {
    return FindMatBox(samples_.data(), WIDTH, HEIGHT, tolerance, active, yuv, color, seedX, seedY);
  }

 private:
  static std::uint16_t code(double value) {
    return static_cast<std::uint16_t>(std::clamp(value, 0.0, 255.0) * 257.0);
  }

  std::vector<std::uint16_t> samples_;
};

void expectBox(const SRect& actual, const SRect& expected) {
  EXPECT_EQ(actual.left, expected.left);
  EXPECT_EQ(actual.top, expected.top);
  EXPECT_EQ(actual.right, expected.right);
  EXPECT_EQ(actual.bottom, expected.bottom);
}

double daylight(int x, int y) {
  return 130.0 + 60.0 * std::sin(x * 0.11) * std::cos(y * 0.07);
}

// Every value lies where the dark mat's colour and tolerance reach, black edge included.
double nightScene(int x, int y) {
  return 6.0 + 30.0 * std::pow(std::sin(x * 0.021) * std::sin(y * 0.033 + 1.0), 2.0) +
         18.0 * std::abs(std::sin(x * 0.13 + y * 0.05));
}

TEST(MatBox, IsFound) {
  const SRect LETTERBOX{0, 30, WIDTH - 1, 209};
  const SRect PILLARBOX{40, 0, 279, HEIGHT - 1};
  const SRect ONE_LINE{1, 1, WIDTH - 1, HEIGHT - 2};
  const struct {
    const char* name;
    SRect picture;  // the mat is around it
    double mat, grain;
    CScan::Painter paint;
    SRect expected;
  } cases[] = {{"clean", PICTURE, 16.0, 0.0, daylight, PICTURE},
               {"black_mat", PICTURE, 0.0, 0.0, daylight, PICTURE},
               {"grain", PICTURE, 20.0, 2.5, daylight, PICTURE},
               {"letterbox", LETTERBOX, 20.0, 1.0, daylight, LETTERBOX},
               {"pillarbox", PILLARBOX, 20.0, 1.0, daylight, PILLARBOX},
               {"one_line_wide", ONE_LINE, 20.0, 1.0, daylight, ONE_LINE},
               {"night_scene_in_a_mat", PICTURE, 2.0, 0.5, nightScene, PICTURE},
               {"night_scene_without_a_mat", WHOLE, 2.0, 1.0, nightScene, WHOLE},
               {"lit_windows_on_a_wall_as_dark_as_the_mat", PICTURE, 12.0, 1.0,
                [](int x, int y) { return (x / 7 + y / 5) % 3 == 0 ? 45.0 : 12.0; }, PICTURE},
               {"dark_picture_just_above_the_mat", PICTURE, 10.0, 1.5,
                [](int, int) { return 14.0; }, PICTURE},
               {"no_mat", WHOLE, 0.0, 1.0, daylight, WHOLE},
               {"mat_of_another_colour", PICTURE, 110.0, 1.0, daylight, WHOLE},
               {"nothing_but_mat", {0, 0, -1, -1}, 20.0, 1.0, daylight, WHOLE}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    expectBox(CScan(c.picture, c.mat, c.grain, c.paint).find(), c.expected);
  }
}

TEST(MatBox, DustAndAHairInTheMatDoNotEndIt) {
  CScan scan(PICTURE, 18.0, 1.5, daylight);
  std::mt19937 random(4);
  for (int i = 0; i < 24; ++i) {  // specks all over the border
    const int x = static_cast<int>(random() % (WIDTH - 3));
    const bool isAbove = i % 2 == 0;
    scan.spot(x, isAbove ? 2 + i % 13 : 219 + i % 18, 3, 2, 200.0);
    scan.spot(isAbove ? 2 + i % 26 : 294 + i % 24, x % (HEIGHT - 3), 2, 2, 240.0);
  }
  scan.spot(100, 5, 40, 3, 220.0);  // a hair over an eighth of the width
  expectBox(scan.find(), PICTURE);
}

TEST(MatBox, HalfALineOfPictureEndsTheMat) {
  CScan scan(PICTURE, 18.0, 1.0, daylight);
  scan.spot(60, 10, 160, 8, 120.0);  // a splice's overlap, above the picture and part of it
  expectBox(scan.find(), {PICTURE.left, 10, PICTURE.right, PICTURE.bottom});
}

TEST(MatBox, OnlyTheActiveRectangleIsSearched) {
  const CScan scan(PICTURE, 18.0, 1.0, daylight);
  const SRect active{10, 40, 200, 230};
  expectBox(scan.find({25, 25, 25}, 50, active), {31, 40, 200, 215});
  const SRect within{100, 100, 120, 110};
  expectBox(scan.find({25, 25, 25}, 50, within), within);
  const SRect empty{50, 50, 40, 60};
  expectBox(scan.find({25, 25, 25}, 50, empty), empty);
  expectBox(scan.find({25, 25, 25}, 50, {-20, -20, WIDTH + 20, HEIGHT + 20}), PICTURE);
}

TEST(MatBox, ToleranceReachesUpAndDownFromTheColour) {
  for (const double mat : {80.0, 120.0}) {
    const CScan scan(PICTURE, mat, 0.0, [](int x, int y) { return daylight(x, y) + 110.0; });
    expectBox(scan.find({100, 100, 100}, 21), PICTURE);
    expectBox(scan.find({100, 100, 100}, 19), WHOLE);
  }
}

TEST(MatBox, SeedTellsTheColour) {
  const CScan scan(PICTURE, 110.0, 1.0, [](int x, int y) { return 0.2 * daylight(x, y); });
  expectBox(scan.find({25, 25, 25}, 25), WHOLE);
  // Whatever scale the picker's colour has.
  expectBox(scan.find({28270, 28270, 28270}, 25, WHOLE, false, 5, 100), PICTURE);
  expectBox(scan.find({25, 25, 25}, 25, WHOLE, false, WIDTH + 5, 100), WHOLE);
}

TEST(MatBox, LumaAndColourDifferences) {
  CScan scan(PICTURE, 18.0, 1.0, daylight);
  scan.makeYuv();
  expectBox(scan.find({25, 25, 25}, 50, WHOLE, true), PICTURE);
  expectBox(scan.find({25, 25, 25}, 50, WHOLE, false), WHOLE);
}

}  // namespace
