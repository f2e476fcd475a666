#include <fstream>
#include <sstream>

#include "ToolFixture.h"
#include "support/IniFile.h"

namespace {

/// Tools that come and go on one settings file, beside the fixture's own.
class Settings : public ToolTest {
 protected:
  void SetUp() override {
    ToolTest::SetUp();
    ZRNQTraceLevel = 0;
    file = IniFileNameFor("Stabilizer");
    host.folderText = folder_ + "shot.%04d.dpx";
    autoPoints = folder_ + "stab_auto.points";
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
  }

  /// A tool from its first start to its shutdown, shown unless said otherwise.
  class CSession {
   public:
    explicit CSession(CNavSystemInterface& host, bool shown = true) {
      EXPECT_EQ(tool.toolInitialize(&host), 0);
      if (shown) tool.toolShow();
    }
    ~CSession() { tool.toolShutdown(); }

    CParameterWindow* window = nullptr;
    CStabilizerTool tool{"Stabilize", [this](CStabilizerTool& owner) {
                           auto made = std::make_unique<CParameterWindow>(owner);
                           window = made.get();
                           return made;
                         }};
  };

  static void place(CStabilizerTool& tool, double x = 10.0) {
    tool.editor().updateMarks();
    tool.livePoints().PointsAt(IN).Point(0) = CTrackPoint(x, 12.0);
  }

  void put(const std::string& text) const { std::ofstream(file, std::ios::binary) << text; }
  static std::string textOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
  }

  static CStabilizerPreferences unusualPreferences() {
    CStabilizerPreferences p;
    p.ShowTrackPoints = p.ShowWhileRender = p.ClearOnShotChange = p.MarkOutWarnings = false;
    p.MarkInMovePreference = MARK_IN_MOVE_Clear;
    return p;
  }
  static CStabilizerParameters unusualParameters() {
    CStabilizerParameters p;
    p.TrackBoxExtentX = p.TrackBoxExtentY = 17;
    p.Alpha2 = 0.025;
    p.HMode = STABMODE_Smoothed;
    p.UseMatting = false;
    return p;
  }

  std::string file;
  std::string autoPoints;
};

TEST_F(Settings, AreRememberedFromOneSessionToTheNext) {
  {
    CSession first(host);
    EXPECT_EQ(first.window->preferences(), CStabilizerPreferences());
    first.window->setPreferences(unusualPreferences());
    first.window->showParameters(unusualParameters());
  }
  CSession second(host, false);
  EXPECT_EQ(second.window->preferences(), unusualPreferences());
  EXPECT_EQ(second.window->gatherParameters(), unusualParameters());
  EXPECT_TRUE(errors.empty());
}

TEST_F(Settings, ReachTheToolWhenItIsShownAndWhenTheyChange) {
  CStabilizerPreferences p = unusualPreferences();
  {
    CIniFile ini(file);
    p.WritePreferences(ini, "StabilizerForm");
    unusualParameters().WriteParameters(ini, "Stabilizer");
    ASSERT_TRUE(ini.Save());
  }
  CSession session(host, false);
  EXPECT_EQ(session.tool.markInMovePreference(), 3) << "nothing is told before the window shows";
  session.tool.toolShow();
  EXPECT_EQ(session.tool.markInMovePreference(), 2);
  EXPECT_FALSE(session.tool.editor().showPoints);
  place(session.tool);
  EXPECT_FALSE(session.tool.livePoints().BoxExtentsDiffer(17, 17, 20, 20, 20, 20));

  // Clear on shot change: a mark IN outside the tracked frames costs the points, or does not.
  for (const bool clear : {false, true}) {
    p.ClearOnShotChange = clear;
    session.window->setPreferences(p);
    host.markIn = IN;
    session.tool.editor().updateMarks();
    place(session.tool);
    host.markIn = IN - 50;
    EXPECT_TRUE(session.tool.checkMarkInChange());
    EXPECT_EQ(session.tool.livePoints().NumberOfPoints(), clear ? 0 : 1);
  }
}

