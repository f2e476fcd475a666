#pragma once

#include <iosfwd>
#include <string>

#include "tracking/TrackingArray.h"

/// The text form of the tracking data, as points files hold it:
///
///     {100[0(512.25, 300) 1(90.5, 88)]
///     101[0(513, 301.5) 1(91, 88.25)]
///     }
///     [0(0,0,0,0.0001,0,-1) 1(0,0,0,0.0001,1,0)]
///     1 10 1909 8 1071
///     G
///
/// Every frame with its valid points; the attributes Gr, SmEn, Sm, Al, An, AnIn of every point;
/// whether matting is on and the matting box as left, right, top, bottom; the state, B rendered,
/// G tracked, R neither. A line ends behind an index that ends in 9. Numbers have six digits.
///
/// The text is the same for every locale, format flag, width and precision of the stream, and none
/// of those is changed. White space between items means nothing to the reader. THREAD: none of its
/// own.

/// A position that is no finite number is written as "-", which reads as no point.
std::ostream& operator<<(std::ostream& out, const CTrackPoint& point);
/// Valid points with a finite position; nothing of the others.
std::ostream& operator<<(std::ostream& out, const CTrackingPoints& points);
/// An `Al` that is no finite number is written as the default.
std::ostream& operator<<(std::ostream& out, const CTrackAttribute& attribute);
std::ostream& operator<<(std::ostream& out, const CTrackingAttributes& attributes);
/// Sets failbit and writes nothing when the array exceeds the limits of TrackingLimits.h: nobody
/// could read the text again.
std::ostream& operator<<(std::ostream& out, const CTrackingArray& array);

/// Extraction fails (failbit) at a number that cannot be read or is out of range, at an index or an
/// amount beyond the limits of TrackingLimits.h, and where the text ends too early; badbit says
/// that a list or a set does not open with its bracket. The target holds what was read until then,
/// so read into a fresh one.
///
/// Where a bracket or comma of a point does not match, the point stays as it was, the character is
/// gone and reading goes on behind it. The point is valid and without highlight otherwise.
std::istream& operator>>(std::istream& in, CTrackPoint& point);
/// A point that is skipped for a bracket or comma leaves an invalid entry.
std::istream& operator>>(std::istream& in, CTrackingPoints& points);
/// A bracket or comma that does not match leaves the fields behind it at their defaults. The
/// closing one is not looked at.
std::istream& operator>>(std::istream& in, CTrackAttribute& attribute);
std::istream& operator>>(std::istream& in, CTrackingAttributes& attributes);
/// The box extents are not stored and stay.
std::istream& operator>>(std::istream& in, CTrackingArray& array);

/// Extraction that tells a person why it failed: "line 3: frame index -5 is out of range", lines
/// counted from where the stream stood. False, and the stream failed, when it did.
bool ReadTrackingArray(std::istream& in, CTrackingArray& array, std::string& reason);
