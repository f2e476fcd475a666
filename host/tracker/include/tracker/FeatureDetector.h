#pragma once

#include <cstdint>
#include <vector>

#include "support/ImageFormat.h"
#include "support/Rect.h"

/// A place in a picture that can be tracked well. Pixels, centres at integers.
struct SFeature {
  double x = 0.0;
  double y = 0.0;
  double strength = 0.0;  ///< smaller eigenvalue of the mean structure tensor of the patch, noise
                          ///< taken off; gradients in code range 1 per pixel
};

struct SFeatureSettings {
  int count = 16;
  SRect region;            ///< inclusive; nothing is found outside it
  int margin = 30;         ///< pixels that a feature keeps from the region's edges
  double minDistance = 0;  ///< pixels between features; 0 chooses by region size and count
  int window = 10;  ///< half width of the patch that must be textured: the track box, 2 to 100
};

/// Finds the strongest corners (Shi & Tomasi 1994), spread over the region: the region is divided
/// into cells, each gives its best before any gives its second. Fewer than `count`, or none, come
/// back where the picture has no texture above its own noise. A patch that owes its texture to one
/// small spot, which may be dust and gone in the next frame, ranks behind. Strongest first; the
/// same picture always gives the same list. REQUIRES: region inside the frame. THREAD: any.
std::vector<SFeature> DetectFeatures(const std::uint16_t* samples, const CImageFormat& format,
                                     const SFeatureSettings& settings);
