#pragma once

#include <array>
#include <cstdint>

#include "support/Rect.h"

/// Finds the picture inside a uniform matted border.
///
/// `frame`: 16-bit interleaved samples, three components, rows directly one after another.
/// `active`: inclusive rectangle that is searched. `color`: the mat's colour, three 8-bit code
/// values (25, 25, 25 is a dark mat). `tolerance`: how far, in 8-bit code values, a component of
/// the mat may be from it, up or down. `yuvComponents`: the samples are luma and two colour
/// differences; then only the luma of `color` counts and the mat is colourless. `seedX`, `seedY`: a
/// frame pixel inside the mat; 0, 0 or a place outside the frame is none. With a seed the colour is
/// measured around it and `color` is not used.
///
/// Dark picture is not mat: what tells them apart is that a mat is flat. Each side's level and
/// grain are measured on its outermost line; grain is what differs between samples 8 pixels apart,
/// so picture structure does not pass for it. A line is mat when at least 95 % of its samples are
/// within the tolerance of the colour and within the grain of the level, and when its median is at
/// the level; up to 8 lines of which at least 80 % are (a hair, dirt) are passed over when mat goes
/// on behind them. Lines count from the edge of `active` inward. A picture that is itself as flat
/// and as dark as the mat up to its edge cannot be told from it.
///
/// Returns the inclusive box of what is left; `active` when there is no border or when everything
/// is one. THREAD: any.
SRect FindMatBox(const std::uint16_t* frame, int pixelsPerLine, int linesPerFrame, int tolerance,
                 const SRect& active, bool yuvComponents, const std::array<int, 3>& color,
                 int seedX, int seedY);
