// A points file from anywhere: whatever it holds, it loads or it is refused with a reason; what
// loads is written as a text that loads as the same set; and every operation on it ends.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "Check.h"
#include "tracking/TrackingText.h"

namespace {

std::string TextOf(const CTrackingArray& array) {
  std::ostringstream text;
  text << array;
  FUZZ_CHECK(text.good());
  return std::move(text).str();
}

bool Agree(double a, double b) {
  return std::abs(a - b) <= 1e-5 * std::max(std::abs(a), std::abs(b)) + 1e-300;
}

/// What the text keeps of a frame: the valid points, to six digits.
bool Agree(const CTrackingPoints& a, const CTrackingPoints& b) {
  return std::ranges::all_of(a.Entries(), [&b](const auto& entry) {
    const auto& [index, point] = entry;
    if (!point.IsValid()) return !b.IsValidPoint(index);
    if (!b.IsValidPoint(index)) return false;
    const CTrackPoint& other = b.Entries().at(index);
    return Agree(point.x, other.x) && Agree(point.y, other.y);
  });
}

void CheckRoundTrip(const CTrackingArray& array) {
  const std::string text = TextOf(array);
  std::istringstream in(text);
  CTrackingArray again;
  FUZZ_CHECK(in >> again);
  FUZZ_CHECK(TextOf(again) == text);
  FUZZ_CHECK(again.trackState == array.trackState && again.useMatting == array.useMatting &&
             again.mattingBox == array.mattingBox);
  FUZZ_CHECK(std::ranges::equal(array.frames, again.frames, [](const auto& a, const auto& b) {
    return a.first == b.first && b.second.Count() == a.second.ValidCount() &&
           Agree(a.second, b.second);
  }));
  FUZZ_CHECK(std::ranges::equal(array.attributes, again.attributes, [](auto a, auto b) {
    const bool agree = Agree(a.second.Al, b.second.Al);
    a.second.Al = b.second.Al = 0.0;
    return agree && a == b;
  }));
}

/// Compacting and deleting fill the holes between the frames. As many as a text may ask for take
/// the sanitizers seconds, and say no more than a few.
bool MayFillHoles(const CTrackingArray& array) {
  return array.EndFrame() - array.FirstFrame() <= 10'000;
}

void CheckOperations(const CTrackingArray& loaded) {
  CTrackingArray array = loaded;
  const int count = array.NumberOfPoints();
  FUZZ_CHECK(count == 0 || array.frames.begin()->second.ValidCount() == count);
  const int first = array.FirstFrame();
  for (const int point : {0, array.frames.empty() ? 0 : array.FindPoints(first).FirstIndex()}) {
    const CTrackingPoints path = array.Trajectory(point);
    FUZZ_CHECK((path.ValidCount() > 0) == array.PointExists(point));
    FUZZ_CHECK(!array.IsTrackedOver(point, first, array.EndFrame()) ||
               path.Count() == array.FrameCount());
    array.SetTrackStatus(point, array.AnchorType(point));
  }
  if (!MayFillHoles(array)) return;
  CTrackingArray compacted = array;
  const int entries = compacted.Compact();
  FUZZ_CHECK(entries >= count);
  FUZZ_CHECK(count == compacted.NumberOfPoints());
  FUZZ_CHECK(count == 0 || compacted.FindPoints(compacted.FirstFrame()).IsValidPoint(count - 1));
  array.DeletePoint(0);
  FUZZ_CHECK(!array.PointExists(0));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
  CTrackingArray array;
  std::string reason;
  const bool loaded = ReadTrackingArray(in, array, reason);
  FUZZ_CHECK(loaded == reason.empty() && loaded == !in.fail());
  if (loaded) {
    CheckRoundTrip(array);
    CheckOperations(array);
  }
  return 0;
}
