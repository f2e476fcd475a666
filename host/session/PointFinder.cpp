#include "session/PointFinder.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include "ClipPicture.h"

STrackSettings TrackSettingsOf(const SStabilizeOptions& options, const SRect& region) {
  STrackSettings track;
  track.trackBoxExtentX = track.trackBoxExtentY = *options.trackBox;
  track.searchLeft = track.searchRight = track.searchUp = track.searchDown = *options.search;
  track.region = region;
  track.threads = std::max(1, options.threads);
  return track;
}

namespace {

/// Indices of the features that are still there one frame later.
std::vector<bool> stillThere(const std::vector<SFeature>& features, const STrackSettings& track,
                             const CImageFormat& format, const std::uint16_t* first,
                             const IPicture& second) {
  std::map<int, SPoint2> points;
  for (std::size_t i = 0; i < features.size(); ++i)
    points[static_cast<int>(i)] = {features[i].x, features[i].y};
  CShotTracker tracker(format, track, points);
  tracker.begin(first);
  std::vector<bool> there(features.size(), false);
  for (const auto& [index, point] : tracker.follow(second))
    there[static_cast<std::size_t>(index)] = point.state == EPointState::found;
  return there;
}

}  // namespace

std::vector<SFeature> FindPoints(CFrameStore& store, const SStabilizeOptions& options,
                                 const SRect& region) {
  const CImageFormat& format = store.info().format;
  const int in = *options.in;
  std::unique_ptr<IClipFrame> opened = store.openNow(in);
  const std::unique_ptr<CToolFrameBuffer> first = store.decode(in, *opened);
  store.keep(in, std::move(opened));
  SFeatureSettings settings;
  settings.count = options.autoPoints + (options.autoPoints + 1) / 2;
  settings.region = region;
  settings.margin = *options.trackBox + *options.search;
  settings.window = *options.trackBox;
  std::vector<SFeature> features = DetectFeatures(first->samples(), format, settings);
  if (*options.out - in > 1 && !features.empty()) {
    std::unique_ptr<IClipFrame> second = store.openNow(in + 1);
    std::unique_ptr<CToolFrameBuffer> whole;
    if (second->givesParts())
      second->fetch();
    else
      whole = store.decode(in + 1, *second);
    const auto found = [&](const IPicture& picture) {
      return stillThere(features, TrackSettingsOf(options, region), format, first->samples(),
                        picture);
    };
    const std::vector<bool> there =
        whole ? found(CWholePicture(whole->samples(), format)) : found(CClipPicture(*second));
    store.keep(in + 1, std::move(second));
    // Where nothing is found again the tracking pass shall say so, point by point.
    if (std::find(there.begin(), there.end(), true) != there.end()) {
      std::size_t kept = 0;
      for (std::size_t i = 0; i < features.size(); ++i)
        if (there[i]) features[kept++] = features[i];
      features.resize(kept);
    }
  }
  features.resize(std::min(features.size(), static_cast<std::size_t>(options.autoPoints)));
  return features;
}
