#include "session/ShotReport.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "clip/ClipWriter.h"
#include "session/ClipCopy.h"
#include "session/SideBySide.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int COMPARE_WIDTH = 1920;

Json steadinessJson(const SSteadiness& steadiness, const CImageFormat& format) {
  return {{"weavePixels", steadiness.weave},
          {"weavePercent", 100.0 * steadiness.weave / format.getPixelsPerLine()},
          {"jumpPixels", steadiness.jump},
          {"jumpPercent", 100.0 * steadiness.jump / format.getLinesPerFrame()},
          {"rotationDegrees", steadiness.rotation},
          {"peakWeavePixels", steadiness.peakWeave},
          {"peakJumpPixels", steadiness.peakJump},
          {"peakRotationDegrees", steadiness.peakRotation}};
}

Json clipJson(const SClipInfo& clip) {
  return {{"path", clip.path},
          {"kind", clip.kind},
          {"width", clip.format.getPixelsPerLine()},
          {"height", clip.format.getLinesPerFrame()},
          {"bitDepth", clip.bitDepth},
          {"firstFrame", clip.firstFrame},
          {"endFrame", clip.endFrame},
          {"framesPerSecond", clip.frameRate.value()},
          {"startTimecode", clip.timecodeKnown ? clip.startTimecode.toText() : ""}};
}

Json pointsJson(const SStabilizeResult& result) {
  Json points = Json::array();
  const int in = *result.options.in;
  for (std::size_t i = 0; i < result.features.size(); ++i) {
    const int index = static_cast<int>(i);
    Json point = {{"point", index}, {"x", result.features[i].x}, {"y", result.features[i].y}};
    const auto summary = result.tracking.points.find(index);
    if (summary == result.tracking.points.end()) {
      point["used"] = false;
      point["reason"] = "no texture";
    } else {
      const SPointSummary& what = summary->second;
      point["used"] = what.usable;
      point["framesFound"] = what.framesFound;
      point["framesBridged"] = what.framesBridged;
      if (result.tracking.ran) point["sigmaPixels"] = what.meanSigma;
      if (what.firstLossFrameOffset >= 0) {
        point["firstLostFrame"] = in + what.firstLossFrameOffset;
        point["reason"] = ToText(what.firstLossReason);
      }
    }
    points.push_back(point);
  }
  return points;
}

Json framesJson(const SStabilizeResult& result) {
  Json frames = Json::array();
  const std::size_t count = std::min(result.measured.size(), result.intended.size());
  const bool verified = result.verification && result.verification->motion.size() == count;
  for (std::size_t i = 0; i < count; ++i) {
    const SFrameMotion& measured = result.measured[i];
    const SFrameMotion& intended = result.intended[i];
    Json frame = {{"frame", measured.frame},
                  {"measured", {measured.x, measured.y, measured.angle}},
                  {"intended", {intended.x, intended.y, intended.angle}}};
    if (i < result.tracking.frames.size()) {
      frame["pointsFound"] = result.tracking.frames[i].found;
      frame["pointsBridged"] = result.tracking.frames[i].bridged;
    }
    if (verified) {
      const SFrameMotion& output = result.verification->motion[i];
      frame["output"] = {output.x, output.y, output.angle};
    }
    frames.push_back(frame);
  }
  return frames;
}

Json verificationJson(const SVerification& verification, const CImageFormat& format) {
  Json worst = Json::array();
  for (const SDeviation& deviation : verification.worst)
    worst.push_back({{"frame", deviation.frame},
                     {"xPixels", deviation.x},
                     {"yPixels", deviation.y},
                     {"angleDegrees", deviation.angle}});
  return {{"points", verification.points},
          {"before", steadinessJson(verification.before, format)},
          {"after", steadinessJson(verification.after, format)},
          {"worstFrames", worst}};
}

