#pragma once

#include <cstdint>
#include <span>

/// Numerics that the smoother and the renderer stand on. All functions are thread-safe except the
/// random generator, whose state is one per process behind a lock.

/// Bilinear interpolation between four neighbouring samples. Only the fractional parts of `x` and
/// `y` count; like the integer part they are taken toward zero, so a coordinate of -0.5 has the
/// fraction -0.5. Evaluated as p00 + (p10-p00)fx + (p01-p00)fy + (p00-p10-p01+p11)fx*fy, in this
/// order.
double BiLinear(double x, double y, double topLeft, double topRight, double bottomLeft,
                double bottomRight);

/// Radial basis values of the distance r between (x0, y0) and (x1, y1): r, r ln r, r^2 ln r.
/// 0 for r == 0; the logarithm is that of at least 1e-29, results end at the largest float: never
/// infinite, never NaN for finite input. `UIdenity` is 0 everywhere: it selects the map that
/// ignores the weights.
float UEuclidean(float x0, float y0, float x1, float y1);
float ULogrithmic(float x0, float y0, float x1, float y1);
float UThinPlate(float x0, float y0, float x1, float y1);
float UIdenity(float x0, float y0, float x1, float y1);

/// Robust linear least squares: the x that minimises the biweight loss of A x - b, by iteratively
/// reweighted least squares (Holland & Welsch 1977; Tukey's biweight, c = 4.685; scale = 1.4826
/// MAD, with the correction of Rousseeuw & Leroy 1987 for few rows) from a least-absolute-residual
/// start, or from a least-quantile one (Rousseeuw 1984) where far-out rows broke the former. Up to
/// 40 % gross outliers do not move the result. Equal input gives equal output.
///
/// Columns that share no row are fitted independently of each other, and a scale is taken from the
/// rows that touch a column, not from all: exact x rows do not turn noisy y rows into outliers.
/// Where the majority of the rows fit exactly, a row counts as long as it misses by less than
/// `tolerance` (times the size of the smallest column).
///
/// `a` is row-major, b.size() rows of x.size() columns. `x` is overwritten by the coefficients.
/// Returns true when the last step changed no coefficient by more than `tolerance`; the steps go on
/// until the fitted values, too, are settled to a thousandth of it. On false `x` still holds the
/// best estimate. A system without rows leaves `x` as it is and returns false; a column that no row
/// determines, or that depends on earlier ones, keeps 0; a row with a value that is not finite is
/// left out.
bool robust(std::span<const double> b, std::span<const double> a, double tolerance,
            std::span<double> x);

/// Smooths `sequence` in place: penalised least squares with a third-difference penalty
/// (Whittaker 1923, Henderson 1924): minimises alpha * sum (y_i - s_i)^2 + sum (D^3 s)_i^2.
/// The first `anchorsIn` and the last `anchorsOut` elements are equality constraints: they keep
/// their measured value. Cost is linear in the length; alpha may be as small as 1e-30, where the
/// path becomes the least-squares parabola, or with three and more anchors their smoothest
/// continuation. Without a free element, or with fewer than four in all, the sequence stays as it
/// is.
///
/// alpha < 0 (or not finite): the sequence stays as it is. alpha == 0: hold still - where one end
/// is anchored, every element becomes the mean of that end's anchors; where both are, the line
/// through the two means, each at the centre of its anchors; where none is, the mean of the
/// sequence. In the hold-still case anchor elements are overwritten too, so that the path has no
/// step at the anchors' end; the renderer leaves anchor frames alone. Anchor counts are limited to
/// the length. The last two parameters are reserved; callers pass null and false.
void Smooth3(std::span<double> sequence, int anchorsIn, int anchorsOut, double alpha,
             const void* reserved, bool reservedFlag);

/// Standard normal deviates from one generator per process; the same seed gives the same sequence,
/// on every system: 64-bit Mersenne twister (Matsumoto & Nishimura 1998), its upper 53 bits as
/// uniform numbers, and the polar method (Marsaglia & Bray 1964), both deviates of a pair used in
/// turn, with a logarithm of its own. A new seed drops a pending deviate. THREAD: any.
void setRandSeed(std::uint64_t seed);
double getRandNormal();
