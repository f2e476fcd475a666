#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "render/Warp.h"
#include "support/Rect.h"

/// Resampling of one frame through its map: output pixel (x, y) of the processing rectangle
/// receives the bilinear interpolation of the source at map(x, y), or the fill where the map leaves
/// the rectangle. Bilinear interpolation: Gonzalez & Woods, Digital Image Processing, 2.4.4,
/// between sample centres at whole numbers.
///
/// The result is DEFINED by the scalar formula in ScalarFormula.h; every kernel gives the same
/// bits, whatever the machine and however the rows are divided among threads.

/// Everything one frame's resampling needs; owns nothing. Samples are 16-bit, 3 per pixel,
/// interleaved, rows of `pixelsPerLine` pixels directly one after another.
/// REQUIRES: 0 <= left <= right < pixelsPerLine, 0 <= top <= bottom < lines, fewer than 2^29
/// pixels; `source`, `output` and `previous` are different frames.
struct SResampleJob {
  const std::uint16_t* source = nullptr;
  std::uint16_t* output = nullptr;
  int pixelsPerLine = 0;
  SRect area;  ///< processing rectangle, inclusive: neither read nor written outside
  SWarpMap map;
  /// Missing pixels show this frame's samples of the same place; null: they show `fillColor`.
  const std::uint16_t* previous = nullptr;
  std::uint16_t fillColor[3] = {0, 0, 0};
};

/// Resamples the rows [firstRow, lastRow] (inclusive; none when lastRow < firstRow) of the
/// processing rectangle. Allocates nothing, cannot fail. THREAD: any; calls may share everything
/// but the rows that they write.
using ResampleRowsFunction = void (*)(const SResampleJob& job, int firstRow, int lastRow);

/// One way to compute the result.
struct SResampler {
  const char* name;  ///< what STABILIZE_KERNEL chooses by
  const char* instructions;
  bool (*usable)();  ///< on this machine
  ResampleRowsFunction resampleRows;

  /// "spans/avx512".
  std::string fullName() const { return std::string(name) + "/" + instructions; }
};

constexpr int UNKNOWN_RESAMPLER = -8509;

/// All of them, best first; the last one, "scalar", is the definition and usable everywhere.
std::span<const SResampler> AllResamplers();

/// The best usable resampler of that name or full name; an empty name means the best of all. Null,
/// with UNKNOWN_RESAMPLER in `theError`, when no usable one is called so.
const SResampler* FindResampler(const std::string& name);

/// The one this process renders with: the best, or what the environment variable STABILIZE_KERNEL
/// names (read once). Null and `theError` as FindResampler: a name that means nothing is never
/// passed over in silence. THREAD: any.
const SResampler* TheResampler();
/// Full name of TheResampler; empty when there is none.
std::string ResamplerName();
