#include "support/ZoomFractional.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

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

// Three components and one more, which the next pixel overwrites: four lanes fill a vector.
constexpr int LANES = 4;

// `source` holds one value past the last pixel read, `target` has room for one past the last.
// Each value is limited to the range of the samples it was made of.
void filterLine(const float* source, const SAxis& axis, int count, int origin, float* target) {
  const int* sample = axis.samples.data();
  const float* weight = axis.weights.data();
  for (int i = 0; i < count; ++i) {
    const float* first = source + static_cast<std::ptrdiff_t>(sample[0] - origin) * COMPONENTS;
    float sum[LANES];
    float low[LANES];
    float high[LANES];
    for (int l = 0; l < LANES; ++l) {
      sum[l] = first[l] * weight[0];
      low[l] = first[l];
      high[l] = first[l];
    }
    for (int t = 1; t < axis.taps; ++t) {
      const float* next = source + static_cast<std::ptrdiff_t>(sample[t] - origin) * COMPONENTS;
      for (int l = 0; l < LANES; ++l) {
        sum[l] += next[l] * weight[t];
        low[l] = next[l] < low[l] ? next[l] : low[l];
        high[l] = next[l] > high[l] ? next[l] : high[l];
      }
    }
    for (int l = 0; l < LANES; ++l) {
      const float floored = sum[l] < low[l] ? low[l] : sum[l];
      target[i * COMPONENTS + l] = floored > high[l] ? high[l] : floored;
    }
    sample += axis.taps;
    weight += axis.taps;
  }
}

// The same across lines: one output line from `taps` filtered lines.
void combineLines(const float* const* lines, const float* weights, int taps, int count,
                  std::uint16_t* out) {
  constexpr int BLOCK = 32;
  for (int x = 0; x < count; x += BLOCK) {
    float sum[BLOCK];
    float low[BLOCK];
    float high[BLOCK];
    for (int l = 0; l < BLOCK; ++l) {
      low[l] = high[l] = lines[0][x + l];
      sum[l] = low[l] * weights[0];
    }
    for (int t = 1; t < taps; ++t) {
      const float* line = lines[t] + x;
      const float weight = weights[t];
      for (int l = 0; l < BLOCK; ++l) {
        sum[l] += line[l] * weight;
        low[l] = line[l] < low[l] ? line[l] : low[l];
        high[l] = line[l] > high[l] ? line[l] : high[l];
      }
    }
    std::uint16_t block[BLOCK];
    for (int l = 0; l < BLOCK; ++l) {
      const float floored = sum[l] < low[l] ? low[l] : sum[l];
      const float limited = floored > high[l] ? high[l] : floored;
      block[l] = static_cast<std::uint16_t>(static_cast<int>(limited + 0.5F));
    }
    std::copy_n(block, std::min(BLOCK, count - x), out + x);
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
  // Recycled between calls.
  std::vector<std::uint16_t> copy;  // the lines read, when they are overwritten meanwhile
  std::vector<float> widened;       // one source line
  std::vector<float> filtered;      // the last lines filtered horizontally, one slot per tap
  std::vector<int> slotLine;        // the source line in each slot, or -1
  std::vector<const float*> lines;

  bool accepts(const SRectD& from, const SRect& to) const;
  void setUp(const SRectD& newSource, const SRect& newTarget);
  void makeRoom();
  const std::uint16_t* copyOf(const std::uint16_t* frame);
  const float* filteredLine(int y, const std::uint16_t* frame);
};

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

// A target line needs at most `taps` neighbouring source lines, so as many slots are enough.
const float* CZoomFractional::SImpl::filteredLine(int y, const std::uint16_t* frame) {
  const int count = target.right - target.left + 1;
  const std::size_t stride = static_cast<std::size_t>(count) * COMPONENTS + LINE_PADDING;
  const auto slot = static_cast<std::size_t>(y % vertical.taps);
  float* line = filtered.data() + slot * stride;
  if (slotLine[slot] == y) return line;
  const std::uint16_t* samples =
      frame + (static_cast<std::size_t>(y) * pixelsPerLine + reach.left) * COMPONENTS;
  const int samplesRead = (reach.right - reach.left + 1) * COMPONENTS;
  for (int i = 0; i < samplesRead; ++i) widened[i] = samples[i];
  filterLine(widened.data(), horizontal, count, reach.left, line);
  slotLine[slot] = y;
  return line;
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

void CZoomFractional::SImpl::makeRoom() {
  const std::size_t read = static_cast<std::size_t>(reach.right - reach.left + 1) * COMPONENTS;
  const std::size_t written = static_cast<std::size_t>(target.right - target.left + 1) * COMPONENTS;
  const auto taps = static_cast<std::size_t>(vertical.taps);
  widened.resize(read + LINE_PADDING);
  filtered.resize((written + LINE_PADDING) * taps);
  slotLine.assign(taps, -1);
  lines.resize(taps);
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

void CZoomFractional::convert(const SRectD& source, const SRect& target, const std::uint16_t* input,
                              std::uint16_t* output) {
  SImpl& zoom = *impl_;
  if (!zoom.accepts(source, target)) return;
  zoom.setUp(source, target);
  zoom.makeRoom();
  const std::uint16_t* frame = input == output ? zoom.copyOf(input) : input;

  const int samplesWritten = (target.right - target.left + 1) * COMPONENTS;
  const int taps = zoom.vertical.taps;
  const int* sample = zoom.vertical.samples.data();
  const float* weight = zoom.vertical.weights.data();
  for (int y = target.top; y <= target.bottom; ++y) {
    for (int t = 0; t < taps; ++t) zoom.lines[t] = zoom.filteredLine(sample[t], frame);
    const std::size_t at = (static_cast<std::size_t>(y) * zoom.pixelsPerLine + target.left);
    combineLines(zoom.lines.data(), weight, taps, samplesWritten, output + at * COMPONENTS);
    sample += taps;
    weight += taps;
  }
}
