#include "session/EntrySettings.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "params/SmoothingScale.h"
#include "params/StabilizerParameters.h"
#include "session/PointFinder.h"
#include "tracking/TrackingArray.h"

namespace {

constexpr int MOST_POINTS = 1000;
constexpr int LARGEST_INDEX = 9999;
constexpr const char* RECORD = "StabilizerParameters";
constexpr const char* POINTS = "TrackingArray";

[[noreturn]] void refuse(const std::string& what) {
  throw CUsageError("settings: " + what);
}

/// The one child of this name; null when there is none.
CPDLElement childOf(const CPDLElement& parent, const std::string& name) {
  CPDLElement found;
  const int count = parent.GetChildCount();
  for (int i = 0; i < count; ++i) {
    const CPDLElement child = parent.GetChild(i);
    if (child.GetName() != name) continue;
    if (!found.IsNull()) refuse("there are two " + name);
    found = child;
  }
  return found;
}

/// The parameter record as stored. A missing attribute has the tool's own default.
class CRecord {
 public:
  explicit CRecord(const CPDLElement& element) : element_(element) {}

  int integer(const char* key, int missing, int low, int high) const {
    const int value = element_.GetAttribInteger(key, missing);
    if (value != element_.GetAttribInteger(key, other(missing))) {
      if (element_.HasAttrib(key)) refuseText(key, NOT_UNDERSTOOD);
    }
    if (value < low || value > high) refuseRange(key, std::to_string(low), std::to_string(high));
    return value;
  }
  /// `low` when it is missing.
  double number(const char* key, double low, double high) const {
    if (!element_.HasAttrib(key)) return low;
    const double value = element_.GetAttribDouble(key, low - 1.0);
    if (!(value >= low && value <= high))
      refuseRange(key, std::to_string(low), std::to_string(high));
    return value;
  }
  bool boolean(const char* key, bool missing) const {
    const bool value = element_.GetAttribBool(key, missing);
    if (value != element_.GetAttribBool(key, !missing) && element_.HasAttrib(key))
      refuseText(key, NOT_UNDERSTOOD);
    return value;
  }
  template <std::size_t N>
  std::string name(const char* key, const char* missing,
                   const std::array<const char*, N>& names) const {
    const std::string value = element_.GetAttribString(key, missing);
    if (std::find(names.begin(), names.end(), value) == names.end())
      refuseText(key, NOT_UNDERSTOOD);
    return value;
  }
  [[noreturn]] void refuseText(const char* key, const char* why) const {
    refuse(textOf(key) + " " + why);
  }

 private:
  static constexpr const char* NOT_UNDERSTOOD = "is not understood";
  static int other(int value) { return value == 0 ? 1 : 0; }
  std::string textOf(const char* key) const {
    return std::string(RECORD) + " " + key + "=\"" +
           element_.GetAttribString(key, "").substr(0, 60) + "\"";
  }
  [[noreturn]] void refuseRange(const char* key, const std::string& low,
                                const std::string& high) const {
    refuse(textOf(key) + " is outside " + low + " to " + high);
  }

