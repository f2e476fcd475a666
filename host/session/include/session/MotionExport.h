#pragma once

#include <string>

#include "session/StabilizeJob.h"

/// The motion of a finished shot for other programs: for every frame of the marks what was measured
/// and what the renderer did, and for every point where it lay and where it was put. The two forms
/// hold the same numbers, each the shortest that reads back as the same.

/// One row for every frame and point, under a row of names (RFC 4180). The frame's own numbers
/// stand in each of its rows.
std::string MotionAsCsv(const SStabilizeResult& result);
/// Clip, marks, conventions, and the frames with their points.
std::string MotionAsJson(const SStabilizeResult& result);

/// True when the path's extension names one of the forms: .csv or .json, in any case.
bool IsMotionExport(const std::string& path);
/// The form that the path's extension names. REQUIRES: IsMotionExport(path).
std::string MotionAsText(const SStabilizeResult& result, const std::string& path);
