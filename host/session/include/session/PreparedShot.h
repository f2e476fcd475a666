#pragma once

#include <memory>
#include <vector>

#include "session/StabilizeOptions.h"
#include "session/ToolOnShot.h"
#include "tracker/FeatureDetector.h"

/// Opens the options' input, and completes the options for it and for this machine. Throws
/// CClipError, CUsageError.
std::unique_ptr<IClipReader> OpenInput(SStabilizeOptions& options);

/// A shot with the tool on it, its settings given and its points placed: ready to be rendered, to
/// be tracked, or to be captured as an entry.
struct SPreparedShot {
  std::unique_ptr<CToolOnShot> tool;
  SRect region;                    ///< processing region, inclusive
  std::vector<SFeature> features;  ///< the points, by index; as found, or as given (strength 0)
};

/// REQUIRES: options completed for this clip. The observer outlives the result. Throws CUsageError
/// (a point that cannot be tracked), CClipError, CPluginError, CJobError (no point was found).
SPreparedShot PrepareShot(std::unique_ptr<IClipReader> reader, const SStabilizeOptions& options,
                          const SJobObserver& observer);
