#include "ui/QTXForm.h"

#include "../../ui/DesktopArea.h"
#include "../platform/support/temp_folder.h"
#include "support/ErrorReport.h"
#include "toolkit/HeadlessApplication.h"

namespace {

using Calls = std::vector<std::string>;

class CToolWindow : public TQTXForm {
 public:
  CToolWindow(const std::string& name, const std::string& file, Calls& log)
      : TQTXForm(name, nullptr, file), calls(log) {
    setBounds({100, 120, 400, 300});
    keepDesign();
  }
  Calls& calls;
  bool hooksSucceed = true;

 protected:
  void onMenu() override { calls.push_back(name() + " menu"); }
  void onZOrder(const std::string& window) override { calls.push_back("z " + window); }
  bool onWriteSettings(CIniFile&, const std::string& section) override {
    return note(section, " writes");
  }
  bool onReadSettings(CIniFile&, const std::string& section) override {
    return note(section, " reads");
  }
  bool onWriteGeometry(CIniFile&, const std::string& section) override {
    return note(section, " writes bounds");
  }
  bool onReadGeometry(CIniFile&, const std::string& section) override {
    return note(section, " reads bounds");
  }
  bool onSettingsDefaults() override { return note(name(), " defaults"); }
  bool onGeometryDefaults() override { return note(name(), " default bounds"); }
  void onRefresh() override { note(name(), " refreshed"); }

 private:
  bool note(const std::string& who, const char* what) {
    calls.push_back(who + what);
    return hooksSucceed;
  }
};

class FormBase : public TempFolder {
 protected:
  FormBase() { SetApplication(&application); }
  ~FormBase() override {
    TQTXForm::setSectionPrefix("");
    SetApplication(nullptr);
  }
  void put(const std::string& text) const { TempFolder::put(file, text); }

