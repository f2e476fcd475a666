#include "session/PointsSource.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <locale>
#include <set>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "FileName.h"
#include "session/PointFinder.h"
#include "support/ErrorReport.h"
#include "support/Files.h"
#include "tracking/TrackingText.h"

namespace {

// Beyond any shot: a hundred points over a hundred thousand frames.
constexpr std::size_t LARGEST_FILE = std::size_t{256} << 20;

/// "frame 5", or "frames 5 to 8".
std::string framesText(int first, int end) {
  if (end - first == 1) return "frame " + std::to_string(first);
  return "frames " + std::to_string(first) + " to " + std::to_string(end - 1);
}

CTrackingArray arrayOf(const std::string& text, bool isText, const STrackerPicture& picture) {
  if (isText) return ReadTrackerText(text, picture);
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  CTrackingArray array;
  std::string reason;
  if (!ReadTrackingArray(stream, array, reason)) throw std::runtime_error(reason);
  return array;
}

/// Points that lie in any frame. A damaged point is skipped by the tool; a batch run that would
/// stabilise on what is left says so instead.
std::set<int> indicesOf(const CTrackingArray& array) {
  std::set<int> indices;
  for (const auto& [frame, points] : array.frames)
    for (const auto& [index, point] : points.Entries()) {
      if (!point.IsValid())
        throw std::runtime_error("point " + std::to_string(index) + " of frame " +
                                 std::to_string(frame) + " is damaged");
      indices.insert(index);
    }
  return indices;
}

SRect regionOf(const SFilePoints& file, const SStabilizeOptions& options,
               const SPreparedShot& shot) {
  const CImageFormat& format = shot.tool->session().info().format;
  if (file.isText || options.mattingGiven) return shot.region;
  if (!file.points.UseMatting()) return format.getActivePictureRect();
  const SRect& box = file.points.MattingBox();
  if (!format.isBoxInPicture(box))
    throw std::runtime_error(file.path +
                             ": its matting box is empty or outside the picture; give another "
                             "with --matting");
  return box;
}

/// The file's frame whose points go to the IN frame.
int frameToPlace(const SFilePoints& file, int in, bool tracked) {
  const bool atIn = tracked || (file.isText && file.points.HasFrame(in));
  return atIn ? in : file.points.FirstFrame();
}

std::vector<SFeature> featuresOf(const SFilePoints& file, const CTrackingPoints& points,
                                 const SPreparedShot& shot, const SStabilizeOptions& options) {
  const STrackSettings track = TrackSettingsOf(options, shot.region);
  const CImageFormat& format = shot.tool->session().info().format;
  std::vector<SFeature> features;
  for (const auto& [index, point] : points.Entries()) {
    const bool inside = point.x >= 0.0 && point.y >= 0.0 &&
                        point.x <= format.getPixelsPerLine() - 1 &&
                        point.y <= format.getLinesPerFrame() - 1;
    const bool fits = inside && (shot.tracked || CShotTracker::canTrack({point.x, point.y}, track));
    if (!fits)
      throw std::runtime_error(
          file.path + ": point " + std::to_string(index) + " at " + std::to_string(point.x) + "," +
          std::to_string(point.y) +
          (inside ? ": its track box would leave the picture" : " is outside the picture"));
    features.push_back({point.x, point.y, 0.0});
  }
  return features;
}

/// Points by the order they have, from 0 on: the tool numbers them so when it has tracked them.
CTrackingPoints numbered(const CTrackingPoints& points) {
  CTrackingPoints inOrder;
  int next = 0;
  for (const auto& [index, point] : points.Entries()) inOrder.Point(next++) = point;
  return inOrder;
}

void placeText(const SFilePoints& file, int frame, SPreparedShot& shot, int in, int out) {
  CToolOnShot& tool = *shot.tool;
  tool.points().PointsAt(in) = numbered(file.points.FindPoints(frame));
  tool.tellPointsChanged();
  if (!shot.tracked) return;
  CTrackingArray paths;
  for (int f = in; f < out; ++f) paths.PointsAt(f) = numbered(file.points.FindPoints(f));
  tool.session().setKnownPaths(paths);
  tool.command(TOOL_TRACK);
}

/// A folder of our own for a file that lives as long as this.
class CTemporaryPointsFile {
 public:
  explicit CTemporaryPointsFile(const CTrackingArray& points) {
    std::string folder = (std::filesystem::temp_directory_path() / "stabilize-XXXXXX").string();
    if (!mkdtemp(folder.data())) throw std::runtime_error(folder + ": cannot be created");
    folder_ = folder;
    std::ostringstream text;
    text << points;
    if (WriteFileWhole(path(), text.str())) return;
    remove();
    throw std::runtime_error(theError.getMessage());
  }
  ~CTemporaryPointsFile() { remove(); }
  CTemporaryPointsFile(const CTemporaryPointsFile&) = delete;
  CTemporaryPointsFile& operator=(const CTemporaryPointsFile&) = delete;
  std::string path() const { return (folder_ / "matting.points").string(); }

