#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "CornerWeights.h"
#include "RowSpans.h"
#include "ScalarFormula.h"

// Rows of maps that do not scale (SWarpMap::wx[1] is 1), in whole numbers: the text of every
// instruction set's kernel. `LANES` is one of the Lanes*.h; `GENERAL(job, y, first, end)` resamples
// the columns that are none of its business. All of it is inlined into one function whose
// instruction set is that of LANES.
//
// A row is done from left to right in whole vectors. The last vector of a span may reach into the
// columns behind it, which are then written again, rightly; it never reaches past the row's last
// span. It reads with its own span's shift, which is at most that of the spans behind it: so it
// reads nothing that they would not read.

#define STAB_INLINE inline __attribute__((always_inline))

namespace {

/// The row that the next output row will need first: it comes from memory while this one is
/// blended. The processor's own look-ahead stops at the end of every page and of every run.
STAB_INLINE void FetchNextRow(const std::uint16_t* below, std::ptrdiff_t stride) {
  __builtin_prefetch(reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(below) +
                                                   static_cast<std::uintptr_t>(stride) * 2));
}

/// One run of pixels whose source pixels lie side by side. Counts are of samples.
struct SRun {
  const std::uint16_t* row;    ///< source, upper row
  const std::uint16_t* below;  ///< source, lower row
  std::uint16_t* output;
  int count;
  int room;               ///< that may be written, at least `count` and a vector
  std::ptrdiff_t stride;  ///< of a row
};

template <typename LANES, bool THREE_PARTS>
struct SWeightVectors {
  using Vector = typename LANES::Vector;
  Vector high[2];
  Vector middle[2];
  Vector low[2];
  Vector highShift;
  Vector middleShift;
  Vector lowShift;

  STAB_INLINE explicit SWeightVectors(const SCornerWeights& weights)
      : highShift(LANES::all(weights.highShift)),
        middleShift(LANES::all(weights.middleShift)),
        lowShift(LANES::all(weights.lowShift)) {
    for (int i = 0; i < 2; ++i) {
      high[i] = LANES::all(weights.high[i]);
      middle[i] = LANES::all(weights.middle[i]);
      low[i] = LANES::all(weights.low[i]);
    }
  }

  STAB_INLINE static Vector weighed(Vector upper, Vector lower, const Vector weights[2]) {
    return LANES::sum(LANES::products(upper, weights[0]), LANES::products(lower, weights[1]));
  }
  STAB_INLINE Vector blended(Vector upper, Vector lower) const {
    Vector rest = weighed(upper, lower, middle);
    if constexpr (THREE_PARTS) {
      rest = LANES::sum(rest, LANES::shifted(weighed(upper, lower, low), lowShift));
    }
    const Vector whole = weighed(upper, lower, high);
    return LANES::shifted(LANES::sum(whole, LANES::shifted(rest, middleShift)), highShift);
  }
};

template <typename LANES, bool THREE_PARTS>
STAB_INLINE void blendRun(const SRun& run, const SCornerWeights& cornerWeights) {
  using Vector = typename LANES::Vector;
  constexpr int N = LANES::COMPONENTS;
  const SWeightVectors<LANES, THREE_PARTS> weights(cornerWeights);
  const auto blend = [&](int c) __attribute__((always_inline)) {
    FetchNextRow(run.below + c, run.stride);
    const Vector own = LANES::samples(run.row + c);
    const Vector next = LANES::samples(run.row + c + 3);
    const Vector ownBelow = LANES::samples(run.below + c);
    const Vector nextBelow = LANES::samples(run.below + c + 3);
    LANES::store(run.output + c,
                 weights.blended(LANES::low(own, next), LANES::low(ownBelow, nextBelow)),
                 weights.blended(LANES::high(own, next), LANES::high(ownBelow, nextBelow)));
  };
  int c = 0;
  for (; c + N <= run.count; c += N) blend(c);
  if (c < run.count) blend(c < run.room - N ? c : run.room - N);
}

/// Weights of columns side by side whose source row is the same.
struct STurnedColumns {
  static constexpr int MOST = 1024;  ///< so that all of it stays in the first-level cache
  static constexpr int SLACK = 64;   ///< behind the last one: whole blocks are evaluated and read
  /// Of the upper and the lower row as a pair of 16 bits; or the fraction in units of 2^-23.
  alignas(64) int weight[MOST + SLACK] = {};
};

