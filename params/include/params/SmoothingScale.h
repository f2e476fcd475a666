#pragma once

/// The scale on which an operator sets how much a path is smoothed: positions 0 to 10 for the
/// weight of the measured path (CStabilizerParameters::Alpha2). Position 0 leaves the path as it is
/// (-1), 10 is as smooth as can be (0), between them one step is a factor of 10^0.75. THREAD: any.
constexpr int LEAST_SMOOTHING = 0;
constexpr int MOST_SMOOTHING = 10;

double SmoothingWeight(int position);
/// The position at or below a weight; any value at all has one.
int SmoothingPosition(double weight);
