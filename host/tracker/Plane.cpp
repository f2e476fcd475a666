#include "tracker/Plane.h"

#include <algorithm>
#include <cmath>

#include "Lanes.h"

namespace {

/// Code value 65535 is 1; R + 2 G + B stays an exact integer in a float.
constexpr float kLumaScale = 1.0F / (4.0F * 65535.0F);

STAB_CLONES void LumaRow(const std::uint16_t* rgb, int count, float pivot, float* out) {
  for (int x = 0; x < count; ++x) {
    const int sum = rgb[3 * x] + 2 * rgb[3 * x + 1] + rgb[3 * x + 2];
    out[x] = static_cast<float>(sum) * kLumaScale - pivot;
  }
}

STAB_CLONES void BinomialOf3(const float* a, const float* b, const float* c, int count,
                             float* out) {
  for (int x = 0; x < count; ++x) out[x] = (a[x] + c[x]) * 0.25F + b[x] * 0.5F;
}

constexpr int kNoiseBlock = 16;
constexpr int kNoiseBlocksPerSide = 48;

/// Noise of one block, or a negative number when the block is clipped.
double BlockNoise(const CPlane& luma) {
  double sum = 0.0;
  float low = luma.row(0)[0];
  float high = low;
  for (int y = 1; y + 1 < luma.height(); ++y) {
    const float* above = luma.row(y - 1);
    const float* here = luma.row(y);
    const float* below = luma.row(y + 1);
    for (int x = 1; x + 1 < luma.width(); ++x) {
      const double response = above[x - 1] + above[x + 1] + below[x - 1] + below[x + 1] -
                              2.0 * (above[x] + below[x] + here[x - 1] + here[x + 1]) +
                              4.0 * here[x];
      sum += response * response;
      low = std::min(low, here[x]);
      high = std::max(high, here[x]);
    }
  }
  constexpr float kClipped = 1e-3F;
  if (low < kClipped || high > 1.0F - kClipped) return -1.0;
  // The mask's coefficients squared add up to 36.
  return std::sqrt(sum / (36.0 * (luma.width() - 2) * (luma.height() - 2)));
}

}  // namespace

void CPlane::resize(int width, int height) {
  width_ = width;
  height_ = height;
  stride_ = RoundUpToLanes(width);
  const auto size = static_cast<std::size_t>(stride_) * static_cast<std::size_t>(height) + kSlack;
  if (data_.size() < size) data_.resize(size);
}

SPlaneView ViewOf(const CPlane& plane, int x, int y, int width, int height) {
  return {plane.row(y) + x, width, height, plane.stride()};
}

void ExtractLuma(const std::uint16_t* samples, const CImageFormat& format, const SRect& region,
                 const SRect& area, float pivot, CPlane& luma) {
  const int width = area.right - area.left + 1;
  const int height = area.bottom - area.top + 1;
  luma.resize(width, height);
  const int first = std::clamp(area.left, region.left, region.right);
  const int last = std::clamp(area.right, region.left, region.right);
  const std::ptrdiff_t pitch = 3 * static_cast<std::ptrdiff_t>(format.getPixelsPerLine());
  for (int y = 0; y < height; ++y) {
    const int source = std::clamp(area.top + y, region.top, region.bottom);
    float* row = luma.row(y);
    float* inside = row + std::clamp(first - area.left, 0, width - 1);
    LumaRow(samples + source * pitch + 3 * static_cast<std::ptrdiff_t>(first), last - first + 1,
            pivot, inside);
    std::fill(row, inside, *inside);
    float* end = inside + (last - first + 1);
    if (end < row + width) std::fill(end, row + width, end[-1]);
  }
}

void SmoothBinomial(CPlane& plane, CPlane& scratch) {
  const int width = plane.width();
  const int height = plane.height();
  scratch.resize(width, height);
  for (int y = 0; y < height; ++y) {
    BinomialOf3(plane.row(std::max(y - 1, 0)), plane.row(y), plane.row(std::min(y + 1, height - 1)),
                width, scratch.row(y));
  }
  for (int y = 0; y < height; ++y) {
    const float* in = scratch.row(y);
    float* out = plane.row(y);
    if (width > 2) BinomialOf3(in, in + 1, in + 2, width - 2, out + 1);
    out[0] = in[0] * 0.75F + in[std::min(1, width - 1)] * 0.25F;
    out[width - 1] = in[width - 1] * 0.75F + in[std::max(width - 2, 0)] * 0.25F;
  }
}

double EstimateNoise(const std::uint16_t* samples, const CImageFormat& format,
                     const SRect& region) {
  const int columns = std::min((region.right - region.left + 1) / kNoiseBlock, kNoiseBlocksPerSide);
  const int rows = std::min((region.bottom - region.top + 1) / kNoiseBlock, kNoiseBlocksPerSide);
  std::vector<double> noise;
  CPlane luma;
  for (int j = 0; j < rows; ++j) {
    for (int i = 0; i < columns; ++i) {
      const int x = region.left +
                    (region.right - region.left + 1 - kNoiseBlock) * i / std::max(columns - 1, 1);
      const int y =
          region.top + (region.bottom - region.top + 1 - kNoiseBlock) * j / std::max(rows - 1, 1);
      ExtractLuma(samples, format, region, {x, y, x + kNoiseBlock - 1, y + kNoiseBlock - 1}, 0.0F,
                  luma);
      const double value = BlockNoise(luma);
      if (value >= 0.0) noise.push_back(value);
    }
  }
  if (noise.empty()) return 0.0;
  const auto decile = noise.begin() + static_cast<std::ptrdiff_t>(noise.size() / 10);
  std::nth_element(noise.begin(), decile, noise.end());
  return *decile;
}
