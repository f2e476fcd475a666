// Points files, trackers' text and exported motion, as a person and other programs use them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

#include "../host/session/MotionRows.h"
#include "Program.h"

namespace {

constexpr const char* SHOT =
    "stabilize test-shot -o scan.####.dpx --width 480 --height 360 --frames 24 --rotation 0.2 "
    "--no-subject --dust 0 -q";

class Points : public ProgramTest {
 protected:
  Points() { mustRun(SHOT); }
};

std::size_t linesWith(const std::string& text, const std::string& words) {
  std::size_t count = 0;
  for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1))
    ++count;
  return count;
}

TEST_F(Points, AreFoundPlacedTrackedAndSaved) {
  mustRun("stabilize points scan.####.dpx -o found.points --auto 5");
  EXPECT_EQ(fileText("found.points").substr(0, 7), "{1001[0");
  EXPECT_TRUE(contains(fileText("found.points"), "\n1 0 479 0 359\nR"));
  mustRun(
      "stabilize points scan.####.dpx -o placed.txt --in 1005 --point 100,90.5 --point 200,200");
  EXPECT_EQ(fileText("placed.txt"), "# point 0\n1005 100 90.5\n\n# point 1\n1005 200 200\n");
  const std::string said =
      mustRun("stabilize points scan.####.dpx -o tracked.points --track --points found.points");
  EXPECT_TRUE(contains(said, " of 5 points tracked over 24 frames, saved in tracked.points"));
  EXPECT_TRUE(contains(fileText("tracked.points"), "\n1024[0("));
  EXPECT_TRUE(contains(fileText("tracked.points"), "\nG"));
  // One form becomes the other, and what is tracked stays so.
  mustRun("stabilize points scan.####.dpx -o tracked.txt --points tracked.points");
  mustRun("stabilize points scan.####.dpx -o again.points --points tracked.txt");
  EXPECT_EQ(fileText("again.points"), fileText("tracked.points"));
}

TEST_F(Points, ThatWereTrackedGiveTheSamePicturesWithoutBeingTrackedAgain) {
  const std::string options = " --stabilize rotation --fill zoom";
  mustRun("stabilize scan.####.dpx -o direct.####.dpx --save-points full.txt" + options);
  const std::string said = mustRun(
      "stabilize scan.####.dpx -o text.####.dpx --points full.txt --save-points six.points" +
      options);
  EXPECT_TRUE(contains(said, "points loaded from full.txt, not tracked again")) << said;
  EXPECT_FALSE(contains(said, "Tracking  ")) << said;
  expectSameFrames("direct.", "text.", 24);

  // A points file has six digits: what it gives is what its own numbers give.
  const std::string loaded = mustRun(
      "stabilize scan.####.dpx -o points.####.dpx --points six.points --save-points same.points "
      "--verify --max-residual 0.1 --graph motion.svg --report report.json" +
      options);
  EXPECT_TRUE(contains(loaded, "not tracked again")) << loaded;
  EXPECT_FALSE(contains(loaded, "Tracking  ")) << loaded;
  EXPECT_TRUE(contains(fileText("report.json"), "\"framesFound\": 24")) << fileText("report.json");
  EXPECT_TRUE(contains(fileText("motion.svg"), "polyline"));
  const std::string sixDigits = fileText("six.points").substr(0, fileText("six.points").rfind('}'));
  EXPECT_EQ(fileText("same.points").substr(0, sixDigits.size()), sixDigits);
  mustRun("stabilize points scan.####.dpx -o six.txt --points six.points");
  mustRun("stabilize scan.####.dpx -o sixtext.####.dpx --points six.txt" + options);
  expectSameFrames("points.", "sixtext.", 24);
}

