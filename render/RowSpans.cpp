#include "RowSpans.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace {

/// The source columns of a row: they never decrease.
class CColumns {
 public:
  CColumns(const SRect& area, float rowTerm)
      : first_(area.left), end_(area.right + 1), rowTerm_(rowTerm) {}

  float at(int x) const { return static_cast<float>(x) + rowTerm_; }

  /// The first x of the row whose source column is `column` or lies behind it; the row's end when
  /// there is none.
  int firstFrom(float column) const {
    const double exact = std::ceil(static_cast<double>(column) - rowTerm_);
    int x =
        static_cast<int>(std::clamp(exact, static_cast<double>(first_), static_cast<double>(end_)));
    // The exact difference is within a rounding of the sum.
    while (x > first_ && at(x - 1) >= column) --x;
    while (x < end_ && at(x) < column) ++x;
    return x;
  }

 private:
  int first_;
  int end_;
  float rowTerm_;
};

/// The next power of two above `value`. REQUIRES: value >= 1.
float nextPowerOfTwo(float value) {
  constexpr unsigned EXPONENT = 0x7F800000U;
  return 2.0F * std::bit_cast<float>(std::bit_cast<unsigned>(value) & EXPONENT);
}

}  // namespace

bool FindRowSpans(const SRect& area, float rowTerm, SRowSpans& row) {
  if (!std::isfinite(rowTerm)) return false;
  const CColumns columns(area, rowTerm);
  // Up to a pixel before column 0 still belongs to it: whole parts are found by truncation.
  const float pictureLeft =
      area.left > 0 ? static_cast<float>(area.left) : std::nextafter(-1.0F, 0.0F);
  row.pictureFirst = columns.firstFrom(pictureLeft);
  row.innerFirst = columns.firstFrom(static_cast<float>(std::max(area.left, FIRST_SPAN_COLUMN)));
  row.innerEnd = std::max(columns.firstFrom(static_cast<float>(area.right)), row.innerFirst);
  row.pictureEnd = std::max(columns.firstFrom(static_cast<float>(area.right + 1)), row.innerEnd);
  row.count = 0;
  for (int x = row.innerFirst; x < row.innerEnd;) {
    const float column = columns.at(x);
    const int whole = static_cast<int>(column);
    const int end = std::min(columns.firstFrom(nextPowerOfTwo(column)), row.innerEnd);
    row.spans[static_cast<std::size_t>(row.count++)] = {x, end, whole - x,
                                                        column - static_cast<float>(whole)};
    x = end;
  }
  return true;
}
