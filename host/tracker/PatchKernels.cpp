#include "PatchKernels.h"

#include <algorithm>

#include "Lanes.h"

namespace {

constexpr int kMaxColumns = 272;

/// Sums of samples and of their squares down the columns of one patch position.
STAB_CLONES void SumColumns(const float* window, std::ptrdiff_t stride, int height, int count,
                            float* sum, float* squares) {
  for (int x = 0; x < count; x += kLanes) {
    Lanes s{};
    Lanes q{};
    const float* in = window + x;
    for (int y = 0; y < height; ++y, in += stride) {
      const Lanes v = STAB_LOAD(in);
      s += v;
      q += v * v;
    }
    STAB_STORE(sum + x) = s;
    STAB_STORE(squares + x) = q;
  }
}

STAB_CLONES void SlideColumns(const float* leaving, const float* entering, int count, float* sum,
                              float* squares) {
  for (int x = 0; x < count; x += kLanes) {
    const Lanes out = STAB_LOAD(leaving + x);
    const Lanes in = STAB_LOAD(entering + x);
    STAB_STORE(sum + x) = STAB_LOAD(sum + x) + (in - out);
    STAB_STORE(squares + x) = STAB_LOAD(squares + x) + (in * in - out * out);
  }
}

STAB_CLONES void VarianceAlong(const float* sum, const float* squares, int width, float inverseArea,
                               float* var) {
  Lanes s{};
  Lanes q{};
  for (int x = 0; x < width; ++x) {
    s += STAB_LOAD(sum + x);
    q += STAB_LOAD(squares + x);
  }
  STAB_STORE(var) = q - s * s * inverseArea;
}

STAB_CLONES void DotBlock(const float* patch, std::ptrdiff_t patchStride, int width, int height,
                          const float* const* base, std::ptrdiff_t stride, float* dot) {
  Lanes a0{};
  Lanes a1{};
  Lanes a2{};
  Lanes a3{};
  Lanes a4{};
  for (int y = 0; y < height; ++y) {
    const float* p = patch + y * patchStride;
    const std::ptrdiff_t at = y * stride;
    for (int x = 0; x < width; ++x) {
      const float t = p[x];
      a0 += STAB_LOAD(base[0] + at + x) * t;
      a1 += STAB_LOAD(base[1] + at + x) * t;
      a2 += STAB_LOAD(base[2] + at + x) * t;
      a3 += STAB_LOAD(base[3] + at + x) * t;
      a4 += STAB_LOAD(base[4] + at + x) * t;
    }
  }
  STAB_STORE(dot) = a0;
  STAB_STORE(dot + kLanes) = a1;
  STAB_STORE(dot + 2 * kLanes) = a2;
  STAB_STORE(dot + 3 * kLanes) = a3;
  STAB_STORE(dot + 4 * kLanes) = a4;
}

STAB_CLONES void ScoreOneLanes(const float* patch, std::ptrdiff_t patchStride, int width,
                               int height, const float* window, std::ptrdiff_t stride,
                               const float* inside, float* out) {
  Lanes dot{};
  Lanes sum{};
  Lanes squares{};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; x += kLanes) {
      const Lanes v = STAB_LOAD(window + y * stride + x) * STAB_LOAD(inside + x);
      dot += v * STAB_LOAD(patch + y * patchStride + x);
      sum += v;
      squares += v * v;
    }
  }
  STAB_STORE(out) = dot;
  STAB_STORE(out + kLanes) = sum;
  STAB_STORE(out + 2 * kLanes) = squares;
}

}  // namespace

void ScoreBlock(const float* patch, std::ptrdiff_t patchStride, int width, int height,
                const float* window, std::ptrdiff_t stride, int rows, SScoreBlock& block) {
  const float* base[SScoreBlock::kRows];
  for (int d = 0; d < SScoreBlock::kRows; ++d) base[d] = window + std::min(d, rows - 1) * stride;
  DotBlock(patch, patchStride, width, height, base, stride, &block.dot[0][0]);

  alignas(64) float sum[kMaxColumns];
  alignas(64) float squares[kMaxColumns];
  const int columns = RoundUpToLanes(width + kLanes - 1);
  const float inverseArea = 1.0F / static_cast<float>(width * height);
  SumColumns(window, stride, height, columns, sum, squares);
  VarianceAlong(sum, squares, width, inverseArea, block.var[0]);
  for (int d = 1; d < rows; ++d) {
    SlideColumns(window + (d - 1) * stride, window + (d - 1 + height) * stride, columns, sum,
                 squares);
    VarianceAlong(sum, squares, width, inverseArea, block.var[d]);
  }
}

void ScoreOne(const float* patch, std::ptrdiff_t patchStride, int width, int height,
              const float* window, std::ptrdiff_t stride, double& dot, double& var) {
  alignas(64) float inside[kMaxColumns];
  const int columns = RoundUpToLanes(width);
  for (int x = 0; x < columns; ++x) inside[x] = x < width ? 1.0F : 0.0F;
  alignas(64) float out[3 * kLanes];
  ScoreOneLanes(patch, patchStride, width, height, window, stride, inside, out);
  dot = SumOfLanes(out);
  const double sum = SumOfLanes(out + kLanes);
  var = SumOfLanes(out + 2 * kLanes) - sum * sum / (width * height);
}

STAB_CLONES void HalveRow(const float* upper, const float* lower, int count, float* out) {
  for (int x = 0; x < count; ++x) {
    out[x] = ((upper[2 * x] + upper[2 * x + 1]) + (lower[2 * x] + lower[2 * x + 1])) * 0.25F;
  }
}

STAB_CLONES void SumRows(const float* first, std::ptrdiff_t stride, int length, int count,
                         float* out) {
  for (int x = 0; x < count; x += kLanes) {
    Lanes s{};
    for (int y = 0; y < length; ++y) s += STAB_LOAD(first + y * stride + x);
    STAB_STORE(out + x) = s;
  }
}

STAB_CLONES void SumAlong(const float* in, int length, int count, float* out) {
  for (int x = 0; x < count; x += kLanes) {
    Lanes s{};
    for (int k = 0; k < length; ++k) s += STAB_LOAD(in + x + k);
    STAB_STORE(out + x) = s;
  }
}

STAB_CLONES void SquareRow(const float* in, int count, float* out) {
  for (int x = 0; x < count; ++x) out[x] = in[x] * in[x];
}

STAB_CLONES void AccumulateBlocks(const float* s, float weight, int count, float* tw, float* ww,
                                  float* sum) {
  for (int x = 0; x < count; x += kLanes) {
    const Lanes v = STAB_LOAD(s + x);
    STAB_STORE(tw + x) = STAB_LOAD(tw + x) + v * weight;
    STAB_STORE(ww + x) = STAB_LOAD(ww + x) + v * v;
    STAB_STORE(sum + x) = STAB_LOAD(sum + x) + v;
  }
}

STAB_CLONES void Derivative5(const float* in, std::ptrdiff_t step, int count, float* out) {
  constexpr float kFar = 1.0F / 12.0F;
  constexpr float kNear = 2.0F / 3.0F;
  for (int x = 0; x < count; ++x) {
    out[x] = (in[x - 2 * step] - in[x + 2 * step]) * kFar + (in[x + step] - in[x - step]) * kNear;
  }
}
