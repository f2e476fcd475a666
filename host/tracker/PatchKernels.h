#pragma once

#include <cstddef>

/// The inner loops of the search, on bare rows. Lengths in samples, strides in samples. Reads up to
/// 31 samples behind the last one it needs (see CPlane::kSlack).

/// A block of positions that are scored together: 5 rows of 16.
struct SScoreBlock {
  static constexpr int kRows = 5;
  static constexpr int kColumns = 16;
  float dot[kRows][kColumns];  ///< sum of patch times picture
  float var[kRows][kColumns];  ///< picture's sum of squares about its mean, below the patch
};

/// Scores the positions whose upper left sample is window + row * stride + column. Rows from
/// `rows` on repeat the last one. REQUIRES: width <= 241.
void ScoreBlock(const float* patch, std::ptrdiff_t patchStride, int width, int height,
                const float* window, std::ptrdiff_t stride, int rows, SScoreBlock& block);

/// The same for one position. REQUIRES: patch is 0 from `width` to the next whole lanes.
void ScoreOne(const float* patch, std::ptrdiff_t patchStride, int width, int height,
              const float* window, std::ptrdiff_t stride, double& dot, double& var);

/// out[x] = mean of the 2 x 2 samples at 2 x.
void HalveRow(const float* upper, const float* lower, int count, float* out);
/// out[x] = sum of `length` rows at x.
void SumRows(const float* first, std::ptrdiff_t stride, int length, int count, float* out);
/// out[x] = sum of in[x] .. in[x + length - 1].
void SumAlong(const float* in, int length, int count, float* out);
void SquareRow(const float* in, int count, float* out);
/// tw += weight * s, ww += s * s, sum += s.
void AccumulateBlocks(const float* s, float weight, int count, float* tw, float* ww, float* sum);

/// out[x] = (in[x - 2 step] - in[x + 2 step]) / 12 + (in[x + step] - in[x - step]) * 2 / 3: the
/// derivative of the polynomial through five samples.
void Derivative5(const float* in, std::ptrdiff_t step, int count, float* out);
