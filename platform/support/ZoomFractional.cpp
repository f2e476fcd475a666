#include "support/ZoomFractional.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "ZoomKernel.h"

namespace {

// A source edge that misses a pixel boundary by rounding alone must not reach the pixel beyond it,
// which may be mat.
constexpr double EDGE_ROUNDING = 1e-6;

}  // namespace

static_assert(CZoomFractional::MOST_LINES == SZoomKernel::MOST_LINES);

struct CZoomFractional::SImpl {
  int pixelsPerLine = 0;
  int linesPerFrame = 0;
  SRectD source;
  SRect target;
  SRect reach;  // the samples that the filter may read
  bool isSetUp = false;
  const SZoomKernel& kernel = TheZoomKernel();
  SZoomLineFilter horizontal;
  SZoomAxis vertical;
  std::vector<std::uint16_t> copy;  // the lines read, when they are overwritten meanwhile; recycled

  bool accepts(const SRectD& from, const SRect& to) const;
  void setUp(const SRectD& newSource, const SRect& newTarget);
  const std::uint16_t* copyOf(const std::uint16_t* frame);
  void convertRows(int first, int last, const LinesFunction& input, std::uint16_t* output) const;
};

namespace {

/// The source lines that one walk down the target has filtered horizontally: as many of the last
/// ones as it has slots for.
class CFilteredLines {
 public:
  using LinesFunction = CZoomFractional::LinesFunction;

  /// `first`: the first line that will be asked for.
  CFilteredLines(const LinesFunction& lines, const SZoomKernel& kernel,
                 const SZoomLineFilter& filter, int slots, int first)
      : lines_(lines),
        kernel_(kernel),
        filter_(filter),
        slots_(slots),
        next_(first),
        stride_(filter.valuesPerLine + ZOOM_LINE_PADDING),
        filtered_(stride_ * static_cast<std::size_t>(slots)) {}

  void filterUpTo(int last) {
    while (next_ <= last) {
      const int count = std::min(CZoomFractional::MOST_LINES, last + 1 - next_);
      std::array<float*, CZoomFractional::MOST_LINES> targets{};
      for (int i = 0; i < count; ++i) targets[static_cast<std::size_t>(i)] = slot(next_ + i);
      const std::uint16_t* samples = lines_(next_, count) + filter_.firstColumn * ZOOM_COMPONENTS;
      kernel_.filterLines(samples, count, filter_, scratch_, targets.data());
      next_ += count;
    }
  }
  const float* line(int y) { return slot(y); }

 private:
  float* slot(int y) { return filtered_.data() + static_cast<std::size_t>(y % slots_) * stride_; }

  const LinesFunction& lines_;
  const SZoomKernel& kernel_;
  const SZoomLineFilter& filter_;
  int slots_;
  int next_;
  std::size_t stride_;
  std::vector<float> filtered_;
  std::vector<float> scratch_;
};

/// One walk down some rows of the target.
class CZoomWalk {
 public:
  CZoomWalk(const SZoomKernel& kernel, const SZoomAxis& vertical, CFilteredLines& lines, int count,
            std::ptrdiff_t stride)
      : kernel_(kernel), vertical_(vertical), lines_(lines), count_(count), stride_(stride) {}

  /// Makes the first ones of the rows [first, last], counted from the target's top, and returns how
  /// many. `output`: where row `first` begins.
  int makeRows(int first, int last, std::uint16_t* output) {
    if (vertical_.taps != ZOOM_TAPS) {
      makeWideRow(first, output);
      return 1;
    }
    const int rows =
        last - first + 1 >= SZoomRows::MOST && areStaggered(first) ? SZoomRows::MOST : 1;
    makeStaggered(first, rows, output);
    return rows;
  }

 private:
  const int* samples(int row) const {
    return vertical_.samples.data() + static_cast<std::ptrdiff_t>(row) * vertical_.taps;
  }
  const float* weights(int row) const {
    return vertical_.weights.data() + static_cast<std::ptrdiff_t>(row) * vertical_.taps;
  }

  /// The next rows begin one line further down each.
  bool areStaggered(int first) const {
    for (int r = 1; r < SZoomRows::MOST; ++r)
      for (int t = 1; t < ZOOM_TAPS; ++t)
        if (samples(first + r)[t - 1] != samples(first + r - 1)[t]) return false;
    return true;
  }

  void makeStaggered(int first, int count, std::uint16_t* output) {
    SZoomRows rows;
    rows.rows = count;
    rows.count = count_;
    lines_.filterUpTo(samples(first + count - 1)[ZOOM_TAPS - 1]);
    for (int t = 0; t < ZOOM_TAPS; ++t)
      rows.lines[static_cast<std::size_t>(t)] = lines_.line(samples(first)[t]);
    for (int r = 0; r < count; ++r) {
      const auto row = static_cast<std::size_t>(r);
      rows.lines[row + ZOOM_TAPS - 1] = lines_.line(samples(first + r)[ZOOM_TAPS - 1]);
      std::copy_n(weights(first + r), ZOOM_TAPS, rows.weights[row].begin());
      rows.output[row] = output + r * stride_;
    }
    kernel_.combineRows(rows);
  }

  void makeWideRow(int row, std::uint16_t* output) {
    const int taps = vertical_.taps;
    lines_.filterUpTo(samples(row)[taps - 1]);
    wide_.clear();
    for (int t = 0; t < taps; ++t) wide_.push_back(lines_.line(samples(row)[t]));
    CombineZoomLines(wide_.data(), weights(row), taps, count_, output);
  }

