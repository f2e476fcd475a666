#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A mouse pointer as a picture: 32-bit pixels 0xAARRGGBB with straight alpha, row by row.
struct SCursorImage {
  int width = 0;
  int height = 0;
  int hotX = 0;  ///< the pixel that points
  int hotY = 0;
  std::vector<std::uint32_t> pixels;
};

/// A pointer picture of this library by name ("ColorPicker"); null for an unknown name. Made once
/// and kept for the life of the process. THREAD: any.
const SCursorImage* LoadCursorImage(const std::string& name);
