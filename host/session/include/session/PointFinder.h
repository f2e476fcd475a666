#pragma once

#include <vector>

#include "frames/FrameStore.h"
#include "session/StabilizeOptions.h"
#include "support/Rect.h"
#include "tracker/FeatureDetector.h"

/// Finds points to track in the IN frame, at most `options.autoPoints`, strongest first. Half as
/// many again are looked for and followed into the next frame: what cannot be found there (dust
/// sits on one frame only) is left out. REQUIRES: completed options. Throws CClipError.
std::vector<SFeature> FindPoints(CFrameStore& store, const SStabilizeOptions& options,
                                 const SRect& region);

/// Box, reach and region for a tracker, from the options.
STrackSettings TrackSettingsOf(const SStabilizeOptions& options, const SRect& region);
