#include "ZoomLine.h"

#if defined(STAB_ZOOM_AVX512)

// What is above is compiled for every machine; nothing of it may be compiled anew below.
#pragma GCC target("avx512f,avx512bw,avx512dq,avx512vl")
// g++ 12 takes the undefined operand of its own unmasked intrinsics for a value that is used.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <immintrin.h>

namespace {

__m512 widened(const std::uint16_t* samples) {
  const __m256i sixteen = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(samples));
  return _mm512_cvtepi32_ps(_mm512_cvtepu16_epi32(sixteen));
}

}  // namespace

void FilterZoomLineAvx512(const std::uint16_t* source, const SZoomBlocks& blocks, float* target) {
  constexpr int SIZE = SZoomBlocks::SIZE;
  const std::uint8_t* sample = blocks.sample.data();
  const float* weight = blocks.weight.data();
  for (const int first : blocks.first) {
    const __m512 left = widened(source + first);
    const __m512 right = widened(source + first + SIZE);
    const auto tap = [&](int t) {
      const __m128i at = _mm_loadu_si128(reinterpret_cast<const __m128i*>(sample + t * SIZE));
      return _mm512_permutex2var_ps(left, _mm512_cvtepu8_epi32(at), right);
    };
    __m512 low = tap(0);
    __m512 high = low;
    __m512 sum = _mm512_mul_ps(low, _mm512_loadu_ps(weight));
    for (int t = 1; t < SZoomBlocks::TAPS; ++t) {
      const __m512 next = tap(t);
      sum = _mm512_add_ps(sum, _mm512_mul_ps(next, _mm512_loadu_ps(weight + t * SIZE)));
      low = _mm512_min_ps(low, next);
      high = _mm512_max_ps(high, next);
    }
    _mm512_storeu_ps(target, _mm512_min_ps(_mm512_max_ps(sum, low), high));
    sample += SZoomBlocks::TAPS * SIZE;
    weight += SZoomBlocks::TAPS * SIZE;
    target += SIZE;
  }
}

#endif
