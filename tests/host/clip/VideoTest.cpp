#include <algorithm>
#include <cmath>
#include <fstream>
#include <random>

#include "ClipCopies.h"
#include "TemporaryFolder.h"

namespace {

std::unique_ptr<IClipReader> SmallShot(int frames, int depth = 16, int width = 96) {
  return OpenClip("test:height=64,firstFrame=1001,width=" + std::to_string(width) +
                      ",frames=" + std::to_string(frames) + ",depth=" + std::to_string(depth),
                  1);
}

std::vector<Samples> ReadAll(IClipReader& clip) {
  std::vector<Samples> frames;
  for (int frame = clip.info().firstFrame; frame < clip.info().endFrame; ++frame)
    frames.push_back(ReadFrame(clip, frame));
  return frames;
}

/// H.264 of a moving picture, made by a program that is not ours; `options` follow its inputs.
void MakeVideo(const std::string& path, int frames, const std::string& options = "",
               const std::string& sound = "") {
  RunShell("ffmpeg -y -nostdin -f lavfi -i testsrc2=size=96x64:rate=24,trim=end_frame=" +
           std::to_string(frames) + " " + sound + " -c:v libx264 -pix_fmt yuv420p " + options +
           " '" + path + "'");
}

/// Times of the pictures' packets in rising order, milliseconds.
std::vector<int> TimesOf(const std::string& path) {
  RunShell(
      "ffprobe -v error -select_streams v -show_entries packet=pts_time -of default=nk=1:nw=1 '" +
      path + "' -o '" + path + ".times'");
  std::ifstream file(path + ".times");
  std::vector<int> times;
  for (double seconds = 0.0; file >> seconds;)
    times.push_back(static_cast<int>(std::lround(seconds * 1000.0)));
  std::sort(times.begin(), times.end());
  return times;
}

/// All samples of the sound, which is 16-bit linear, two bytes each.
std::string SoundOf(const std::string& path) {
  RunShell("ffmpeg -y -nostdin -i '" + path + "' -map 0:a -c:a copy -f s16le '" + path + ".raw'");
  return FileBytes(path + ".raw");
}

/// Root of the mean squared difference, in parts of full range.
double Difference(const Samples& a, const Samples& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += std::pow((a[i] - b[i]) / 65535.0, 2);
  return std::sqrt(sum / static_cast<double>(a.size()));
}

}  // namespace

TEST(Video, LosslessVideoKeepsEverySample) {
  const CTemporaryFolder folder;
  const auto shot = SmallShot(7);
  const std::vector<Samples> frames = ReadAll(*shot);
  CopyRange(*shot, folder("a.mkv"), 1001, 1008);
  const auto clip = OpenClip(folder("a.mkv"), 2);
  const SClipInfo& info = clip->info();
  EXPECT_EQ(info.frameCount(), 7);
  EXPECT_EQ(info.frameRate, (SFrameRate{24, 1}));
  EXPECT_EQ(info.startTimecode.toText(), "01:00:00:00");
  EXPECT_TRUE(ReadAll(*clip) == frames);
  EXPECT_EQ(folder.names(), std::vector<std::string>{"a.mkv"});

  CopyRange(*clip, folder("b.mkv"), 2, 6);
  const auto part = OpenClip(folder("b.mkv"), 1);
  EXPECT_TRUE(ReadAll(*part) == std::vector<Samples>(frames.begin() + 2, frames.begin() + 6));
  EXPECT_EQ(part->info().startTimecode.toText(), "01:00:00:02");
}

/// The limits: a ten-bit picture with full chroma, one with half, and eight bits with a quarter and
/// lossy coding. A wrong matrix, range or chroma position is far above them.
TEST(Video, OtherKindsShowTheSamePicture) {
  const CTemporaryFolder folder;
  const auto shot = SmallShot(3, 10);
  const std::vector<Samples> frames = ReadAll(*shot);
  struct SCase {
    const char* name;
    double limit;
  };
  for (const SCase& c : {SCase{"a.mov", 0.006}, SCase{"a.mp4", 0.03}}) {
    CopyRange(*shot, folder(c.name), 1001, 1004);
    const auto clip = OpenClip(folder(c.name), 1);
    ASSERT_EQ(clip->info().frameCount(), 3) << c.name;
    for (int frame = 0; frame < 3; ++frame)
      EXPECT_LT(Difference(ReadFrame(*clip, frame), frames[static_cast<std::size_t>(frame)]),
                c.limit)
          << c.name << " frame " << frame;
  }
}

