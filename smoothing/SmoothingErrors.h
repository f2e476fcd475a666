#pragma once

/// Failures of a smoothing run. Texts reach the operator and logs; do not change them, trailing
/// blanks included.
constexpr int SMOOTHING_EXCEPTION = -1;
constexpr int SMOOTHING_POINT_MISSING = -8500;
constexpr const char* SMOOTHING_POINT_MISSING_TEXT =
    "Internal Error: A frame is missing a tracking point";
constexpr int SMOOTHING_RANGE_TOO_SHORT = -8501;
constexpr const char* SMOOTHING_RANGE_TOO_SHORT_TEXT =
    "Operation failed: To render this shot, the marked frame range must be greater than the number "
    "of anchor frames";
constexpr int SMOOTHING_NO_POINTS = -8505;
constexpr const char* SMOOTHING_NO_POINTS_TEXT =
    "INTERNAL ERROR: No robust points found to smooth! ";
constexpr int SMOOTHING_TOO_MANY_POINTS = -8506;
constexpr const char* SMOOTHING_TOO_MANY_POINTS_TEXT =
    "INTERNAL ERROR: More than two robust points passed to smoother! ";
constexpr int SMOOTHING_NO_THREAD = -8507;
constexpr const char* SMOOTHING_NO_THREAD_TEXT = "Can't spawn thread";
