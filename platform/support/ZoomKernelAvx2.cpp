#include "ZoomKernel.h"

#if defined(STAB_ZOOM_X86)

#include <algorithm>
#include <vector>

// What is above is compiled for every machine; nothing of it may be compiled anew below.
#pragma GCC target("avx2")
#include <immintrin.h>

#include "ZoomRows.h"

namespace {

struct SEight {
  using Vector = __m256;
  static constexpr int SIZE = 8;
  static Vector values(const float* from) { return _mm256_loadu_ps(from); }
  static Vector all(float value) { return _mm256_set1_ps(value); }
  static Vector product(Vector a, Vector b) { return _mm256_mul_ps(a, b); }
  static Vector sum(Vector a, Vector b) { return _mm256_add_ps(a, b); }
  static Vector lesser(Vector a, Vector b) { return _mm256_min_ps(a, b); }
  static Vector greater(Vector a, Vector b) { return _mm256_max_ps(a, b); }
  static __m128i cutOff(Vector v) {
    const __m256i whole = _mm256_cvttps_epi32(v);
    return _mm_packus_epi32(_mm256_castsi256_si128(whole), _mm256_extracti128_si256(whole, 1));
  }
  static void store(__m128i samples, std::uint16_t* to) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), samples);
  }
};

/// A pixel of two lines side by side, with a fourth component each, which is the next pixel's.
__m256 pixels(const float* upper, const float* lower) {
  return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(upper)), _mm_loadu_ps(lower), 1);
}

/// Both lines were widened. The fourth component is overwritten by the next pixel's first.
void filterTwo(const float* upper, const float* lower, const SZoomLineFilter& filter,
               float* upperTarget, float* lowerTarget) {
  const int* sample = filter.axis.samples.data();
  const float* weight = filter.axis.weights.data();
  for (std::size_t at = 0; at < filter.valuesPerLine; at += ZOOM_COMPONENTS) {
    const auto tap = [&](int t) {
      const std::ptrdiff_t from =
          static_cast<std::ptrdiff_t>(sample[t] - filter.firstColumn) * ZOOM_COMPONENTS;
      return pixels(upper + from, lower + from);
    };
    __m256 low = tap(0);
    __m256 high = low;
    __m256 sum = _mm256_mul_ps(low, _mm256_broadcast_ss(weight));
    for (int t = 1; t < ZOOM_TAPS; ++t) {
      const __m256 next = tap(t);
      sum = _mm256_add_ps(sum, _mm256_mul_ps(next, _mm256_broadcast_ss(weight + t)));
      low = _mm256_min_ps(low, next);
      high = _mm256_max_ps(high, next);
    }
    const __m256 limited = _mm256_min_ps(_mm256_max_ps(sum, low), high);
    _mm_storeu_ps(upperTarget + at, _mm256_castps256_ps128(limited));
    _mm_storeu_ps(lowerTarget + at, _mm256_extractf128_ps(limited, 1));
    sample += ZOOM_TAPS;
    weight += ZOOM_TAPS;
  }
}

}  // namespace

void FilterZoomLinesAvx2(const std::uint16_t* source, int lines, const SZoomLineFilter& filter,
                         std::vector<float>& scratch, float* const* targets) {
  if (filter.axis.taps != ZOOM_TAPS)
    return FilterZoomLines(source, lines, filter, scratch, targets);
  const std::size_t count = filter.samplesRead();
  const std::size_t pitch = count + ZOOM_LINE_PADDING;
  if (scratch.size() < 2 * pitch) scratch.resize(2 * pitch);
  float* const widened = scratch.data();
  for (int i = 0; i < lines; i += 2) {
    // A last line without another one is done twice, in the same place.
    const int other = i + 1 < lines ? i + 1 : i;
    const std::uint16_t* upper = source + i * filter.stride;
    const std::uint16_t* lower = source + other * filter.stride;
    for (std::size_t s = 0; s < count; ++s) widened[s] = upper[s];
    for (std::size_t s = 0; s < count; ++s) widened[pitch + s] = lower[s];
    filterTwo(widened, widened + pitch, filter, targets[i], targets[other]);
  }
}

void CombineZoomRowsAvx2(const SZoomRows& rows) {
  combineRowsBy<SEight>(rows);
}

#endif
