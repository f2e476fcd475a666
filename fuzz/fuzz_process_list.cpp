// A process list from anywhere: it is refused with a reason, or every child of its first element
// reads as tracking data, which is written as an entry that reads as the same data.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "Check.h"
#include "support/ErrorReport.h"
#include "support/PDLElement.h"
#include "tracking/TrackingArray.h"
#include "tracking/TrackingLimits.h"

namespace {

void CheckLimits(const CTrackingArray& array) {
  if (array.frames.empty()) return;
  FUZZ_CHECK(IsStorableFrame(array.FirstFrame()) && array.EndFrame() > array.FirstFrame());
  FUZZ_CHECK(IsStorableSpan(array.FirstFrame(), array.EndFrame() - 1));
  for (const auto& [frame, points] : array.frames) {
    FUZZ_CHECK(points.FirstIndex() >= 0 && points.EndIndex() <= LARGEST_POINT_INDEX + 1);
  }
}

void CheckRoundTrip(const CTrackingArray& array) {
  const CPDLEntry entry;
  array.WritePDLEntry(entry.FirstElement());
  const std::unique_ptr<CPDLEntry> read = CPDLEntry::FromText(entry.ToText());
  FUZZ_CHECK(read != nullptr && read->FirstElement().GetChildCount() == 1);
  CTrackingArray again;
  again.ReadPDLEntry(read->FirstElement().GetChild(0));
  FUZZ_CHECK(again == array);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  theError.clear();
  const std::unique_ptr<CPDLEntry> entry =
      CPDLEntry::FromText(std::string(reinterpret_cast<const char*>(data), size));
  FUZZ_CHECK((entry == nullptr) == (theError.getError() != 0));
  if (entry == nullptr) return 0;
  const CPDLElement settings = entry->FirstElement();
  const int count = settings.GetChildCount();
  for (int i = 0; i < count; ++i) {
    CTrackingArray array;
    array.ReadPDLEntry(settings.GetChild(i));
    CheckLimits(array);
    CheckRoundTrip(array);
  }
  return 0;
}
