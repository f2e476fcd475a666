#include "WindowFixture.h"
#include "support/IniFile.h"

namespace {

/// Tools that come and go on one settings file, with a host that asks for what is to be kept.
class Settings : public WindowTest {
 protected:
  void SetUp() override {
    WindowTest::SetUp();
    ZRNQTraceLevel = 0;
    file = IniFileNameFor("Stabilizer");
    host.folderText = folder + "shot.%04d.dpx";
    autoPoints = folder + "stab_auto.points";
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
  }

  /// A tool from its first start to its shutdown.
  class CSession {
   public:
    explicit CSession(CNavSystemInterface& host) : host_(host) {
      EXPECT_EQ(tool.toolInitialize(&host), 0);
      tool.toolShow();
    }
    ~CSession() {
      if (!host_.isBatchRun()) window->handleMessage({FORM_WRITE_SETTINGS, FORM_MODE_NORMAL});
      tool.toolShutdown();
    }

    TStabilizerForm* window = nullptr;
    CStabilizerTool tool{"Stabilize", [this](CStabilizerTool& owner) {
                           auto made = std::make_unique<TStabilizerForm>(owner);
                           window = made.get();
                           return made;
                         }};

   private:
    CNavSystemInterface& host_;
  };

  static void place(CStabilizerTool& tool, double x = 10.0) {
    tool.editor().updateMarks();
    tool.livePoints().PointsAt(IN).Point(0) = CTrackPoint(x, 12.0);
  }

  void put(const std::string& text) const { TempFolder::put(file, text); }

  /// Every setting away from what a new window has.
  static void changeEverything(TStabilizerForm& window) {
    for (TCheckBox* box : {&window.ShowPointCBox, &window.ClearOnShotChangeCBox,
                           &window.WarnMarkOutMoveCheckBox, &window.UseMattingCBox})
      box->click();
    window.ShowRenderPointCBox.setChecked(false);
    window.SmoothMotionRadioButton.click();
    window.VertMotionRadioButton.click();
    window.AnchorLastRadioButton.click();
    window.MissingDataZoomRadioButton.click();
    window.TrackingBoxSizeTrackEdit.setValue(17);
    window.MotionTrackEdit.setValue(33);
    window.SmoothTrackEdit.setValue(9);
    window.JitterTrackEdit.setValue(4);
    window.UFunctionComboBox.setItemIndex(2);
  }

  std::string file;
  std::string autoPoints;
};

TEST_F(Settings, BoxesOfAWidePictureAreTheSameAfterEachStart) {
  host.imageFormat = CImageFormat(4096, 2160);
  {
    CSession first(host);
    first.window->TrackingBoxSizeTrackEdit.setValue(44);
    first.window->MotionTrackEdit.setValue(90);
  }
  for (int start = 0; start < 2; ++start) {
    CSession later(host);
    later.tool.onNewClip();
    EXPECT_EQ(later.window->TrackingBoxSizeTrackEdit.value(), 44);
    EXPECT_EQ(later.window->MotionTrackEdit.value(), 90);
  }
}

TEST_F(Settings, AreRememberedFromOneSessionToTheNext) {
  CStabilizerParameters written;
  {
    CSession first(host);
    EXPECT_EQ(first.window->gatherParameters().HMode, STABMODE_Flat);
    changeEverything(*first.window);
    application.inModalForm = [](TForm&) {
      StabilizerPreferencesForm->MoveAndClearRadioButton.click();
      StabilizerPreferencesForm->OkButton.click();
    };
    first.window->PreferencesMenuItemClick();
    written = first.window->gatherParameters();
  }
  CSession second(host);
  TStabilizerForm& window = *second.window;
  EXPECT_EQ(window.gatherParameters(), written);
  EXPECT_EQ(written.VMode, STABMODE_Smoothed);
  EXPECT_EQ(window.markInMovePreference(), 2);
  for (TCheckBox* box : {&window.ShowPointCBox, &window.ShowRenderPointCBox,
                         &window.ClearOnShotChangeCBox, &window.WarnMarkOutMoveCheckBox})
    EXPECT_FALSE(box->isChecked()) << box->name();
  EXPECT_TRUE(errors.empty());

  // The tool knows, too.
  EXPECT_EQ(second.tool.markInMovePreference(), 2);
  EXPECT_FALSE(second.tool.editor().showPoints);
  place(second.tool);
  EXPECT_FALSE(second.tool.livePoints().BoxExtentsDiffer(17, 17, 33, 33, 33, 33));
  host.markIn = IN - 50;
  EXPECT_TRUE(second.tool.checkMarkInChange());
  EXPECT_EQ(second.tool.livePoints().NumberOfPoints(), 1) << "no clear on shot change";
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
    EXPECT_NE(errors[0].find(file), std::string::npos) << errors[0];
    EXPECT_EQ(session.window->markInMovePreference(), 3);
    EXPECT_EQ(session.window->gatherParameters().TrackBoxExtentX, 10);
  }
  EXPECT_EQ(textOf(file), foreign);

