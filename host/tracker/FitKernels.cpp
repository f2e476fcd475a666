#include "FitKernels.h"

#include "Lanes.h"

namespace {

/// Rows of `out`: xx xy xt xr xs, yy yt yr ys, tt tr ts, rr rs, ss, x y t r s.
constexpr int kProducts = 20;

STAB_CLONES void SumProductLanes(const SPatchPlanes& p, float* out) {
  Lanes xx{}, xy{}, xt{}, xr{}, xs{}, yy{}, yt{}, yr{}, ys{}, tt{}, tr{}, ts{}, rr{}, rs{}, ss{};
  Lanes sx{}, sy{}, st{}, sr{}, sz{};
  for (int j = 0; j < p.height; ++j) {
    const std::ptrdiff_t at = j * p.stride;
    const float down = p.down[j];
    for (std::ptrdiff_t i = 0; i < p.stride; i += kLanes) {
      const Lanes x = STAB_LOAD(p.gx + at + i);
      const Lanes y = STAB_LOAD(p.gy + at + i);
      const Lanes t = STAB_LOAD(p.core + at + i);
      const Lanes along = STAB_LOAD(p.along + i);
      const Lanes r = along * y - x * down;
      const Lanes s = along * x + y * down;
      xx += x * x;
      xy += x * y;
      xt += x * t;
      xr += x * r;
      xs += x * s;
      yy += y * y;
      yt += y * t;
      yr += y * r;
      ys += y * s;
      tt += t * t;
      tr += t * r;
      ts += t * s;
      rr += r * r;
      rs += r * s;
      ss += s * s;
      sx += x;
      sy += y;
      st += t;
      sr += r;
      sz += s;
    }
  }
  const Lanes all[kProducts] = {xx, xy, xt, xr, xs, yy, yt, yr, ys, tt,
                                tr, ts, rr, rs, ss, sx, sy, st, sr, sz};
  for (int i = 0; i < kProducts; ++i) STAB_STORE(out + i * kLanes) = all[i];
}

STAB_CLONES void WeightColumnLanes(const SPatchPlanes& p, const float* weights, float* out) {
  for (int j = 0; j < p.height; ++j) {
    const std::ptrdiff_t at = j * p.stride;
    // Rotation and scale are gradients weighted by place.
    const float x0 = weights[0] - weights[4] * p.down[j];
    const float y0 = weights[1] + weights[5] * p.down[j];
    for (std::ptrdiff_t i = 0; i < p.stride; i += kLanes) {
      const Lanes along = STAB_LOAD(p.along + i);
      STAB_STORE(out + at + i) =
          STAB_LOAD(p.gx + at + i) * (along * weights[5] + x0) +
          STAB_LOAD(p.gy + at + i) * (along * weights[4] + y0) +
          (STAB_LOAD(p.core + at + i) * weights[2] + STAB_LOAD(p.mask + i) * weights[3]);
    }
  }
}

/// One row of SmoothedEnergy, from the three rows of its input; `sum` is one of lanes.
STAB_CLONES void SmoothedRowEnergy(const float* above, const float* here, const float* below,
                                   std::ptrdiff_t stride, float* line, float* sum) {
  for (std::ptrdiff_t x = 0; x < stride; x += kLanes) {
    STAB_STORE(line + kLanes + x) =
        (STAB_LOAD(above + x) + STAB_LOAD(below + x)) * 0.25F + STAB_LOAD(here + x) * 0.5F;
  }
  Lanes energy = STAB_LOAD(sum);
  for (std::ptrdiff_t x = kLanes - 1; x <= stride + kLanes - 1; x += kLanes) {
    const Lanes v =
        (STAB_LOAD(line + x - 1) + STAB_LOAD(line + x + 1)) * 0.25F + STAB_LOAD(line + x) * 0.5F;
    energy += v * v;
  }
  STAB_STORE(sum) = energy;
}

STAB_CLONES void SumDifferenceLanes(const float* picture, const SPatchPlanes& p, const float* s0,
                                    const float* s1, const float* s2, float mean, float* out) {
  Lanes w0{}, w1{}, w2{}, sum{}, cross{};
  for (int j = 0; j < p.height; ++j) {
    const std::ptrdiff_t at = j * p.stride;
    for (std::ptrdiff_t i = 0; i < p.stride; i += kLanes) {
      const Lanes core = STAB_LOAD(p.core + at + i);
      const Lanes d = (STAB_LOAD(picture + at + i) - mean) * STAB_LOAD(p.mask + i) - core;
      w0 += d * STAB_LOAD(s0 + at + i);
      w1 += d * STAB_LOAD(s1 + at + i);
      w2 += d * STAB_LOAD(s2 + at + i);
      sum += d;
      cross += d * core;
    }
  }
  STAB_STORE(out) = w0;
  STAB_STORE(out + kLanes) = w1;
  STAB_STORE(out + 2 * kLanes) = w2;
  STAB_STORE(out + 3 * kLanes) = sum;
  STAB_STORE(out + 4 * kLanes) = cross;
}

}  // namespace

