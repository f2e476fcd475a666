#pragma once

#include <string>

#include "session/MotionMeasure.h"

/// How far a stabilised test shot is from steady, by its known motion: the true motion of every
/// frame plus the move that the renderer made. Mean taken away, as in SSteadiness.
struct STruthComparison {
  int frames = 0;
  SSteadiness before;  ///< the true motion against the intended path
  SSteadiness after;
  double driftX = 0.0;  ///< mean of the last 20 frames against that of the first 20, pixels
  double driftY = 0.0;
};

/// Reads a report and a test shot's truth (JSON files). Throws std::runtime_error naming the file
/// that cannot be read or does not fit the other.
STruthComparison CompareWithTruth(const std::string& reportFile, const std::string& truthFile);
/// For a person; no trailing newline.
std::string ToText(const STruthComparison& comparison);
