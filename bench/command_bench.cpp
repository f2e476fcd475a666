// The whole command against the least that any tool must do with the same libraries and threads:
// read the sequence twice (once to track, once to render) and write it once, and read it once, for
// a tool that keeps what it has read. Rounds alternate; every output is checked to be complete and
// steady before its time counts. Last, how long the help text takes.
//
//   command_bench [FRAMES [WIDTH HEIGHT]]      default: 240 frames of 2048 x 1556, DPX 10 bit
//
// In memory (/dev/shm) nothing hides the work. On the disk (the folder for temporary files) the
// clip comes from the disk each time, and the time ends when the output lies there.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "clip/ClipWriter.h"
#include "clip/TestShot.h"
#include "support/HRTimer.h"

namespace {

namespace fs = std::filesystem;

constexpr int ROUNDS = 3;

/// Where the files of a comparison lie.
struct SPlace {
  const char* name;
  fs::path folder;
  bool isDisk = false;

  std::string scan() const { return (folder / "scan.####.dpx").string(); }
  /// Before a run: nothing of the clip is in memory.
  void forget() const {
    if (!isDisk) return;
    for (const auto& entry : fs::directory_iterator(folder)) {
      const int file = open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
      if (file < 0) continue;
      fdatasync(file);
      posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
      close(file);
    }
  }
  /// After a run: everything lies on the disk.
  void settle() const {
    if (!isDisk) return;
    const int file = open(folder.c_str(), O_RDONLY | O_CLOEXEC);
    syncfs(file);
    close(file);
  }
};

/// Calls `work(frame, samples)` for every frame on `threads` threads.
template <typename Work>
void onThreads(const IClipReader& reader, int threads, Work work) {
  std::atomic<int> next{reader.info().firstFrame};
  std::vector<std::thread> workers;
  for (int i = 0; i < threads; ++i)
    workers.emplace_back([&] {
      std::vector<std::uint16_t> samples(reader.info().format.getBytesPerField() / 2);
      for (int frame = next++; frame < reader.info().endFrame; frame = next++)
        work(frame, samples.data());
    });
  for (std::thread& worker : workers) worker.join();
}

/// Reads the clip `reads` times, the last time copying it. Seconds.
double copyClip(const SPlace& place, int reads, int threads) {
  place.forget();
  CHRTimer timer;
  const auto reader = OpenClip(place.scan(), threads);
  const SClipInfo& info = reader->info();
  const auto writer = CreateClip((place.folder / "plain.####.dpx").string(), *reader,
                                 info.firstFrame, info.endFrame, {true, threads});
  for (int i = 1; i < reads; ++i)
    onThreads(*reader, threads,
              [&](int frame, std::uint16_t* to) { reader->readFrame(frame, to); });
  onThreads(*reader, threads, [&](int frame, std::uint16_t* to) {
    reader->readFrame(frame, to);
    writer->writeFrame(frame, to);
  });
  writer->finish();
  place.settle();
  return timer.Read() * 0.001;
}

struct SCommandRun {
  double seconds = 0.0;
  double peakMiB = 0.0;
  bool good = false;
};

/// A program's run: its arguments, its own name first.
SCommandRun runProgram(const char* program, std::vector<std::string> arguments) {
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  CHRTimer timer;
  const pid_t process = fork();
  if (process == 0) {
    execvp(program, pointers.data());
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  wait4(process, &status, 0, &usage);
  return {timer.Read() * 0.001, static_cast<double>(usage.ru_maxrss) / 1024.0,
          WIFEXITED(status) && WEXITSTATUS(status) == 0};
}

SCommandRun runCommand(const SPlace& place, const char* axes, int threads) {
  place.forget();
  CHRTimer timer;
  SCommandRun run =
      runProgram(STAB_PROGRAM,
                 {"stabilize", place.scan(), "-o", (place.folder / "steady.####.dpx").string(),
                  "--stabilize", axes, "--threads", std::to_string(threads), "--overwrite", "-q"});
  place.settle();
  run.seconds = timer.Read() * 0.001;
  return run;
}

/// The command's own verification on the output, once; it fails above a twentieth of a pixel.
bool isSteady(const SPlace& place) {
  const std::string line = "'" STAB_PROGRAM "' '" + place.scan() + "' -o '" +
                           (place.folder / "steady.####.dpx").string() +
                           "' --stabilize rotation --overwrite -q --max-residual 0.05";
  return std::system(line.c_str()) == 0;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

bool compare(const SPlace& place, int frames, const char* axes, int threads) {
  std::vector<double> twice;
  std::vector<double> once;
  std::vector<double> command;
  double peak = 0.0;
  for (int round = 0; round < ROUNDS; ++round)
    for (std::vector<double>* plain : {&twice, &once}) {
      plain->push_back(copyClip(place, plain == &twice ? 2 : 1, threads));
      const SCommandRun run = runCommand(place, axes, threads);
      if (!run.good) return false;
      command.push_back(run.seconds);
      peak = std::max(peak, run.peakMiB);
    }
  std::printf("%-6s  %-8s  %d  %7.1f  %7.1f  %7.1f  %5.2f  %5.2f  %6.0f\n", place.name, axes,
              threads, frames / median(twice), frames / median(once), frames / median(command),
              median(command) / median(twice), median(command) / median(once), peak);
  return true;
}

/// The clip that all runs of a place read; false when it cannot be made there.
bool makeClip(SPlace& place, const fs::path& parent, const STestShotSettings& shot) {
  std::string pattern = (parent / "stabilize-bench-XXXXXX").string();
  if (!mkdtemp(pattern.data())) return false;
  place.folder = pattern;
  const auto reader = MakeTestShotReader(shot);
  const auto writer = CreateClip(place.scan(), *reader, reader->info().firstFrame,
                                 reader->info().endFrame, {false, 1});
  onThreads(*reader, 2, [&](int frame, std::uint16_t* samples) {
    reader->readFrame(frame, samples);
    writer->writeFrame(frame, samples);
  });
  writer->finish();
  return true;
}

bool comparePlace(SPlace place, const fs::path& parent, const STestShotSettings& shot) {
  bool good = makeClip(place, parent, shot) && isSteady(place);
  // A disk is slower than the work of one thread: two say what can be hidden behind it.
  for (const char* axes : {"both", "rotation"})
    for (int threads = place.isDisk ? 2 : 1; threads <= 2; ++threads)
      good = good && compare(place, shot.frames, axes, threads);
  fs::remove_all(place.folder);
  return good;
}

void measureHelp() {
  std::vector<double> seconds;
  for (int round = 0; round < 21; ++round)
    seconds.push_back(
        runProgram("sh", {"sh", "-c", "'" STAB_PROGRAM "' --help > /dev/null"}).seconds);
  std::printf("stabilize --help: %.1f ms, a shell's start with it\n", median(seconds) * 1000.0);
}

}  // namespace

int main(int argc, char** argv) {
  STestShotSettings shot;
  shot.frames = argc > 1 ? std::atoi(argv[1]) : 240;
  shot.width = argc > 3 ? std::atoi(argv[2]) : 2048;
  shot.height = argc > 3 ? std::atoi(argv[3]) : 1556;
  if (shot.frames < 3) return 1;
  std::printf(
      "%d frames of %d x %d, DPX 10 bit; frames a second, ratios of the times, MiB\n"
      "where   axes      threads  twice     once  command  /twice /once   peak\n",
      shot.frames, shot.width, shot.height);
  const bool good = comparePlace({"memory", {}, false}, "/dev/shm", shot) &&
                    comparePlace({"disk", {}, true}, fs::temp_directory_path(), shot);
  measureHelp();
  if (!good) std::printf("the command failed, or its output is not steady: nothing here counts\n");
  return good ? 0 : 1;
}
