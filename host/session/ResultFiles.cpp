#include "session/ResultFiles.h"

#include <filesystem>
#include <map>

#include "FileName.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* OTHER_FILES[] = {".dpx", ".tif", ".tiff", ".png", ".exr",    ".jpg", ".jpeg",
                                       ".mov", ".mkv", ".mp4",  ".m4v", ".avi",    ".mxf", ".mpg",
                                       ".ts",  ".mts", ".webm", ".wav", ".points", ".pdl"};

/// The same text for every way to write a path.
std::string oneName(const std::string& path) {
  std::error_code ignored;
  const fs::path whole = fs::weakly_canonical(fs::absolute(path, ignored), ignored);
  return whole.empty() ? path : whole.string();
}

}  // namespace

void CheckTextName(const std::string& option, const std::string& path) {
  if (path.empty()) return;
  // What a link leads to is what would be lost.
  for (const std::string& name : {path, oneName(path)})
    for (const char* extension : OTHER_FILES)
      if (HasExtension(name, extension))
        throw CUsageError(option + " " + name + ": a text is not written under the name of a " +
                          extension + " file");
}

void CheckResultFiles(const SStabilizeOptions& options, const std::string& log) {
  CheckTextName("--report", options.report);
  CheckTextName("--graph", options.graph);
  CheckTextName("--log", log);
  const std::pair<const char*, const std::string*> files[] = {
      {"INPUT", &options.input},
      {"--output", &options.output},
      {"--points", &options.pointsFile},
      {"--compare", &options.compare},
      {"--report", &options.report},
      {"--graph", &options.graph},
      {"--save-points", &options.savePoints},
      {"--export-motion", &options.exportMotion},
      {"--log", &log}};
  std::map<std::string, const char*> taken;
  for (const auto& [option, path] : files) {
    if (path->empty() || *path == "null:") continue;
    const auto [other, isNew] = taken.emplace(oneName(*path), option);
    // INPUT and --output are compared as clips, by their frames.
    if (!isNew && std::string(option) != "--output")
      throw CUsageError(std::string(option) + " and " + other->second + " are one file, " + *path);
  }
}
