#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "ZoomKernel.h"

// Rows from filtered lines: the text of every instruction set's kernel. LANES is one of theirs: a
// Vector of SIZE values, and what is done with it: values, all, product, sum, lesser, greater,
// cutOff, store. All of it is inlined into one function whose instruction set is that of LANES.

#define STAB_ZOOM_INLINE inline __attribute__((always_inline))

namespace {

using ZoomPlaces = std::array<std::uint16_t*, SZoomRows::MOST>;

template <class LANES, int ROWS>
STAB_ZOOM_INLINE void combineBlock(const SZoomRows& rows, std::ptrdiff_t x,
                                   const ZoomPlaces& output) {
  using Vector = typename LANES::Vector;
  Vector value[ROWS + ZOOM_TAPS - 1];
  for (int i = 0; i < ROWS + ZOOM_TAPS - 1; ++i)
    value[i] = LANES::values(rows.lines[static_cast<std::size_t>(i)] + x);
  // Of neighbours: two of them are a row's range, and rows share them.
  static_assert(ZOOM_TAPS == 4);
  Vector low[ROWS + 2];
  Vector high[ROWS + 2];
  for (int i = 0; i < ROWS + 2; ++i) {
    low[i] = LANES::lesser(value[i], value[i + 1]);
    high[i] = LANES::greater(value[i], value[i + 1]);
  }
  for (int r = 0; r < ROWS; ++r) {
    const auto row = static_cast<std::size_t>(r);
    Vector sum = LANES::product(value[r], LANES::all(rows.weights[row][0]));
    for (int t = 1; t < ZOOM_TAPS; ++t) {
      const float weight = rows.weights[row][static_cast<std::size_t>(t)];
      sum = LANES::sum(sum, LANES::product(value[r + t], LANES::all(weight)));
    }
    const Vector floored = LANES::greater(sum, LANES::lesser(low[r], low[r + 2]));
    const Vector limited = LANES::lesser(floored, LANES::greater(high[r], high[r + 2]));
    LANES::store(LANES::cutOff(LANES::sum(limited, LANES::all(0.5F))), output[row]);  // rounded
  }
}

template <class LANES, int ROWS>
STAB_ZOOM_INLINE void combineRowsOf(const SZoomRows& rows) {
  ZoomPlaces output = rows.output;
  int x = 0;
  for (; x + LANES::SIZE <= rows.count; x += LANES::SIZE) {
    combineBlock<LANES, ROWS>(rows, x, output);
    for (std::size_t r = 0; r < ROWS; ++r) output[r] += LANES::SIZE;
  }
  if (x == rows.count) return;
  std::uint16_t rest[SZoomRows::MOST][LANES::SIZE];
  combineBlock<LANES, ROWS>(rows, x, {rest[0], rest[1], rest[2], rest[3]});
  for (std::size_t r = 0; r < ROWS; ++r) std::copy_n(rest[r], rows.count - x, output[r]);
}

template <class LANES>
STAB_ZOOM_INLINE void combineRowsBy(const SZoomRows& rows) {
  if (rows.rows == SZoomRows::MOST)
    combineRowsOf<LANES, SZoomRows::MOST>(rows);
  else
    combineRowsOf<LANES, 1>(rows);
}

}  // namespace
