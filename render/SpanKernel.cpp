#include "SpanKernel.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>

#include "ScalarFormula.h"

// Everything here is inlined into one function per instruction set and vectorised there by the
// compiler. The arithmetic of a component is written exactly as in the scalar formula; only the
// order in which components are visited differs.
#define STAB_INLINE inline __attribute__((always_inline))

namespace {

/// Columns whose map is held at a time; the buffers stay in the first-level cache.
constexpr int CHUNK = 512;
/// Shorter runs cost more to set up than to compute by pixels.
constexpr int SHORTEST_RUN = 6;

constexpr int KEY_MISSING = INT_MIN;   ///< the map leaves the area: fill
constexpr int KEY_EDGE = INT_MIN + 1;  ///< last column or row, or before the first: scalar formula

/// The map of columns [x0, x0 + count) of one row. Pixels of equal key have source pixels side by
/// side: the key is the source pixel's index in the frame minus the column. Fractions are exact in
/// single precision, a coordinate's bits minus its integer part.
struct SChunk {
  alignas(64) int key[CHUNK];
  alignas(64) int fxBits[CHUNK];
  alignas(64) float fy[CHUNK];
  alignas(64) float fyOfComponent[3 * CHUNK];
};

STAB_INLINE float heldBetween(float value, float low, float high) {
  value = value > low ? value : low;  // not-a-number becomes `low`, which is outside
  return value < high ? value : high;
}

STAB_INLINE void evaluate(const SResampleJob& job, int y, int x0, int count, SChunk& chunk) {
  const SRect area = job.area;
  const int pixelsPerLine = job.pixelsPerLine;
  const SWarpMap map = job.map;
  const float rowX = map.rowTermX(y);
  const float rowY = map.rowTermY(y);
  const float highX = static_cast<float>(area.right + 2);
  const float highY = static_cast<float>(area.bottom + 2);
  for (int i = 0; i < count; ++i) {
    const int x = x0 + i;
    const float sx = heldBetween(map.sourceX(x, rowX), -2.0F, highX);
    const float sy = heldBetween(map.sourceY(x, rowY), -2.0F, highY);
    const int ix = static_cast<int>(sx);
    const int iy = static_cast<int>(sy);
    const float fx = sx - static_cast<float>(ix);
    const float fy = sy - static_cast<float>(iy);
    const bool missing =
        (ix < area.left) | (ix > area.right) | (iy < area.top) | (iy > area.bottom);
    const bool edge = (ix == area.right) | (iy == area.bottom) | (fx < 0.0F) | (fy < 0.0F);
    const int key = edge ? KEY_EDGE : iy * pixelsPerLine + ix - x;
    chunk.key[i] = missing ? KEY_MISSING : key;
    chunk.fxBits[i] = (missing | edge) ? 0 : std::bit_cast<int>(fx);
    chunk.fy[i] = fy;
  }
}

/// True when columns [from, end) have this key and horizontal fraction.
STAB_INLINE bool continuesRun(const SChunk& chunk, int from, int end, int key, int fxBits) {
  int differs = 0;
  for (int i = from; i < end; ++i) differs |= (chunk.key[i] ^ key) | (chunk.fxBits[i] ^ fxBits);
  return differs == 0;
}

/// End of the run that begins at `from`: one key, one horizontal fraction. Steps that get shorter
/// where the run ends, so that a long run is seen in few, vectorised looks.
STAB_INLINE int runEnd(const SChunk& chunk, int from, int count) {
  const int key = chunk.key[from];
  const int fxBits = chunk.fxBits[from];
  int end = from + 1;
  for (int step = CHUNK / 2; step > 0; step /= 4) {
    while (end < count) {
      const int next = std::min(end + step, count);
      if (!continuesRun(chunk, end, next, key, fxBits)) break;
      end = next;
    }
  }
  return end;
}

STAB_INLINE bool isConstant(const float* values, int count) {
  int differs = 0;
  for (int i = 1; i < count; ++i) differs |= values[i] != values[0];
  return !differs;
}

STAB_INLINE std::uint16_t blended(double fx, double fy, int p00, int p10, int p01, int p11) {
  const double value = p00 + static_cast<double>(p10 - p00) * fx +
                       static_cast<double>(p01 - p00) * fy +
                       static_cast<double>(p00 - p10 - p01 + p11) * fx * fy;
  return static_cast<std::uint16_t>(static_cast<int>(value));
}

/// `components` samples from `row` (and the row below it), fractions in [0, 1).
STAB_INLINE void blendConstant(const std::uint16_t* __restrict row,
                               const std::uint16_t* __restrict below, std::uint16_t* __restrict out,
                               int components, double fx, double fy) {
  for (int c = 0; c < components; ++c) {
    out[c] = blended(fx, fy, row[c], row[c + 3], below[c], below[c + 3]);
  }
}

STAB_INLINE void blendVarying(const std::uint16_t* __restrict row,
                              const std::uint16_t* __restrict below, std::uint16_t* __restrict out,
                              int components, double fx, const float* __restrict fy) {
  for (int c = 0; c < components; ++c) {
    out[c] = blended(fx, fy[c], row[c], row[c + 3], below[c], below[c + 3]);
  }
}

/// Fetches what the next output row will need below this run: the processor's own look-ahead stops
/// at the end of a page and at every change of row.
STAB_INLINE void prefetchBelow(const SResampleJob& job, const std::uint16_t* below,
                               std::ptrdiff_t stride, int components) {
  const std::uint16_t* end = job.source + SampleOffset(job, 0, job.area.bottom + 1);
  if (end - below < stride + components) return;
  const std::uint16_t* next = below + stride;
  for (int c = 0; c < components; c += 32) __builtin_prefetch(next + c);
}

STAB_INLINE void blendRun(const SResampleJob& job, int x, int y, int from, int count,
                          SChunk& chunk) {
  const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(job.pixelsPerLine) * 3;
  const std::uint16_t* row = job.source + (static_cast<std::ptrdiff_t>(chunk.key[from]) + x) * 3;
  std::uint16_t* out = OutputAt(job, x, y);
  const int components = count * 3;
  const float fx = std::bit_cast<float>(chunk.fxBits[from]);
  const float* fy = chunk.fy + from;
  prefetchBelow(job, row + stride, stride, components);
  if (isConstant(fy, count)) {
    if (fx == 0.0F && fy[0] == 0.0F) {
      std::memcpy(out, row, static_cast<std::size_t>(components) * sizeof *out);
    } else {
      blendConstant(row, row + stride, out, components, fx, fy[0]);
    }
    return;
  }
  float* each = chunk.fyOfComponent;
  for (int i = 0; i < count; ++i) each[3 * i] = each[3 * i + 1] = each[3 * i + 2] = fy[i];
  blendVarying(row, row + stride, out, components, fx, each);
}

STAB_INLINE void byPixels(const SResampleJob& job, int x, int y, int count) {
  const float rowX = job.map.rowTermX(y);
  const float rowY = job.map.rowTermY(y);
  for (int i = x; i < x + count; ++i) {
    ResamplePixel(job, i, y, job.map.sourceX(i, rowX), job.map.sourceY(i, rowY));
  }
}

STAB_INLINE void resampleColumns(const SResampleJob& job, int y, int first, int end) {
  SChunk chunk;
  for (int x0 = first; x0 < end; x0 += CHUNK) {
    const int count = std::min(CHUNK, end - x0);
    evaluate(job, y, x0, count, chunk);
    for (int from = 0; from < count;) {
      const int length = runEnd(chunk, from, count) - from;
      const int key = chunk.key[from];
      if (key == KEY_MISSING) {
        FillPixels(job, x0 + from, y, length);
      } else if (key == KEY_EDGE || length < SHORTEST_RUN) {
        byPixels(job, x0 + from, y, length);
      } else {
        blendRun(job, x0 + from, y, from, length, chunk);
      }
      from += length;
    }
  }
}

}  // namespace

void ResampleColumnsSpans(const SResampleJob& job, int y, int first, int end) {
  resampleColumns(job, y, first, end);
}

#if defined(__x86_64__)

__attribute__((target("avx2"))) void ResampleColumnsSpansAvx2(const SResampleJob& job, int y,
                                                              int first, int end) {
  resampleColumns(job, y, first, end);
}

__attribute__((target("avx512f,avx512bw,avx512dq,avx512vl"))) void ResampleColumnsSpansAvx512(
    const SResampleJob& job, int y, int first, int end) {
  resampleColumns(job, y, first, end);
}

#endif
