#include "session/StabilizeOptions.h"

#include "FileName.h"
#include "params/SmoothingScale.h"
#include "session/EntrySettings.h"
#include "session/MotionExport.h"
#include "support/Memory.h"
#include "tracking/TrackingArray.h"

namespace {

// Pictures wider than this are tracked with boxes of twice the size.
constexpr int WIDE_PICTURE = 2048;

int scaleOf(const SClipInfo& clip) {
  return clip.format.getPixelsPerLine() > WIDE_PICTURE ? 2 : 1;
}

void checkRange(const char* option, int value, SSizeRange range) {
  if (value < range.low || value > range.high)
    throw CUsageError(std::string(option) + " " + std::to_string(value) + " is outside " +
                      std::to_string(range.low) + " to " + std::to_string(range.high));
}

void completeMarks(SStabilizeOptions& options, const SClipInfo& clip) {
  if (!options.in) options.in = clip.firstFrame;
  if (!options.out) options.out = clip.endFrame;
  const std::string frames = "the clip has frames " + std::to_string(clip.firstFrame) + " to " +
                             std::to_string(clip.endFrame - 1);
  if (*options.in >= *options.out)
    throw CUsageError("--in " + std::to_string(*options.in) + " is not below --out " +
                      std::to_string(*options.out));
  if (*options.in < clip.firstFrame || *options.in >= clip.endFrame)
    throw CUsageError("--in " + std::to_string(*options.in) + " is outside the clip: " + frames);
  if (*options.out > clip.endFrame)
    throw CUsageError("--out " + std::to_string(*options.out) + " is outside the clip: " + frames +
                      " (OUT is one past the last)");
}

void completeSizes(SStabilizeOptions& options, const SClipInfo& clip) {
  const int scale = scaleOf(clip);
  if (!options.trackBox) options.trackBox = 10 * scale;
  if (!options.search) options.search = 20 * scale;
  checkRange("--track-box", *options.trackBox, TrackBoxRange(clip));
  checkRange("--search", *options.search, SearchRange(clip));
  if (options.smoothing)
    checkRange("--smoothing", *options.smoothing, {LEAST_SMOOTHING, MOST_SMOOTHING});
  checkRange("--jitter", options.jitter, {0, 10});
  if (options.points.empty()) checkRange("--auto", options.autoPoints, {1, 200});
}

void completeMotion(SStabilizeOptions& options) {
  if (options.reference && options.motion != EMotion::match)
    throw CUsageError("--reference needs --motion match");
  if (options.smoothing && options.motion != EMotion::smooth)
    throw CUsageError("--smoothing needs --motion smooth");
  if (options.motion == EMotion::remove && options.anchor == EAnchor::both)
    throw CUsageError(
        "--anchor both does not go with --motion remove: the picture can only hold still at one "
        "place; choose first, last or none");
  if (!options.anchor) options.anchor = EAnchor::first;
  if (!options.reference) options.reference = options.in;
  if (*options.reference < *options.in || *options.reference >= *options.out)
    throw CUsageError("--reference " + std::to_string(*options.reference) +
                      " is not between the marks (" + std::to_string(*options.in) + " to " +
                      std::to_string(*options.out - 1) + ")");
}

void checkPictureOptions(const SStabilizeOptions& options, const SClipInfo& clip) {
  const int width = clip.format.getPixelsPerLine();
  const int height = clip.format.getLinesPerFrame();
  const std::string size = std::to_string(width) + "x" + std::to_string(height);
  if (options.matting == EMatting::box && !clip.format.isBoxInPicture(options.mattingBox))
    throw CUsageError("--matting box is empty or outside the picture of " + size +
                      "; wanted LEFT,TOP,RIGHT,BOTTOM with pixels counted from 0, right and "
                      "bottom inclusive");
  for (const SPoint2& point : options.points)
    if (!(point.x >= 0.0 && point.y >= 0.0 && point.x <= width - 1 && point.y <= height - 1))
      throw CUsageError("--point " + std::to_string(point.x) + "," + std::to_string(point.y) +
                        " is outside the picture of " + size);
  if (options.maxResidual && !(*options.maxResidual >= 0.0))
    throw CUsageError("--max-residual must not be negative");
}

void checkFiles(const SStabilizeOptions& options) {
  if (!options.pointsFile.empty() && !options.points.empty())
    throw CUsageError("--points and --point exclude each other");
  const std::string& points = options.savePoints;
  if (!points.empty() && !HasExtension(points, ".points") && !HasExtension(points, ".txt"))
    throw CUsageError(points + ": points are saved as .points or .txt");
  if (options.exportMotion.empty()) return;
  if (!IsMotionExport(options.exportMotion))
    throw CUsageError("--export-motion " + options.exportMotion + ": wants .csv or .json");
  if (options.jitter > 0)
    throw CUsageError(
        "--export-motion does not go with --jitter: the jitter is made up while rendering");
}

const char* modeName(EMotion motion) {
  switch (motion) {
    case EMotion::smooth: return "STABMODE_Smoothed";
    case EMotion::match: return "STABMODE_Registered";
    case EMotion::remove: break;
  }
  return "STABMODE_Flat";
}

const char* fillName(EFill fill) {
  switch (fill) {
    case EFill::black: return "MISSING_DATA_Black";
    case EFill::previous: return "MISSING_DATA_Previous_Frame";
    case EFill::zoom: return "MISSING_DATA_Zoom";
    case EFill::white: break;
  }
  return "MISSING_DATA_White";
}

const char* warpName(EWarp warp) {
  switch (warp) {
    case EWarp::logarithmic: return "U_Fcn_Logrithmic";
    case EWarp::thinPlate: return "U_Fcn_Thin_Plate";
    case EWarp::none: return "U_Fcn_None";
    case EWarp::euclidean: break;
  }
  return "U_Fcn_Euclidean";
}

void writeSizes(CPDLElement record, const SStabilizeOptions& options) {
  for (const char* key : {"TrackBoxExtentX", "TrackBoxExtentY"})
    record.SetAttribInteger(key, *options.trackBox);
  for (const char* key :
       {"SearchBoxExtentLeft", "SearchBoxExtentRight", "SearchBoxExtentUp", "SearchBoxExtentDown"})
    record.SetAttribInteger(key, *options.search);
}

void writeMotion(CPDLElement record, const SStabilizeOptions& options) {
  const EAnchor anchor = *options.anchor;
  const bool anchorIn = anchor == EAnchor::first || anchor == EAnchor::both;
  const bool anchorOut = anchor == EAnchor::last || anchor == EAnchor::both;
  record.SetAttribInteger("GoodFramesIn", anchorIn ? 1 : 0);
  record.SetAttribInteger("GoodFramesOut", anchorOut ? 1 : 0);
  record.SetAttribInteger("RefFrameIndex", *options.reference);
  record.SetAttribDouble("Jitter", options.jitter);
  if (options.smoothing) record.SetAttribDouble("Alpha2", SmoothingWeight(*options.smoothing));
  const EStabilize axes = options.stabilize;
  const char* mode = modeName(options.motion);
  const char* none = "STABMODE_None";
  record.SetAttribString("HMode", axes == EStabilize::vertical ? none : mode);
  record.SetAttribString("VMode", axes == EStabilize::horizontal ? none : mode);
  record.SetAttribString("RMode", axes == EStabilize::rotation ? mode : none);
}

}  // namespace

