#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// The two halves of CZoomFractional's filter, as its kernels (ZoomKernel.h) are given them.

constexpr int ZOOM_COMPONENTS = 3;
constexpr int ZOOM_LINE_PADDING = 32;  ///< values behind a line that may be read and written
constexpr int ZOOM_TAPS = 4;           ///< of a filter that enlarges

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
  std::vector<int> first;            ///< of a block's window; empty: there are no blocks
  std::vector<std::uint8_t> sample;  ///< in the window, for each block, tap and value
  std::vector<float> weight;         ///< likewise
};

/// For lines that begin at `firstColumn` and end with `lastColumn`. No blocks where the filter is
/// wider than they are, or the line shorter.
SZoomBlocks FindZoomBlocks(const SZoomAxis& axis, int firstColumn, int lastColumn);

/// How a line of samples becomes one of filtered values.
struct SZoomLineFilter {
  SZoomAxis axis;
  SZoomBlocks blocks;  ///< `axis` again; empty where no kernel asks for them
  int firstColumn = 0;
  int lastColumn = 0;
  std::ptrdiff_t stride = 0;      ///< samples from one line to the next
  std::size_t valuesPerLine = 0;  ///< that come out

  std::size_t samplesRead() const {
    return static_cast<std::size_t>(lastColumn + 1 - firstColumn) * ZOOM_COMPONENTS;
  }
};
