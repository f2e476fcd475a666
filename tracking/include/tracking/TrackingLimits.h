#pragma once

#include <limits>

/// What tracking data from outside - a points file, a process list - may hold at most. The bounds
/// lie far above any shot, and keep the memory and the time that a damaged or hostile text can cost
/// bounded: whoever works on tracking data may rely on them for everything that was read.

/// Frames and points are counted from 0. End indices are one past the last, so the largest int is
/// no frame.
inline constexpr int LARGEST_FRAME_INDEX = std::numeric_limits<int>::max() - 1;
/// Operators place dozens of points, automatic placement hundreds.
inline constexpr int LARGEST_POINT_INDEX = 99'999;
/// Frames from the first to the last, present or not; eleven hours of film. Deleting a point fills
/// the holes between them.
inline constexpr int LARGEST_FRAME_SPAN = 1'000'000;
/// Points of all frames together; 200 points over 40,000 frames. In memory a frame of one to three
/// points takes 144 bytes, and an entry of a larger one 32.
inline constexpr int LARGEST_POINT_TOTAL = 8'000'000;

constexpr bool IsStorableFrame(int frame) {
  return frame >= 0 && frame <= LARGEST_FRAME_INDEX;
}
constexpr bool IsStorablePoint(int point) {
  return point >= 0 && point <= LARGEST_POINT_INDEX;
}
/// Whether all frames from `first` to `last` may stand in one set.
constexpr bool IsStorableSpan(int first, int last) {
  return static_cast<long long>(last) - first < LARGEST_FRAME_SPAN;
}
