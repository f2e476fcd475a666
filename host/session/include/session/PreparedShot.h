#pragma once

#include <memory>
#include <vector>

#include "session/PictureMove.h"
#include "session/StabilizeOptions.h"
#include "session/ToolOnShot.h"
#include "tracker/FeatureDetector.h"

/// Opens the options' input, reads their points file, and completes the options for them and for
/// this machine: with a tracked file that lies inside the clip, and no mark given, the marks are
/// the file's. Throws CClipError, CUsageError, std::runtime_error (the points file, see
/// ReadPointsFile).
std::unique_ptr<IClipReader> OpenInput(SStabilizeOptions& options);

/// A shot with the tool on it, its settings given and its points placed: ready to be rendered, to
/// be tracked, or to be captured as an entry.
struct SPreparedShot {
  std::unique_ptr<CToolOnShot> tool;
  SRect region;                    ///< processing region, inclusive
  std::vector<SFeature> features;  ///< the points, by index; as found, or as given (strength 0)
  SMoveSettings moveSettings;
  bool tracked = false;  ///< the points came with their paths over the marks
};

/// REQUIRES: options completed for this clip. The observer outlives the result. Throws CUsageError
/// (a point that cannot be tracked), CClipError, CPluginError, CJobError (no point was found),
/// std::runtime_error (the points file does not fit the shot, see LoadPoints).
SPreparedShot PrepareShot(std::unique_ptr<IClipReader> reader, const SStabilizeOptions& options,
                          const SJobObserver& observer);
