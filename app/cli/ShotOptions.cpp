#include "ShotOptions.h"

#include <charconv>
#include <map>

namespace {

/// Takes a name for its value; the names alone, in a message a person can read.
template <typename T>
CLI::Validator nameOf(const std::map<std::string, T>& names) {
  const auto take = [&names](std::string& text) -> std::string {
    const auto found = names.find(CLI::ignore_case(text));
    if (found == names.end()) {
      std::string message = "wants one of";
      for (const auto& [name, value] : names) message += " " + name + ",";
      return message + " not \"" + text + "\"";
    }
    text = std::to_string(static_cast<int>(found->second));
    return {};
  };
  return CLI::Validator(take, "");
}

const std::map<std::string, EStabilize> STABILIZE_NAMES = {{"horizontal", EStabilize::horizontal},
                                                           {"vertical", EStabilize::vertical},
                                                           {"both", EStabilize::both},
                                                           {"rotation", EStabilize::rotation}};
const std::map<std::string, EMotion> MOTION_NAMES = {
    {"smooth", EMotion::smooth}, {"remove", EMotion::remove}, {"match", EMotion::match}};
const std::map<std::string, EAnchor> ANCHOR_NAMES = {{"first", EAnchor::first},
                                                     {"last", EAnchor::last},
                                                     {"both", EAnchor::both},
                                                     {"none", EAnchor::none}};
const std::map<std::string, EFill> FILL_NAMES = {{"white", EFill::white},
                                                 {"black", EFill::black},
                                                 {"previous", EFill::previous},
                                                 {"zoom", EFill::zoom}};
const std::map<std::string, ETrackerOrigin> ORIGIN_NAMES = {
    {"top-left", ETrackerOrigin::topLeft}, {"bottom-left", ETrackerOrigin::bottomLeft}};
const std::map<std::string, EWarp> WARP_NAMES = {{"euclidean", EWarp::euclidean},
                                                 {"logarithmic", EWarp::logarithmic},
                                                 {"thin-plate", EWarp::thinPlate},
                                                 {"none", EWarp::none}};

/// Numbers with commas between them; false unless there are exactly `count`.
template <typename T>
bool parseNumbers(const std::string& text, std::size_t count, T* values) {
  const char* at = text.data();
  const char* end = at + text.size();
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0 && (at == end || *at++ != ',')) return false;
    const auto [next, error] = std::from_chars(at, end, values[i]);
    if (error != std::errc()) return false;
    at = next;
  }
  return at == end;
}

void addPoint(SStabilizeOptions& options, const std::string& text) {
  double values[2];
  if (!parseNumbers(text, 2, values))
    throw CLI::ValidationError("--point", "wants X,Y in pixels, not \"" + text + "\"");
  options.points.push_back({values[0], values[1]});
}

void setMatting(SStabilizeOptions& options, const std::string& text) {
  int values[4];
  options.mattingGiven = true;
  if (text == "auto") {
    options.matting = EMatting::automatic;
  } else if (text == "off") {
    options.matting = EMatting::off;
  } else if (parseNumbers(text, 4, values)) {
    options.matting = EMatting::box;
    options.mattingBox = {values[0], values[1], values[2], values[3]};
  } else {
    throw CLI::ValidationError("--matting",
                               "wants auto, off or LEFT,TOP,RIGHT,BOTTOM, not \"" + text + "\"");
  }
}

}  // namespace

CLI::Option* AddInput(CLI::App& command, std::string& input) {
  return command.add_option(
      "INPUT", input,
      "A video, a sequence (name.####.dpx, name.%04d.dpx), any file of one, or its folder");
}

CLI::Option* AddOutput(CLI::App& command, SStabilizeOptions& options) {
  command.add_flag("--overwrite", options.overwrite,
                   "Replace an output, a --compare and a --save-points file that exist");
  return command
      .add_option(
          "-o,--output", options.output,
          "Where the steady shot goes: a sequence pattern (name.####.dpx), a folder, a video "
          "(.mov, .mkv, .mp4), or null: (nowhere)")
      ->type_name("OUTPUT");
}

