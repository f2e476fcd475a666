// The command that shows and changes what the tool remembers for an operator.
#include <gtest/gtest.h>

#include <fstream>

#include "Program.h"

namespace {

namespace fs = std::filesystem;

class Preferences : public ProgramTest {
 protected:
  SRun run(const std::string& arguments) {
    return RunLine(folder, "stabilize preferences " + arguments);
  }
  void put(const std::string& text) {
    fs::create_directories(file_.parent_path());
    TempFolder::put(file_, text);
  }

  const fs::path file_ = folder + ".config/stabilize/Stabilizer.ini";
};

TEST_F(Preferences, AreShownWithTheirFileAndMakeNone) {
  const SRun shown = run("");
  EXPECT_EQ(shown.status, 0);
  EXPECT_EQ(shown.output.rfind(file_.string() + "\n[StabilizerForm]\nShowTrackPoints = true\n", 0),
            0u)
      << shown.output;
  for (const char* line :
       {"MarkInMovePreference = 3\n", "AutoLoadTrackPoints = false\n", "[Stabilizer]\n",
        "TrackBoxExtentX = 10\n", "HMode = STABMODE_Flat\n", "KeepOriginalMatValues = true\n"}) {
    EXPECT_TRUE(says(shown, line)) << line;
  }
  EXPECT_FALSE(fs::exists(file_));
}

TEST_F(Preferences, AreSetOneByOneAndReset) {
  put("; by hand\n[Elsewhere]\nKey = value\n[StabilizerForm]\nLeft = 40\nShowTrackPoints = what\n");
  const SRun set = run("--set MarkInMovePreference=2 --set HMode=STABMODE_Smoothed");
  EXPECT_EQ(set.status, 0) << set.output;
  EXPECT_TRUE(says(set, "MarkInMovePreference = 2\n")) << set.output;
  EXPECT_TRUE(says(set, "ShowTrackPoints = true\n")) << "an unreadable value is no value";
  const SRun shown = run("");
  EXPECT_EQ(shown.output, set.output);
  EXPECT_EQ(textOf(file_).find("TrackBoxExtentX"), std::string::npos)
      << "what was not set stays with its default";

  const SRun reset = run("--reset --set TrackBoxExtentX=12");
  EXPECT_TRUE(says(reset, "MarkInMovePreference = 3\n")) << reset.output;
  EXPECT_TRUE(says(reset, "TrackBoxExtentX = 12\n"));
  EXPECT_NE(textOf(file_).find("Key = value"), std::string::npos);
  EXPECT_EQ(textOf(file_).find("Left"), std::string::npos);
}

TEST_F(Preferences, WrongOnesAreNamedAndNothingIsWritten) {
  const std::string before = "[StabilizerForm]\nMarkInMovePreference = 1\n";
  put(before);
  const struct {
    const char *arguments, *says;
  } cases[] = {
      {"--set Wobble=1", "--set Wobble: there is no such setting"},
      {"--set TrackBoxExtentX=ten", "--set TrackBoxExtentX: \"ten\" is no value of it"},
      {"--set MarkInMovePreference=4", "MarkInMovePreference"},
      {"--set AutoLoadTrackPoints=true", "AutoLoadTrackPoints"},
      {"--set TrackBoxExtentX=12 --set HMode=1", "HMode"},
      {"--reset --set Alpha2=", "Alpha2"},
      {"--set ShowTrackPoints", "--set ShowTrackPoints: wants KEY=VALUE"},
      {"extra", "extra"},
  };
  for (const auto& c : cases) {
    const SRun wrong = run(c.arguments);
    EXPECT_EQ(wrong.status, 2) << c.arguments;
    EXPECT_TRUE(says(wrong, c.says)) << wrong.output;
    EXPECT_EQ(textOf(file_), before) << c.arguments;
  }
}

TEST_F(Preferences, AForeignOrUnwritableFileIsNamedAndLeftAlone) {
  const std::string foreign =
      "\x7f"
      "ELF is no settings file\n";
  put(foreign);
  for (const char* arguments : {"", "--reset", "--set TrackBoxExtentX=12"}) {
    const SRun refused = run(arguments);
    EXPECT_EQ(refused.status, 1) << arguments;
    EXPECT_TRUE(says(refused, file_.string())) << refused.output;
    EXPECT_EQ(textOf(file_), foreign);
  }
  fs::remove_all(file_.parent_path());
  std::ofstream(file_.parent_path()) << "in the way of the folder";
  EXPECT_EQ(run("").status, 0) << "no settings are the defaults";
  const SRun unwritable = run("--set TrackBoxExtentX=12");
  EXPECT_EQ(unwritable.status, 1);
  EXPECT_TRUE(says(unwritable, file_.string())) << unwritable.output;
}

// What lies in a home folder must not decide how a picture comes out.
TEST_F(Preferences, AreNothingToABatchRun) {
  mustRun(
      "stabilize test-shot -o scan.####.dpx --width 320 --height 240 --frames 6 --dust 0 "
      "--no-subject -q && stabilize scan.####.dpx -o plain.####.dpx -q");
  ASSERT_EQ(run("--set UFunction=U_Fcn_None --set MissingDataFill=MISSING_DATA_Zoom").status, 0);
  const std::string stored = textOf(file_);
  mustRun("stabilize scan.####.dpx -o again.####.dpx -q");
  expectSameFrames("plain.", "again.", 6);
  EXPECT_EQ(textOf(file_), stored);
  EXPECT_FALSE(exists("stab_auto.points"));
}

}  // namespace
