#pragma once

#include <vector>

#include "support/Rect.h"

/// What the tool draws over the displayed frame, in frame pixels. Colours are the host interface's
/// codes: 0 untracked, 2 tracked, 4 rendered and matting box, 8 anchor arrows.
struct SOverlay {
  struct SRectangle {
    int color = 0;
    SRect rect;  ///< inclusive
  };
  /// A point's track box; search half sizes of 0: no search box.
  struct STrackBox {
    int color = 0;
    double x = 0.0;
    double y = 0.0;
    int halfWidth = 0;
    int halfHeight = 0;
    int searchHalfWidth = 0;
    int searchHalfHeight = 0;
    bool highlight = false;
  };
  struct SArrow {
    int color = 0;
    double fromX = 0.0;
    double fromY = 0.0;
    double toX = 0.0;
    double toY = 0.0;
    int length = 0;  ///< of the head, as `width`
    int width = 0;
  };
  std::vector<SRectangle> rectangles;
  std::vector<STrackBox> trackBoxes;
  std::vector<SArrow> arrows;
};
