// Trackers' text from anywhere: it is refused with the line that is wrong, or it is written as a
// text that reads as the same points.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "Check.h"
#include "session/TrackerText.h"
#include "tracking/TrackingLimits.h"

namespace {

std::optional<CTrackingArray> Read(std::string_view text, const STrackerPicture& picture) {
  try {
    return ReadTrackerText(text, picture);
  } catch (const std::runtime_error& error) {
    FUZZ_CHECK(std::string_view(error.what()).starts_with("line "));
    return std::nullopt;
  }
}

void CheckLimits(const CTrackingArray& array) {
  if (array.frames.empty()) return;
  FUZZ_CHECK(IsStorableFrame(array.FirstFrame()));
  FUZZ_CHECK(IsStorableSpan(array.FirstFrame(), array.EndFrame() - 1));
  for (const auto& [frame, points] : array.frames) {
    FUZZ_CHECK(points.ValidCount() == points.Count() && points.FirstIndex() >= 0);
    for (const auto& [index, point] : points.Entries())
      FUZZ_CHECK(std::isfinite(point.x) && std::isfinite(point.y));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const STrackerPicture picture{ETrackerOrigin::topLeft, 480};
  const std::optional<CTrackingArray> array = Read(text, picture);
  const STrackerPicture fromBelow{ETrackerOrigin::bottomLeft, 480};
  FUZZ_CHECK(array.has_value() == Read(text, fromBelow).has_value());
  if (!array) return 0;
  CheckLimits(*array);
  const std::optional<CTrackingArray> again = Read(TrackerText(*array, picture), picture);
  FUZZ_CHECK(again && *again == *array);
  return 0;
}
