// The command as a person runs it: one shot in, one steady shot out.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "Program.h"
#include "clip/ClipReader.h"
#include "support/Kernels.h"

namespace {

class Command : public ProgramTest {
 protected:
  void makeSmallShot(const std::string& output) {
    mustRun("stabilize test-shot --width 480 --height 360 --frames 40 --no-subject --dust 0 -o " +
            output);
  }
  std::vector<std::uint16_t> frameOf(const std::string& clip, int frame) {
    const auto reader = OpenClip(folder + clip, 1);
    std::vector<std::uint16_t> samples(reader->info().format.getBytesPerField() / 2);
    reader->readFrame(frame, samples.data());
    return samples;
  }
  /// The numbers that follow a word in a text.
  static std::vector<double> numbersAfter(const std::string& text, const std::string& word) {
    std::vector<double> numbers;
    const std::size_t at = text.find(word);
    if (at == std::string::npos) return numbers;
    const std::string line = text.substr(at + word.size(), text.find('\n', at) - at - word.size());
    for (std::size_t i = 0; i < line.size();) {
      char* end = nullptr;
      const double value = std::strtod(line.c_str() + i, &end);
      const std::size_t next = static_cast<std::size_t>(end - line.c_str());
      if (next > i) numbers.push_back(value);
      i = std::max(next, i + 1);
    }
    return numbers;
  }
};

TEST_F(Command, AWeavingScanComesOutSteadyByItsTruth) {
  makeSmallShot("scan.####.dpx --truth truth.json");
  mustRun(
      "stabilize scan.####.dpx -o steady.####.dpx --stabilize rotation --report report.json "
      "--graph motion.svg --verify --max-residual 0.1");
  const SRun residual = run("stabilize residual report.json truth.json");
  ASSERT_EQ(residual.status, 0) << residual.output;
  for (const char* axis : {"horizontal", "vertical"}) {
    const std::vector<double> pixels = numbersAfter(residual.output, axis);
    ASSERT_EQ(pixels.size(), 2u) << residual.output;
    EXPECT_GT(pixels[0], 0.5);
    EXPECT_LT(pixels[1], 0.05);
  }
  EXPECT_LT(numbersAfter(residual.output, "rotation").at(1), 0.02);
  EXPECT_NE(fileText("motion.svg").find("</svg>"), std::string::npos);
  EXPECT_EQ(frameOf("scan.####.dpx", 1001), frameOf("steady.####.dpx", 1001))
      << "the anchor frame stays as it is";
}

TEST_F(Command, AZoomedPictureIsMeasuredAsItWasShot) {
  makeSmallShot("scan.####.dpx --rotation 0");
  const SRun zoomed =
      run("stabilize scan.####.dpx -o steady.####.dpx --fill zoom --verify --max-residual 0.1");
  ASSERT_EQ(zoomed.status, 0) << zoomed.output;
  EXPECT_GT(numbersAfter(zoomed.output, "weave").at(0), 0.5) << zoomed.output;
}

TEST_F(Command, ARotationThatIsLeftAloneIsNotBlamedOnTheResult) {
  makeSmallShot("scan.####.dpx --rotation 0.2");
  const SRun both = run("stabilize scan.####.dpx -o steady.####.dpx --verify --report report.json");
  ASSERT_EQ(both.status, 0) << both.output;
  EXPECT_TRUE(says(both, "rotation  left as shot")) << both.output;
  const std::string report = fileText("report.json");
  const std::string after = report.substr(report.find("\"after\""));
  EXPECT_LT(std::stod(after.substr(after.find("rotationDegrees") + 17)), 0.02) << after;
}

TEST_F(Command, ResidualAboveTheLimitFails) {
  makeSmallShot("scan.####.tif");
  mustRun("echo old > run.log");
  const SRun strict = run(
      "stabilize scan.####.tif -o steady.####.tif --verify --max-residual 0.00001 --log run.log");
  EXPECT_EQ(strict.status, 1);
  EXPECT_TRUE(says(strict, "--max-residual")) << strict.output;
  EXPECT_TRUE(exists("steady.1040.tif"));
  const std::string log = fileText("run.log");
  EXPECT_EQ(log.find("stabilize 1.2.0.0: scan.####.tif -> steady.####.tif\n"), 0u) << log;
  EXPECT_NE(log.find("--max-residual"), std::string::npos) << log;
}

TEST_F(Command, TheBytesDependNeitherOnThreadsNorOnMemoryNorOnTheRun) {
  makeSmallShot("scan.####.dpx");
  const std::string options =
      " --stabilize rotation --motion smooth --fill previous --overwrite -q";
  mustRun("stabilize scan.####.dpx -o a.####.dpx --threads 1" + options);
  for (const char* work :
       {"--threads 1", "--threads 2 --cache-memory 0", "--threads 8 --cache-memory 3MB"}) {
    SCOPED_TRACE(work);
    mustRun(std::string("stabilize scan.####.dpx -o b.####.dpx ") + work + options);
    expectSameFrames("a.", "b.", 40);
  }
}

TEST_F(Command, EveryKernelWritesTheSameBytes) {
  makeSmallShot("scan.####.dpx");
  const std::string common = "stabilize scan.####.dpx --stabilize rotation --overwrite -v -o ";
  for (const std::string fill : {" --fill white", " --fill zoom"}) {
    mustRun("STABILIZE_KERNEL=scalar " + common + "scalar.####.dpx" + fill);
    for (const SKernel& kernel : AllKernels()) {
      if (!kernel.usable()) continue;
      const SRun done =
          run(std::string("STABILIZE_KERNEL=") + kernel.name + " " + common + "k.####.dpx" + fill);
      ASSERT_EQ(done.status, 0) << done.output;
      EXPECT_TRUE(says(done, std::string("Resampled by ") + kernel.name)) << done.output;
      SCOPED_TRACE(kernel.name + fill);
      expectSameFrames("scalar.", "k.", 40);
    }
  }
  EXPECT_NE(run("STABILIZE_KERNEL=fastest " + common + "k.####.dpx").status, 0);
}

TEST_F(Command, TheMattedBorderIsNotTouched) {
  mustRun("stabilize test-shot -o scan.####.dpx --matte 30 --width 480 --height 360 --frames 12");
  mustRun("stabilize scan.####.dpx -o steady.####.dpx --matting 30,30,449,329 --fill zoom");
  for (int frame : {1001, 1006, 1012}) {
    const std::vector<std::uint16_t> before = frameOf("scan.####.dpx", frame);
    const std::vector<std::uint16_t> after = frameOf("steady.####.dpx", frame);
    int changedOutside = 0;
    int changedInside = 0;
    for (int y = 0; y < 360; ++y)
      for (int x = 0; x < 480; ++x) {
        const std::size_t at = static_cast<std::size_t>(y * 480 + x) * 3;
        const bool changed = !std::equal(&before[at], &before[at] + 3, &after[at]);
        const bool inside = x >= 30 && x <= 449 && y >= 30 && y <= 329;
        if (changed) ++(inside ? changedInside : changedOutside);
      }
    EXPECT_EQ(changedOutside, 0) << frame;
    EXPECT_GT(changedInside, 10000) << frame;
  }
}

TEST_F(Command, MarksLimitWhatIsWritten) {
  makeSmallShot("scan.####.png");
  mustRun(
      "stabilize scan.1003.png -o part.####.png --in 1010 --out 1015 --motion match --reference "
      "1012 --anchor none");
  EXPECT_FALSE(exists("part.1009.png"));
  EXPECT_TRUE(exists("part.1010.png"));
  EXPECT_TRUE(exists("part.1014.png"));
  EXPECT_FALSE(exists("part.1015.png"));
  EXPECT_EQ(frameOf("scan.####.png", 1012), frameOf("part.####.png", 1012))
      << "the reference frame is where it was";
}

TEST_F(Command, VideoGoesInAndOut) {
  mustRun("stabilize test-shot -o scan.mkv --width 320 --height 240 --frames 20 --dust 0 -q");
  mustRun("stabilize scan.mkv -o steady.mkv --compare both.mp4 --verify --max-residual 0.1");
  const SRun info = run("stabilize info steady.mkv");
  EXPECT_TRUE(says(info, "0 to 19 (20)")) << info.output;
  EXPECT_EQ(run("stabilize info both.mp4").status, 0);
}

TEST_F(Command, SaysWhichStreamOfTheSourceIsNotInTheOutput) {
  mustRun(
      "stabilize test-shot -o scan.mkv --width 320 --height 240 --frames 6 -q && printf '1\n"
      "00:00:00,000 --> 00:00:01,000\nsub\n' > sub.srt && ffmpeg -v error -i scan.mkv -i sub.srt "
      "-c copy with.mkv");
  const SRun done = run("stabilize with.mkv -o steady.mp4 -v");
  EXPECT_EQ(done.status, 0) << done.output;
  EXPECT_NE(done.output.find("with.mkv: stream 1 (subrip) is not carried to steady.mp4\n"),
            std::string::npos)
      << done.output;
}

TEST_F(Command, SaysHowItIsUsed) {
  const SRun help = run("stabilize --help");
  EXPECT_EQ(help.status, 0);
  for (const char* option : {"--in",          "--out",           "--auto",
                             "--point",       "--stabilize",     "--motion",
                             "--reference",   "--smoothing",     "--jitter",
                             "--anchor",      "--fill",          "--matting",
                             "--track-box",   "--search",        "--warp",
                             "--threads",     "--report",        "--graph",
                             "--compare",     "--verify",        "--max-residual",
                             "--overwrite",   "--log",           "--quiet",
                             "--verbose",     "--points",        "--tracker-origin",
                             "--save-points", "--export-motion", "--cache-memory"})
    EXPECT_TRUE(says(help, option)) << option;
  const SRun shotHelp = run("stabilize test-shot --help");
  EXPECT_EQ(shotHelp.status, 0);
  for (const char* standard : {"--frames INT=240", "--width INT=2048", "--drift-y FLOAT=-4",
                               "--rotation FLOAT=0.03", "--matte INT=0", "--no-subject "})
    EXPECT_TRUE(says(shotHelp, standard)) << shotHelp.output;
  const SRun version = run("stabilize --version");
  EXPECT_EQ(version.status, 0);
  EXPECT_TRUE(says(version, "1.2.0.0")) << version.output;
  EXPECT_NE(run("STABILIZE_KERNEL=plain stabilize --version").output.find("kernel plain"),
            std::string::npos);
}

TEST_F(Command, AnAnswerThatCannotBeWrittenIsAFailure) {
  for (const char* question : {"--help", "info --help", "--version", "info test:frames=2"}) {
    const SRun lost = run(std::string("stabilize ") + question + " > /dev/full");
    EXPECT_EQ(lost.status, 1) << question;
    EXPECT_NE(lost.output.find("standard output cannot be written"), std::string::npos) << question;
  }
}

}  // namespace