/// Which direction is blended first, with weights of 16 bits; the other one follows with 32 bits. A
/// fraction has few enough bits for the first where its position is 256 or more, and for the scalar
/// formula to be exact with the second where its position is 8 or more.
enum class EFirst { rows, columns, neither };
constexpr int FIRST_BITS = 15;
constexpr int FIRST_FROM = 256;
constexpr int SECOND_BITS = 23;
constexpr int SECOND_FROM = 8;

/// Both weights of a fraction, negative: -2^15 has a place in 16 bits, 2^15 has none.
STAB_INLINE int pairOfFirst(float fraction) {
  const int next = static_cast<int>(fraction * -(1 << FIRST_BITS));
  const auto own = static_cast<std::uint32_t>(-(1 << FIRST_BITS) - next);
  return static_cast<int>((own & 0xFFFF) | static_cast<std::uint32_t>(next) << 16);
}

STAB_INLINE int ofSecond(float fraction) {
  return static_cast<int>(fraction * (1 << SECOND_BITS));
}

/// The weights of `count` columns from `first` on, and of some more: what is blended with those is
/// written again, rightly.
template <EFirst FIRST>
STAB_INLINE void evaluate(const SWarpMap map, float rowY, int sourceRow, int first, int count,
                          STurnedColumns& columns) {
  constexpr int STEP = 16;
  const int whole = (count + STEP - 1) / STEP * STEP;
  const float row = static_cast<float>(sourceRow);
  for (int i = 0; i < whole; ++i) {
    const float fraction = map.sourceY(first + i, rowY) - row;
    columns.weight[i] = FIRST == EFirst::rows ? pairOfFirst(fraction) : ofSecond(fraction);
  }
}

/// The end of the columns from `first` on that have the source row of `first`; at most `end`. The
/// source never turns back along a row, so the last column that has it can be searched for.
STAB_INLINE int endOfSourceRow(const SWarpMap map, float rowY, int sourceRow, int first, int end) {
  const float upper = static_cast<float>(sourceRow);
  const float lower = static_cast<float>(sourceRow + 1);
  const auto hasIt = [&](int x) __attribute__((always_inline)) {
    const float y = map.sourceY(x, rowY);
    return y >= upper && y < lower;
  };
  if (hasIt(end - 1)) return end;
  int last = first;
  int behind = end - 1;
  // The division is right to a column or two, unless the turn is tiny.
  const float border = map.wy[1] > 0.0F ? lower : upper;
  const float steps = (border - map.sourceY(first, rowY)) / map.wy[1];
  const float most = static_cast<float>(behind - first);
  const int guess = first + static_cast<int>(steps < most ? steps : most);
  for (int x = guess; x <= guess + 1; ++x) {
    if (x > last && x < behind) (hasIt(x) ? last : behind) = x;
  }
  while (behind - last > 1) {
    const int middle = last + (behind - last) / 2;
    (hasIt(middle) ? last : behind) = middle;
  }
  return behind;
}

/// COMPONENTS pixels of one source row, each with a weight of its own. `spanWeight`: the other
/// direction's, in the form that STurnedColumns::weight has for it.
template <typename LANES, EFirst FIRST>
STAB_INLINE void blendTurned(const std::uint16_t* row, std::ptrdiff_t stride, std::uint16_t* output,
                             const int* weight, int spanWeight) {
  const std::uint16_t* below = row + stride;
  using Vector = typename LANES::Vector;
  const Vector ofSpan = LANES::all(spanWeight);
  const Vector shift = LANES::all(FIRST_BITS);
  for (int v = 0; v < 3; ++v) {
    const int c = v * LANES::COMPONENTS;
    FetchNextRow(below + c, stride);
    const Vector own = LANES::samples(row + c);
    const Vector next = LANES::samples(row + c + 3);
    const Vector ownBelow = LANES::samples(below + c);
    const Vector nextBelow = LANES::samples(below + c + 3);
    Vector low;
    Vector high;
    LANES::deal(weight, v, low, high);
    const auto blended = [&](Vector a, Vector b, Vector dealt) __attribute__((always_inline)) {
      const Vector first = FIRST == EFirst::rows ? dealt : ofSpan;
      const Vector second = FIRST == EFirst::rows ? ofSpan : dealt;
      const Vector minusFrom = LANES::products(a, first);
      const Vector minusTo = LANES::products(b, first);
      const Vector step = LANES::productOver2To23(LANES::difference(minusFrom, minusTo), second);
      return LANES::shifted(LANES::difference(step, minusFrom), shift);
    };
    const Vector a = FIRST == EFirst::rows ? ownBelow : next;
    const Vector b = FIRST == EFirst::rows ? next : ownBelow;
    LANES::store(output + c, blended(LANES::low(own, a), LANES::low(b, nextBelow), low),
                 blended(LANES::high(own, a), LANES::high(b, nextBelow), high));
  }
}