STAB_CLONES void Resample6x6(const float* in, std::ptrdiff_t inStride, const float* across,
                             const float* down, int width, int height, float* rows, float* out,
                             std::ptrdiff_t stride) {
  for (int y = 0; y < height + 5; ++y) {
    const float* from = in + y * inStride;
    float* row = rows + y * stride;
    for (int x = 0; x < width; x += kLanes) {
      STAB_STORE(row + x) =
          STAB_LOAD(from + x) * across[0] + STAB_LOAD(from + x + 1) * across[1] +
          STAB_LOAD(from + x + 2) * across[2] + STAB_LOAD(from + x + 3) * across[3] +
          STAB_LOAD(from + x + 4) * across[4] + STAB_LOAD(from + x + 5) * across[5];
    }
    if (y < 5) continue;
    // While its six rows are near.
    const float* top = row - 5 * stride;
    float* to = out + (y - 5) * stride;
    for (int x = 0; x < width; x += kLanes) {
      STAB_STORE(to + x) =
          STAB_LOAD(top + x) * down[0] + STAB_LOAD(top + x + stride) * down[1] +
          STAB_LOAD(top + x + 2 * stride) * down[2] + STAB_LOAD(top + x + 3 * stride) * down[3] +
          STAB_LOAD(top + x + 4 * stride) * down[4] + STAB_LOAD(top + x + 5 * stride) * down[5];
    }
  }
}

STAB_CLONES void FillGradients(const float* patch, std::ptrdiff_t patchStride, float mean,
                               const SPatchPlanes& p) {
  constexpr float kFar = 1.0F / 12.0F;
  constexpr float kNear = 2.0F / 3.0F;
  for (int j = 0; j < p.height; ++j) {
    const float* in = patch + j * patchStride;
    const std::ptrdiff_t at = j * p.stride;
    for (std::ptrdiff_t i = 0; i < p.stride; i += kLanes) {
      const Lanes mask = STAB_LOAD(p.mask + i);
      const float* here = in + i;
      STAB_STORE(p.gx + at + i) = ((STAB_LOAD(here - 2) - STAB_LOAD(here + 2)) * kFar +
                                   (STAB_LOAD(here + 1) - STAB_LOAD(here - 1)) * kNear) *
                                  mask;
      STAB_STORE(p.gy + at + i) =
          ((STAB_LOAD(here - 2 * patchStride) - STAB_LOAD(here + 2 * patchStride)) * kFar +
           (STAB_LOAD(here + patchStride) - STAB_LOAD(here - patchStride)) * kNear) *
          mask;
      STAB_STORE(p.core + at + i) = (STAB_LOAD(here) - mean) * mask;
    }
  }
}

void SumProducts(const SPatchPlanes& planes, double (&products)[kFitColumns][kFitColumns]) {
  alignas(64) float lanes[kProducts * kLanes];
  SumProductLanes(planes, lanes);
  const float* next = lanes;
  for (int i = 0; i < kFitColumns; ++i) {
    for (int j = i; j < kFitColumns; ++j) {
      if (i == 3 || j == 3) continue;
      products[i][j] = SumOfLanes(next);
      next += kLanes;
    }
  }
  for (int i = 0; i < kFitColumns; ++i) {
    if (i == 3) continue;
    products[i < 3 ? i : 3][i < 3 ? 3 : i] = SumOfLanes(next);
    next += kLanes;
  }
}

void WeightColumns(const SPatchPlanes& planes, const double (&weights)[kFitColumns], float* out) {
  float single[kFitColumns];
  for (int i = 0; i < kFitColumns; ++i) single[i] = static_cast<float>(weights[i]);
  WeightColumnLanes(planes, single, out);
}

double SmoothedEnergy(const float* in, std::ptrdiff_t stride, int height, const float* zeros,
                      float* line) {
  alignas(64) float sum[kLanes] = {};
  const auto row = [&](int y) { return y >= 0 && y < height ? in + y * stride : zeros; };
  for (int y = -1; y <= height; ++y) {
    SmoothedRowEnergy(row(y - 1), row(y), row(y + 1), stride, line, sum);
  }
  return SumOfLanes(sum);
}

SFitSums SumDifferences(const float* picture, const SPatchPlanes& planes,
                        const float* const (&solver)[3], float mean) {
  alignas(64) float out[5 * kLanes];
  SumDifferenceLanes(picture, planes, solver[0], solver[1], solver[2], mean, out);
  return {{SumOfLanes(out), SumOfLanes(out + kLanes), SumOfLanes(out + 2 * kLanes)},
          SumOfLanes(out + 3 * kLanes),
          SumOfLanes(out + 4 * kLanes)};
}

STAB_CLONES void AddResiduals(const float* picture, const SPatchPlanes& p, int firstRow,
                              int lastRow, float gain, float level, float* columns) {
  for (int j = firstRow; j <= lastRow; ++j) {
    const std::ptrdiff_t at = j * p.stride;
    for (std::ptrdiff_t i = 0; i < p.stride; i += kLanes) {
      const Lanes e = (STAB_LOAD(picture + at + i) - level) * STAB_LOAD(p.mask + i) -
                      STAB_LOAD(p.core + at + i) * gain;
      STAB_STORE(columns + i) = STAB_LOAD(columns + i) + e * e;
    }
  }
}

STAB_CLONES void MixPicture(const float* picture, float gain, float offset, float share, int count,
                            float* patch) {
  const float inverse = 1.0F / gain;
  for (int x = 0; x < count; ++x) {
    patch[x] += ((picture[x] - offset) * inverse - patch[x]) * share;
  }
}
