#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/Rect.h"
#include "tracker/Picture.h"

/// One component of a part of a picture. Row-major; row y begins at data() + y * stride(). Behind
/// the last sample stand `kSlack` more readable ones, so that a kernel may load whole vectors. A
/// plane that is resized keeps its memory.
class CPlane {
 public:
  static constexpr int kSlack = 64;

  void resize(int width, int height);
  int width() const { return width_; }
  int height() const { return height_; }
  int stride() const { return stride_; }
  float* row(int y) { return data_.data() + static_cast<std::ptrdiff_t>(y) * stride_; }
  const float* row(int y) const { return data_.data() + static_cast<std::ptrdiff_t>(y) * stride_; }

 private:
  int width_ = 0;
  int height_ = 0;
  int stride_ = 0;
  std::vector<float> data_;
};

/// A rectangle of a plane, looked at in place.
struct SPlaneView {
  const float* data = nullptr;
  int width = 0;
  int height = 0;
  std::ptrdiff_t stride = 0;

  const float* row(int y) const { return data + y * stride; }
};
SPlaneView ViewOf(const CPlane& plane, int x, int y, int width, int height);

/// Cuts `area` (inclusive, may reach beyond `region`) out of a picture as luma (R + 2 G + B) / 4
/// minus `pivot`, code range 0 to 1. Nothing outside `region` (inclusive, inside the frame) is
/// read: its edge samples are repeated. `memory` is overwritten. Throws what the picture throws.
/// REQUIRES: pivot in code range 0 to 1; area not empty.
void ExtractLuma(const IPicture& picture, const SRect& region, const SRect& area, float pivot,
                 std::vector<std::uint16_t>& memory, CPlane& luma);

/// Smooths with [1 2 1] / 4 in both directions; edge samples are repeated. `scratch` is
/// overwritten.
void SmoothBinomial(CPlane& plane, CPlane& scratch);

/// Variance that is left of white noise by SmoothBinomial: (6/16)^2.
inline constexpr double kBinomialNoiseGain = 0.140625;

/// Standard deviation of the picture's noise, code range 0 to 1: the lower decile over blocks of
/// the response to the twice-differenced mask of Immerkaer (1996), which is blind to edges and
/// ramps. Blocks that are clipped at black or white are left out; 0 when none is left.
double EstimateNoise(const IPicture& picture, const SRect& region);