template <typename LANES, auto GENERAL>
struct SIntegerRows {
  static constexpr int N = LANES::COMPONENTS;
  /// A turn that changes the source row more often leaves too little of a block.
  static constexpr float STEEPEST = 0.1F;

  STAB_INLINE static void translatedSpan(const SResampleJob& job, int y, int sourceRow,
                                         const SColumnSpan& span, const SCornerWeights& weights,
                                         int innerEnd) {
    SRun run;
    run.row = job.source + SampleOffset(job, span.first + span.shift, sourceRow);
    run.stride = static_cast<std::ptrdiff_t>(job.pixelsPerLine) * 3;
    run.below = run.row + run.stride;
    run.output = OutputAt(job, span.first, y);
    run.count = (span.end - span.first) * 3;
    run.room = (innerEnd - span.first) * 3;
    using EForm = SCornerWeights::EForm;
    if (weights.form == EForm::copy) {
      std::memcpy(run.output, run.row, static_cast<std::size_t>(run.count) * sizeof *run.output);
    } else if (weights.form == EForm::fine || run.room < N) {
      GENERAL(job, y, span.first, span.end);
    } else if (weights.form == EForm::twoParts) {
      blendRun<LANES, false>(run, weights);
    } else {
      blendRun<LANES, true>(run, weights);
    }
  }

  /// Columns [first, end) of one span and one source row.
  template <EFirst FIRST>
  STAB_INLINE static void turnedRun(const SResampleJob& job, int y, int sourceRow, int first,
                                    int end, const SColumnSpan& span, int innerEnd,
                                    const STurnedColumns& columns) {
    const int count = end - first;
    if (count < N && first + N > innerEnd) {
      GENERAL(job, y, first, end);
      return;
    }
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(job.pixelsPerLine) * 3;
    const std::uint16_t* row = job.source + SampleOffset(job, first + span.shift, sourceRow);
    std::uint16_t* output = OutputAt(job, first, y);
    const int spanWeight =
        FIRST == EFirst::rows ? ofSecond(span.fraction) : pairOfFirst(span.fraction);
    const auto block = [&](int i) __attribute__((always_inline)) {
      blendTurned<LANES, FIRST>(row + i * 3, stride, output + i * 3, columns.weight + i,
                                spanWeight);
    };
    int i = 0;
    for (; i + N <= count; i += N) block(i);
    if (i < count) block(count < N ? 0 : count - N);
  }

  template <EFirst FIRST>
  STAB_INLINE static void turnedColumns(const SResampleJob& job, int y, float rowY, int first,
                                        int end, const SColumnSpan& span, int innerEnd,
                                        STurnedColumns& columns) {
    for (int x = first; x < end;) {
      const int sourceRow = static_cast<int>(job.map.sourceY(x, rowY));
      const int runEnd = endOfSourceRow(job.map, rowY, sourceRow, x, end);
      evaluate<FIRST>(job.map, rowY, sourceRow, x, runEnd - x, columns);
      turnedRun<FIRST>(job, y, sourceRow, x, runEnd, span, innerEnd, columns);
      x = runEnd;
    }
  }