  CPDLElement element_;
};

// As the tool stores them.
constexpr std::array MODES = {"STABMODE_None", "STABMODE_Smoothed", "STABMODE_Flat",
                              "STABMODE_Registered"};
constexpr std::array WARPS = {"U_Fcn_Euclidean", "U_Fcn_Logrithmic", "U_Fcn_Thin_Plate",
                              "U_Fcn_None"};
constexpr std::array FILLS = {"MISSING_DATA_White", "MISSING_DATA_Black",
                              "MISSING_DATA_Previous_Frame", "MISSING_DATA_Zoom"};

void takeSizes(const CRecord& record, SStabilizeOptions& options, const SClipInfo& clip) {
  const SSizeRange box = TrackBoxRange(clip);
  const SSizeRange reach = SearchRange(clip);
  options.trackBox = record.integer("TrackBoxExtentX", 10, box.low, box.high);
  if (record.integer("TrackBoxExtentY", 10, box.low, box.high) != *options.trackBox)
    refuse("TrackBoxExtentX and TrackBoxExtentY differ");
  options.search = record.integer("SearchBoxExtentLeft", 20, reach.low, reach.high);
  for (const char* key : {"SearchBoxExtentRight", "SearchBoxExtentUp", "SearchBoxExtentDown"})
    if (record.integer(key, 20, reach.low, reach.high) != *options.search)
      refuse(std::string("SearchBoxExtentLeft and ") + key + " differ");
}

// The tool's window has no more settings than its slider has positions, and an entry would be
// rendered with the nearest of them.
bool isSmoothingStep(double alpha) {
  const double step = SmoothingWeight(SmoothingPosition(alpha));
  return std::abs(alpha - step) <= 1e-9 * std::abs(alpha) ||
         alpha == CStabilizerParameters().Alpha2;  // every list knows the default
}

void takeMotion(const CRecord& record, SStabilizeOptions& options) {
  const std::string h = record.name("HMode", "STABMODE_Flat", MODES);
  const std::string v = record.name("VMode", "STABMODE_Flat", MODES);
  const std::string r = record.name("RMode", "STABMODE_None", MODES);
  const std::string none = MODES[0];
  if (h == none && v == none && r == none) refuse("no axis is stabilised");
  if (v != none && h != none && v != h) refuse("HMode and VMode differ");
  if (r != none && (h != r || v != r)) refuse("RMode is not HMode and VMode");
  options.stabilize = r != none   ? EStabilize::rotation
                      : v == none ? EStabilize::horizontal
                      : h == none ? EStabilize::vertical
                                  : EStabilize::both;
  record.integer("GoodFramesIn", 1, 0, 1);
  record.integer("GoodFramesOut", 1, 0, 1);
  const bool registered = h == MODES[3] || v == MODES[3] || r == MODES[3];
  // The default of the record is frame 0, which matters only where there is something to match.
  record.integer("RefFrameIndex", registered ? 0 : *options.in, *options.in, *options.out - 1);
  const double jitter = record.number("Jitter", 0.0, 10.0);
  if (jitter != std::trunc(jitter)) record.refuseText("Jitter", "is between two settings");
  options.jitter = static_cast<int>(jitter);
  if (!isSmoothingStep(record.number("Alpha2", -1.0, 1.0)))
    record.refuseText("Alpha2", "is between two settings");
  record.name("UFunction", WARPS[0], WARPS);
  record.name("MissingDataFill", FILLS[0], FILLS);
}

/// Whatever the switch says, the tool takes the box over and keeps it with the clip.
void takeRegion(const CTrackingArray& array, bool useMatting, SStabilizeOptions& options,
                const SClipInfo& clip) {
  const SRect& box = array.mattingBox;
  const bool unset = box == SRect{};
  if (!clip.format.isBoxInPicture(box) && (useMatting || !unset))
    refuse("BoundingBox is empty or outside the picture of " +
           std::to_string(clip.format.getPixelsPerLine()) + "x" +
           std::to_string(clip.format.getLinesPerFrame()));
  if (!useMatting) return;
  options.matting = EMatting::box;
  options.mattingBox = box;
}

void checkBoxes(const CTrackingArray& array, const SStabilizeOptions& options) {
  const int box = *options.trackBox;
  const int reach = *options.search;
  const bool unset = !array.BoxExtentsDiffer(-1, -1, -1, -1, -1, -1);
  if (!unset && array.BoxExtentsDiffer(box, box, reach, reach, reach, reach))
    refuse("TrackBox and SearchBox are not those of the parameters");
}

/// On the elements themselves: who reads them into an array leaves out what it could not hold.
void checkFrame(const CPDLElement& frame, const SClipInfo& clip) {
  const int number = frame.GetAttribInteger("FrNdx", -1);
  if (number < clip.firstFrame || number >= clip.endFrame)
    refuse("TPS FrNdx=\"" + frame.GetAttribString("FrNdx", "").substr(0, 60) +
           "\" is no frame of the clip");
  const int count = frame.GetChildCount();
  if (count > MOST_POINTS) refuse("more than " + std::to_string(MOST_POINTS) + " points");
  for (int i = 0; i < count; ++i) {
    const CPDLElement point = frame.GetChild(i);
    const int index = point.GetAttribInteger("TpNdx", -1);
    if (index < 0 || index > LARGEST_INDEX)
      refuse("TP TpNdx=\"" + point.GetAttribString("TpNdx", "").substr(0, 60) + "\" is no index");
  }
}

void checkFrames(const CPDLElement& array, const SClipInfo& clip) {
  const int count = array.GetChildCount();
  for (int i = 0; i < count; ++i)
    if (array.GetChild(i).GetName() == "TPS") checkFrame(array.GetChild(i), clip);
}

void takePoints(const CTrackingArray& array, SStabilizeOptions& options, const SClipInfo& clip) {
  options.points.clear();
  SRect region = clip.format.getActivePictureRect();
  if (options.matting == EMatting::box) region = options.mattingBox;
  const STrackSettings track = TrackSettingsOf(options, region);
  for (const auto& [index, point] : array.FindPoints(*options.in).Entries()) {
    if (!point.IsValid()) continue;
    if (!CShotTracker::canTrack({point.x, point.y}, track))
      refuse("point " + std::to_string(index) + " at " + std::to_string(static_cast<int>(point.x)) +
             "," + std::to_string(static_cast<int>(point.y)) +
             ": its track box would leave the picture");
    options.points.push_back({point.x, point.y});
  }
}

}  // namespace

void TakeEntrySettings(SStabilizeOptions& options, const SClipInfo& clip) {
  const CPDLElement settings = options.entry->FirstElement();
  const CPDLElement parameters = childOf(settings, RECORD);
  if (parameters.IsNull()) refuse(std::string("there are no ") + RECORD);
  const CRecord record(parameters);
  takeSizes(record, options, clip);
  takeMotion(record, options);
  const bool useMatting = record.boolean("UseMatting", true);
  record.boolean("KeepOriginalMatValues", true);
  options.matting = useMatting ? EMatting::automatic : EMatting::off;
  const CPDLElement points = childOf(settings, POINTS);
  if (points.IsNull()) return;
  checkFrames(points, clip);
  CTrackingArray array;
  array.ReadPDLEntry(points);
  takeRegion(array, useMatting, options, clip);
  checkBoxes(array, options);
  takePoints(array, options, clip);
}
