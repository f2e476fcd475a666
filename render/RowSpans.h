#pragma once

#include <array>

#include "support/Rect.h"

/// How the source columns of one output row lie, for maps that do not scale along the row
/// (SWarpMap::wx[1] is 1). The source column of x is the single-precision sum of x and a term that
/// is the same for the whole row, so between two powers of two its fraction is one number: adding 1
/// to a float does not change its fraction until the sum needs another exponent.

/// Columns [first, end) whose source column is x + shift, plus the same fraction for all.
struct SColumnSpan {
  int first;
  int end;
  int shift;       ///< never less than that of the span before: rounding gets coarser along a row
  float fraction;  ///< in [0, 1), of at most 23 bits
};

/// One row, from the area's left to its right:
///   [area.left, pictureFirst)     no source column: fill
///   [pictureFirst, innerFirst)    left edge, or so near to column 0 that fractions are finest
///   [innerFirst, innerEnd)        `spans`: a source column with a neighbour at its right
///   [innerEnd, pictureEnd)        right edge
///   [pictureEnd, area.right + 1)  fill
/// Any of them may be empty.
struct SRowSpans {
  static constexpr int MOST_SPANS = 32;

  int pictureFirst;
  int innerFirst;
  int innerEnd;
  int pictureEnd;
  int count;
  std::array<SColumnSpan, MOST_SPANS> spans;
};

/// Source columns below this are left to the edge: a fraction there may have more than 21 bits.
constexpr int FIRST_SPAN_COLUMN = 4;

/// False when `rowTerm` is no finite number.
bool FindRowSpans(const SRect& area, float rowTerm, SRowSpans& row);
