#include "support/MatBox.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <vector>

namespace {

constexpr int COMPONENTS = 3;
constexpr int CODE = 257;  // one 8-bit code value in 16-bit samples: 255 * 257 == 65535
constexpr int NEUTRAL_DIFFERENCE = 128 * CODE;

// A border line may hold this share of dust; a line with less than the second share of mat ends
// the border, one between the two does unless the border goes on behind it (a hair, a splice mark).
constexpr double CLEAN_SHARE = 0.95;
constexpr double DIRTY_SHARE = 0.80;
constexpr int LONGEST_DIRT = 8;  // lines

// Enough of a line for its median.
constexpr int LEVEL_SAMPLES = 500;
// Grain is measured between samples this far apart: wide enough for the grain of a scan not to be
// correlated, narrow enough for picture structure to be.
constexpr int GRAIN_LAG = 8;
constexpr int SEED_RADIUS = 3;

using Level = std::array<int, COMPONENTS>;

// What a line of mat looks like: its level and how far grain strays from it.
struct SMat {
  Level level{};
  Level grainBand{};
  Level levelBand{};
};

// The colour that the caller gave, in 16-bit code values, and how far the mat may be from it.
struct SWanted {
  Level color{};
  int tolerance = 0;

  bool accepts(const Level& level) const {
    for (int c = 0; c < COMPONENTS; ++c)
      if (std::abs(level[c] - color[c]) > tolerance) return false;
    return true;
  }
};

// The lines of one side, numbered inward from 0, each a walk of `length` pixels along the side.
struct SSide {
  const std::uint16_t* first = nullptr;  // pixel 0 of line 0
  std::ptrdiff_t alongStep = 0;          // samples to the next pixel of a line
  std::ptrdiff_t inwardStep = 0;         // samples to the next line
  int length = 0;
  int lines = 0;

