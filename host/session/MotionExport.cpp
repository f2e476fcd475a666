#include "session/MotionExport.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <nlohmann/json.hpp>

#include "FileName.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* COLUMNS =
    "frame,point,x,y,smoothed_x,smoothed_y,measured_dx,measured_dy,measured_angle,applied_dx,"
    "applied_dy,applied_angle,applied_scale,m11,m12,m13,m21,m22,m23";
constexpr const char* ROW_END = "\r\n";

/// What the renderer did, told as the measured motion is: at the centre of the picture.
struct SAppliedMotion {
  double x;
  double y;
  double angle;
  double scale;
};

SAppliedMotion appliedMotion(const SPictureMove& move, const CImageFormat& format) {
  const SPoint2 centre = CentreOf(format);
  const SPoint2 there = move.at(centre);
  return {there.x - centre.x, there.y - centre.y, move.angle(), move.scale()};
}

void appendFields(std::string& row, std::initializer_list<double> numbers) {
  char digits[32];  // the longest double has 24
  for (const double number : numbers)
    row.append(",").append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

/// The number of frames for which everything is known.
std::size_t frameCount(const SStabilizeResult& result) {
  return std::min(result.asShot.size(), result.moves.size());
}

Json conventions() {
  return {
      {"positions",
       "pixels between centres: 0, 0 is the centre of the first pixel, x right, y down"},
      {"frames", "the clip's own numbers; marks are [first, end)"},
      {"measured",
       "the picture's motion in the input against the first frame: a place p of the first frame "
       "lies at R(angle)(p - centre) + centre + (dx, dy); degrees, from x towards y"},
      {"applied",
       "what the renderer did to the frame, in the same terms, and how much it enlarged it"},
      {"matrix",
       "two rows of three: output x = m11 x + m12 y + m13, output y = m21 x + m22 y + m23; "
       "inside the region"}};
}

Json frameJson(const SStabilizeResult& result, std::size_t i) {
  const SFrameMotion& measured = result.asShot[i];
  const SPictureMove& move = result.moves[i];
  const SAppliedMotion applied = appliedMotion(move, result.clip.format);
  const auto& m = move.matrix;
  Json points = Json::array();
  for (const auto& [index, point] : result.points.FindPoints(move.frame).Entries()) {
    const SPoint2 there = move.at({point.x, point.y});
    points.push_back({{"point", index},
                      {"x", point.x},
                      {"y", point.y},
                      {"smoothedX", there.x},
                      {"smoothedY", there.y}});
  }
  return {
      {"frame", move.frame},
      {"measured", {{"dx", measured.x}, {"dy", measured.y}, {"angle", measured.angle}}},
      {"applied",
       {{"dx", applied.x}, {"dy", applied.y}, {"angle", applied.angle}, {"scale", applied.scale}}},
      {"matrix", {{m[0], m[1], m[2]}, {m[3], m[4], m[5]}}},
      {"points", points}};
}

}  // namespace

std::string MotionAsCsv(const SStabilizeResult& result) {
  std::string text = std::string(COLUMNS) + ROW_END;
  for (std::size_t i = 0; i < frameCount(result); ++i) {
    const SFrameMotion& measured = result.asShot[i];
    const SPictureMove& move = result.moves[i];
    const SAppliedMotion applied = appliedMotion(move, result.clip.format);
    const auto& m = move.matrix;
    std::string ofFrame;
    appendFields(ofFrame, {measured.x, measured.y, measured.angle, applied.x, applied.y,
                           applied.angle, applied.scale, m[0], m[1], m[2], m[3], m[4], m[5]});
    for (const auto& [index, point] : result.points.FindPoints(move.frame).Entries()) {
      const SPoint2 there = move.at({point.x, point.y});
      text += std::to_string(move.frame) + "," + std::to_string(index);
      appendFields(text, {point.x, point.y, there.x, there.y});
      text += ofFrame + ROW_END;
    }
  }
  return text;
}

std::string MotionAsJson(const SStabilizeResult& result) {
  const CImageFormat& format = result.clip.format;
  const SRect& region = result.region;
  Json frames = Json::array();
  for (std::size_t i = 0; i < frameCount(result); ++i) frames.push_back(frameJson(result, i));
  const Json motion = {{"clip",
                        {{"path", result.clip.path},
                         {"width", format.getPixelsPerLine()},
                         {"height", format.getLinesPerFrame()},
                         {"firstFrame", result.clip.firstFrame},
                         {"endFrame", result.clip.endFrame},
                         {"framesPerSecond", result.clip.frameRate.value()}}},
                       {"marks", {*result.options.in, *result.options.out}},
                       {"region", {region.left, region.top, region.right, region.bottom}},
                       {"conventions", conventions()},
                       {"frames", frames}};
  return motion.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

bool IsMotionExport(const std::string& path) {
  return HasExtension(path, ".csv") || HasExtension(path, ".json");
}

std::string MotionAsText(const SStabilizeResult& result, const std::string& path) {
  return HasExtension(path, ".csv") ? MotionAsCsv(result) : MotionAsJson(result);
}