TEST_F(Points, TurnUpsideDownAndBack) {
  mustRun("stabilize points scan.####.dpx -o a.txt --point 100,90.5");
  mustRun("stabilize points scan.####.dpx -o b.txt --points a.txt --tracker-origin top-left");
  mustRun("stabilize points scan.####.dpx -o c.txt --point 100,90.5 --tracker-origin bottom-left");
  EXPECT_EQ(fileText("b.txt"), fileText("a.txt"));
  EXPECT_EQ(fileText("c.txt"), "# point 0\n1001 100 268.5\n");
  mustRun("stabilize points scan.####.dpx -o d.points --points c.txt --tracker-origin bottom-left");
  EXPECT_TRUE(contains(fileText("d.points"), "{1001[0(100, 90.5)]")) << fileText("d.points");
}

TEST_F(Points, BringTheirMarksUnlessOthersAreGiven) {
  const std::string save =
      "stabilize points scan.####.dpx --auto 6 --in 1005 --out 1015 --track -o part";
  for (const char* form : {".points", ".txt"}) {
    mustRun(save + form);
    const std::string out = std::string("out") + form + ".####.dpx";
    const std::string stabilize =
        "stabilize scan.####.dpx --overwrite --points part" + std::string(form) + " -o " + out;
    EXPECT_TRUE(contains(mustRun(stabilize), "10 frames written")) << form;
    EXPECT_TRUE(exists(std::string("out") + form + ".1005.dpx"));
    EXPECT_FALSE(exists(std::string("out") + form + ".1015.dpx"));
    const std::string other = mustRun(stabilize + " --in 1005 --out 1020");
    EXPECT_TRUE(contains(other, "to be tracked from frame 1005\n")) << other;
    EXPECT_TRUE(contains(other, "15 frames written")) << other;
    const std::string moved = mustRun(stabilize + " --in 1008");
    EXPECT_EQ(contains(moved, "(they are those of frame 1005)"), form == std::string(".points"))
        << "a text says where its points are in frame 1008: " << moved;
  }
  const std::string inside =
      mustRun("stabilize scan.####.dpx -o inside.####.dpx --points part.txt --in 1007 --out 1012");
  EXPECT_TRUE(contains(inside, "not tracked again")) << "a text is what its lines are: " << inside;
}

TEST_F(Points, WithGapsAreTrackedFromWhereTheyAreInTheInFrame) {
  mustRun("stabilize points scan.####.dpx -o whole.txt --auto 3 --track");
  mustRun(
      "awk '/^#/ {p = $3} !(p == 0 && $1 == 1001) && !(p == 1 && $1 == 1010)' whole.txt > "
      "gaps.txt");
  ASSERT_EQ(linesWith(fileText("whole.txt"), "\n1001 "), 3u);
  ASSERT_EQ(linesWith(fileText("gaps.txt"), "\n1001 "), 2u);
  const std::string said = mustRun("stabilize points scan.####.dpx -o out.txt --points gaps.txt");
  EXPECT_TRUE(contains(said, "1 that are not in frame 1001 left out")) << said;
  EXPECT_EQ(linesWith(fileText("out.txt"), "\n1001 "), 2u);
  EXPECT_FALSE(contains(fileText("out.txt"), "\n1002 "));
}

TEST_F(Points, CarryTheirMattingUnlessAnotherIsAskedFor) {
  mustRun("stabilize points scan.####.dpx -o boxed.points --matting 30,40,449,319 --track");
  ASSERT_TRUE(contains(fileText("boxed.points"), "\n1 30 449 40 319\nG"));
  const auto regionWith = [this](const std::string& options) {
    mustRun(
        "rm -f .*.ini; stabilize scan.####.dpx -o null: --points boxed.points --report "
        "report.json" +
        options);
    std::string report = fileText("report.json");
    report.erase(
        std::remove_if(report.begin(), report.end(), [](char c) { return c == ' ' || c == '\n'; }),
        report.end());
    EXPECT_TRUE(contains(report, "\"framesFound\":24")) << "the paths stay what they are";
    return report.substr(
        report.find("\"region\":") + 9,
        report.find(']', report.find("\"region\":")) - report.find("\"region\":") - 8);
  };
  EXPECT_EQ(regionWith(""), "[30,40,449,319]");
  EXPECT_EQ(regionWith(" --matting off"), "[0,0,479,359]");
  EXPECT_EQ(regionWith(" --matting 10,10,400,300"), "[10,10,400,300]");
}

