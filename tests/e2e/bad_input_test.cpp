// Bad input and bad luck: a clear message, the right status, and nothing lost.
#include <gtest/gtest.h>
#include <signal.h>

#include <map>
#include <vector>

#include "Program.h"
#include "clip/ClipReader.h"

namespace {

namespace fs = std::filesystem;

class BadInput : public ProgramTest {
 protected:
  /// What every file of the shot's folder holds.
  std::map<std::string, std::string> shotFiles() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(folder + "shot")) {
      const std::string name = entry.path().filename().string();
      if (fs::is_regular_file(entry)) files[name] = fileText("shot/" + name);
    }
    return files;
  }
};

TEST_F(BadInput, IsToldAndLosesNothing) {
  const struct {
    const char* name;
    const char* prepare;  // spoils the good shot scan.####.dpx, frames 1001 to 1012
    const char* arguments;
    int status;
    const char* says;
  } cases[] = {
      {"NoSuchFile", "", "nowhere.mov -o out.####.dpx", 1, "nowhere.mov"},
      {"EmptyFolder", "mkdir empty", "empty -o out.####.dpx", 1, "empty"},
      {"NotAClip", "head -c 5000 /dev/zero > rubbish.mov", "rubbish.mov -o out.####.dpx", 1,
       "rubbish.mov"},
      {"APipe", "mkfifo pipe.dpx", "pipe.dpx -o out.####.dpx", 1, "pipe.dpx"},
      {"ATextOverTheScan", "", "scan.####.dpx -o out.####.dpx --report scan.1001.dpx", 2,
       "--report"},
      {"ALogOverTheScan", "", "scan.####.dpx -o out.####.dpx --log scan.1001.dpx", 2, "--log"},
      {"TwoResultsInOneFile", "", "scan.####.dpx -o out.####.dpx --report r.txt --graph ./r.txt", 2,
       "--graph and --report"},
      {"ALogOverAVideoOfAnotherName",
       "stabilize test-shot -o v.mkv --width 64 --height 64 --frames 2 -q && mv v.mkv v.reel",
       "v.reel -o out.####.dpx --log v.reel", 2, "--log and INPUT are one file, v.reel"},
      {"ALogOverThePoints", "echo 1001 100 100 > a.txt",
       "scan.####.dpx -o out.####.dpx --points a.txt --log ./a.txt", 2,
       "--log and --points are one file, ./a.txt"},
      {"ALogOverAReport", "echo old > r.txt",
       "scan.####.dpx -o out.####.dpx --report r.txt --log r.txt", 2,
       "--log and --report are one file, r.txt"},
      {"ALogWhoseLinkLeadsToTheScan", "ln -s scan.1002.dpx l.txt",
       "scan.####.dpx -o out.####.dpx --log l.txt", 2, "scan.1002.dpx: a text is not written"},
      {"ALogThatIsAnotherNameOfTheScan", "mkdir d && ln scan.1002.dpx d/l.txt",
       "scan.####.dpx -o out.xyz --log d/l.txt", 1, "out.xyz"},
      {"ALogOfACommand", "cp scan.1001.dpx copy", "--log copy info scan.####.dpx", 2, "--log"},
      {"ATruthOverTheVideo", "",
       "test-shot -o v.mkv --width 64 --height 64 --frames 2 --truth v.mkv", 2,
       "--truth v.mkv: a text"},
      {"ATruthThatHasNoPlace", "",
       "test-shot -o scan.####.dpx --overwrite --width 320 --height 240 --frames 2 --truth "
       "nowhere/t.json",
       1, "nowhere"},
      {"NothingToCompare", "", "scan.####.dpx -o null: --compare c.mp4", 2,
       "--compare needs an output that can be read, not null:"},
      {"NothingToVerify", "", "scan.####.dpx -o null: --max-residual 0.1", 2, "null:"},
      {"HoleInTheSequence", "rm scan.1004.dpx scan.1005.dpx", "scan.####.dpx -o out.####.dpx", 1,
       "1004"},
      {"TruncatedFrame", "truncate -s 40000 scan.1007.dpx", "scan.####.dpx -o out.####.dpx", 1,
       "1007"},
      {"CorruptFrame", "head -c 300000 /dev/zero > scan.1006.dpx", "scan.####.dpx -o out.####.dpx",
       1, "1006"},
      {"FrameOfAnotherSize",
       "stabilize test-shot -o small.#.dpx --width 200 --height 150 --frames 1 --first 1008 -q && "
       "mv small.1008.dpx scan.1008.dpx",
       "scan.####.dpx -o out.####.dpx", 1, "1008"},
      {"FewerFramesThanAnchors", "", "scan.####.dpx -o out.####.dpx --in 1003 --out 1004", 1,
       "the marked frame range must be greater than the number of anchor frames (code -8501)"},
      {"ClipOfOneFrame", "mkdir one && cp scan.1001.dpx one/", "one -o out.####.dpx", 1, "-8501"},
      {"InNotBelowOut", "", "scan.####.dpx -o out.####.dpx --in 1005 --out 1005", 2,
       "--in 1005 is not below --out 1005"},
      {"MarksOutsideTheClip", "", "scan.####.dpx -o out.####.dpx --in 900", 2, "--in 900"},
      {"NoTexture",
       "rm scan.*; stabilize test-shot -o scan.####.dpx --width 320 --height 240 --frames 3 -q; "
       "grey 1001 1002 1003",
       "scan.####.dpx -o out.####.dpx", 1, "nothing in the picture can be tracked"},
      {"EveryPointLost", "grey 1006 1007 1008", "scan.####.dpx -o out.####.dpx", 1,
       "frame 1006: every tracking point was lost"},
      {"OutputIsInput", "", "scan.####.dpx -o ./scan.%04d.dpx --overwrite", 1, "input"},
      {"OutputExists", "touch out.1005.dpx", "scan.####.dpx -o out.####.dpx", 1, "out.1005.dpx"},
      {"OutputBelowAFile", "touch file", "scan.####.dpx -o file/out.####.dpx", 1, "file"},
      {"UnknownContainer", "", "scan.####.dpx -o out.xyz", 1, "out.xyz"},
      {"UnknownOption", "", "scan.####.dpx -o out.####.dpx --frobnicate", 2, "--frobnicate"},
      {"OptionCutShort", "", "scan.####.dpx -o out.####.dpx --fil zoom", 2,
       "stabilize: The following arguments were not expected: zoom --fil"},
      {"UnknownChoice", "", "scan.####.dpx -o out.####.dpx --motion wobble", 2,
       "--motion: wants one of match, remove, smooth, not \"wobble\""},
      {"NumberForAChoice", "", "scan.####.dpx -o out.####.dpx --fill 1", 2, "--fill: wants one of"},
      {"NoOutput", "", "scan.####.dpx", 2, "--output"},
      {"PointOutsideThePicture", "", "scan.####.dpx -o out.####.dpx --point 500,10", 2, "--point"},
      {"PointThatIsNone", "", "scan.####.dpx -o out.####.dpx --point '1;2'", 2, "--point"},
      {"MattingBoxOfAnotherClip",
       "stabilize scan.1001.dpx -o null: -q --matting 0,0,319,239 && rm scan.* && stabilize "
       "test-shot -o scan.####.dpx "
       "--width 200 --height 150 --frames 3 -q",
       "scan.1001.dpx -o out.####.dpx", 2, "the matting box that is kept with the clip"},
      {"PointTooNearTheEdge", "", "scan.####.dpx -o out.####.dpx --point 3,100", 2, "track box"},
  };
  mustRun(
      "mkdir good && stabilize test-shot -o good/scan.####.dpx --width 320 --height 240 "
      "--frames 12 --dust 0 --no-subject -q");
  const std::string grey =
      "grey() { for f in $*; do ffmpeg -v error -y -f lavfi -i color=gray:s=320x240 -frames:v 1 "
      "-pix_fmt gbrp10le scan.$f.dpx; done; }\n";
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    mustRun(grey + "rm -rf shot && cp -r good shot && cd shot\n" + c.prepare);
    const std::map<std::string, std::string> before = shotFiles();
    const SRun done = run(std::string("cd shot && stabilize ") + c.arguments);
    EXPECT_EQ(done.status, c.status) << done.output;
    EXPECT_TRUE(says(done, c.says)) << done.output;
    EXPECT_TRUE(says(done, "stabilize: ")) << "every error has the program's name: " << done.output;
    for (const auto& [file, text] : before)
      EXPECT_TRUE(fileText("shot/" + file) == text) << file << " has changed";
    for (const auto& entry : fs::directory_iterator(folder + "shot"))
      EXPECT_EQ(entry.path().filename().string().find("tmp"), std::string::npos) << entry.path();
  }
}

