// The whole command against the least that any tool must do with the same libraries: read the
// sequence twice (once to track, once to render) and write it once, or read it once where its
// frames may be kept. Rounds alternate; every output is checked to be complete and steady before
// its time counts. Last, how long the help text takes.
//
//   command_bench [FRAMES [WIDTH HEIGHT]]      default: 240 frames of 2048 x 1556, DPX 10 bit
//
// Files lie under TMPDIR: on a disk that is slower than the work, only the disk is measured.

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

/// Reads the clip `reads` times, the last time copying it.
double copyClip(const fs::path& folder, int reads, int threads) {
  CHRTimer timer;
  const auto reader = OpenClip((folder / "scan.####.dpx").string(), threads);
  const SClipInfo& info = reader->info();
  const auto writer = CreateClip((folder / "plain.####.dpx").string(), *reader, info.firstFrame,
                                 info.endFrame, {true, threads});
  for (int i = 1; i < reads; ++i)
    onThreads(*reader, threads,
              [&](int frame, std::uint16_t* to) { reader->readFrame(frame, to); });
  onThreads(*reader, threads, [&](int frame, std::uint16_t* to) {
    reader->readFrame(frame, to);
    writer->writeFrame(frame, to);
  });
  writer->finish();
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

SCommandRun runCommand(const fs::path& folder, const char* axes, int threads, bool keeps) {
  const std::string in = (folder / "scan.####.dpx").string();
  const std::string out = (folder / "steady.####.dpx").string();
  std::vector<std::string> arguments = {"stabilize",   in,   "-o",        out,
                                        "--stabilize", axes, "--threads", std::to_string(threads),
                                        "--overwrite", "-q"};
  if (keeps) arguments.insert(arguments.end(), {"--cache-memory", "64GB"});
  return runProgram(STAB_PROGRAM, arguments);
}

/// The command's own verification on the output, once; it fails above a twentieth of a pixel.
bool isSteady(const fs::path& folder) {
  const std::string line = "'" STAB_PROGRAM "' '" + (folder / "scan.####.dpx").string() + "' -o '" +
                           (folder / "steady.####.dpx").string() +
                           "' --stabilize rotation --overwrite -q --max-residual 0.05";
  return std::system(line.c_str()) == 0;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

bool compare(const fs::path& folder, int frames, const char* axes, int threads, bool keeps) {
  std::vector<double> plain;
  std::vector<double> command;
  double peak = 0.0;
  for (int round = 0; round < ROUNDS; ++round) {
    plain.push_back(copyClip(folder, keeps ? 1 : 2, threads));
    const SCommandRun run = runCommand(folder, axes, threads, keeps);
    if (!run.good) return false;
    command.push_back(run.seconds);
    peak = std::max(peak, run.peakMiB);
  }
  std::printf(
      "%-9s %d threads  %-11s  plain %7.1f frames/s   command %7.1f frames/s   ratio %.2f   peak "
      "%.0f MiB\n",
      axes, threads, keeps ? "read once" : "read twice", frames / median(plain),
      frames / median(command), median(command) / median(plain), peak);
  return true;
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
  std::string pattern = (fs::temp_directory_path() / "stabilize-bench-XXXXXX").string();
  if (shot.frames < 3 || !mkdtemp(pattern.data())) return 1;
  const fs::path folder = pattern;
  std::printf("%d frames of %d x %d, DPX 10 bit; ratio: command / (read and write the same)\n",
              shot.frames, shot.width, shot.height);
  const auto reader = MakeTestShotReader(shot);
  const auto writer = CreateClip((folder / "scan.####.dpx").string(), *reader,
                                 reader->info().firstFrame, reader->info().endFrame, {false, 1});
  onThreads(*reader, 2, [&](int frame, std::uint16_t* samples) {
    reader->readFrame(frame, samples);
    writer->writeFrame(frame, samples);
  });
  writer->finish();
  bool good = isSteady(folder);
  for (const char* axes : {"both", "rotation"})
    for (int threads : {1, 2})
      for (bool keeps : {false, true})
        good = good && compare(folder, shot.frames, axes, threads, keeps);
  measureHelp();
  fs::remove_all(folder);
  if (!good) std::printf("the command failed, or its output is not steady: nothing here counts\n");
  return good ? 0 : 1;
}