  const std::string repaired = "[StabilizerForm]\nMarkInMovePreference = 1\n";
  put(foreign);
  {
    CSession session(host);
    put(repaired);
  }
  EXPECT_EQ(textOf(file), repaired) << "defaults do not replace what was put right meanwhile";
}

TEST_F(Settings, ReadAgainWhileShownTheyReachTheTool) {
  CSession session(host);
  ASSERT_TRUE(session.tool.editor().showPoints);
  ASSERT_TRUE(session.tool.isMattingBoxShown());
  put("[StabilizerForm]\nShowTrackPoints = false\nMarkInMovePreference = 2\n"
      "[Stabilizer]\nUseMatting = false\nTrackBoxExtentX = 12\n");
  session.window->handleMessage({FORM_READ_SETTINGS, FORM_MODE_NORMAL});
  EXPECT_FALSE(session.tool.editor().showPoints);
  EXPECT_EQ(session.tool.markInMovePreference(), 2);
  EXPECT_FALSE(session.tool.isMattingBoxShown());
  place(session.tool);
  EXPECT_FALSE(session.tool.livePoints().BoxExtentsDiffer(12, 12, 20, 20, 20, 20));
}

TEST_F(Settings, RubbishReadsAsTheNearestSaneThing) {
  put("[Stabilizer]\nTrackBoxExtentX = -7\nSearchBoxExtentLeft = 99999999999\nJitter = nan\n"
      "Alpha2 = -inf\nHMode = sideways\nUFunction = Bent\nMissingDataFill = 17\n"
      "GoodFramesIn = 1e9\nUseMatting = perhaps\n"
      "[StabilizerForm]\nMarkInMovePreference = 99\nShowTrackPoints = 2\nLeft = 1e99\n"
      "Top = -40000\nVisible = maybe\n");
  CSession session(host);
  const CStabilizerParameters p = session.window->gatherParameters();
  EXPECT_EQ(p.TrackBoxExtentX, 5);
  EXPECT_GE(p.SearchBoxExtentLeft, 5);
  EXPECT_LE(p.SearchBoxExtentLeft, 50);
  EXPECT_EQ(p.Jitter, 0.0);
  EXPECT_EQ(p.HMode, STABMODE_Flat);
  EXPECT_EQ(p.UFunction, U_Fcn_Euclidean);
  EXPECT_EQ(p.MissingDataFill, MISSING_DATA_White);
  EXPECT_FALSE(session.window->isVisible());
  application.inModalForm = [](TForm&) {
    for (const TRadioButton* button : {&StabilizerPreferencesForm->MoveAndCopyRadioButton,
                                       &StabilizerPreferencesForm->MoveAndClearRadioButton,
                                       &StabilizerPreferencesForm->PromptMeRadioButton})
      EXPECT_FALSE(button->isChecked());
    StabilizerPreferencesForm->OkButton.click();
  };
  session.window->PreferencesMenuItemClick();
  EXPECT_EQ(session.window->markInMovePreference(), 3);
  EXPECT_TRUE(application.errors.empty());
}

TEST_F(Settings, AFolderThatTakesNoFileIsTold) {
  std::filesystem::remove_all(std::filesystem::path(file).parent_path());
  std::ofstream(std::filesystem::path(file).parent_path()) << "in the way";
  {
    CSession session(host);
    EXPECT_EQ(session.window->markInMovePreference(), 3);
    errors.clear();
    session.window->handleMessage({FORM_WRITE_SETTINGS, FORM_MODE_NORMAL});
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_NE(errors[0].find(file), std::string::npos) << errors[0];
  }
}

TEST_F(Settings, ABatchRunReadsNothingAndLeavesNothing) {
  const std::string stored =
      "[StabilizerForm]\nMarkInMovePreference = 1\n"
      "[Stabilizer]\nTrackBoxExtentX = 29\n";
  put(stored);
  host.batchRun = true;
  {
    CSession session(host);
    EXPECT_EQ(session.window->markInMovePreference(), 3);
    EXPECT_EQ(session.window->gatherParameters().TrackBoxExtentX, 10);
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
