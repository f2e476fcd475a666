#include "support/ZoomFractional.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

#include "ZoomLine.h"
#include "support/Kernels.h"
#include "support/TargetClones.h"

namespace {

// Across lines: one output line from `taps` filtered lines.
constexpr int BLOCK = 16;
using BlockValues = float __attribute__((vector_size(BLOCK * sizeof(float))));
using BlockIntegers = int __attribute__((vector_size(BLOCK * sizeof(int))));
using BlockSamples = std::uint16_t __attribute__((vector_size(BLOCK * sizeof(std::uint16_t))));

inline __attribute__((always_inline)) void combineBlock(const float* const* lines,
                                                        const float* weights, int taps, int x,
                                                        std::uint16_t* out) {
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
  std::memcpy(out, &block, sizeof block);
}

STAB_CLONES void combineLines(const float* const* lines, const float* weights, int taps, int count,
                              std::uint16_t* out) {
  int x = 0;
  for (; x + BLOCK <= count; x += BLOCK) combineBlock(lines, weights, taps, x, out + x);
  if (x == count) return;
  std::uint16_t rest[BLOCK];
  combineBlock(lines, weights, taps, x, rest);
  std::copy_n(rest, count - x, out + x);
}

// A source edge that misses a pixel boundary by rounding alone must not reach the pixel beyond it,
// which may be mat.
constexpr double EDGE_ROUNDING = 1e-6;

}  // namespace

struct CZoomFractional::SImpl {
  int pixelsPerLine = 0;
  int linesPerFrame = 0;
  SRectD source;
  SRect target;
  SRect reach;  // the samples that the filter may read
  bool isSetUp = false;
  SZoomAxis horizontal;
  SZoomAxis vertical;
  SZoomBlocks blocks;               // `horizontal` again, where it can be had in blocks
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
  CFilteredLines(const std::uint16_t* frame, int pixelsPerLine, const SZoomAxis& horizontal,
                 const SZoomBlocks& blocks, int taps, int count, int firstColumn, int lastColumn)
      : firstPixel_(frame + static_cast<std::ptrdiff_t>(firstColumn) * ZOOM_COMPONENTS),
        frameStride_(static_cast<std::ptrdiff_t>(pixelsPerLine) * ZOOM_COMPONENTS),
        horizontal_(horizontal),
        blocks_(blocks),
        taps_(taps),
        firstColumn_(firstColumn),
        samplesRead_((lastColumn - firstColumn + 1) * ZOOM_COMPONENTS),
        stride_(static_cast<std::size_t>(count) * ZOOM_COMPONENTS + ZOOM_LINE_PADDING),
        widened_(static_cast<std::size_t>(samplesRead_) + ZOOM_LINE_PADDING),
        filtered_(stride_ * static_cast<std::size_t>(taps)),
        slotLine_(static_cast<std::size_t>(taps), -1) {}

  const float* line(int y) {
    const auto slot = static_cast<std::size_t>(y % taps_);
    float* filtered = filtered_.data() + slot * stride_;
    if (slotLine_[slot] == y) return filtered;
    const std::uint16_t* samples = firstPixel_ + y * frameStride_;
    filterLine(samples, filtered);
    slotLine_[slot] = y;
    return filtered;
  }

 private:
  void filterLine(const std::uint16_t* samples, float* filtered) {
#if defined(STAB_ZOOM_AVX512)
    if (!blocks_.first.empty()) {
      FilterZoomLineAvx512(samples, blocks_, filtered);
      return;
    }
#endif
    for (int i = 0; i < samplesRead_; ++i) widened_[i] = samples[i];
    FilterZoomLine(widened_.data(), horizontal_, firstColumn_, filtered);
  }

  const std::uint16_t* firstPixel_;
  std::ptrdiff_t frameStride_;
  const SZoomAxis& horizontal_;
  [[maybe_unused]] const SZoomBlocks& blocks_;  // by machines without vectors of their size
  int taps_;
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
  blocks = SZoomBlocks();
  const SKernel* const kernel = TheKernel();
  if (kernel && std::string_view(kernel->name) == "avx512")
    blocks = FindZoomBlocks(horizontal, reach.left, reach.right);
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

void CZoomFractional::SImpl::convertRows(int first, int last, const std::uint16_t* input,
                                         std::uint16_t* output, std::uint16_t* kept) const {
  const int count = target.right - target.left + 1;
  const int taps = vertical.taps;
  CFilteredLines filtered(input, pixelsPerLine, horizontal, blocks, taps, count, reach.left,
                          reach.right);
  std::vector<const float*> lines(static_cast<std::size_t>(taps));
  for (int y = std::max(first, target.top); y <= std::min(last, target.bottom); ++y) {
    const std::size_t row = static_cast<std::size_t>(y - target.top) * taps;
    for (int t = 0; t < taps; ++t) lines[t] = filtered.line(vertical.samples[row + t]);
    const std::size_t at =
        (static_cast<std::size_t>(y) * pixelsPerLine + target.left) * ZOOM_COMPONENTS;
    combineLines(lines.data(), vertical.weights.data() + row, taps, count * ZOOM_COMPONENTS,
                 output + at);
    if (kept) std::copy_n(output + at, count * ZOOM_COMPONENTS, kept + at);
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