TEST(Video, AnyOrderGivesTheFramesOfTheSequentialOrder) {
  const CTemporaryFolder folder;
  const std::pair<const char*, const char*> cases[] = {{"b-frames.mp4", "-g 12 -bf 2"},
                                                       {"b-frames.mkv", "-g 12 -bf 2"},
                                                       {"one key.mp4", "-g 250 -bf 0"},
                                                       {"intra.mp4", "-g 1"}};
  for (const auto& [name, options] : cases) {
    SCOPED_TRACE(name);
    MakeVideo(folder(name), 40, options);
    const auto clip = OpenClip(folder(name), 2);
    ASSERT_EQ(clip->info().frameCount(), 40);
    const std::vector<Samples> frames = ReadAll(*clip);
    std::mt19937 random(5);
    std::vector<int> order{0, 39, 38, 37, 0, 1, 2, 20, 20, 19, 24, 23, 12, 11, 13};
    for (int i = 0; i < 30; ++i) order.push_back(static_cast<int>(random() % 40));
    for (const int frame : order)
      ASSERT_TRUE(ReadFrame(*clip, frame) == frames[static_cast<std::size_t>(frame)]) << frame;
  }
}

// A disk that is unplugged while someone looks at a clip: frames fail until it is back.
TEST(Video, AFileThatGoesAwayFailsUntilItIsBack) {
  const CTemporaryFolder folder;
  MakeVideo(folder("a.mp4"), 30, "-g 12");
  const auto clip = OpenClip(folder("a.mp4"), 2);
  const std::vector<Samples> frames = ReadAll(*clip);
  std::filesystem::rename(folder("a.mp4"), folder("away.mp4"));
  Samples samples(clip->info().format.getBytesPerField() / 2);
  for (const int frame : {0, 1, 0, 5}) {  // going back opens the file anew
    const std::string error = ErrorOf([&] { clip->readFrame(frame, samples.data()); });
    if (frame == 0) ExpectMentions(error, {"frame 0", "a.mp4"});
  }
  std::filesystem::rename(folder("away.mp4"), folder("a.mp4"));
  for (const int frame : {5, 0, 29}) EXPECT_TRUE(ReadFrame(*clip, frame) == frames[frame]) << frame;
}

TEST(Video, FramesOfUnequalLengthAreFramesInTheirOrderAndKeepTheirTimes) {
  const CTemporaryFolder folder;
  std::string times = "0";
  for (const auto& [frame, time] :
       {std::pair{1, 40}, {2, 80}, {3, 200}, {4, 210}, {5, 300}, {6, 1000}, {7, 1040}})
    times += "+eq(N\\," + std::to_string(frame) + ")*" + std::to_string(time);
  MakeVideo(
      folder("a.mkv"), 8,
      "-vf 'settb=1/1000,setpts=" + times + "' -enc_time_base 1/1000 -vsync passthrough -bf 0");
  const auto clip = OpenClip(folder("a.mkv"), 1);
  EXPECT_EQ(clip->info().frameCount(), 8);
  EXPECT_EQ(clip->metadata().at("VariableFrameRate"), "yes");
  const std::vector<Samples> frames = ReadAll(*clip);
  EXPECT_TRUE(ReadFrame(*clip, 5) == frames[5]);
  CopyRange(*clip, folder("b.mkv"), 1, 8);
  EXPECT_EQ(TimesOf(folder("b.mkv")), (std::vector<int>{0, 40, 160, 170, 260, 960, 1000}));
}

