#pragma once

/// The weights of the four source samples around a position whose fractions are the same for many
/// pixels, as whole numbers, cut into parts of 16 bits that one multiplication instruction takes.
///
/// With fx = nx / 2^bx, fy = ny / 2^by and S = bx + by the interpolated sample is the whole part of
///   (sum of W p) / 2^S,   W = {(2^bx - nx)(2^by - ny), nx (2^by - ny), (2^bx - nx) ny, nx ny}.
/// A weight is cut into  W = (high 2^M + middle) 2^L + low,  and since floors of floors compose:
///   ((sum of high p) + (((sum of middle p) + ((sum of low p) >> L)) >> M)) >> H,   H = S - M - L.
/// The parts are so small that no sum over samples of -32768 to 32767 leaves 32 bits. Up to S = 35
/// the scalar formula in double precision is exact too, in every order, so both give the same bits;
/// beyond, only the scalar formula itself does.
struct SCornerWeights {
  enum class EForm {
    copy,      ///< whole positions: the sample itself
    twoParts,  ///< there is no low part
    threeParts,
    fine,  ///< S is beyond 35
  };
  EForm form = EForm::copy;
  /// Of the upper and of the lower row: the weight of the own column in the lower 16 bits, that of
  /// the next column in the upper ones.
  int high[2] = {};
  int middle[2] = {};
  int low[2] = {};
  int highShift = 0;
  int middleShift = 0;
  int lowShift = 0;
};

/// REQUIRES: 0 <= fractionX, fractionY < 1.
SCornerWeights FindCornerWeights(float fractionX, float fractionY);