  const SZoomKernel& kernel_;
  const SZoomAxis& vertical_;
  CFilteredLines& lines_;
  int count_;
  std::ptrdiff_t stride_;
  std::vector<const float*> wide_;
};

}  // namespace

void CZoomFractional::SImpl::setUp(const SRectD& newSource, const SRect& newTarget) {
  if (isSetUp && newSource == source && newTarget == target) return;
  source = newSource;
  target = newTarget;
  const auto lower = [](double edge, int bound) {
    return std::max(0, std::min(static_cast<int>(std::floor(edge + EDGE_ROUNDING)), bound));
  };
  const auto upper = [](double edge, int bound, int end) {
    return std::min(end - 1,
                    std::max(static_cast<int>(std::ceil(edge - EDGE_ROUNDING)) - 1, bound));
  };
  reach = {lower(source.left, target.left), lower(source.top, target.top),
           upper(source.right, target.right, pixelsPerLine),
           upper(source.bottom, target.bottom, linesPerFrame)};
  const int columns = target.right - target.left + 1;
  horizontal = SZoomLineFilter();
  horizontal.axis.setUp(source.left, source.right, columns, reach.left, reach.right);
  horizontal.firstColumn = reach.left;
  horizontal.lastColumn = reach.right;
  horizontal.stride = static_cast<std::ptrdiff_t>(pixelsPerLine) * ZOOM_COMPONENTS;
  horizontal.valuesPerLine = static_cast<std::size_t>(columns) * ZOOM_COMPONENTS;
  vertical.setUp(source.top, source.bottom, target.bottom - target.top + 1, reach.top,
                 reach.bottom);
  if (kernel.usesBlocks)
    horizontal.blocks = FindZoomBlocks(horizontal.axis, reach.left, reach.right);
  isSetUp = true;
}

CZoomFractional::CZoomFractional(int /*quality*/) : impl_(std::make_unique<SImpl>()) {}

CZoomFractional::~CZoomFractional() = default;

void CZoomFractional::initialize(const CImageFormat& format, int /*tapsX*/, int /*tapsY*/,
                                 int /*phasesX*/, int /*phasesY*/, int /*weightScale*/) {
  impl_->pixelsPerLine = format.getPixelsPerLine();
  impl_->linesPerFrame = format.getLinesPerFrame();
  impl_->isSetUp = false;
}

bool CZoomFractional::SImpl::accepts(const SRectD& from, const SRect& to) const {
  const bool isInFrame = to.left >= 0 && to.top >= 0 && to.left <= to.right &&
                         to.top <= to.bottom && to.right < pixelsPerLine &&
                         to.bottom < linesPerFrame;
  const bool isNearFrame = from.left >= -pixelsPerLine && from.right <= 2.0 * pixelsPerLine &&
                           from.top >= -linesPerFrame && from.bottom <= 2.0 * linesPerFrame;
  return isInFrame && isNearFrame && from.left < from.right && from.top < from.bottom;
}

// The lines within reach, kept from being overwritten while they are still read.
const std::uint16_t* CZoomFractional::SImpl::copyOf(const std::uint16_t* frame) {
  const std::size_t stride = static_cast<std::size_t>(pixelsPerLine) * ZOOM_COMPONENTS;
  const std::size_t from = stride * static_cast<std::size_t>(reach.top);
  const std::size_t end = stride * static_cast<std::size_t>(reach.bottom + 1);
  copy.resize(stride * static_cast<std::size_t>(linesPerFrame));
  std::copy(frame + from, frame + end, copy.begin() + static_cast<std::ptrdiff_t>(from));
  return copy.data();
}

void CZoomFractional::SImpl::convertRows(int first, int last, const LinesFunction& input,
                                         std::uint16_t* output) const {
  first = std::max(first, target.top) - target.top;
  last = std::min(last, target.bottom) - target.top;
  if (last < first) return;
  const int taps = vertical.taps;
  const int count = static_cast<int>(horizontal.valuesPerLine);
  CFilteredLines lines(input, kernel, horizontal, taps + SZoomRows::MOST - 1,
                       vertical.samples[static_cast<std::size_t>(first) * taps]);
  CZoomWalk walk(kernel, vertical, lines, count, horizontal.stride);
  for (int row = first; row <= last;) {
    const std::ptrdiff_t at = (target.top + row) * horizontal.stride +
                              static_cast<std::ptrdiff_t>(target.left) * ZOOM_COMPONENTS;
    row += walk.makeRows(row, last, output + at);
  }
}

void CZoomFractional::convert(const SRectD& source, const SRect& target, const std::uint16_t* input,
                              std::uint16_t* output) {
  if (!prepare(source, target)) return;
  convertRows(target.top, target.bottom, input == output ? impl_->copyOf(input) : input, output);
}

bool CZoomFractional::prepare(const SRectD& source, const SRect& target) {
  if (!impl_->accepts(source, target)) {
    impl_->isSetUp = false;
    return false;
  }
  impl_->setUp(source, target);
  return true;
}

void CZoomFractional::convertRows(int firstRow, int lastRow, const std::uint16_t* input,
                                  std::uint16_t* output) const {
  const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(impl_->pixelsPerLine) * ZOOM_COMPONENTS;
  const auto lines = [=](int first, int /*count*/) { return input + first * stride; };
  convertRows(firstRow, lastRow, LinesFunction(lines), output);
}

void CZoomFractional::convertRows(int firstRow, int lastRow, const LinesFunction& lines,
                                  std::uint16_t* output) const {
  if (impl_->isSetUp) impl_->convertRows(firstRow, lastRow, lines, output);
}
