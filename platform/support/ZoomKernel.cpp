#include "ZoomKernel.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

#include "ZoomRows.h"
#include "support/Kernels.h"

namespace {

// Three components and one more, which the next pixel overwrites: four lanes fill a vector of any
// machine. Written with the compiler's own vectors: left to itself it spreads lanes over scalars.
struct SFour {
  static constexpr int SIZE = 4;
  using Vector = float __attribute__((vector_size(SIZE * sizeof(float))));
  static Vector values(const float* from) {
    Vector v;
    std::memcpy(&v, from, sizeof v);
    return v;
  }
  static Vector all(float value) { return Vector{value, value, value, value}; }
  static Vector product(Vector a, Vector b) { return a * b; }
  static Vector sum(Vector a, Vector b) { return a + b; }
  static Vector lesser(Vector a, Vector b) { return a < b ? a : b; }
  static Vector greater(Vector a, Vector b) { return a > b ? a : b; }
  using Integers = int __attribute__((vector_size(SIZE * sizeof(int))));
  static Integers cutOff(Vector v) { return __builtin_convertvector(v, Integers); }
  static void store(Integers samples, std::uint16_t* to) {
    for (int i = 0; i < SIZE; ++i) to[i] = static_cast<std::uint16_t>(samples[i]);
  }
};

using Four = SFour::Vector;

/// The weighted sum of `taps` values, limited to their range; `value(t)` is that of a tap.
template <class Value>
inline Four filtered(int taps, const float* weights, Value value) {
  Four low = value(0);
  Four high = low;
  Four sum = low * weights[0];
  for (int t = 1; t < taps; ++t) {
    const Four next = value(t);
    sum += next * weights[t];
    low = SFour::lesser(next, low);
    high = SFour::greater(next, high);
  }
  return SFour::lesser(SFour::greater(sum, low), high);
}

void filterLine(const float* source, const SZoomLineFilter& filter, float* target) {
  const int taps = filter.axis.taps;
  const int* sample = filter.axis.samples.data();
  const float* weight = filter.axis.weights.data();
  for (std::size_t at = 0; at < filter.valuesPerLine; at += ZOOM_COMPONENTS) {
    const Four value = filtered(taps, weight, [&](int t) {
      const std::ptrdiff_t column = sample[t] - filter.firstColumn;
      return SFour::values(source + column * ZOOM_COMPONENTS);
    });
    std::memcpy(target + at, &value, sizeof value);
    sample += taps;
    weight += taps;
  }
}

void combineBlockOfAny(const float* const* lines, const float* weights, int taps, int x,
                       std::uint16_t* to) {
  const Four value = filtered(taps, weights, [&](int t) { return SFour::values(lines[t] + x); });
  SFour::store(SFour::cutOff(value + 0.5F), to);
}

void combineRows(const SZoomRows& rows) {
  combineRowsBy<SFour>(rows);
}

constexpr SZoomKernel kernels[] = {
#if defined(STAB_ZOOM_X86)
    {"avx512", true, &FilterZoomLinesAvx512, &CombineZoomRowsAvx512},
    {"avx2", false, &FilterZoomLinesAvx2, &CombineZoomRowsAvx2},
#endif
    {"plain", false, &FilterZoomLines, &combineRows},
};

}  // namespace

std::span<const SZoomKernel> AllZoomKernels() {
  return kernels;
}

const SZoomKernel& TheZoomKernel() {
  const SKernel* const chosen = TheKernel();
  for (const SZoomKernel& kernel : kernels)
    if (chosen && std::string_view(chosen->name) == kernel.name) return kernel;
  return AllZoomKernels().back();
}

void FilterZoomLines(const std::uint16_t* source, int lines, const SZoomLineFilter& filter,
                     std::vector<float>& scratch, float* const* targets) {
  const std::size_t count = filter.samplesRead();
  if (scratch.size() < count + ZOOM_LINE_PADDING) scratch.resize(count + ZOOM_LINE_PADDING);
  for (int i = 0; i < lines; ++i, source += filter.stride) {
    std::copy_n(source, count, scratch.begin());
    filterLine(scratch.data(), filter, targets[i]);
  }
}

void CombineZoomLines(const float* const* lines, const float* weights, int taps, int count,
                      std::uint16_t* output) {
  int x = 0;
  for (; x + SFour::SIZE <= count; x += SFour::SIZE)
    combineBlockOfAny(lines, weights, taps, x, output + x);
  if (x == count) return;
  std::uint16_t rest[SFour::SIZE];
  combineBlockOfAny(lines, weights, taps, x, rest);
  std::copy_n(rest, count - x, output + x);
}
