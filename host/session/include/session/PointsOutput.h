#pragma once

#include <string>

#include "session/StabilizeOptions.h"
#include "session/ToolOnShot.h"

/// Before any work: throws std::runtime_error, which names file and cause, where `path` could not
/// be written. An empty path is none.
void CheckWritable(const std::string& path);
/// The same for `options.savePoints`; and without `options.overwrite` the file must not be there.
void CheckPointsOutput(const SStabilizeOptions& options);
/// Saves the tool's points as they are in `options.savePoints`, whole: through the tool's own key,
/// or as trackers' text. Throws std::runtime_error, which names file and cause.
void SavePoints(CToolOnShot& tool, const SStabilizeOptions& options);
