// The whole command on a 1080p video against the two passes of ffmpeg's vidstab filters on the same
// clip, with the same decoder; without encoding, and with the same encoder at the same setting.
// Ours works in 16 bits, the peer in 8.
//
//   video_bench [FRAMES]      default: 150
//
// Rounds alternate. Without ffmpeg, or where its build has no vidstab, the bench says so and ends.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/HRTimer.h"

namespace {

namespace fs = std::filesystem;

constexpr int ROUNDS = 3;

bool shell(const std::string& line) {
  return std::system((line + " > /dev/null 2>&1").c_str()) == 0;
}

/// Seconds of a line; negative when it failed.
double seconds(const std::string& line) {
  CHRTimer timer;
  return shell(line) ? timer.Read() * 0.001 : -1.0;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

struct SCase {
  const char* name;
  std::string ours;  // the output
  std::string peer;  // the options of its output
};

bool compare(const fs::path& folder, const SCase& c) {
  const std::string clip = (folder / "clip.mp4").string();
  const std::string transforms = (folder / "transforms.trf").string();
  const std::string ours = "'" STAB_PROGRAM "' '" + clip + "' -o '" + c.ours +
                           "' --stabilize rotation --motion smooth --threads 2 --overwrite -q";
  const std::string ffmpeg = "ffmpeg -y -nostdin -threads 2 -i '" + clip + "' -vf ";
  const std::string peer = ffmpeg + "vidstabdetect=result='" + transforms + "' -f null - && " +
                           ffmpeg + "vidstabtransform=input='" + transforms + "' " + c.peer;
  std::vector<double> oursTimes;
  std::vector<double> peerTimes;
  for (int round = 0; round < ROUNDS; ++round) {
    oursTimes.push_back(seconds(ours));
    peerTimes.push_back(seconds("(" + peer + ")"));
    if (oursTimes.back() < 0.0 || peerTimes.back() < 0.0) return false;
  }
  std::printf("%-22s command %6.2f s   vidstab %6.2f s   faster by %.2f\n", c.name,
              median(oursTimes), median(peerTimes), median(peerTimes) / median(oursTimes));
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const int frames = argc > 1 ? std::atoi(argv[1]) : 150;
  if (frames < 3) return 1;
  if (!shell("ffmpeg -hide_banner -filters | grep -q vidstabtransform")) {
    std::printf("there is no ffmpeg with vidstab here: nothing to compare with\n");
    return 0;
  }
  std::string pattern = (fs::temp_directory_path() / "stabilize-bench-XXXXXX").string();
  if (!mkdtemp(pattern.data())) return 1;
  const fs::path folder = pattern;
  const std::string clip = (folder / "clip.mp4").string();
  // Little grain: the encoder would spend all of the time on it.
  bool good =
      shell("'" STAB_PROGRAM "' test-shot --width 1920 --height 1080 --grain 0.004 --frames " +
            std::to_string(frames) + " -o '" + clip + "'");
  std::printf("%d frames of 1920 x 1080, H.264, 2 threads\n", frames);
  good = good && compare(folder, {"nothing encoded", "null:", "-f null -"});
  good = good && compare(folder, {"H.264, crf 16, medium", (folder / "ours.mp4").string(),
                                  "-c:v libx264 -crf 16 -preset medium '" +
                                      (folder / "peer.mp4").string() + "'"});
  fs::remove_all(folder);
  if (!good) std::printf("one of the two failed: nothing here counts\n");
  return good ? 0 : 1;
}
