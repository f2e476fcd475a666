#pragma once

#include <cstddef>
#include <functional>
#include <vector>

/// Which frames a viewer wants, most urgent first. THREAD: any.
struct SWant {
  int frame = 0;      ///< looked at: always the first
  int direction = 0;  ///< +1, -1: playing; 0: standing, both sides alike
  int first = 0;      ///< the others are of [first, end)
  int end = 0;
  /// 1: single frames, for decoders that take any order. Otherwise what would have to be decoded
  /// backwards is taken in ascending blocks of this many frames, counted from `first`, so that they
  /// do not move with `frame`: one slow jump per block, none per frame.
  int block = 1;
};

/// At most `count` frames, none twice, without those that `isLeftOut` names.
std::vector<int> OrderOfWant(const SWant& want, std::size_t count,
                             const std::function<bool(int frame)>& isLeftOut);