std::string line(const char* format, auto... values) {
  char text[256];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

int usedPoints(const SStabilizeResult& result) {
  return static_cast<int>(result.tracking.indexInSet.size());
}

std::string sourceText(const SStabilizeResult& result) {
  const std::string& file = result.options.pointsFile;
  if (file.empty()) return {};
  return "\n  points loaded from " + file + (result.tracking.ran ? "" : ", not tracked again");
}

std::string lostPointsText(const SStabilizeResult& result) {
  std::string text;
  for (const auto& [index, point] : result.tracking.points)
    if (!point.usable)
      text += line("\n  point %d left out: lost at frame %d (%s)", index,
                   *result.options.in + point.firstLossFrameOffset,
                   ToText(point.firstLossReason).c_str());
    else if (point.framesBridged > 0)
      text += line("\n  point %d bridged in %d frames, first at frame %d (%s)", index,
                   point.framesBridged, *result.options.in + point.firstLossFrameOffset,
                   ToText(point.firstLossReason).c_str());
  for (int index : result.tracking.withoutTexture)
    text += line("\n  point %d left out: no texture to track", index);
  return text;
}

std::string verificationText(const SVerification& verification, const CImageFormat& format,
                             bool rotationStabilised) {
  const double width = format.getPixelsPerLine() * 0.01;
  const double height = format.getLinesPerFrame() * 0.01;
  const SSteadiness& before = verification.before;
  const SSteadiness& after = verification.after;
  std::string text =
      line("\nsteadiness (RMS, %d points followed afresh through the output)", verification.points);
  text += line("\n  weave     %8.4f px  %.4f %%  ->  %8.4f px  %.4f %%", before.weave,
               before.weave / width, after.weave, after.weave / width);
  text += line("\n  jump      %8.4f px  %.4f %%  ->  %8.4f px  %.4f %%", before.jump,
               before.jump / height, after.jump, after.jump / height);
  if (rotationStabilised)
    text +=
        line("\n  rotation  %8.5f deg           ->  %8.5f deg", before.rotation, after.rotation);
  else
    text += "\n  rotation  left as shot";
  text += "\nworst frames";
  for (const SDeviation& deviation : verification.worst)
    text += line("\n  frame %6d  %+8.4f %+8.4f px", deviation.frame, deviation.x, deviation.y);
  return text;
}

}  // namespace

std::string ReportAsJson(const SStabilizeResult& result) {
  const SStabilizeOptions& options = result.options;
  Json report = {
      {"clip", clipJson(result.clip)},
      {"output", options.output},
      {"plugin", result.pluginVersion},
      {"marks", {*options.in, *options.out}},
      {"region",
       {result.region.left, result.region.top, result.region.right, result.region.bottom}},
      {"zoom", result.zoom},
      {"points", pointsJson(result)},
      {"frames", framesJson(result)}};
  if (!options.pointsFile.empty()) report["pointsFile"] = options.pointsFile;
  if (result.verification)
    report["verification"] = verificationJson(*result.verification, result.clip.format);
  report["seconds"] = {{"tracking", result.trackSeconds},
                       {"smoothingAndRendering", result.renderSeconds},
                       {"verifying", result.verifySeconds}};
  return report.dump(1) + "\n";
}

std::string SummaryAsText(const SStabilizeResult& result) {
  const SStabilizeOptions& options = result.options;
  const double seconds = result.trackSeconds + result.renderSeconds;
  std::string text =
      line("%d frames written, %d of %d points used, %.1f frames/s", result.framesWritten,
           usedPoints(result), static_cast<int>(result.features.size()),
           seconds > 0.0 ? result.framesWritten / seconds : 0.0);
  text += sourceText(result) + lostPointsText(result);
  if (result.verification)
    text += verificationText(*result.verification, result.clip.format,
                             options.stabilize == EStabilize::rotation);
  return text;
}

std::string PointsSummaryAsText(const SStabilizeResult& result) {
  const int all = static_cast<int>(result.features.size());
  const std::string& file = result.options.savePoints;
  if (result.tracking.frames.empty())
    return std::to_string(all) + " points saved in " + file + sourceText(result);
  return line("%d of %d points tracked over %d frames, saved in ", usedPoints(result), all,
              static_cast<int>(result.tracking.frames.size())) +
         file + sourceText(result) + lostPointsText(result);
}

std::string TooUnsteady(const SStabilizeResult& result) {
  if (!result.verification || !result.options.maxResidual) return {};
  const double residual =
      std::max(result.verification->after.weave, result.verification->after.jump);
  if (residual <= *result.options.maxResidual) return {};
  return line("residual motion of %.4f px is larger than --max-residual %g", residual,
              *result.options.maxResidual);
}

void WriteComparison(const SStabilizeResult& result, const SJobObserver& observer) {
  const SStabilizeOptions& options = result.options;
  const int in = *options.in;
  const int out = *options.out;
  const std::unique_ptr<IClipReader> before = OpenClip(options.input, options.threads);
  const std::unique_ptr<IClipReader> after = OpenClip(options.output, options.threads);
  const SClipInfo& written = after->info();
  const bool sameNumbers = written.firstFrame <= in && out <= written.endFrame;
  CSideBySideReader both(*before, *after, in, out, sameNumbers ? 0 : written.firstFrame - in,
                         COMPARE_WIDTH);
  const std::unique_ptr<IClipWriter> writer =
      CreateClip(options.compare, both, in, out, {options.overwrite, options.threads});
  CopyClip(both, *writer, in, out, options.threads, "Comparing", observer);
}