class BadLuck : public ProgramTest {
 protected:
  void makeShot(const char* frames) {
    mustRun("stabilize test-shot -o scan.####.dpx --width 640 --height 480 --dust 0 -q --frames " +
            std::string(frames));
  }
  /// Whole frames of out.####.dpx; anything else that begins with "out" or hides is a failure.
  int wholeFrames() {
    int count = 0;
    std::vector<std::uint16_t> samples(640 * 480 * 3);
    for (const auto& entry : fs::directory_iterator(folder)) {
      const std::string name = entry.path().filename().string();
      EXPECT_EQ(name.find("tmp"), std::string::npos) << name;
      if (name.rfind("out.", 0) != 0) continue;
      const auto reader = OpenClip(entry.path().string(), 1);
      EXPECT_NO_THROW(reader->readFrame(std::stoi(name.substr(4, 4)), samples.data())) << name;
      ++count;
    }
    return count;
  }
};

TEST_F(BadLuck, AFullDiskLeavesOnlyWholeFrames) {
  makeShot("8");
  // The limit lies between the size of a frame and nothing: every frame is too large. With
  // one thread the first of them fails first.
  const SRun full = run("( ulimit -f 400; stabilize scan.####.dpx -o out.####.dpx --threads 1 )");
  EXPECT_EQ(full.status, 1) << full.output;
  EXPECT_TRUE(says(full, "out.1001.dpx")) << full.output;
  EXPECT_EQ(wholeFrames(), 0);
}

TEST_F(BadLuck, AnInterruptStopsCleanlyAndWholeFramesStay) {
  makeShot("150");
  CRunningProgram program(folder, "exec '" STAB_PROGRAM "' scan.####.dpx -o out.####.dpx -q");
  waitForFile(program, "out.1003.dpx");
  program.signal(SIGINT);
  EXPECT_EQ(program.wait(), 130);
  const int whole = wholeFrames();
  EXPECT_GE(whole, 3);
  EXPECT_LT(whole, 150);
}

TEST_F(BadLuck, AKilledRenderIsMadeWholeBySayingItAgain) {
  makeShot("40");
  {
    CRunningProgram program(folder, "exec '" STAB_PROGRAM "' scan.####.dpx -o out.####.dpx -q");
    waitForFile(program, "out.1003.dpx");
    program.signal(SIGKILL);
    program.wait();
  }
  mustRun("stabilize scan.####.dpx -o out.####.dpx --overwrite -q");
  mustRun("stabilize scan.####.dpx -o new.####.dpx -q");
  expectSameFrames("out.", "new.", 40);
}

}  // namespace
