#pragma once

#include <string>
#include <vector>

#include "session/MotionMeasure.h"

/// One line of the motion graph.
struct SMotionCurve {
  std::string name;   ///< as the legend says it
  std::string color;  ///< SVG colour
  double width;       ///< pixels
  std::vector<SFrameMotion> motion;
};

/// A picture of a shot's motion as SVG: horizontal, vertical and rotational path over the frames,
/// one panel each, every curve in each. Curves without entries are left out.
std::string MotionGraphAsSvg(const std::string& title, const std::vector<SMotionCurve>& curves);
