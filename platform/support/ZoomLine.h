#pragma once

#include <cstdint>
#include <vector>

/// The horizontal half of CZoomFractional: one line of samples becomes one line of filtered values.

constexpr int ZOOM_COMPONENTS = 3;
constexpr int ZOOM_LINE_PADDING = 32;  ///< values behind a line that may be read and written

/// The filter of one direction: for every target sample as many taps as the widest needs, each a
/// source sample within the bounds and its weight.
struct SZoomAxis {
  int taps = 0;
  std::vector<int> samples;
  std::vector<float> weights;

  /// Source edges [from, to) onto `count` target samples; taps stay within lower..upper.
  void setUp(double from, double to, int count, int lower, int upper);
};

/// The same filter in blocks of target values: each is made of samples that lie so near to each
/// other that two vectors hold them all, which is so wherever a picture is enlarged.
struct SZoomBlocks {
  static constexpr int SIZE = 16;    ///< values of a block
  static constexpr int WINDOW = 32;  ///< samples that it is made of, side by side
  static constexpr int TAPS = 4;
  std::vector<int> first;            ///< of a block's window; empty: there are no blocks
  std::vector<std::uint8_t> sample;  ///< in the window, for each block, tap and value
  std::vector<float> weight;         ///< likewise
};

/// For lines that begin at `firstColumn` and end with `lastColumn`. No blocks where the filter is
/// wider than they are, or the line shorter.
SZoomBlocks FindZoomBlocks(const SZoomAxis& axis, int firstColumn, int lastColumn);

/// Each value is limited to the range of the samples it was made of. `source` begins at column
/// `origin` and is padded, and so is `target`.
void FilterZoomLine(const float* source, const SZoomAxis& axis, int origin, float* target);
// The compiler of the fuzzers, clang, knows no instruction set for a part of a file.
#if defined(__x86_64__) && !defined(__clang__)
#define STAB_ZOOM_AVX512
/// The same bits from blocks. `source` needs no padding. REQUIRES: the instruction set is there.
void FilterZoomLineAvx512(const std::uint16_t* source, const SZoomBlocks& blocks, float* target);
#endif
