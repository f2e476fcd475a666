#pragma once

#include "session/StabilizeOptions.h"

/// Checks the entry in `options.entry` against the clip before anything is allocated, written or
/// tracked for it, and sets the options that finding, following and verifying points go by: points,
/// sizes of the boxes, axes, region. The points are those of the IN frame, else of the entry's
/// first frame; without points in the entry, `points` stays empty. Everything else of the motion
/// stays in the entry. Entries come from files that anybody may have written: settings that the
/// options could not have asked for are refused.
/// REQUIRES: the marks are completed. Throws CUsageError naming element and attribute.
void TakeEntrySettings(SStabilizeOptions& options, const SClipInfo& clip);
