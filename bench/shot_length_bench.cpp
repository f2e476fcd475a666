// What a frame costs in shots of 100 to 100,000 frames, on the whole road of a batch host's shot:
// points placed, tracked, smoothed, rendered, written. The reader copies one of a few prepared
// pictures, so that the road is what is measured; the writer checks the pictures and keeps none.
//   shot_length_bench
// Every length runs in a process of its own, which leaves its peak memory behind. Each point's path
// must be the pictures' known motion, every frame must arrive, once and steady. Fails when the
// processor time or the memory of a further frame grows with the length of the shot, or the memory
// beyond what points and paths take. Time by the clock is printed, too, and decides nothing: a
// processor rests for a millisecond after each frame, and other work on the machine counts in it.

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "clip/ClipWriter.h"
#include "session/MotionMeasure.h"
#include "session/PictureMove.h"
#include "session/PreparedShot.h"
#include "support/Threads.h"

namespace {

namespace fs = std::filesystem;

constexpr int WIDTH = 160;
constexpr int HEIGHT = 120;
constexpr int PICTURES = 16;
constexpr double MOST_ERROR = 0.05;  // pixels, of a point's path in any frame
constexpr int MOST_UNSTEADY = 400;   // of 65,535: blending takes some 200, a pixel off is thousands
// Of what a further frame costs, from one length to the next. Processor time varies with what else
// the machine does; memory does not.
constexpr double MOST_GROWTH_OF_TIME = 2.0;
constexpr double MOST_GROWTH_OF_MEMORY = 1.25;
// Of a further frame: its points and their copies, two triangles, moves, and all that as a
// process-list entry.
constexpr double MOST_BYTES = 2560;

/// Where the picture lies in a frame: a loop, so that a shot may have any length.
SPoint2 MoveOf(int frame) {
  const double turn = 2.0 * 3.14159265358979 * (frame % PICTURES) / PICTURES;
  return {2.3 * std::sin(turn), 1.7 * std::sin(2.0 * turn)};
}

double TextureAt(double x, double y) {
  return 0.5 + 0.10 * std::sin(0.31 * x + 0.12 * y) + 0.09 * std::sin(0.09 * x - 0.35 * y + 1.0) +
         0.08 * std::sin(0.21 * x + 0.27 * y + 2.0) + 0.07 * std::sin(0.17 * x - 0.14 * y + 3.0);
}

std::uint16_t CodeAt(double x, double y) {
  return static_cast<std::uint16_t>(std::lround(65535.0 * TextureAt(x, y)));
}

/// Known motion in a few pictures, shown again and again.
class CLoopReader : public IClipReader {
 public:
  CLoopReader(const std::string& path, int frames) {
    info_.path = path;
    info_.kind = "prepared pictures";
    info_.format = CImageFormat(WIDTH, HEIGHT);
    info_.endFrame = frames;
    for (int i = 0; i < PICTURES; ++i) pictures_.push_back(draw(MoveOf(i)));
  }
  const SClipInfo& info() const override { return info_; }
  void readFrame(int frame, std::uint16_t* samples) override {
    const Samples& picture = pictures_[static_cast<std::size_t>(frame % PICTURES)];
    std::copy(picture.begin(), picture.end(), samples);
  }
  bool isParallel() const override { return true; }

 private:
  using Samples = std::vector<std::uint16_t>;

  static Samples draw(const SPoint2& move) {
    Samples samples;
    for (int y = 0; y < HEIGHT; ++y)
      for (int x = 0; x < WIDTH; ++x)
        samples.insert(samples.end(), 3, CodeAt(x - move.x, y - move.y));
    return samples;
  }

