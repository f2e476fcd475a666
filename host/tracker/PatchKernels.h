#pragma once

#include <cstddef>

/// The inner loops of the search, on bare rows. Lengths in samples, strides in samples. Reads up to
/// 31 samples behind the last one it needs (see CPlane::kSlack). `mask` is one row: 1 where a
/// column counts, 0 elsewhere and up to the patch's stride, a multiple of 16; the patch is 0 there
/// too.

/// Sum of the masked samples.
double MaskedSum(const float* in, std::ptrdiff_t inStride, const float* mask, std::ptrdiff_t stride,
                 int height);
/// out = (in - mean) * mask; gives the sum of squares of that. `in` may be `out`.
double Centre(const float* in, std::ptrdiff_t inStride, float mean, const float* mask,
              std::ptrdiff_t stride, int height, float* out);

/// Sums of samples and of their squares down each of `count` columns.
void SumColumns(const float* window, std::ptrdiff_t stride, int height, int count, float* sum,
                float* squares);
/// Moves such sums down by a row.
void SlideColumns(const float* leaving, const float* entering, int count, float* sum,
                  float* squares);

/// What a score is measured by. A score is the correlation times its absolute value: it orders like
/// the correlation and needs no root.
struct SScoreScale {
  float inverseArea;
  float energy;  ///< the patch's sum of squares about its mean
  float flat;    ///< sum of squares about the mean below which a picture scores 0
};

/// Up to five rows of positions that are scored together.
struct SStrip {
  static constexpr int kRows = 5;
  int rows;
  int columns;
  const float* sums;  ///< sums down the columns below each row of positions, see SumColumns
  const float* squares;
  std::ptrdiff_t sumStride;
  float* scores;  ///< `columns` rounded up to 16 are written
  std::ptrdiff_t scoreStride;
};
/// Scores the positions from `window` on.
void ScoreStrip(const float* patch, std::ptrdiff_t patchStride, int width, int height,
                const float* window, std::ptrdiff_t stride, const SScoreScale& scale,
                const SStrip& strip);

/// Sums of patch times picture at five positions side by side, for when few are wanted.
void Dot5(const float* patch, std::ptrdiff_t patchStride, int height, const float* window,
          std::ptrdiff_t stride, double (&dot)[5]);

/// Sum of patch times picture, and the picture's sum of squares about its mean, at one position.
void ScoreOne(const float* patch, std::ptrdiff_t patchStride, int area, int height,
              const float* mask, const float* window, std::ptrdiff_t stride, double& dot,
              double& var);

/// First of the groups of 16 from `from` on, a multiple of 16, that holds a value above
/// `threshold`; at least `count` when none does.
int FindAbove(const float* row, int from, int count, float threshold);

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
