#include "session/PointsOutput.h"

#include <filesystem>
#include <sstream>
#include <stdexcept>

#include "FileName.h"
#include "session/TrackerText.h"
#include "support/ErrorReport.h"
#include "support/Files.h"
#include "tracking/TrackingText.h"

namespace {

std::string pointsText(const CTrackingArray& points) {
  std::ostringstream text;
  text << points;
  return std::move(text).str();
}

void saveText(const std::string& path, CToolOnShot& tool, const SStabilizeOptions& options) {
  const int height = tool.session().info().format.getLinesPerFrame();
  if (!WriteFileWhole(path, TrackerText(tool.points(), {options.trackerOrigin, height})))
    throw std::runtime_error(theError.getMessage());
}

/// The tool tells an operator's log why it could not save; a batch host looks at the file.
void saveThroughTool(const std::string& path, CToolOnShot& tool) {
  tool.command(TOOL_SAVE_POINTS, path);
  const std::string wanted = pointsText(tool.points());
  std::string written;
  if (!ReadFileWhole(path, written, wanted.size() + 1))
    throw std::runtime_error(theError.getMessage());
  if (written != wanted) throw std::runtime_error(path + ": the points could not be written");
}

}  // namespace

void CheckWritable(const std::string& path) {
  if (path.empty()) return;
  const CFileReplacement file(path);
  if (!file.isOpen()) throw std::runtime_error(theError.getMessage());
}

void CheckPointsOutput(const SStabilizeOptions& options) {
  const std::string& path = options.savePoints;
  if (path.empty()) return;
  std::error_code ignored;
  if (!options.overwrite && !options.replacePoints && std::filesystem::exists(path, ignored))
    throw std::runtime_error(path + ": exists already; --overwrite replaces it");
  CheckWritable(path);
}

void SavePoints(CToolOnShot& tool, const SStabilizeOptions& options) {
  const std::string& path = options.savePoints;
  if (HasExtension(path, ".txt"))
    saveText(path, tool, options);
  else
    saveThroughTool(path, tool);
}
