#include "support/ZoomFractional.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <vector>

#include "support/TargetClones.h"

namespace {

constexpr int COMPONENTS = 3;

// Cubic of Mitchell & Netravali (1988) with B = 0, C = 1/2; 0 from a distance of 2 on.
double cubic(double distance) {
  const double x = std::abs(distance);
  if (x < 1.0) return (1.5 * x - 2.5) * x * x + 1.0;
  if (x < 2.0) return ((-0.5 * x + 2.5) * x - 4.0) * x + 2.0;
  return 0.0;
}

// The filter of one direction: for every target sample as many taps as the widest needs, each a
// source sample within the bounds and its weight.
struct SAxis {
  int taps = 0;
  std::vector<int> samples;
  std::vector<float> weights;

  // Source edges [from, to) onto `count` target samples; taps stay within lower..upper.
  void setUp(double from, double to, int count, int lower, int upper) {
    const double scale = (to - from) / count;
    const double width = std::max(scale, 1.0);  // reducing: the filter covers what it averages
    taps = static_cast<int>(std::ceil(4.0 * width)) + (width > 1.0 ? 1 : 0);
    samples.assign(static_cast<std::size_t>(count) * taps, 0);
    weights.assign(static_cast<std::size_t>(count) * taps, 0.0F);
    std::vector<double> exact(static_cast<std::size_t>(taps));
    for (int i = 0; i < count; ++i) {
      const double centre = from + (i + 0.5) * scale - 0.5;
      const int start = static_cast<int>(std::floor(centre - 2.0 * width)) + 1;
      double sum = 0.0;
      int last = start;
      for (int t = 0; t < taps; ++t) {
        const double distance = (start + t - centre) / width;
        if (distance < 2.0) last = start + t;
        exact[t] = cubic(distance);
        sum += exact[t];
      }
      for (int t = 0; t < taps; ++t) {
        const std::size_t at = static_cast<std::size_t>(i) * taps + t;
        // A tap beyond the filter's end must not widen the range that the result is limited to.
        samples[at] = std::clamp(std::min(start + t, last), lower, upper);
        weights[at] = static_cast<float>(exact[t] / sum);
      }
    }
  }
};

// Three components and one more, which the next pixel overwrites: four lanes fill a vector. Written
// with the compiler's own vectors: left to itself it spreads the lanes over scalars.
constexpr int LANES = 4;
using FourValues = float __attribute__((vector_size(LANES * sizeof(float))));

inline FourValues fourFrom(const float* values) {
  FourValues four;
  std::memcpy(&four, values, sizeof four);
  return four;
}

// `source` holds one value past the last pixel read, `target` has room for one past the last.
// Each value is limited to the range of the samples it was made of.
void filterLine(const float* source, const SAxis& axis, int count, int origin, float* target) {
  const int* sample = axis.samples.data();
  const float* weight = axis.weights.data();
  const int taps = axis.taps;
  for (int i = 0; i < count; ++i) {
    FourValues low =
        fourFrom(source + static_cast<std::ptrdiff_t>(sample[0] - origin) * COMPONENTS);
    FourValues high = low;
    FourValues sum = low * weight[0];
    for (int t = 1; t < taps; ++t) {
      const FourValues next =
          fourFrom(source + static_cast<std::ptrdiff_t>(sample[t] - origin) * COMPONENTS);
      sum += next * weight[t];
      low = next < low ? next : low;
      high = next > high ? next : high;
    }
    const FourValues floored = sum < low ? low : sum;
    const FourValues limited = floored > high ? high : floored;
    std::memcpy(target + static_cast<std::ptrdiff_t>(i) * COMPONENTS, &limited, sizeof limited);
    sample += taps;
    weight += taps;
  }
}

// The same across lines: one output line from `taps` filtered lines.
constexpr int BLOCK = 16;
using BlockValues = float __attribute__((vector_size(BLOCK * sizeof(float))));
using BlockIntegers = int __attribute__((vector_size(BLOCK * sizeof(int))));
using BlockSamples = std::uint16_t __attribute__((vector_size(BLOCK * sizeof(std::uint16_t))));

STAB_CLONES void combineLines(const float* const* lines, const float* weights, int taps, int count,
                              std::uint16_t* out) {
  for (int x = 0; x < count; x += BLOCK) {
    BlockValues low;
    std::memcpy(&low, lines[0] + x, sizeof low);
    BlockValues high = low;
    BlockValues sum = low * weights[0];
    for (int t = 1; t < taps; ++t) {
      BlockValues next;
      std::memcpy(&next, lines[t] + x, sizeof next);
      sum += next * weights[t];
      low = next < low ? next : low;
      high = next > high ? next : high;
    }
    const BlockValues floored = sum < low ? low : sum;
    const BlockValues limited = floored > high ? high : floored;
    const auto rounded = __builtin_convertvector(limited + 0.5F, BlockIntegers);
    const auto block = __builtin_convertvector(rounded, BlockSamples);
    std::memcpy(out + x, &block,
                static_cast<std::size_t>(std::min(BLOCK, count - x)) * sizeof *out);
  }
}

// A source edge that misses a pixel boundary by rounding alone must not reach the pixel beyond it,
// which may be mat.
constexpr double EDGE_ROUNDING = 1e-6;

constexpr int LINE_PADDING = 32;  // a block of combineLines may read this far past a line's end

}  // namespace