  SClipInfo info_;
  std::vector<Samples> pictures_;
};

/// Counts the frames and compares a line of each with where it was put.
class CSteadyWriter : public IClipWriter {
 public:
  CSteadyWriter() {
    for (int x = 0; x < WIDTH; ++x) meant_.push_back(CodeAt(x, LINE));
  }
  void writeFrame(int frame, const std::uint16_t* samples) override {
    constexpr int EDGE = 40;  // may show fill
    if (frame != written) throw CClipError("frame " + std::to_string(frame) + " out of turn");
    ++written;
    for (int x = EDGE; x < WIDTH - EDGE; ++x) {
      const int off = samples[3 * (LINE * WIDTH + x)] - meant_[static_cast<std::size_t>(x)];
      unsteady = std::max(unsteady, std::abs(off));
    }
  }
  void finish() override {}

  int written = 0;
  int unsteady = 0;  ///< largest difference, code values

 private:
  static constexpr int LINE = HEIGHT / 2;
  std::vector<int> meant_;
};

SStabilizeOptions OptionsFor(const SClipInfo& clip) {
  SStabilizeOptions options;
  options.input = clip.path;
  options.output = "null:";
  options.cacheMemory = 0;  // what is kept grows up to its budget, which is not what is asked here
  options.points = {{40, 35}, {120, 40}, {45, 85}, {115, 80}};
  options.trackBox = 8;
  options.search = 6;
  options.stabilize = EStabilize::rotation;
  options.matting = EMatting::off;
  CheckAndComplete(options, clip);
  return options;
}

double LargestError(const CTrackingArray& points) {
  double largest = 0.0;
  const CTrackingPoints& first = points.frames.at(0);
  for (const auto& [frame, set] : points.frames) {
    if (set.ValidCount() != first.ValidCount()) return HUGE_VAL;
    for (const auto& [index, point] : set.Entries()) {
      const CTrackPoint& from = first.Entries().at(index);
      const SPoint2 move = MoveOf(frame);
      largest = std::max(largest, std::hypot(point.x - from.x - move.x, point.y - from.y - move.y));
    }
  }
  return largest;
}

/// What a job keeps of a finished shot for reports and exports.
struct SCollected {
  std::vector<SFrameMotion> measured;
  std::vector<SFrameMotion> intended;
  std::vector<SFrameMotion> asShot;
  std::vector<SPictureMove> moves;
  CTrackingArray points;
};

SCollected Collect(CToolOnShot& shot, const SMoveSettings& settings, const SRect& region) {
  const CTrackingPointsEditor& editor = *shot.session().editor();
  const SPoint2 centre = CentreOf(shot.session().info().format);
  SCollected result;
  result.measured = MotionOfTriangles(*editor.originalMotion(), centre);
  result.intended = MotionOfTriangles(*editor.smoothedMotion(), centre);
  result.asShot = FitMotion(*editor.trackingArray(), centre);
  result.moves = PictureMoves(*editor.originalMotion(), *editor.smoothedMotion(), settings,
                              {editor.zoomSource(), region});
  result.points = *editor.trackingArray();
  return result;
}

double ProcessorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Of this process since it began, kilobytes.
long PeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmHWM:")) return std::atol(line.c_str() + std::strlen("VmHWM:"));
  return -1;
}

/// The work of a child process: one shot, its figures on standard output.
int RunShot(int frames, const std::string& folder) {
  for (const char* place : {"XDG_CONFIG_HOME", "XDG_STATE_HOME"})
    setenv(place, folder.c_str(), 1);  // nobody's own settings
  SetAvailableProcessorCoreCount(0);
  auto reader = std::make_unique<CLoopReader>(folder + "/shot.####.dpx", frames);
  SStabilizeOptions options = OptionsFor(reader->info());
  options.threads = AvailableProcessorCoreCount();
  const SJobObserver observer;
  CSteadyWriter writer;
  const auto start = std::chrono::steady_clock::now();
  const double before = ProcessorSeconds();
  SPreparedShot shot = PrepareShot(std::move(reader), options, observer);
  const int written = shot.tool->render(writer);
  const SCollected collected = Collect(*shot.tool, shot.moveSettings, shot.region);
  const double processor = ProcessorSeconds() - before;
  const double wall =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const double error = LargestError(collected.points);
  const bool complete = written == frames && writer.written == frames &&
                        collected.moves.size() == static_cast<std::size_t>(frames);
  if (!complete || error > MOST_ERROR || writer.unsteady > MOST_UNSTEADY) {
    std::fprintf(stderr, "%d frames: %d written, a point off by %.4f px, unsteady by %d codes\n",
                 frames, written, error, writer.unsteady);
    return 1;
  }
  std::printf("%.9f %.9f %ld %.6f\n", processor, wall, PeakMemory(), error);
  return 0;
}

