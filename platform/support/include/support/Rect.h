#pragma once

/// Integer rectangle in frame pixels. Whether `right` and `bottom` belong to it is said by whoever
/// holds it; picture, matting and processing rectangles are inclusive on all four sides.
struct SRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  friend bool operator==(const SRect&, const SRect&) = default;
};

/// Rectangle with sub-pixel edges; `right` and `bottom` are exclusive (a whole frame of width w has
/// right == w). Pixel i covers [i, i + 1).
struct SRectD {
  double left = 0.0;
  double top = 0.0;
  double right = 0.0;
  double bottom = 0.0;

  friend bool operator==(const SRectD&, const SRectD&) = default;
};
