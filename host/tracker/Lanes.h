#pragma once

#include <cstddef>

#include "support/TargetClones.h"

/// Sixteen floats that are worked on in step. The order of every sum is written down in lanes, so
/// all clones of a kernel (AVX-512, AVX2, plain) and therefore all machines give the same bits.
/// Only ever a local variable: as an argument its passing would depend on the clone.
using Lanes = float __attribute__((vector_size(64)));
using UnalignedLanes = float __attribute__((vector_size(64), aligned(4), may_alias));
inline constexpr int kLanes = 16;

#define STAB_LOAD(pointer) (*reinterpret_cast<const UnalignedLanes*>(pointer))
#define STAB_STORE(pointer) (*reinterpret_cast<UnalignedLanes*>(pointer))

/// Sum of sixteen floats. Halves are added to halves, so that the additions do not wait for each
/// other.
inline double SumOfLanes(const float* lanes) {
  double sum[kLanes / 2];
  for (int i = 0; i < 8; ++i) sum[i] = static_cast<double>(lanes[i]) + lanes[i + 8];
  for (int half = 4; half > 0; half /= 2) {
    for (int i = 0; i < half; ++i) sum[i] += sum[i + half];
  }
  return sum[0];
}

/// Row lengths are rounded up to whole lanes.
constexpr int RoundUpToLanes(int count) {
  return (count + kLanes - 1) / kLanes * kLanes;
}
