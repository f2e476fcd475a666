#include "DesktopArea.h"

#include <algorithm>

namespace {

constexpr int HANDHOLD = 20;  // pixels of a window that must be seen

/// A rectangle with its last column and row. Wide enough for any sum of two coordinates.
struct SArea {
  long long left, top, right, bottom;
};

SArea areaOf(const SBounds& monitor) {
  return {monitor.left, monitor.top, 0LL + monitor.left + monitor.width - 1,
          0LL + monitor.top + monitor.height - 1};
}

SArea desktopOf(const std::vector<SBounds>& monitors) {
  SArea a = areaOf(monitors.front());
  if (monitors.size() != 2) return a;
  const SArea b = areaOf(monitors[1]);
  if (a.left - 1 == b.right || a.right + 1 == b.left) {
    return {std::min(a.left, b.left), std::max(a.top, b.top), std::max(a.right, b.right),
            std::min(a.bottom, b.bottom)};
  }
  if (a.top - 1 == b.bottom || a.bottom + 1 == b.top) {
    return {std::max(a.left, b.left), std::min(a.top, b.top), std::min(a.right, b.right),
            std::max(a.bottom, b.bottom)};
  }
  return a;
}

/// One axis: a window that begins too far right ends at the edge's handhold, then one that ends too
/// far left begins at the left edge.
int broughtBack(long long at, long long size, long long first, long long last) {
  if (last - HANDHOLD <= at) at = last - size;
  if (at + size - 1 < first + HANDHOLD) at = first;
  return static_cast<int>(at);
}

}  // namespace

SBounds BroughtBackOntoDesktop(const SBounds& window, const std::vector<SBounds>& monitors) {
  if (monitors.empty()) return window;
  const SArea area = desktopOf(monitors);
  return {broughtBack(window.left, window.width, area.left, area.right),
          broughtBack(window.top, window.height, area.top, area.bottom), window.width,
          window.height};
}
