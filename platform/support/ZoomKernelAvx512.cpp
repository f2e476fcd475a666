#include "ZoomKernel.h"

#if defined(STAB_ZOOM_X86)

#include <algorithm>

// What is above is compiled for every machine; nothing of it may be compiled anew below.
#pragma GCC target("avx512f,avx512bw,avx512dq,avx512vl")
// g++ 12 takes the undefined operand of its own unmasked intrinsics for a value that is used.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <immintrin.h>

#include "ZoomRows.h"

namespace {

constexpr int SIZE = SZoomBlocks::SIZE;

struct SSixteen {
  using Vector = __m512;
  static constexpr int SIZE = 16;
  static Vector values(const float* from) { return _mm512_loadu_ps(from); }
  static Vector all(float value) { return _mm512_set1_ps(value); }
  static Vector product(Vector a, Vector b) { return _mm512_mul_ps(a, b); }
  static Vector sum(Vector a, Vector b) { return _mm512_add_ps(a, b); }
  static Vector lesser(Vector a, Vector b) { return _mm512_min_ps(a, b); }
  static Vector greater(Vector a, Vector b) { return _mm512_max_ps(a, b); }
  static __m256i cutOff(Vector v) { return _mm512_cvtepi32_epi16(_mm512_cvttps_epi32(v)); }
  static void store(__m256i samples, std::uint16_t* to) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), samples);
  }
};

__m512 widened(const std::uint16_t* samples) {
  const __m256i sixteen = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples));
  return _mm512_cvtepi32_ps(_mm512_cvtepu16_epi32(sixteen));
}

/// A block of one line while its taps are gathered.
struct SBlock {
  __m512 left;
  __m512 right;
  __m512 low;
  __m512 high;
  __m512 sum;

  void begin(const std::uint16_t* samples, __m512i at, __m512 weight) {
    left = widened(samples);
    right = widened(samples + SIZE);
    low = high = _mm512_permutex2var_ps(left, at, right);
    sum = _mm512_mul_ps(low, weight);
  }
  void add(__m512i at, __m512 weight) {
    const __m512 next = _mm512_permutex2var_ps(left, at, right);
    sum = _mm512_add_ps(sum, _mm512_mul_ps(next, weight));
    low = _mm512_min_ps(low, next);
    high = _mm512_max_ps(high, next);
  }
  __m512 limited() const { return _mm512_min_ps(_mm512_max_ps(sum, low), high); }
};

/// What is known of a block is fetched once for all lines.
template <int LINES>
void filterLines(const std::uint16_t* source, const SZoomLineFilter& filter,
                 float* const* targets) {
  const SZoomBlocks& blocks = filter.blocks;
  const std::uint8_t* sample = blocks.sample.data();
  const float* weight = blocks.weight.data();
  std::ptrdiff_t x = 0;
  for (const int first : blocks.first) {
    SBlock block[LINES];
    for (int t = 0; t < ZOOM_TAPS; ++t) {
      const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(sample + t * SIZE));
      const __m512i at = _mm512_cvtepu8_epi32(bytes);
      const __m512 weights = _mm512_loadu_ps(weight + t * SIZE);
      for (int i = 0; i < LINES; ++i) {
        if (t == 0)
          block[i].begin(source + i * filter.stride + first, at, weights);
        else
          block[i].add(at, weights);
      }
    }
    for (int i = 0; i < LINES; ++i) _mm512_storeu_ps(targets[i] + x, block[i].limited());
    sample += ZOOM_TAPS * SIZE;
    weight += ZOOM_TAPS * SIZE;
    x += SIZE;
  }
}

}  // namespace

void FilterZoomLinesAvx512(const std::uint16_t* source, int lines, const SZoomLineFilter& filter,
                           std::vector<float>& scratch, float* const* targets) {
  if (filter.blocks.first.empty())
    return FilterZoomLinesAvx2(source, lines, filter, scratch, targets);
  switch (lines) {
    case 1: return filterLines<1>(source, filter, targets);
    case 2: return filterLines<2>(source, filter, targets);
    case 3: return filterLines<3>(source, filter, targets);
    default: return filterLines<SZoomKernel::MOST_LINES>(source, filter, targets);
  }
}

void CombineZoomRowsAvx512(const SZoomRows& rows) {
  combineRowsBy<SSixteen>(rows);
}

#endif
