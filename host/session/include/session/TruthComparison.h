#pragma once

#include <string>

#include "session/MotionMeasure.h"

/// How far a stabilised test shot is from steady, by its known motion: the true motion of every
/// frame plus the move that the renderer made. Mean taken away, as in SSteadiness.
struct STruthComparison {
  int frames = 0;
  SSteadiness before;  ///< the true motion against the intended path
  SSteadiness after;
  int driftFrames = 0;  ///< at either end, 20 or half of the frames
  double driftX = 0.0;  ///< mean of the last of them against that of the first, pixels
  double driftY = 0.0;
};

/// Reads a report and a test shot's truth (JSON files). Throws std::runtime_error naming the file
/// that cannot be read or does not fit the other.
STruthComparison CompareWithTruth(const std::string& reportFile, const std::string& truthFile);
/// For a person; no trailing newline.
std::string ToText(const STruthComparison& comparison);
