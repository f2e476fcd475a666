#pragma once

#include <cstdint>
#include <optional>

#include "clip/ClipInfo.h"

/// The rate that a rounded decimal number means: whole rates, their 1000/1001 companions, else
/// thousandths. REQUIRES: value > 0.
SFrameRate FrameRateFromValue(double value);
/// The timecode `frames` later, wrapping at 24 hours.
CTimecode AdvanceTimecode(const CTimecode& start, int frames);
/// Nominal whole rate for timecode counting.
int TimecodeRate(const SFrameRate& rate);
/// Binary-coded timecode; `flags`: bit 6 of the frames says drop-frame (SMPTE ST 12-1). None when
/// it is no time of day at this rate.
std::optional<CTimecode> DecodeTimecode(std::uint32_t code, int rate, bool flags);