struct CZoomFractional::SImpl {
  int pixelsPerLine = 0;
  int linesPerFrame = 0;
  SRectD source;
  SRect target;
  SRect reach;  // the samples that the filter may read
  bool isSetUp = false;
  SAxis horizontal;
  SAxis vertical;
  std::vector<std::uint16_t> copy;  // the lines read, when they are overwritten meanwhile; recycled

  bool accepts(const SRectD& from, const SRect& to) const;
  void setUp(const SRectD& newSource, const SRect& newTarget);
  const std::uint16_t* copyOf(const std::uint16_t* frame);
  void convertRows(int first, int last, const std::uint16_t* input, std::uint16_t* output,
                   std::uint16_t* kept) const;
};

namespace {

/// The source lines that one walk down the target has filtered horizontally. A target line needs at
/// most `taps` neighbouring ones, so as many slots are enough.
class CFilteredLines {
 public:
  CFilteredLines(const std::uint16_t* frame, int pixelsPerLine, const SAxis& horizontal, int taps,
                 int count, int firstColumn, int lastColumn)
      : firstPixel_(frame + static_cast<std::ptrdiff_t>(firstColumn) * COMPONENTS),
        frameStride_(static_cast<std::ptrdiff_t>(pixelsPerLine) * COMPONENTS),
        horizontal_(horizontal),
        taps_(taps),
        count_(count),
        firstColumn_(firstColumn),
        samplesRead_((lastColumn - firstColumn + 1) * COMPONENTS),
        stride_(static_cast<std::size_t>(count) * COMPONENTS + LINE_PADDING),
        widened_(static_cast<std::size_t>(samplesRead_) + LINE_PADDING),
        filtered_(stride_ * static_cast<std::size_t>(taps)),
        slotLine_(static_cast<std::size_t>(taps), -1) {}

  const float* line(int y) {
    const auto slot = static_cast<std::size_t>(y % taps_);
    float* filtered = filtered_.data() + slot * stride_;
    if (slotLine_[slot] == y) return filtered;
    const std::uint16_t* samples = firstPixel_ + y * frameStride_;
    for (int i = 0; i < samplesRead_; ++i) widened_[i] = samples[i];
    filterLine(widened_.data(), horizontal_, count_, firstColumn_, filtered);
    slotLine_[slot] = y;
    return filtered;
  }

 private:
  const std::uint16_t* firstPixel_;
  std::ptrdiff_t frameStride_;
  const SAxis& horizontal_;
  int taps_;
  int count_;
  int firstColumn_;
  int samplesRead_;
  std::size_t stride_;
  std::vector<float> widened_;  // one source line
  std::vector<float> filtered_;
  std::vector<int> slotLine_;  // the source line in each slot, or -1
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
  horizontal.setUp(source.left, source.right, target.right - target.left + 1, reach.left,
                   reach.right);
  vertical.setUp(source.top, source.bottom, target.bottom - target.top + 1, reach.top,
                 reach.bottom);
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
  const std::size_t stride = static_cast<std::size_t>(pixelsPerLine) * COMPONENTS;
  const std::size_t from = stride * static_cast<std::size_t>(reach.top);
  const std::size_t end = stride * static_cast<std::size_t>(reach.bottom + 1);
  copy.resize(stride * static_cast<std::size_t>(linesPerFrame));
  std::copy(frame + from, frame + end, copy.begin() + static_cast<std::ptrdiff_t>(from));
  return copy.data();
}

void CZoomFractional::SImpl::convertRows(int first, int last, const std::uint16_t* input,
                                         std::uint16_t* output, std::uint16_t* kept) const {
  const int count = target.right - target.left + 1;
  const int taps = vertical.taps;
  CFilteredLines filtered(input, pixelsPerLine, horizontal, taps, count, reach.left, reach.right);
  std::vector<const float*> lines(static_cast<std::size_t>(taps));
  for (int y = std::max(first, target.top); y <= std::min(last, target.bottom); ++y) {
    const std::size_t row = static_cast<std::size_t>(y - target.top) * taps;
    for (int t = 0; t < taps; ++t) lines[t] = filtered.line(vertical.samples[row + t]);
    const std::size_t at = (static_cast<std::size_t>(y) * pixelsPerLine + target.left) * COMPONENTS;
    combineLines(lines.data(), vertical.weights.data() + row, taps, count * COMPONENTS,
                 output + at);
    if (kept) std::copy_n(output + at, count * COMPONENTS, kept + at);
  }
}

void CZoomFractional::convert(const SRectD& source, const SRect& target, const std::uint16_t* input,
                              std::uint16_t* output) {
  if (!prepare(source, target)) return;
  const std::uint16_t* frame = input == output ? impl_->copyOf(input) : input;
  impl_->convertRows(target.top, target.bottom, frame, output, nullptr);
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
                                  std::uint16_t* output, std::uint16_t* kept) const {
  if (impl_->isSetUp) impl_->convertRows(firstRow, lastRow, input, output, kept);
}