SSizeRange TrackBoxRange(const SClipInfo& clip) {
  return {5 * scaleOf(clip), 30 * scaleOf(clip)};
}

SSizeRange SearchRange(const SClipInfo& clip) {
  return {5 * scaleOf(clip), 50 * scaleOf(clip)};
}

std::size_t CacheMemory(const SStabilizeOptions& options) {
  return options.cacheMemory.value_or(MachineMemory() / 4);
}

void CheckAndComplete(SStabilizeOptions& options, const SClipInfo& clip) {
  completeMarks(options, clip);
  if (options.entry) TakeEntrySettings(options, clip);
  completeSizes(options, clip);
  completeMotion(options);
  checkPictureOptions(options, clip);
  checkFiles(options);
  if (options.maxResidual) options.verify = true;
  if (options.verify && options.output == "null:")
    throw CUsageError("--verify and --max-residual need an output that can be read, not null:");
  if (!options.compare.empty() && options.output == "null:")
    throw CUsageError("--compare needs an output that can be read, not null:");
}

CPDLEntry MakeEntry(const SStabilizeOptions& options) {
  CPDLEntry entry;
  CPDLElement record = entry.FirstElement().MakeNewChild("StabilizerParameters");
  writeSizes(record, options);
  writeMotion(record, options);
  record.SetAttribString("UFunction", warpName(options.warp));
  record.SetAttribString("MissingDataFill", fillName(options.fill));
  record.SetAttribBool("UseMatting", options.matting != EMatting::off);
  record.SetAttribBool("KeepOriginalMatValues", true);
  if (options.matting == EMatting::box) {
    CTrackingArray boxes;
    boxes.SetMattingBox(options.mattingBox);
    const int box = *options.trackBox;
    const int reach = *options.search;
    boxes.SetBoxExtents(box, box, reach, reach, reach, reach);
    boxes.WritePDLEntry(entry.FirstElement());
  }
  return entry;
}