TEST_F(Settings, AutoKeysAreConstantsAndOtherKeysSurvive) {
  put("; kept by hand\n[StabilizerForm]\nAutoSaveTrackPoints = false\nAutoLoadTrackPoints = true\n"
      "Left = 40\n[Elsewhere]\nKey = value\n");
  { CSession session(host); }
  const CIniFile ini(file);
  EXPECT_TRUE(ini.ReadBool("StabilizerForm", "AutoSaveTrackPoints", false));
  EXPECT_FALSE(ini.ReadBool("StabilizerForm", "AutoLoadTrackPoints", true));
  EXPECT_EQ(ini.ReadInteger("StabilizerForm", "Left", 0), 40);
  EXPECT_EQ(ini.ReadString("Elsewhere", "Key", ""), "value");
  EXPECT_EQ(ini.ReadString("Stabilizer", "HMode", ""), "STABMODE_Flat");
  EXPECT_NE(textOf(file).find("; kept by hand"), std::string::npos);
}

TEST_F(Settings, AForeignFileIsToldOnceAndStaysAsItIs) {
  const std::string foreign("\x7f\x45LF\0\1 not settings\n", 20);
  put(foreign);
  {
    CSession session(host);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].rfind("CParameterWindow::readSettings ", 0), 0u) << errors[0];
    EXPECT_NE(errors[0].find(file), std::string::npos) << errors[0];
    EXPECT_EQ(session.window->preferences(), CStabilizerPreferences());
    EXPECT_EQ(session.window->gatherParameters(), CStabilizerParameters());
  }
  EXPECT_EQ(textOf(file), foreign);
  EXPECT_EQ(errors.size(), 1u);

  const std::string repaired = "[StabilizerForm]\nMarkInMovePreference = 1\n";
  put(foreign);
  {
    CSession session(host);
    put(repaired);
  }
  EXPECT_EQ(textOf(file), repaired) << "defaults do not replace what was put right meanwhile";
}

TEST_F(Settings, AFolderThatTakesNoFileIsTold) {
  std::filesystem::remove_all(std::filesystem::path(file).parent_path());
  std::ofstream(std::filesystem::path(file).parent_path()) << "in the way";
  {
    CSession session(host);
    EXPECT_EQ(session.window->preferences(), CStabilizerPreferences());
    errors.clear();
  }
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_NE(errors[0].find(file), std::string::npos) << errors[0];
}

TEST_F(Settings, ABatchRunReadsNothingAndLeavesNothing) {
  const std::string stored =
      "[StabilizerForm]\nMarkInMovePreference = 1\n"
      "[Stabilizer]\nTrackBoxExtentX = 29\n";
  put(stored);
  host.batchRun = true;
  {
    CSession session(host);
    EXPECT_EQ(session.window->preferences(), CStabilizerPreferences());
    EXPECT_EQ(session.window->gatherParameters(), CStabilizerParameters());
    session.tool.toolActivate();
    place(session.tool);
    session.tool.onClipChange();
    session.tool.toolDeactivate();
    session.tool.toolHide();
  }
  EXPECT_EQ(textOf(file), stored);
  EXPECT_FALSE(std::filesystem::exists(autoPoints));
}

TEST_F(Settings, PointsAreSavedBesideTheClipByThemselves) {
  const auto saved = [this] {
    const bool there = std::filesystem::exists(autoPoints);
    std::filesystem::remove(autoPoints);
    return there;
  };
  CSession session(host);
  session.tool.toolActivate();
  session.tool.toolHide();
  EXPECT_FALSE(saved()) << "there are no points";
  session.tool.toolShow();
  place(session.tool);
  EXPECT_FALSE(saved());
  session.tool.onClipChange();
  EXPECT_TRUE(saved()) << "the host leaves the clip";
  session.tool.toolHide();
  EXPECT_TRUE(saved()) << "hidden";
  session.tool.onClipChange();
  EXPECT_FALSE(saved()) << "a hidden window hears nothing";
  session.tool.toolShow();
  host.clipOpen = false;
  session.tool.toolHide();
  EXPECT_FALSE(saved()) << "there is no clip to save beside";
  EXPECT_TRUE(trace.empty());
  session.tool.toolDeactivate();
}

TEST_F(Settings, TheLastWordOfAWindowIsWhole) {
  {
    CSession session(host);
    place(session.tool, 33.0);
    session.tool.setMattingBox({1, 2, 30, 20});
    session.window->setUseMattingChecked(true);
  }
  EXPECT_EQ(textOf(autoPoints), "{100[0(33, 12)]\n}\n[]\n1 1 30 2 20\nR\n");
}

}  // namespace
