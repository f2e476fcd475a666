#pragma once

#include <immintrin.h>

#include <cstdint>

#include "DealOrder.h"

/// Sixteen components side by side, for IntegerRows.h. Samples are held minus 32768, as signed 16
/// bits; two registers of products hold them in the order of the unpack instructions, which the
/// pack of store() undoes. Include it under `#pragma GCC target("avx2")`.
struct SLanesAvx2 {
  using Vector = __m256i;
  static constexpr int COMPONENTS = 16;

  static Vector all(int value) { return _mm256_set1_epi32(value); }
  static Vector samples(const std::uint16_t* from) {
    return signFlipped(_mm256_loadu_si256(reinterpret_cast<const Vector*>(from)));
  }
  static void store(std::uint16_t* to, Vector low, Vector high) {
    _mm256_storeu_si256(reinterpret_cast<Vector*>(to), signFlipped(_mm256_packs_epi32(low, high)));
  }

  static Vector low(Vector a, Vector b) { return _mm256_unpacklo_epi16(a, b); }
  static Vector high(Vector a, Vector b) { return _mm256_unpackhi_epi16(a, b); }
  static Vector sum(Vector a, Vector b) { return _mm256_add_epi32(a, b); }
  static Vector difference(Vector a, Vector b) { return _mm256_sub_epi32(a, b); }
  static Vector shifted(Vector a, Vector right) { return _mm256_srav_epi32(a, right); }
  /// Sums of the two products of each pair.
  static Vector products(Vector pairs, Vector weights) { return _mm256_madd_epi16(pairs, weights); }
  /// floor(a * b / 2^23). REQUIRES: it fits in 32 bits.
  static Vector productOver2To23(Vector a, Vector b) {
    const Vector even = _mm256_srli_epi64(_mm256_mul_epi32(a, b), 23);
    const Vector odd =
        _mm256_slli_epi64(_mm256_mul_epi32(_mm256_srli_epi64(a, 32), _mm256_srli_epi64(b, 32)), 9);
    return _mm256_blend_epi32(even, odd, 0xAA);
  }

  /// A block's values, one for each pixel, dealt to the components of its vector `v`.
  static void deal(const int* perPixel, int v, Vector& low, Vector& high) {
    const Vector values =
        _mm256_loadu_si256(reinterpret_cast<const Vector*>(perPixel + ORDER.first[v]));
    const auto order = [v](int half) {
      return _mm256_load_si256(reinterpret_cast<const Vector*>(ORDER.order[v][half]));
    };
    low = _mm256_permutevar8x32_epi32(values, order(0));
    high = _mm256_permutevar8x32_epi32(values, order(1));
  }

 private:
  static constexpr SDealOrder<COMPONENTS> ORDER{};
  static Vector signFlipped(Vector v) { return _mm256_xor_si256(v, _mm256_set1_epi16(-32768)); }
};