  THeadlessApplication application;
  Calls calls;
  const std::string file = folder + "windows.ini";
};

TEST(DesktopArea, AWindowIsBroughtBackSoThatItCanBeGrasped) {
  const SBounds one = {0, 0, 1920, 1080};
  const std::vector<SBounds> single = {one};
  const std::vector<SBounds> side = {one, {1920, 100, 1280, 800}};
  const std::vector<SBounds> left = {one, {-1280, 0, 1280, 1080}};
  const std::vector<SBounds> above = {one, {200, -900, 1600, 900}};
  const std::vector<SBounds> apart = {one, {4000, 0, 1280, 800}};
  const std::vector<SBounds> three = {one, {1920, 0, 1280, 800}, {3200, 0, 1280, 800}};
  const int huge = 2147483000;
  const struct {
    const char* what;
    const std::vector<SBounds>& monitors;
    SBounds window;
    int left, top;
  } cases[] = {
      {"seen", single, {300, 200, 400, 300}, 300, 200},
      {"too far right", single, {1905, 0, 400, 300}, 1519, 0},
      {"just far enough", single, {1898, 0, 400, 300}, 1898, 0},
      {"too far left", single, {-390, 0, 400, 300}, 0, 0},
      {"too far down", single, {0, 1059, 400, 300}, 0, 779},
      {"too far up", single, {0, -285, 400, 300}, 0, 0},
      {"on the second", side, {2500, 200, 400, 300}, 2500, 200},
      {"above what both share", side, {2500, -190, 400, 300}, 2500, 100},
      {"second at the left", left, {-1200, 200, 400, 300}, -1200, 200},
      {"second above", above, {300, -800, 400, 300}, 300, -800},
      {"beside what both share", above, {-190, -800, 400, 300}, 200, -800},
      {"second apart", apart, {4100, 100, 400, 300}, 1519, 100},
      {"three: the first", three, {2500, 100, 400, 300}, 1519, 100},
      {"wider than the desktop", single, {1905, 0, 5000, 300}, 1919 - 5000, 0},
      {"rubbish", single, {huge, -huge, huge, huge}, 1919 - huge, 0},
      {"no monitor", {}, {5, 6, 7, 8}, 5, 6},
  };
  for (const auto& c : cases) {
    const SBounds back = BroughtBackOntoDesktop(c.window, c.monitors);
    EXPECT_EQ(back, (SBounds{c.left, c.top, c.window.width, c.window.height})) << c.what;
  }
}

TEST_F(FormBase, GeometryComesBackInItsOwnSection) {
  TQTXForm::setSectionPrefix("Second");
  {
    CToolWindow window("Viewer", file, calls);
    window.setBounds({50, 60, 500, 400});
    window.setFormStyle(EFormStyle::stayOnTop);
    window.setWindowState(EWindowState::maximized);
    window.show();
    EXPECT_TRUE(window.writeGeometry(FORM_MODE_NORMAL));
    EXPECT_EQ(window.windowState(), EWindowState::normal);
    EXPECT_TRUE(window.writeGeometry(FORM_MODE_SAVED));
  }
  EXPECT_TRUE(CIniFile(file).HasSection("Second\\Viewer"));
  EXPECT_TRUE(std::filesystem::exists(file + "1"));
  CToolWindow window("Viewer", file, calls);
  EXPECT_TRUE(window.readGeometry(FORM_MODE_NORMAL));
  EXPECT_EQ(window.bounds(), (SBounds{50, 60, 500, 400}));
  EXPECT_TRUE(window.isVisible() && window.isShownHere());
  EXPECT_EQ(window.formStyle(), EFormStyle::stayOnTop);
  std::filesystem::remove(file);
  EXPECT_TRUE(window.readGeometry(FORM_MODE_DESIGN)) << "no file is needed";
  EXPECT_EQ(window.bounds(), (SBounds{100, 120, 400, 300}));
  EXPECT_FALSE(window.isVisible());
  EXPECT_EQ(window.formStyle(), EFormStyle::normal);
  EXPECT_TRUE(window.writeSettings(FORM_MODE_DESIGN) && window.writeGeometry(FORM_MODE_DESIGN));
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(FormBase, ARestoredWindowIsOnTheDesktopAndOfASaneSize) {
  const struct {
    const char* key;
    const char* text;
    SBounds bounds;
  } cases[] = {
      {"Left", "1905", {1519, 120, 400, 300}},      {"Left", "-390", {0, 120, 400, 300}},
      {"Left", "2147483647", {100, 120, 400, 300}}, {"Top", "-99999999999", {100, 120, 400, 300}},
      {"Top", "rubbish", {100, 120, 400, 300}},     {"Width", "1", {100, 120, 1, 300}},
      {"Width", "0", {100, 120, 400, 300}},         {"Width", "32767", {100, 120, 32767, 300}},
      {"Width", "32768", {100, 120, 400, 300}},     {"Height", "-4", {100, 120, 400, 300}},
      {"Height", "0", {100, 120, 400, 300}},        {"Height", "2147483647", {100, 120, 400, 300}},
  };
  for (const auto& c : cases) {
    put(std::string("[Viewer]\nVisible=true\n") + c.key + "=" + c.text + "\n");
    CToolWindow window("Viewer", file, calls);
    window.setWindowState(EWindowState::minimized);
    EXPECT_TRUE(window.readGeometry(FORM_MODE_NORMAL));
    EXPECT_EQ(window.bounds(), c.bounds) << c.key << " " << c.text;
    EXPECT_EQ(window.windowState(), EWindowState::normal);
  }
}

TEST_F(FormBase, WhatIsReadDependsOnTheBorderAndTheMainWindow) {
  put("[Viewer]\nLeft=50\nWidth=77\nVisible=true\n");
  for (const EBorderStyle style :
       {EBorderStyle::sizeable, EBorderStyle::sizeableToolWindow, EBorderStyle::single,
        EBorderStyle::dialog, EBorderStyle::toolWindow}) {
    CToolWindow window("Viewer", file, calls);
    window.setBorderStyle(style);
    EXPECT_TRUE(window.readGeometry(FORM_MODE_NORMAL));
    const bool sizes = style == EBorderStyle::sizeable || style == EBorderStyle::sizeableToolWindow;
    EXPECT_EQ(window.bounds(), (SBounds{50, 120, sizes ? 77 : 400, 300}));
    EXPECT_TRUE(window.isVisible());
  }
  CToolWindow main("Viewer", file, calls);
  application.setMainForm(&main);
  EXPECT_TRUE(main.readGeometry(FORM_MODE_NORMAL));
  EXPECT_FALSE(main.isVisible());
  main.show();
  EXPECT_TRUE(main.readGeometry(FORM_MODE_DESIGN));
  EXPECT_TRUE(main.isVisible()) << "as made it is hidden";
  std::filesystem::remove(file);
  EXPECT_TRUE(main.writeGeometry(FORM_MODE_NORMAL));
  EXPECT_EQ(CIniFile(file).ReadString("Viewer", "Visible", "not there"), "not there");
}

TEST_F(FormBase, AnUnreadableFileFailsAndChangesNothing) {
  std::filesystem::create_directories(file);
  CToolWindow window("Viewer", file, calls);
  theError.clear();
  EXPECT_FALSE(window.readAll(FORM_MODE_NORMAL));
  EXPECT_FALSE(window.writeSettings(FORM_MODE_NORMAL));
  EXPECT_FALSE(window.writeGeometry(FORM_MODE_NORMAL));
  EXPECT_NE(theError.getMessage().find(file), std::string::npos);
  EXPECT_TRUE(calls.empty());
  EXPECT_EQ(window.bounds(), (SBounds{100, 120, 400, 300}));
}

TEST_F(FormBase, TheResultIsThatOfTheHookAndOfSaving) {
  CToolWindow window("Viewer", file, calls);
  CIniFile given(folder + "given.ini");
  for (CIniFile* const opened : {&given, static_cast<CIniFile*>(nullptr)}) {
    for (const bool succeed : {false, true}) {
      window.hooksSucceed = succeed;
      EXPECT_EQ(window.writeSettings(FORM_MODE_NORMAL, opened), succeed);
      EXPECT_EQ(window.writeGeometry(FORM_MODE_NORMAL, opened), succeed);
      EXPECT_EQ(window.readSettings(FORM_MODE_NORMAL, opened), succeed);
      EXPECT_EQ(window.readGeometry(FORM_MODE_NORMAL, opened), succeed);
      EXPECT_EQ(window.readAll(FORM_MODE_DESIGN, opened), succeed);
    }
    EXPECT_EQ(std::filesystem::exists(file), opened == nullptr);
  }
  EXPECT_EQ(given.ReadInteger("Viewer", "Left", 0), 100);
  EXPECT_FALSE(std::filesystem::exists(given.path())) << "whoever opened it saves it";
  CToolWindow nowhere("Viewer", file + "/below.ini", calls);
  EXPECT_TRUE(nowhere.writeSettings(FORM_MODE_NORMAL)) << "nothing to save";
  EXPECT_FALSE(nowhere.writeGeometry(FORM_MODE_NORMAL));
}

TEST_F(FormBase, MessagesReachTheHooksAndAllWindowsReloadTogether) {
  TQTXForm::setSectionPrefix("P");
  put("[Z]\nZOrder = First , Second,,Third\n[P\\Second]\nVisible=true\nLeft=33\n"
      "[First]\nVisible=true\n");
  CToolWindow first("First", file, calls);
  CToolWindow second("Second", file, calls);
  TForm plain("Plain");
  const struct {
    unsigned number;
    int mode;
    const char* call;
  } messages[] = {
      {FORM_READ_SETTINGS, FORM_MODE_NORMAL, "P\\First reads"},
      {FORM_READ_SETTINGS, FORM_MODE_DESIGN, "First defaults"},
      {FORM_WRITE_SETTINGS, FORM_MODE_NORMAL, "P\\First writes"},
      {FORM_READ_GEOMETRY, FORM_MODE_NORMAL, "P\\First reads bounds"},
      {FORM_READ_GEOMETRY, FORM_MODE_DESIGN, "First default bounds"},
      {FORM_WRITE_GEOMETRY, FORM_MODE_SAVED, "P\\First writes bounds"},
      {FORM_REFRESH, FORM_MODE_NORMAL, "First refreshed"},
      {MESSAGE_INIT_MENU, FORM_MODE_NORMAL, "First menu"},
  };
  for (const auto& m : messages) {
    calls.clear();
    first.handleMessage({m.number, m.mode});
    EXPECT_EQ(calls, Calls{m.call});
  }

  calls.clear();
  first.handleMessage({FORM_RELOAD_ALL});
  EXPECT_EQ(calls,
            (Calls{"z Second", "P\\First reads bounds", "P\\Second reads bounds", "P\\Second reads",
                   "P\\First reads", "Second refreshed", "First refreshed"}));
  EXPECT_EQ(second.bounds().left, 33);
  EXPECT_TRUE(second.isVisible());
  EXPECT_EQ(application.forms().back(), &first) << "the first name of the list is on top";
  EXPECT_EQ(application.forms().front(), &plain);
  second.handleMessage({MESSAGE_CLOSE});
  EXPECT_FALSE(second.isVisible() || second.isShownHere());
}

TEST_F(FormBase, SavesOnCloseAndOnItsWayOutWhenAskedTo) {
  {
    CToolWindow silent("Silent", file, calls);
    silent.close();
  }
  EXPECT_FALSE(std::filesystem::exists(file));
  {
    CToolWindow window("Viewer", file, calls);
    window.setSaveOnClose(true);
    window.show();
    EXPECT_TRUE(window.close());
    EXPECT_EQ(calls, (Calls{"Viewer writes", "Viewer writes bounds"}));
    EXPECT_TRUE(CIniFile(file).ReadBool("Viewer", "Visible", false)) << "as it was";
    window.setBounds({7, 8, 90, 100});
  }
  EXPECT_EQ(CIniFile(file).ReadInteger("Viewer", "Left", 0), 7);
}

}  // namespace
