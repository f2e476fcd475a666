#pragma once

#include <string>

#include "session/StabilizeOptions.h"

/// Refuses, for a text that `option` writes to `path`, a name that only a picture, a video, a
/// points file or a process list would have: whoever writes `--report scan.mov` has mistyped, and
/// would lose the scan. So would a link that leads to such a name. Throws CUsageError.
void CheckTextName(const std::string& option, const std::string& path);

/// Refuses results that would overwrite each other, the input or the points file that is read.
/// `log`: a text that the caller writes meanwhile; empty: none. The options need not be completed.
/// Throws CUsageError that names both options.
void CheckResultFiles(const SStabilizeOptions& options, const std::string& log = {});
