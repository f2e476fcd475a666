#pragma once

#include <vector>

#include "toolkit/Controls.h"

/// Where a window of these bounds is put so that it can be seen and grasped: it keeps its place if
/// at least 20 pixels of it lie on the desktop each way. The desktop is the first monitor, joined
/// with the second where there are exactly two that touch: both side by side with the rows they
/// share, or one above the other with the columns they share.
SBounds BroughtBackOntoDesktop(const SBounds& window, const std::vector<SBounds>& monitors);
