#pragma once

// g++ 12 takes the undefined operand of its own unmasked intrinsics for a value that is used.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <immintrin.h>

#include <cstdint>

#include "DealOrder.h"

/// Thirty-two components side by side; otherwise as LanesAvx2.h. Include it under
/// `#pragma GCC target("avx512f,avx512bw,avx512dq,avx512vl")`.
struct SLanesAvx512 {
  using Vector = __m512i;
  static constexpr int COMPONENTS = 32;

  static Vector all(int value) { return _mm512_set1_epi32(value); }
  static Vector samples(const std::uint16_t* from) { return signFlipped(_mm512_loadu_si512(from)); }
  static void store(std::uint16_t* to, Vector low, Vector high) {
    _mm512_storeu_si512(to, signFlipped(_mm512_packs_epi32(low, high)));
  }

  static Vector low(Vector a, Vector b) { return _mm512_unpacklo_epi16(a, b); }
  static Vector high(Vector a, Vector b) { return _mm512_unpackhi_epi16(a, b); }
  static Vector sum(Vector a, Vector b) { return _mm512_add_epi32(a, b); }
  static Vector difference(Vector a, Vector b) { return _mm512_sub_epi32(a, b); }
  static Vector shifted(Vector a, Vector right) { return _mm512_srav_epi32(a, right); }
  static Vector products(Vector pairs, Vector weights) { return _mm512_madd_epi16(pairs, weights); }
  static Vector productOver2To23(Vector a, Vector b) {
    const Vector even = _mm512_srli_epi64(_mm512_mul_epi32(a, b), 23);
    const Vector odd =
        _mm512_slli_epi64(_mm512_mul_epi32(_mm512_srli_epi64(a, 32), _mm512_srli_epi64(b, 32)), 9);
    return _mm512_mask_blend_epi32(0xAAAA, even, odd);
  }

  static void deal(const int* perPixel, int v, Vector& low, Vector& high) {
    const Vector values = _mm512_loadu_si512(perPixel + ORDER.first[v]);
    low = _mm512_permutexvar_epi32(_mm512_load_si512(ORDER.order[v][0]), values);
    high = _mm512_permutexvar_epi32(_mm512_load_si512(ORDER.order[v][1]), values);
  }

 private:
  static constexpr SDealOrder<COMPONENTS> ORDER{};
  static Vector signFlipped(Vector v) { return _mm512_xor_si512(v, _mm512_set1_epi16(-32768)); }
};
