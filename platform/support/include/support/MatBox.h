#pragma once

#include <array>
#include <cstdint>

#include "support/Rect.h"

/// Finds the picture inside a uniform matted border.
///
/// `frame`: 16-bit interleaved RGB, rows directly one after another. `tolerance`: how far, in 8-bit
/// code values, a border sample may be from `color` (three components, 8-bit code values: 25, 25,
/// 25 is a dark mat). `active`: inclusive rectangle that is searched. `yuvComponents`: the samples
/// are luma and two colour differences, not RGB. `seedX`, `seedY`: a pixel inside the mat, or 0, 0.
///
/// A row or column belongs to the border when nearly all of its samples match: single dust specks
/// and grain do not end it. Returns the inclusive box of what is left; the whole of `active` when
/// there is no border or when everything is one.
SRect FindMatBox(const std::uint16_t* frame, int pixelsPerLine, int linesPerFrame, int tolerance,
                 const SRect& active, bool yuvComponents, const std::array<int, 3>& color,
                 int seedX, int seedY);