void AddPointOptions(CLI::App& command, SStabilizeOptions& options) {
  command.add_option("--in", options.in, "First frame, absolute [the clip's first]")
      ->type_name("FRAME");
  command.add_option("--out", options.out, "One past the last frame, absolute [the clip's end]")
      ->type_name("FRAME");
  CLI::Option* automatic =
      command.add_option("--auto", options.autoPoints, "How many points to find [16]")
          ->type_name("N");
  CLI::Option* point =
      command
          .add_option_function<std::vector<std::string>>(
              "--point",
              [&options](const std::vector<std::string>& texts) {
                for (const std::string& text : texts) addPoint(options, text);
              },
              "A point to track in the IN frame, in pixels; may be repeated; replaces --auto")
          ->type_name("X,Y")
          ->allow_extra_args(false);
  command
      .add_option("--points", options.pointsFile,
                  "Points from a file: .points, or a tracker's \"frame x y\" lines (.txt)")
      ->type_name("FILE")
      ->excludes(automatic)
      ->excludes(point);
  command
      .add_option("--tracker-origin", options.trackerOrigin,
                  "Where .txt points are counted from: top-left, bottom-left [top-left]")
      ->transform(nameOf(ORIGIN_NAMES))
      ->type_name("CORNER");
  command
      .add_option("--track-box", options.trackBox,
                  "Half width of the box that is compared [10; 20 above 2048 pixels]")
      ->type_name("PX");
  command
      .add_option("--search", options.search,
                  "How far a point may move from frame to frame [20; 40 above 2048 pixels]")
      ->type_name("PX");
}

void AddMotionOptions(CLI::App& command, SStabilizeOptions& options) {
  command
      .add_option("--stabilize", options.stabilize,
                  "horizontal, vertical, both, or rotation (both axes and rotation) [both]")
      ->transform(nameOf(STABILIZE_NAMES))
      ->type_name("WHAT");
  command
      .add_option("--motion", options.motion,
                  "smooth the motion, remove it, or match every frame to a reference [remove]")
      ->transform(nameOf(MOTION_NAMES))
      ->type_name("HOW");
  command.add_option("--reference", options.reference, "The frame to match [IN]")
      ->type_name("FRAME");
  command.add_option("--smoothing", options.smoothing, "Strength of smooth, 0 to 10 [6]")
      ->type_name("N");
  command.add_option("--jitter", options.jitter, "Unsteadiness to add, 0 to 10 [0]")
      ->type_name("N");
  command
      .add_option("--anchor", options.anchor,
                  "Which end of the shot stays as it is: first, last, both, none [first]")
      ->transform(nameOf(ANCHOR_NAMES))
      ->type_name("END");
  command
      .add_option("--fill", options.fill,
                  "What uncovered picture shows: white, black, previous (frame), zoom [white]")
      ->transform(nameOf(FILL_NAMES))
      ->type_name("FILL");
  command
      .add_option("--warp", options.warp,
                  "Warp function: euclidean, logarithmic, thin-plate, none [euclidean]")
      ->transform(nameOf(WARP_NAMES))
      ->type_name("NAME");
}

void AddMattingOption(CLI::App& command, SStabilizeOptions& options) {
  command
      .add_option_function<std::string>(
          "--matting", [&options](const std::string& text) { setMatting(options, text); },
          "The picture inside a matted border: auto (the box kept with the clip, else found), off, "
          "or LEFT,TOP,RIGHT,BOTTOM in pixels, inclusive [auto]")
      ->type_name("BOX");
}

void AddResultOptions(CLI::App& command, SStabilizeOptions& options) {
  command.add_option("--report", options.report, "Write everything that was measured as JSON")
      ->type_name("FILE");
  command.add_option("--graph", options.graph, "Draw the motion as SVG")->type_name("FILE");
  command.add_option("--compare", options.compare, "Write a side-by-side video, before and after")
      ->type_name("FILE");
  command
      .add_option("--save-points", options.savePoints,
                  "Save the tracked points: .points, or \"frame x y\" lines (.txt)")
      ->type_name("FILE");
  command
      .add_option("--export-motion", options.exportMotion,
                  "Write points, their smoothed places and every frame's transform (.csv, .json)")
      ->type_name("FILE");
  command.add_flag("--verify", options.verify,
                   "Track the output once more and say how steady it is");
  command
      .add_option("--max-residual", options.maxResidual,
                  "Fail (status 1) when the verified residual is larger")
      ->type_name("PX");
}

void AddThreadsOption(CLI::App& command, int& threads) {
  command.add_option("--threads", threads, "Threads to work with [the machine's cores]")
      ->check(CLI::Range(1, 64).description(""))
      ->type_name("N");
}

void AddCacheOption(CLI::App& command, std::optional<std::size_t>& bytes) {
  command
      .add_option("--cache-memory", bytes,
                  "Memory for frames that are kept from tracking for rendering, as 4GB or 500MB "
                  "[a quarter of the machine's]")
      ->transform(CLI::AsSizeValue(false).description(""))
      ->type_name("SIZE");
}