 private:
  void remove() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  std::filesystem::path folder_;
};

void pressLoadKey(const std::string& path, SPreparedShot& shot) {
  shot.tool->command(shot.tracked ? TOOL_LOAD_POINTS : TOOL_LOAD_POINTS_NOT_MARKS, path);
}

void loadPointsFile(const SFilePoints& file, SPreparedShot& shot,
                    const SStabilizeOptions& options) {
  CToolOnShot& tool = *shot.tool;
  if (options.mattingGiven) {
    // The tool takes the matting of a file with its points: it gets a file that says what was
    // asked.
    CTrackingArray points = file.points;
    points.SetMattingBox(tool.points().MattingBox());
    points.SetUseMatting(options.matting != EMatting::off);
    pressLoadKey(CTemporaryPointsFile(points).path(), shot);
  } else {
    pressLoadKey(file.path, shot);
  }
  const int frames = shot.tracked ? *options.out - *options.in : 1;
  if (tool.points().FirstFrame() != *options.in || tool.points().FrameCount() != frames)
    throw std::runtime_error(file.path + ": the tool did not load it");
  if (shot.tracked)
    tool.session().adoptTrackedPoints();
  else
    tool.points().Compact();
}

std::string whatWasDone(const SFilePoints& file, int frame, bool tracked, std::size_t placed,
                        int in, int out) {
  const std::string points =
      std::to_string(placed) + (placed == 1 ? " point" : " points") + " loaded from " + file.path;
  if (tracked)
    return points + " with their paths over " + framesText(in, out) + ", not tracked again";
  std::string text = points + ", to be tracked from frame " + std::to_string(in);
  if (frame != in) text += " (they are those of frame " + std::to_string(frame) + ")";
  const std::size_t left = static_cast<std::size_t>(file.count) - placed;
  if (left > 0)
    text += "; " + std::to_string(left) + " that are not in frame " + std::to_string(frame) +
            " left out";
  return text;
}

}  // namespace

bool SFilePoints::areWholeOver(int in, int out) const {
  if (in >= out || count == 0) return false;
  for (int frame = in; frame < out; ++frame)
    if (!points.HasFrame(frame) || points.FindPoints(frame).Count() != count) return false;
  return true;
}

bool SFilePoints::areTrackedOver(int in, int out) const {
  const bool said = points.TrackState() != TRACK_STATE_Untracked && points.FirstFrame() == in &&
                    points.EndFrame() == out;
  return (isText ? out - in > 1 : said) && areWholeOver(in, out);
}

std::shared_ptr<const SFilePoints> ReadPointsFile(const SStabilizeOptions& options,
                                                  const CImageFormat& format) {
  auto file = std::make_shared<SFilePoints>();
  file->path = options.pointsFile;
  file->isText = HasExtension(file->path, ".txt");
  std::string text;
  if (!ReadFileWhole(file->path, text, LARGEST_FILE))
    throw std::runtime_error(theError.getMessage());
  try {
    const STrackerPicture picture{options.trackerOrigin, format.getLinesPerFrame()};
    file->points = arrayOf(text, file->isText, picture);
    file->points.RemoveLeadingEmptyFrames();
    file->count = static_cast<int>(indicesOf(file->points).size());
    if (file->count == 0) throw std::runtime_error("holds no points");
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(file->path + ": " + error.what());
  }
  return file;
}

void TakeMarksOfPoints(SStabilizeOptions& options, const SClipInfo& clip) {
  const SFilePoints& file = *options.filePoints;
  if (options.in || options.out || !file.areTracked()) return;
  const int first = file.points.FirstFrame();
  const int end = file.points.EndFrame();
  if (first < clip.firstFrame || end > clip.endFrame) return;
  options.in = first;
  options.out = end;
}

void LoadPoints(SPreparedShot& shot, const SStabilizeOptions& options,
                const SJobObserver& observer) {
  const SFilePoints& file = *options.filePoints;
  const int in = *options.in;
  const int out = *options.out;
  shot.tracked = !options.placeOnly && file.areTrackedOver(in, out);
  shot.region = regionOf(file, options, shot);
  shot.tool->session().setTrackingRegion(shot.region);
  const int frame = frameToPlace(file, in, shot.tracked);
  shot.features = featuresOf(file, file.points.FindPoints(frame), shot, options);
  if (file.isText)
    placeText(file, frame, shot, in, out);
  else
    loadPointsFile(file, shot, options);
  observer.note(whatWasDone(file, frame, shot.tracked, shot.features.size(), in, out));
}
