#include "PatchKernels.h"

#include <algorithm>
#include <cmath>

#include "Lanes.h"

namespace {

STAB_CLONES void MaskedSumLanes(const float* in, std::ptrdiff_t inStride, const float* mask,
                                std::ptrdiff_t stride, int height, float* out) {
  Lanes sum{};
  for (int y = 0; y < height; ++y) {
    const float* row = in + y * inStride;
    for (std::ptrdiff_t x = 0; x < stride; x += kLanes) {
      sum += STAB_LOAD(row + x) * STAB_LOAD(mask + x);
    }
  }
  STAB_STORE(out) = sum;
}

STAB_CLONES void CentreLanes(const float* in, std::ptrdiff_t inStride, float mean,
                             const float* mask, std::ptrdiff_t stride, int height, float* out,
                             float* squares) {
  Lanes sum{};
  for (int y = 0; y < height; ++y) {
    for (std::ptrdiff_t x = 0; x < stride; x += kLanes) {
      const Lanes v = (STAB_LOAD(in + y * inStride + x) - mean) * STAB_LOAD(mask + x);
      STAB_STORE(out + y * stride + x) = v;
      sum += v * v;
    }
  }
  STAB_STORE(squares) = sum;
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

/// Five positions side by side.
STAB_CLONES void DotBeside(const float* patch, std::ptrdiff_t patchStride, int height,
                           const float* window, std::ptrdiff_t stride, float* dot) {
  Lanes a0{};
  Lanes a1{};
  Lanes a2{};
  Lanes a3{};
  Lanes a4{};
  for (int y = 0; y < height; ++y) {
    const float* in = window + y * stride;
    for (std::ptrdiff_t x = 0; x < patchStride; x += kLanes) {
      const Lanes t = STAB_LOAD(patch + y * patchStride + x);
      a0 += STAB_LOAD(in + x) * t;
      a1 += STAB_LOAD(in + x + 1) * t;
      a2 += STAB_LOAD(in + x + 2) * t;
      a3 += STAB_LOAD(in + x + 3) * t;
      a4 += STAB_LOAD(in + x + 4) * t;
    }
  }
  STAB_STORE(dot) = a0;
  STAB_STORE(dot + kLanes) = a1;
  STAB_STORE(dot + 2 * kLanes) = a2;
  STAB_STORE(dot + 3 * kLanes) = a3;
  STAB_STORE(dot + 4 * kLanes) = a4;
}

/// Scores of sixteen positions from their dot products and the sums down their columns.
STAB_CLONES void ScoreLanes(const float* dot, const float* sum, const float* squares, int width,
                            const SScoreScale& scale, float* score) {
  Lanes s{};
  Lanes q{};
  for (int x = 0; x < width; ++x) {
    s += STAB_LOAD(sum + x);
    q += STAB_LOAD(squares + x);
  }
  alignas(64) float var[kLanes];
  STAB_STORE(var) = q - s * s * scale.inverseArea;
  for (int i = 0; i < kLanes; ++i) {
    const float safe = var[i] > scale.flat ? var[i] : scale.flat;
    const float value = dot[i] * std::abs(dot[i]) / (safe * scale.energy);
    score[i] = var[i] > scale.flat ? value : 0.0F;
  }
}

STAB_CLONES void ScoreOneLanes(const float* patch, std::ptrdiff_t patchStride, int height,
                               const float* window, std::ptrdiff_t stride, const float* mask,
                               float* out) {
  Lanes dot{};
  Lanes sum{};
  Lanes squares{};
  for (int y = 0; y < height; ++y) {
    for (std::ptrdiff_t x = 0; x < patchStride; x += kLanes) {
      const Lanes v = STAB_LOAD(window + y * stride + x) * STAB_LOAD(mask + x);
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

double MaskedSum(const float* in, std::ptrdiff_t inStride, const float* mask, std::ptrdiff_t stride,
                 int height) {
  alignas(64) float out[kLanes];
  MaskedSumLanes(in, inStride, mask, stride, height, out);
  return SumOfLanes(out);
}

double Centre(const float* in, std::ptrdiff_t inStride, float mean, const float* mask,
              std::ptrdiff_t stride, int height, float* out) {
  alignas(64) float squares[kLanes];
  CentreLanes(in, inStride, mean, mask, stride, height, out, squares);
  return SumOfLanes(squares);
}

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

void ScoreStrip(const float* patch, std::ptrdiff_t patchStride, int width, int height,
                const float* window, std::ptrdiff_t stride, const SScoreScale& scale,
                const SStrip& strip) {
  alignas(64) float dot[SStrip::kRows * kLanes];
  for (int x = 0; x < strip.columns; x += kLanes) {
    const float* base[SStrip::kRows];
    for (int d = 0; d < SStrip::kRows; ++d) {
      base[d] = window + x + std::min(d, strip.rows - 1) * stride;
    }
    DotBlock(patch, patchStride, width, height, base, stride, dot);
    for (int d = 0; d < strip.rows; ++d) {
      ScoreLanes(dot + d * kLanes, strip.sums + d * strip.sumStride + x,
                 strip.squares + d * strip.sumStride + x, width, scale,
                 strip.scores + d * strip.scoreStride + x);
    }
  }
}

void Dot5(const float* patch, std::ptrdiff_t patchStride, int height, const float* window,
          std::ptrdiff_t stride, double (&dot)[5]) {
  alignas(64) float lanes[5 * kLanes];
  DotBeside(patch, patchStride, height, window, stride, lanes);
  for (int i = 0; i < 5; ++i) dot[i] = SumOfLanes(lanes + i * kLanes);
}

STAB_CLONES int FindAbove(const float* row, int from, int count, float threshold) {
  int x = from;
  for (; x < count; x += kLanes) {
    int above = 0;
    for (int i = 0; i < kLanes; ++i) above |= row[x + i] > threshold ? 1 : 0;
    if (above != 0) break;
  }
  return x;
}

void ScoreOne(const float* patch, std::ptrdiff_t patchStride, int area, int height,
              const float* mask, const float* window, std::ptrdiff_t stride, double& dot,
              double& var) {
  alignas(64) float out[3 * kLanes];
  ScoreOneLanes(patch, patchStride, height, window, stride, mask, out);
  dot = SumOfLanes(out);
  const double sum = SumOfLanes(out + kLanes);
  var = SumOfLanes(out + 2 * kLanes) - sum * sum / area;
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