struct SFigures {
  int frames = 0;
  double processor = 0.0;  ///< seconds
  double wall = 0.0;
  double kilobytes = 0.0;
  double error = 0.0;  ///< pixels
};

/// Runs a shot in a process of its own; false when it failed.
bool Measure(const std::string& program, const std::string& folder, SFigures& figures) {
  const std::string command =
      "'" + program + "' " + std::to_string(figures.frames) + " '" + folder + "'";
  FILE* const child = popen(command.c_str(), "r");
  if (!child) return false;
  const int read = std::fscanf(child, "%lf %lf %lf %lf", &figures.processor, &figures.wall,
                               &figures.kilobytes, &figures.error);
  return pclose(child) == 0 && read == 4;
}

/// What each frame costs that the longer shot has more: what starting costs is in both.
struct SFurther {
  SFurther(const SFigures& shorter, const SFigures& longer)
      : micros(1e6 * (longer.processor - shorter.processor) / (longer.frames - shorter.frames)),
        bytes(1024.0 * (longer.kilobytes - shorter.kilobytes) / (longer.frames - shorter.frames)) {}
  double micros;
  double bytes;

  bool hasGrownFrom(const SFurther& before) const {
    return micros > MOST_GROWTH_OF_TIME * before.micros ||
           bytes > MOST_GROWTH_OF_MEMORY * before.bytes || bytes > MOST_BYTES;
  }
};

int CompareLengths(const std::string& program, const std::string& folder) {
  std::printf("a shot of %d x %d, 4 points, %d threads: the whole road\n", WIDTH, HEIGHT,
              AvailableProcessorCoreCount());
  std::printf("%8s  %10s  %13s  %9s  %15s  %9s  %9s\n", "frames", "us/frame", "CPU us/frame",
              "peak MB", "CPU us, further", "B/further", "error px");
  std::vector<SFigures> all;
  std::vector<SFurther> furthers;
  for (const int frames : {100, 1000, 10000, 100000}) {
    SFigures now{frames};
    if (!Measure(program, folder, now)) return std::printf("%d frames failed\n", frames), 1;
    std::printf("%8d  %10.1f  %13.1f  %9.1f", frames, 1e6 * now.wall / frames,
                1e6 * now.processor / frames, now.kilobytes / 1024);
    if (all.empty()) {
      std::printf("  %15s  %9s", "", "");
    } else {
      furthers.emplace_back(all.back(), now);
      std::printf("  %15.1f  %9.0f", furthers.back().micros, furthers.back().bytes);
    }
    std::printf("  %9.4f\n", now.error);
    std::fflush(stdout);
    all.push_back(now);
  }
  for (std::size_t i = 1; i < furthers.size(); ++i)
    if (furthers[i].hasGrownFrom(furthers[i - 1]))
      return std::printf("what a frame costs grows with the length of the shot\n"), 1;
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc > 2) return RunShot(std::atoi(argv[1]), argv[2]);
    const fs::path folder =
        fs::temp_directory_path() / ("shot_length_bench." + std::to_string(getpid()));
    fs::create_directories(folder);
    const int status = CompareLengths(fs::read_symlink("/proc/self/exe").string(), folder.string());
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    return status;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "shot_length_bench: %s\n", error.what());
    return 1;
  }
}
