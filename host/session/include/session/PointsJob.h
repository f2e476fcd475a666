#pragma once

#include "session/StabilizeJob.h"

/// Finds, places or loads the points of a shot as a stabilise job does, tracks them over the marks
/// if `track` says so and they did not come with their paths, and saves them in
/// `options.savePoints`. No clip is written. The result holds what was done of that, no motion.
/// Throws what CStabilizeJob::run does.
SStabilizeResult SavePointsOfShot(const SStabilizeOptions& options, bool track,
                                  const SJobObserver& observer);
