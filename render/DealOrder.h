#pragma once

/// Which pixel's value each component of a block takes: three vectors of COMPONENTS components hold
/// the 3 components of COMPONENTS pixels. Products of a vector stand in two registers, as the
/// unpack instructions leave them: of every 8 components the first 4 in the low, the others in the
/// high one.
template <int COMPONENTS>
struct SDealOrder {
  static constexpr int VECTORS = 3;
  int first[VECTORS] = {};                                 ///< pixel of a vector's first component
  alignas(64) int order[VECTORS][2][COMPONENTS / 2] = {};  ///< pixels after `first`

  constexpr SDealOrder() {
    for (int v = 0; v < VECTORS; ++v) {
      first[v] = v * COMPONENTS / 3;
      for (int i = 0; i < COMPONENTS; ++i) {
        const int half = i % 8 / 4;
        order[v][half][i / 8 * 4 + i % 4] = (v * COMPONENTS + i) / 3 - first[v];
      }
    }
  }
};
