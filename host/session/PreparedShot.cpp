#include "session/PreparedShot.h"

#include <utility>

#include "session/PointFinder.h"
#include "session/PointsSource.h"
#include "support/Threads.h"

namespace {

std::vector<SFeature> givenPoints(const SStabilizeOptions& options, const SRect& region) {
  const STrackSettings track = TrackSettingsOf(options, region);
  std::vector<SFeature> features;
  for (const SPoint2& point : options.points) {
    if (!CShotTracker::canTrack(point, track))
      throw CUsageError("--point " + std::to_string(point.x) + "," + std::to_string(point.y) +
                        ": its track box would leave the picture");
    features.push_back({point.x, point.y, 0.0});
  }
  return features;
}

std::vector<SFeature> foundPoints(CFrameStore& store, const SStabilizeOptions& options,
                                  const SRect& region, const SJobObserver& observer) {
  std::vector<SFeature> features = FindPoints(store, options, region);
  if (features.empty())
    throw CJobError(-1, options.input + ": frame " + std::to_string(*options.in) +
                            ": nothing in the picture can be tracked (no texture above the "
                            "noise); give points with --point X,Y");
  observer.note(std::to_string(features.size()) + " points found");
  return features;
}

/// The region that the tool works in. A box that is kept with a clip may be of another clip, which
/// stood there before.
SRect regionOf(CToolOnShot& tool, const SStabilizeOptions& options) {
  const CImageFormat& format = tool.session().info().format;
  if (options.matting == EMatting::off) return format.getActivePictureRect();
  const SRect& box = tool.points().MattingBox();
  if (!format.isBoxInPicture(box))
    throw CUsageError(options.input +
                      ": the matting box that is kept with the clip is not of this picture; "
                      "give --matting");
  return box;
}

}  // namespace

std::unique_ptr<IClipReader> OpenInput(SStabilizeOptions& options) {
  SetAvailableProcessorCoreCount(options.threads);  // 0: what the machine has
  options.threads = AvailableProcessorCoreCount();
  std::unique_ptr<IClipReader> reader = OpenClip(options.input, options.threads);
  if (!options.pointsFile.empty()) {
    options.filePoints = ReadPointsFile(options, reader->info().format);
    TakeMarksOfPoints(options, reader->info());
  }
  CheckAndComplete(options, reader->info());
  return reader;
}

SPreparedShot PrepareShot(std::unique_ptr<IClipReader> reader, const SStabilizeOptions& options,
                          const SJobObserver& observer) {
  SPreparedShot shot;
  const std::size_t keptBytes = CacheMemory(options);
  shot.tool = std::make_unique<CToolOnShot>(std::move(reader), options.threads, keptBytes,
                                            *options.in, *options.out, observer);
  CPDLEntry entry =
      options.entry ? CPDLEntry::CopyOf(options.entry->FirstElement()) : MakeEntry(options);
  shot.tool->apply(entry);
  shot.tool->points().frames.clear();  // what a captured entry had tracked before
  // Now: an entry carries the points along, which will have paths.
  shot.moveSettings = MoveSettingsOf(shot.tool->capture());
  shot.region = regionOf(*shot.tool, options);
  if (options.filePoints) {
    LoadPoints(shot, options, observer);
    return shot;
  }
  shot.tool->session().setTrackingRegion(shot.region);
  shot.features = options.points.empty()
                      ? foundPoints(shot.tool->session().store(), options, shot.region, observer)
                      : givenPoints(options, shot.region);
  CTrackingPoints& points = shot.tool->points().PointsAt(*options.in);
  int index = 0;
  for (const SFeature& feature : shot.features)
    points.Point(index++) = CTrackPoint(feature.x, feature.y);
  shot.tool->tellPointsChanged();
  return shot;
}
