#include "render/MissingData.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr std::size_t SAMPLES_PER_PIXEL = 3;

std::size_t sampleIndex(int pixelsPerLine, int x, int y) {
  return (static_cast<std::size_t>(y) * static_cast<std::size_t>(pixelsPerLine) +
          static_cast<std::size_t>(x)) *
         SAMPLES_PER_PIXEL;
}

/// Calls visit(firstSample, sampleCount) for the contiguous parts of `rows` outside `inside`.
template <typename Visit>
void forEachPartOutside(int pixelsPerLine, SRows rows, const SRect& inside, Visit visit) {
  std::size_t from = sampleIndex(pixelsPerLine, 0, rows.first);
  const auto visitUpTo = [&](std::size_t end) {
    if (end > from) visit(from, end - from);
  };
  const int last = std::min(rows.last, inside.bottom);
  for (int y = std::max(rows.first, inside.top); y <= last; ++y) {
    visitUpTo(sampleIndex(pixelsPerLine, inside.left, y));
    from = sampleIndex(pixelsPerLine, inside.right + 1, y);
  }
  visitUpTo(sampleIndex(pixelsPerLine, 0, rows.last + 1));
}

double heightAt(const CTrackingPoints& path, int frame) {
  const auto entry = path.Entries().find(frame);
  return entry == path.Entries().end() ? 0.0 : entry->second.y;
}

/// Cuts the longer side about the centre.
SRectD withAspectRatio(SRectD rect, double width, double height) {
  const double w = rect.right - rect.left;
  const double h = rect.bottom - rect.top;
  if (w / h <= width / height) {
    const double centre = (rect.top + rect.bottom) / 2.0;
    const double newHeight = w * height / width;
    rect.top = centre - newHeight / 2.0;
    rect.bottom = centre + newHeight / 2.0;
  } else {
    const double centre = (rect.left + rect.right) / 2.0;
    const double newWidth = h * width / height;
    rect.left = centre - newWidth / 2.0;
    rect.right = centre + newWidth / 2.0;
  }
  return rect;
}

}  // namespace

SRectD ZoomSourceRectangle(const SRect& area, const CTrackingPoints& path,
                           const CTrackingPoints& smoothed0, const CTrackingPoints& smoothed1) {
  const double width = area.right - area.left + 1;
  const double height = area.bottom - area.top + 1;
  SRectD excursion;
  const auto& entries = path.Entries();
  for (const auto& [frame, point] : entries) {
    const CTrackPoint& first = entries.begin()->second;
    const double dx = -(point.x - first.x);
    const double dy = -(point.y - first.y);
    const double angle = std::fabs(heightAt(smoothed1, frame) - heightAt(smoothed0, frame)) *
                         3.1415927 * (1.0 / 180.0);
    excursion.left = std::max(excursion.left, dx + angle * height * 0.5);
    excursion.top = std::max(excursion.top, dy + angle * width * 0.5);
    excursion.right = std::min(excursion.right, dx - angle * height * 0.5);
    excursion.bottom = std::min(excursion.bottom, dy - angle * width * 0.5);
  }
  const SRectD rect{area.left + excursion.left, area.top + excursion.top,
                    area.right + excursion.right + 1.0, area.bottom + excursion.bottom + 1.0};
  return IsEmpty(rect) ? rect : withAspectRatio(rect, width, height);
}

SRect ClampedToFrame(const SRect& rect, int pixelsPerLine, int lines) {
  return {std::max(rect.left, 0), std::max(rect.top, 0), std::min(rect.right, pixelsPerLine - 1),
          std::min(rect.bottom, lines - 1)};
}

void CopyOutside(const std::uint16_t* from, std::uint16_t* to, int pixelsPerLine, SRows rows,
                 const SRect& inside) {
  forEachPartOutside(pixelsPerLine, rows, inside, [=](std::size_t first, std::size_t count) {
    std::memcpy(to + first, from + first, count * sizeof *to);
  });
}

void PaintOutside(std::uint16_t* samples, int pixelsPerLine, SRows rows, const SRect& inside,
                  const std::uint16_t color[3]) {
  const bool isGrey = color[0] == color[1] && color[1] == color[2];
  forEachPartOutside(pixelsPerLine, rows, inside, [=](std::size_t first, std::size_t count) {
    if (isGrey) {  // black nearly always is
      std::fill_n(samples + first, count, color[0]);
      return;
    }
    for (std::size_t i = first; i < first + count; i += SAMPLES_PER_PIXEL) {
      std::copy_n(color, SAMPLES_PER_PIXEL, samples + i);
    }
  });
}
