#pragma once

#include "clip/ClipFrame.h"
#include "tracker/Picture.h"

/// A clip's frame as the tracker sees it: nothing but what it looks at is read. The frame must
/// outlive it.
class CClipPicture : public IPicture {
 public:
  explicit CClipPicture(const IClipFrame& frame) : frame_(frame) {}
  SPicturePart part(const SRect& area, std::vector<std::uint16_t>& memory) const override {
    const auto pitch = 3 * static_cast<std::size_t>(area.right - area.left + 1);
    const std::size_t count = pitch * static_cast<std::size_t>(area.bottom - area.top + 1);
    if (memory.size() < count) memory.resize(count);
    frame_.readPart(area, memory.data());
    return {memory.data(), static_cast<std::ptrdiff_t>(pitch)};
  }

 private:
  const IClipFrame& frame_;
};
