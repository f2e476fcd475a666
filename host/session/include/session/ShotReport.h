#pragma once

#include <string>

#include "session/StabilizeJob.h"

/// The whole result as JSON: clip, settings, points and what became of them, each frame's measured
/// and intended motion, the verification, times.
std::string ReportAsJson(const SStabilizeResult& result);

/// Lines for a person: points, steadiness before and after in pixels and percent of the picture,
/// the worst frames, speed. No trailing newline.
std::string SummaryAsText(const SStabilizeResult& result);

/// The same for points that were saved (PointsJob.h): how many, and what became of each.
std::string PointsSummaryAsText(const SStabilizeResult& result);

/// Why the verified output is not as steady as `options.maxResidual` wants it; empty when it is, or
/// when nothing was wanted.
std::string TooUnsteady(const SStabilizeResult& result);

/// Writes the side-by-side clip of input and output to `result.options.compare`. Throws CClipError,
/// CInterrupted.
void WriteComparison(const SStabilizeResult& result, const SJobObserver& observer);
