#include "support/PixelRegionList.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace {

SRect clipToFrame(const SRect& rect, int width, int height) {
  return {std::max(rect.left, 0), std::max(rect.top, 0), std::min(rect.right, width - 1),
          std::min(rect.bottom, height - 1)};
}

bool isEmpty(const SRect& rect) {
  return rect.right < rect.left || rect.bottom < rect.top;
}

std::size_t samplesPerLine(const SRect& rect, int components) {
  return (static_cast<std::size_t>(rect.right) - rect.left + 1) * components;
}

std::size_t samplesOf(const SRect& rect, int components) {
  return samplesPerLine(rect, components) * (static_cast<std::size_t>(rect.bottom) - rect.top + 1);
}

bool belongsTo(int line, CPixelRegionList::EField field) {
  switch (field) {
    case CPixelRegionList::EField::first: return line % 2 == 0;
    case CPixelRegionList::EField::second: return line % 2 != 0;
    case CPixelRegionList::EField::both: return true;
  }
  return false;
}

std::size_t offsetInFrame(int x, int y, int width, int components) {
  return (static_cast<std::size_t>(y) * width + x) * components;
}

}  // namespace

void CPixelRegionList::Add(const SRect& rect, const std::uint16_t* pixels, int width, int height,
                           int components) {
  const SRect clipped = clipToFrame(rect, width, height);
  if (isEmpty(clipped)) return;
  regions_.push_back({clipped, {}});
  if (pixels == nullptr) return;
  std::vector<std::uint16_t>& copy = regions_.back().pixels;
  copy.reserve(samplesOf(clipped, components));
  for (int y = clipped.top; y <= clipped.bottom; ++y) {
    const std::uint16_t* line = pixels + offsetInFrame(clipped.left, y, width, components);
    copy.insert(copy.end(), line, line + samplesPerLine(clipped, components));
  }
}

void CPixelRegionList::ReplacePixelsFromFrame(const std::uint16_t* frame, int width, int height,
                                              int components, EField field) {
  for (SRegion& region : regions_) {
    const SRect& rect = region.rect;
    const std::size_t stride = samplesPerLine(rect, components);
    region.pixels.resize(samplesOf(rect, components));
    const SRect inside = clipToFrame(rect, width, height);
    if (isEmpty(inside)) continue;
    for (int y = inside.top; y <= inside.bottom; ++y) {
      if (!belongsTo(y, field)) continue;
      std::copy_n(frame + offsetInFrame(inside.left, y, width, components),
                  samplesPerLine(inside, components),
                  region.pixels.data() + stride * static_cast<std::size_t>(y - rect.top));
    }
  }
}

void CPixelRegionList::CopyPixelsFrameToFrame(const std::uint16_t* from, std::uint16_t* to,
                                              int width, int height, int components,
                                              EField field) const {
  for (const SRegion& region : regions_) {
    const SRect inside = clipToFrame(region.rect, width, height);
    if (isEmpty(inside)) continue;
    for (int y = inside.top; y <= inside.bottom; ++y) {
      if (!belongsTo(y, field)) continue;
      const std::size_t offset = offsetInFrame(inside.left, y, width, components);
      std::copy_n(from + offset, samplesPerLine(inside, components), to + offset);
    }
  }
}

void CPixelRegionList::TakeFrom(CPixelRegionList& other) {
  if (&other == this) return;
  regions_.insert(regions_.end(), std::make_move_iterator(other.regions_.begin()),
                  std::make_move_iterator(other.regions_.end()));
  other.regions_.clear();
}
