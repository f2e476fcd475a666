#include "session/TruthComparison.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace {

using Json = nlohmann::json;

constexpr std::size_t DRIFT_FRAMES = 20;

Json readJson(const std::string& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error(file + ": cannot be opened");
  try {
    return Json::parse(stream);
  } catch (const Json::exception& error) {
    throw std::runtime_error(file + ": " + error.what());
  }
}

struct SPaths {
  std::vector<SFrameMotion> truth;
  std::vector<SFrameMotion> output;
  std::vector<SFrameMotion> intended;
};

SFrameMotion motionOf(int frame, const Json& triple) {
  return {frame, triple.at(0), triple.at(1), triple.at(2)};
}

/// The shot may begin later than the generated one: the truth is taken against its first frame.
SPaths readPaths(const std::string& reportFile, const std::string& truthFile) {
  const Json report = readJson(reportFile);
  const Json truth = readJson(truthFile);
  SPaths paths;
  try {
    std::map<int, SFrameMotion> known;
    for (const Json& frame : truth.at("frames"))
      known[frame.at("frame")] = {frame.at("frame"), frame.at("x"), frame.at("y"),
                                  frame.at("angle")};
    for (const Json& frame : report.at("frames")) {
      const int number = frame.at("frame");
      const SFrameMotion measured = motionOf(number, frame.at("measured"));
      const SFrameMotion intended = motionOf(number, frame.at("intended"));
      const SFrameMotion& real = known.at(number);
      paths.truth.push_back(real);
      paths.intended.push_back(intended);
      paths.output.push_back({number, real.x - measured.x + intended.x,
                              real.y - measured.y + intended.y,
                              real.angle - measured.angle + intended.angle});
    }
  } catch (const std::exception& error) {
    throw std::runtime_error(reportFile + " and " + truthFile + " do not fit: " + error.what());
  }
  if (paths.truth.empty()) throw std::runtime_error(reportFile + ": holds no frames");
  return paths;
}

/// Of the last `count` frames against as many first ones.
double drift(const std::vector<SDeviation>& deviations, std::size_t count,
             double SDeviation::*axis) {
  double change = 0.0;
  for (std::size_t i = 0; i < count; ++i)
    change += (deviations[deviations.size() - 1 - i].*axis - deviations[i].*axis) /
              static_cast<double>(count);
  return change;
}

}  // namespace

STruthComparison CompareWithTruth(const std::string& reportFile, const std::string& truthFile) {
  const SPaths paths = readPaths(reportFile, truthFile);
  const std::vector<SDeviation> after = Deviations(paths.output, paths.intended);
  STruthComparison comparison;
  comparison.frames = static_cast<int>(after.size());
  comparison.before = Steadiness(Deviations(paths.truth, paths.intended));
  comparison.after = Steadiness(after);
  const std::size_t ends = std::min(DRIFT_FRAMES, after.size() / 2);
  comparison.driftFrames = static_cast<int>(ends);
  comparison.driftX = drift(after, ends, &SDeviation::x);
  comparison.driftY = drift(after, ends, &SDeviation::y);
  return comparison;
}

std::string ToText(const STruthComparison& comparison) {
  char text[512];
  std::snprintf(text, sizeof text,
                "residual motion against the truth, RMS over %d frames\n"
                "  horizontal %9.4f px   ->  %9.4f px\n"
                "  vertical   %9.4f px   ->  %9.4f px\n"
                "  rotation   %9.5f deg  ->  %9.5f deg\n"
                "  drift (last %d frames against first %d)  %+.4f %+.4f px",
                comparison.frames, comparison.before.weave, comparison.after.weave,
                comparison.before.jump, comparison.after.jump, comparison.before.rotation,
                comparison.after.rotation, comparison.driftFrames, comparison.driftFrames,
                comparison.driftX, comparison.driftY);
  return text;
}