  const std::uint16_t* pixel(int line, int along) const {
    return first + line * inwardStep + along * alongStep;
  }
};

int median(std::vector<int>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// From the outermost line: a mat may be no wider than that.
SMat measureMat(const SSide& side) {
  SMat mat;
  std::vector<int> values;
  std::vector<int> differences;
  const int lag = std::min(GRAIN_LAG, side.length - 1);
  for (int c = 0; c < COMPONENTS; ++c) {
    values.clear();
    differences.clear();
    for (int along = 0; along < side.length; ++along) {
      const int value = side.pixel(0, along)[c];
      values.push_back(value);
      if (along >= lag) differences.push_back(std::abs(value - side.pixel(0, along - lag)[c]));
    }
    mat.level[c] = median(values);
    // The difference of two samples strays by the root of 2 more than one; 1.4826 turns the median
    // absolute deviation into a standard deviation.
    const double sigma = 1.4826 / 1.4142135623730951 * median(differences);
    mat.grainBand[c] = std::max(3 * CODE, static_cast<int>(5.0 * sigma));
    mat.levelBand[c] = std::max(2 * CODE, static_cast<int>(sigma));
  }
  return mat;
}

// How much of a line looks like mat. A line whose own level is off is picture all the same: dark
// picture within the reach of the grain.
double shareOfMat(const SSide& side, int line, const SMat& mat, const SWanted& wanted) {
  std::array<std::vector<int>, COMPONENTS> values;
  const int sampling = 1 + side.length / LEVEL_SAMPLES;
  int matching = 0;
  for (int along = 0; along < side.length; ++along) {
    const std::uint16_t* pixel = side.pixel(line, along);
    bool matches = true;
    for (int c = 0; c < COMPONENTS; ++c) {
      const int value = pixel[c];
      if (along % sampling == 0) values[c].push_back(value);
      matches = matches && std::abs(value - wanted.color[c]) <= wanted.tolerance &&
                std::abs(value - mat.level[c]) <= mat.grainBand[c];
    }
    matching += matches ? 1 : 0;
  }
  const double share = static_cast<double>(matching) / side.length;
  if (share < DIRTY_SHARE) return share;
  for (int c = 0; c < COMPONENTS; ++c)
    if (std::abs(median(values[c]) - mat.level[c]) > mat.levelBand[c]) return 0.0;
  return share;
}

// Lines of mat, counted from the edge of the frame inward.
int borderLines(const SSide& side, const SWanted& wanted) {
  if (side.lines < 1 || side.length < 2) return 0;
  const SMat mat = measureMat(side);
  if (!wanted.accepts(mat.level)) return 0;
  int border = 0;
  for (int line = 0; line < side.lines && line - border <= LONGEST_DIRT; ++line) {
    const double share = shareOfMat(side, line, mat, wanted);
    if (share >= CLEAN_SHARE)
      border = line + 1;
    else if (share < DIRTY_SHARE)
      break;
  }
  return border;
}

class CMatSearch {
 public:
  CMatSearch(const std::uint16_t* frame, int pixelsPerLine, const SRect& active)
      : frame_(frame),
        stride_(static_cast<std::ptrdiff_t>(pixelsPerLine) * COMPONENTS),
        active_(active) {}

  SRect find(const SWanted& wanted) const {
    SRect box = active_;
    findRows(wanted, box);
    if (box.bottom < box.top) return active_;
    findColumns(wanted, box);
    if (box.right < box.left) return active_;
    // Once more without the mat at the sides, which may have outvoted a narrow, dark picture.
    findRows(wanted, box);
    return box.bottom < box.top ? active_ : box;
  }

 private:
  const std::uint16_t* at(int x, int y) const { return frame_ + y * stride_ + x * COMPONENTS; }

  void findRows(const SWanted& wanted, SRect& box) const {
    const int length = box.right - box.left + 1;
    const int lines = active_.bottom - active_.top + 1;
    box.top = active_.top +
              borderLines({at(box.left, active_.top), COMPONENTS, stride_, length, lines}, wanted);
    box.bottom =
        active_.bottom -
        borderLines({at(box.left, active_.bottom), COMPONENTS, -stride_, length, lines}, wanted);
  }

  void findColumns(const SWanted& wanted, SRect& box) const {
    const int length = box.bottom - box.top + 1;
    const int lines = active_.right - active_.left + 1;
    box.left = active_.left +
               borderLines({at(active_.left, box.top), stride_, COMPONENTS, length, lines}, wanted);
    box.right =
        active_.right -
        borderLines({at(active_.right, box.top), stride_, -COMPONENTS, length, lines}, wanted);
  }

  const std::uint16_t* frame_;
  std::ptrdiff_t stride_;
  SRect active_;
};

Level levelAround(const std::uint16_t* frame, int pixelsPerLine, const SRect& bounds, int x,
                  int y) {
  Level level{};
  std::vector<int> values;
  for (int c = 0; c < COMPONENTS; ++c) {
    values.clear();
    for (int row = std::max(y - SEED_RADIUS, bounds.top);
         row <= std::min(y + SEED_RADIUS, bounds.bottom); ++row)
      for (int column = std::max(x - SEED_RADIUS, bounds.left);
           column <= std::min(x + SEED_RADIUS, bounds.right); ++column)
        values.push_back(
            frame[(static_cast<std::size_t>(row) * pixelsPerLine + column) * COMPONENTS + c]);
    level[c] = median(values);
  }
  return level;
}

}  // namespace

SRect FindMatBox(const std::uint16_t* frame, int pixelsPerLine, int linesPerFrame, int tolerance,
                 const SRect& active, bool yuvComponents, const std::array<int, 3>& color,
                 int seedX, int seedY) {
  const SRect searched{std::max(active.left, 0), std::max(active.top, 0),
                       std::min(active.right, pixelsPerLine - 1),
                       std::min(active.bottom, linesPerFrame - 1)};
  if (frame == nullptr || searched.right < searched.left || searched.bottom < searched.top)
    return active;

  SWanted wanted;
  wanted.tolerance = std::clamp(tolerance, 0, 255) * CODE;
  const bool hasSeed = (seedX != 0 || seedY != 0) && seedX >= 0 && seedY >= 0 &&
                       seedX < pixelsPerLine && seedY < linesPerFrame;
  if (hasSeed) {
    const SRect whole{0, 0, pixelsPerLine - 1, linesPerFrame - 1};
    wanted.color = levelAround(frame, pixelsPerLine, whole, seedX, seedY);
  } else {
    for (int c = 0; c < COMPONENTS; ++c) wanted.color[c] = std::clamp(color[c], 0, 255) * CODE;
    if (yuvComponents) wanted.color[1] = wanted.color[2] = NEUTRAL_DIFFERENCE;
  }
  const SRect box = CMatSearch(frame, pixelsPerLine, searched).find(wanted);
  return box == searched ? active : box;
}
