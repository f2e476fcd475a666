#include "session/PointFinder.h"

#include <algorithm>
#include <cstdint>
#include <map>

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
                             const std::uint16_t* second) {
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

std::vector<SFeature> FindPoints(IClipReader& reader, const SStabilizeOptions& options,
                                 const SRect& region) {
  const CImageFormat& format = reader.info().format;
  std::vector<std::uint16_t> first(format.getBytesPerField() / sizeof(std::uint16_t));
  reader.readFrame(*options.in, first.data());
  SFeatureSettings settings;
  settings.count = options.autoPoints + (options.autoPoints + 1) / 2;
  settings.region = region;
  settings.margin = *options.trackBox + *options.search;
  settings.window = *options.trackBox;
  std::vector<SFeature> features = DetectFeatures(first.data(), format, settings);
  if (*options.out - *options.in > 1 && !features.empty()) {
    std::vector<std::uint16_t> second(first.size());
    reader.readFrame(*options.in + 1, second.data());
    const std::vector<bool> there =
        stillThere(features, TrackSettingsOf(options, region), format, first.data(), second.data());
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
