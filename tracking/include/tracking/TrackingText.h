#pragma once

#include <istream>
#include <ostream>
#include <string>

#include "tracking/TrackingArray.h"

/// The text of a points file.
std::ostream& operator<<(std::ostream& stream, const CTrackingArray& array);
std::istream& operator>>(std::istream& stream, CTrackingArray& array);
/// False: `reason` says what is wrong with the text.
bool ReadTrackingArray(std::istream& stream, CTrackingArray& array, std::string& reason);