  /// What is blended first in columns [first, end); source rows between two columns' lie between
  /// theirs.
  STAB_INLINE static EFirst firstOf(const SResampleJob& job, float rowY, int first, int end,
                                    const SColumnSpan& span) {
    const float a = job.map.sourceY(first, rowY);
    const float b = job.map.sourceY(end - 1, rowY);
    const float upper = a < b ? a : b;
    const float lower = a < b ? b : a;
    const int top = job.area.top > SECOND_FROM ? job.area.top : SECOND_FROM;
    const bool inside =
        upper >= static_cast<float>(top) && lower < static_cast<float>(job.area.bottom);
    const int column = first + span.shift;
    if (!inside || column < SECOND_FROM) return EFirst::neither;
    if (upper >= static_cast<float>(FIRST_FROM)) return EFirst::rows;
    return column >= FIRST_FROM ? EFirst::columns : EFirst::neither;
  }

  STAB_INLINE static void turnedSpan(const SResampleJob& job, int y, const SColumnSpan& span,
                                     int innerEnd, STurnedColumns& columns) {
    const float rowY = job.map.rowTermY(y);
    for (int first = span.first; first < span.end; first += STurnedColumns::MOST) {
      const int end =
          span.end - first < STurnedColumns::MOST ? span.end : first + STurnedColumns::MOST;
      switch (firstOf(job, rowY, first, end, span)) {
        case EFirst::rows:
          turnedColumns<EFirst::rows>(job, y, rowY, first, end, span, innerEnd, columns);
          break;
        case EFirst::columns:
          turnedColumns<EFirst::columns>(job, y, rowY, first, end, span, innerEnd, columns);
          break;
        case EFirst::neither: GENERAL(job, y, first, end);
      }
    }
  }

  /// What rows after each other have in common.
  struct SState {
    float rowTerm = std::numeric_limits<float>::quiet_NaN();
    bool finite = false;
    SRowSpans row;
    float fractionY = -1.0F;  ///< that `weights` are for
    std::array<SCornerWeights, SRowSpans::MOST_SPANS> weights;
    STurnedColumns columns;
  };

  STAB_INLINE static void translatedSpans(const SResampleJob& job, int y, float sourceY,
                                          SState& state) {
    const int sourceRow = static_cast<int>(sourceY);
    const float fractionY = sourceY - static_cast<float>(sourceRow);
    const bool known = fractionY == state.fractionY;
    state.fractionY = fractionY;
    for (std::size_t i = 0; i < static_cast<std::size_t>(state.row.count); ++i) {
      const SColumnSpan& span = state.row.spans[i];
      if (!known) state.weights[i] = FindCornerWeights(span.fraction, fractionY);
      translatedSpan(job, y, sourceRow, span, state.weights[i], state.row.innerEnd);
    }
  }

  STAB_INLINE static void oneRow(const SResampleJob& job, int y, SState& state) {
    const float rowTerm = job.map.rowTermX(y);
    if (rowTerm != state.rowTerm) {
      state.finite = FindRowSpans(job.area, rowTerm, state.row);
      state.rowTerm = rowTerm;
      state.fractionY = -1.0F;
    }
    const bool turned = job.map.wy[1] != 0.0F;
    const float sourceY = job.map.sourceY(job.area.left, job.map.rowTermY(y));
    const bool betweenRows = sourceY >= 0.0F && sourceY >= static_cast<float>(job.area.top) &&
                             sourceY < static_cast<float>(job.area.bottom);
    if (!state.finite || !(turned || betweenRows)) {
      GENERAL(job, y, job.area.left, job.area.right + 1);
      return;
    }
    const SRowSpans& row = state.row;
    FillPixels(job, job.area.left, y, row.pictureFirst - job.area.left);
    GENERAL(job, y, row.pictureFirst, row.innerFirst);
    if (turned) {
      for (int i = 0; i < row.count; ++i) {
        turnedSpan(job, y, row.spans[static_cast<std::size_t>(i)], row.innerEnd, state.columns);
      }
    } else {
      translatedSpans(job, y, sourceY, state);
    }
    GENERAL(job, y, row.innerEnd, row.pictureEnd);
    FillPixels(job, row.pictureEnd, y, job.area.right + 1 - row.pictureEnd);
  }

  STAB_INLINE static void rows(const SResampleJob& job, int firstRow, int lastRow) {
    const bool ours = job.map.wx[1] == 1.0F && std::fabs(job.map.wy[1]) <= STEEPEST;
    SState state;
    for (int y = firstRow; y <= lastRow; ++y) {
      if (ours) {
        oneRow(job, y, state);
      } else {
        GENERAL(job, y, job.area.left, job.area.right + 1);
      }
    }
  }
};

}  // namespace
