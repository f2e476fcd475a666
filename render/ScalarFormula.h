#pragma once

#include <cmath>
#include <cstddef>
#include <cstring>

#include "render/Resampler.h"
#include "support/Numerics.h"

/// The definition of the renderer's result, one pixel at a time.

/// Samples before pixel (x, y).
inline std::ptrdiff_t SampleOffset(const SResampleJob& job, int x, int y) {
  return (static_cast<std::ptrdiff_t>(y) * job.pixelsPerLine + x) * 3;
}

inline std::uint16_t* OutputAt(const SResampleJob& job, int x, int y) {
  return job.output + SampleOffset(job, x, y - job.outputTop);
}

/// Truncates toward zero. A position up to one pixel before the frame's first column or row counts
/// as inside and is extrapolated, so the value may leave the sample range; it is then held at the
/// range's end, because a wrapped sample (a white dot in black) is never wanted.
inline std::uint16_t StoredSample(double value) {
  if (value <= 0.0) return 0;
  if (value >= 65535.0) return 65535;
  return static_cast<std::uint16_t>(value);
}

inline void FillPixels(const SResampleJob& job, int x, int y, int count) {
  std::uint16_t* out = OutputAt(job, x, y);
  if (job.previous) {
    const std::uint16_t* shown = job.previous + SampleOffset(job, x, y);
    std::memcpy(out, shown, static_cast<std::size_t>(count) * 3 * sizeof *out);
    return;
  }
  for (int i = 0; i < count; ++i, out += 3) std::memcpy(out, job.fillColor, 3 * sizeof *out);
}

/// One component of a source position inside the area. `p` is its sample at the integer position.
inline double Interpolated(const SResampleJob& job, int ix, int iy, double sx, double sy,
                           const std::uint16_t* p) {
  const std::ptrdiff_t below = static_cast<std::ptrdiff_t>(job.pixelsPerLine) * 3;
  const bool hasRight = ix < job.area.right;
  const bool hasBelow = iy < job.area.bottom;
  if (!hasRight && !hasBelow) return p[0];
  if (!hasRight) return BiLinear(sx, sy, p[0], p[0], p[below], p[below]);
  if (!hasBelow) return BiLinear(sx, sy, p[0], p[3], p[0], p[3]);

  const double fx = sx - ix;
  const double fy = sy - iy;
  const double p00 = p[0];
  const double p10 = p[3];
  const double p01 = p[below];
  const double p11 = p[below + 3];
  return p00 + (p10 - p00) * fx + (p01 - p00) * fy + (p00 - p10 - p01 + p11) * fx * fy;
}

/// Output pixel (x, y) of the area from source position (sourceX, sourceY).
inline void ResamplePixel(const SResampleJob& job, int x, int y, float sourceX, float sourceY) {
  const double sx = sourceX;
  const double sy = sourceY;
  // Compared before they become integers: a position may be anything, not-a-number included.
  const double wholeX = std::trunc(sx);
  const double wholeY = std::trunc(sy);
  const bool inside = wholeX >= job.area.left && wholeX <= job.area.right &&
                      wholeY >= job.area.top && wholeY <= job.area.bottom;
  if (!inside) {
    FillPixels(job, x, y, 1);
    return;
  }
  const int ix = static_cast<int>(wholeX);
  const int iy = static_cast<int>(wholeY);
  const std::uint16_t* p = job.source + SampleOffset(job, ix, iy);
  std::uint16_t* out = OutputAt(job, x, y);
  for (int c = 0; c < 3; ++c) out[c] = StoredSample(Interpolated(job, ix, iy, sx, sy, p + c));
}
