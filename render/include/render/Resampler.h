#pragma once

#include <cstdint>
#include <span>

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
/// pixels; `output` is neither `source` nor `previous`.
struct SResampleJob {
  const std::uint16_t* source = nullptr;
  std::uint16_t* output = nullptr;
  /// Of the frame, the line that `output` begins with: rows that are used up at once need no memory
  /// of a frame's size. The other frames begin with their first line.
  int outputTop = 0;
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
  const char* kernel;  ///< its name (support/Kernels.h)
  ResampleRowsFunction resampleRows;
};

/// One for each kernel of the machine's kind, best first, usable or not. The last one, "scalar", is
/// the definition.
std::span<const SResampler> AllResamplers();

/// That of TheKernel. Null, and `theError` says why, when there is none. THREAD: any.
const SResampler* TheResampler();

/// The kernel whose resampler ran last in this process; empty when none has. THREAD: any.
const char* LastResamplerKernel();