/// frame and point, to x and y.
using Places = std::map<std::pair<int, int>, std::pair<double, double>>;

Places placesOf(const std::string& trackerText) {
  std::istringstream lines(trackerText);
  std::string line;
  Places places;
  int point = -1;
  while (std::getline(lines, line)) {
    std::istringstream fields(line);
    int frame = 0;
    double x = 0.0;
    double y = 0.0;
    if (line[0] == '#') ++point;
    if (fields >> frame >> x >> y) places[{frame, point}] = {x, y};
  }
  return places;
}

struct SMotionCase {
  const char* name;
  const char* options;
};

class ExportedMotion : public Points, public ::testing::WithParamInterface<SMotionCase> {
 protected:
  /// Points whose smoothed places stay well inside the picture, as text in their first frame.
  std::map<int, int> writeStarts(std::vector<std::map<std::string, double>>& rows) {
    std::map<int, bool> inside;
    for (auto& row : rows) {
      const double x = row["smoothed_x"];
      const double y = row["smoothed_y"];
      const bool here = x > 45 && x < 435 && y > 45 && y < 315;
      const auto [known, first] = inside.emplace(static_cast<int>(row["point"]), here);
      if (!first) known->second = known->second && here;
    }
    std::map<int, int> numbers;  // as exported, to as tracked afresh
    std::ofstream text(folder + "starts.txt");
    text.precision(17);
    for (auto& row : rows) {
      const int point = static_cast<int>(row["point"]);
      if (row["frame"] != rows.front()["frame"] || !inside[point]) continue;
      text << "1001 " << row["smoothed_x"] << " " << row["smoothed_y"] << "\n\n";
      numbers.emplace(point, static_cast<int>(numbers.size()));
    }
    return numbers;
  }
};

TEST_P(ExportedMotion, IsWhereATrackerFindsThePointsInTheOutput) {
  mustRun(std::string("stabilize scan.####.dpx -o steady.####.dpx --auto 24 --export-motion "
                      "motion.csv ") +
          GetParam().options);
  auto rows = rowsOf(fileText("motion.csv"));
  const std::map<int, int> numbers = writeStarts(rows);
  ASSERT_GE(numbers.size(), 4u);
  mustRun("stabilize points steady.####.dpx -o found.txt --track --points starts.txt");
  const Places found = placesOf(fileText("found.txt"));
  ASSERT_EQ(found.size(), numbers.size() * 24) << "none of them was lost";
  double largestMove = 0.0;
  for (auto& row : rows) {
    const double x = row["m11"] * row["x"] + row["m12"] * row["y"] + row["m13"];
    const double y = row["m21"] * row["x"] + row["m22"] * row["y"] + row["m23"];
    EXPECT_EQ(x, row["smoothed_x"]);
    EXPECT_EQ(y, row["smoothed_y"]);
    largestMove = std::max(largestMove, std::hypot(x - row["x"], y - row["y"]));
    const auto number = numbers.find(static_cast<int>(row["point"]));
    if (number == numbers.end()) continue;
    const auto [foundX, foundY] = found.at({static_cast<int>(row["frame"]), number->second});
    EXPECT_NEAR(foundX, x, 0.1) << "frame " << row["frame"] << ", point " << row["point"];
    EXPECT_NEAR(foundY, y, 0.1) << "frame " << row["frame"] << ", point " << row["point"];
  }
  EXPECT_GT(largestMove, 1.0) << "there was something to tell";
}

