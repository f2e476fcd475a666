#pragma once

#include <cstddef>

/// The inner loops of the fit, on bare rows. Lengths and strides in samples; planes that are named
/// together share one stride, a multiple of 16. `mask` is one row of it: 1 where a column counts,
/// 0 elsewhere and up to the stride. Reads up to 31 samples behind the last one it needs (see
/// CPlane::kSlack). Sums run in lanes of single precision.

/// The picture between its samples: out(x, y) = sum over i, j = 0 .. 5 of
/// down[j] * across[i] * in(x + i, y + j). `rows` holds height + 5 rows of the out stride.
void Resample6x6(const float* in, std::ptrdiff_t inStride, const float* across, const float* down,
                 int width, int height, float* rows, float* out, std::ptrdiff_t stride);

/// A patch as the normal equations see it, and what they are weighted by.
struct SPatchPlanes {
  std::ptrdiff_t stride;
  int height;
  const float* mask;
  const float* along;  ///< horizontal distance from the centre, a row of `stride`
  const float* down;   ///< vertical distance from the centre, `height` values
  float* gx;           ///< gradients, masked
  float* gy;
  float* core;  ///< patch minus its mean, masked
};

/// Fills gx, gy and core. The gradient is the derivative of the polynomial through five samples,
/// so `patch` is read two samples around.
void FillGradients(const float* patch, std::ptrdiff_t patchStride, float mean,
                   const SPatchPlanes& planes);

/// The columns of the normal equations: gx, gy, core, 1, rotation (along * gy - down * gx), scale
/// (along * gx + down * gy).
inline constexpr int kFitColumns = 6;

/// Sums of the products of all columns (but those of the column 1 with itself), upper triangle:
/// products[i][j], j >= i.
void SumProducts(const SPatchPlanes& planes, double (&products)[kFitColumns][kFitColumns]);

/// out = the columns weighted and added.
void WeightColumns(const SPatchPlanes& planes, const double (&weights)[kFitColumns], float* out);

/// Sum of squares of `in`, with 0 around, after smoothing with [1 2 1] / 4 in both directions.
/// `zeros` is a row of 0; `line` holds stride + 32 samples, its first and last 16 are 0.
double SmoothedEnergy(const float* in, std::ptrdiff_t stride, int height, const float* zeros,
                      float* line);

/// What a picture differs by from the patch: d = (picture - mean) * mask - core.
struct SFitSums {
  double weighted[3];  ///< sums of d * solver row
  double sum;          ///< of d
  double cross;        ///< of d * core
};
SFitSums SumDifferences(const float* picture, const SPatchPlanes& planes,
                        const float* const (&solver)[3], float mean);

/// columns[x] += square of what gain and offset leave: picture - (gain * core + level), masked.
void AddResiduals(const float* picture, const SPatchPlanes& planes, int firstRow, int lastRow,
                  float gain, float level, float* columns);

/// patch += ((picture - offset) / gain - patch) * share.
void MixPicture(const float* picture, float gain, float offset, float share, int count,
                float* patch);