TEST(Video, SoundOfTheRangeGoesAlong) {
  const CTemporaryFolder folder;
  // A second of rising numbers, in packets of ten milliseconds.
  MakeVideo(folder("a.mkv"), 24, "-c:a pcm_s16le",
            "-f lavfi -i 'aevalsrc=(n-24000)/32768:s=48000:d=1:n=480'");
  const auto clip = OpenClip(folder("a.mkv"), 1);
  const std::string all = SoundOf(folder("a.mkv"));
  ASSERT_EQ(all.size(), 2 * 48000u);
  CopyRange(*clip, folder("whole.mkv"), 0, 24);
  EXPECT_TRUE(SoundOf(folder("whole.mkv")) == all);
  CopyRange(*clip, folder("part.mkv"), 6, 18);
  EXPECT_TRUE(SoundOf(folder("part.mkv")) == all.substr(2 * 12000, 2 * 24000));
}

TEST(Video, AnUnfinishedVideoIsNoVideo) {
  const CTemporaryFolder folder;
  folder.makeFile("a.mkv", "old");
  const auto shot = SmallShot(3);
  SWriteOptions options;
  options.overwrite = true;
  {
    const auto writer = CreateClip(folder("a.mkv"), *shot, 1001, 1004, options);
    writer->writeFrame(1001, ReadFrame(*shot, 1001).data());
    EXPECT_EQ(FileBytes(folder("a.mkv")), "old");
    EXPECT_EQ(folder.names().size(), 2u);
  }
  EXPECT_EQ(folder.names(), std::vector<std::string>{"a.mkv"});
  EXPECT_EQ(FileBytes(folder("a.mkv")), "old");

  const auto writer = CreateClip(folder("a.mkv"), *shot, 1001, 1004, options);
  writer->writeFrame(1002, ReadFrame(*shot, 1002).data());
  ExpectMentions(ErrorOf([&] { writer->writeFrame(1001, ReadFrame(*shot, 1001).data()); }),
                 {"frame 1001", "a.mkv", "rising order"});
}

TEST(Video, WhatIsNoVideoIsRefused) {
  const CTemporaryFolder folder;
  folder.makeFile("a.mp4", std::string(5000, 'x'));
  ExpectMentions(ErrorOf([&] { OpenClip(folder("a.mp4"), 1); }), {"a.mp4", "cannot be"});
  ExpectMentions(ErrorOf([&] { OpenClip(folder("b.mp4"), 1); }), {"b.mp4", "no such file"});
  const auto shot = SmallShot(3);
  CopyRange(*shot, folder("odd.mkv"), 1001, 1004);
  ExpectMentions(
      ErrorOf([&] { CreateClip(folder("odd.mp4"), *SmallShot(1, 10, 97), 1001, 1002, {}); }),
      {"odd.mp4", "even width", "97 x 64"});
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.mp4", "odd.mkv"}));
}

TEST(Video, AFrameCutOffIsNamedAndTheOthersAreThere) {
  const CTemporaryFolder folder;
  const auto shot = SmallShot(6);
  CopyRange(*shot, folder("a.mkv"), 1001, 1007);
  const auto size = std::filesystem::file_size(folder("a.mkv"));
  std::filesystem::resize_file(folder("a.mkv"), size * 2 / 3);
  const auto clip = OpenClip(folder("a.mkv"), 1);
  EXPECT_TRUE(ReadFrame(*clip, 0) == ReadFrame(*shot, 1001));
  EXPECT_LT(clip->info().frameCount(), 6);
  for (int frame = 0; frame < clip->info().frameCount(); ++frame) {
    Samples samples(clip->info().format.getBytesPerField() / 2);
    const std::string error = ErrorOf([&] { clip->readFrame(frame, samples.data()); });
    if (error == "no error") {
      EXPECT_TRUE(samples == ReadFrame(*shot, 1001 + frame)) << frame;
    } else {
      ExpectMentions(error, {"frame " + std::to_string(frame), "a.mkv"});
    }
  }
  EXPECT_TRUE(ReadFrame(*clip, 1) == ReadFrame(*shot, 1002));
}