INSTANTIATE_TEST_SUITE_P(
    Of, ExportedMotion,
    ::testing::Values(
        SMotionCase{"StillPictures", "--stabilize rotation"}, SMotionCase{"TranslationOnly", ""},
        SMotionCase{"SmoothedMotion", "--stabilize rotation --motion smooth --smoothing 4"},
        SMotionCase{"ZoomedPictures", "--stabilize rotation --fill zoom --anchor last"},
        SMotionCase{"RegionInABorder", "--matting 20,20,459,339 --fill zoom"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(Points, ThatAreBadAreRefusedBeforeAnyWork) {
  const struct {
    const char *name, *prepare, *arguments;
    int status;
    const char* says;
  } cases[] = {
      {"Missing", "", "--points no.points", 1, "no.points"},
      {"AFolder", "mkdir a.points", "--points a.points", 1, "a.points"},
      {"NotAPointsFile", "echo hello > a.points", "--points a.points", 1, "a.points: line 1"},
      {"CutOff", "head -c 200 good.points > a.points", "--points a.points", 1, "a.points: line"},
      {"DamagedPoint", "sed '0,/(/s/(/</' good.points > a.points", "--points a.points", 1,
       "a.points: point 0 of frame 1001 is damaged"},
      {"Empty", "printf '{\\n}\\n[]\\n0 0 0 0 0\\nR\\n' > a.points", "--points a.points", 1,
       "a.points: holds no points"},
      {"TextWithoutPoints", "echo '# none' > a.txt", "--points a.txt", 1, "a.txt: holds no points"},
      {"TextOfAnotherForm", "echo 1001,5,6 > a.txt", "--points a.txt", 1, "a.txt: line 1"},
      {"BinaryText", "head -c 4096 scan.1001.dpx > a.txt", "--points a.txt", 1, "a.txt: line 1"},
      {"Gigabyte", "truncate -s 1G a.txt", "--points a.txt", 1, "a.txt"},
      {"OutsideThePicture", "echo 1001 500 90 > a.txt", "--points a.txt", 1,
       "a.txt: point 0 at 500.000000,90.000000 is outside the picture"},
      {"TooNearTheEdge", "printf '1001 90 90\\n\\n1001 3 90\\n' > a.txt", "--points a.txt", 1,
       "a.txt: point 1 at 3.000000,90.000000: its track box would leave the picture"},
      {"MattingOutside", "sed 's/^1 0 479 0 359/1 0 480 0 359/' good.points > a.points",
       "--points a.points", 1, "a.points: its matting box"},
      {"TwoSources", "", "--points good.points --point 90,90", 2, "--point"},
      {"FileAndSearch", "", "--points good.points --auto 4", 2, "--auto"},
      {"SavedOverAFile", "", "--save-points good.points", 1, "good.points: exists already"},
      {"SavedNowhere", "", "--save-points no/such.points", 1, "no/such.points"},
      {"SavedAsSomethingElse", "", "--save-points a.doc", 2, "a.doc"},
      {"MotionNowhere", "", "--export-motion no/such.csv", 1, "no/such.csv"},
      {"MotionAsSomethingElse", "", "--export-motion a.txt", 2, "--export-motion a.txt"},
  };
  mustRun("stabilize points scan.####.dpx -o good.points --auto 4 --track");
  const std::string good = fileText("good.points");
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    mustRun(std::string("rm -rf a.*\n") + c.prepare);
    const SRun refused = run(std::string("stabilize scan.####.dpx -o out.####.dpx ") + c.arguments);
    EXPECT_EQ(refused.status, c.status) << refused.output;
    EXPECT_TRUE(says(refused, c.says)) << refused.output;
    EXPECT_FALSE(says(refused, "Tracking  ")) << refused.output;
    EXPECT_FALSE(exists("out.1001.dpx"));
    EXPECT_EQ(fileText("good.points"), good);
  }
}

}  // namespace
