#include <sys/resource.h>
#include <QSettings>
#include <csignal>
#include <cstdlib>
#include <fstream>

#include "DesktopApplication.h"
#include "DesktopFixture.h"
#include "support/Files.h"

namespace fs = std::filesystem;

namespace {

bool says(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(Desktop, AClipThatCannotBeReadLeavesTheOpenOne) {
  std::ofstream(at("text.dpx")) << "no picture";
  fs::create_directories(at("empty"));
  answerWith("OK");
  const struct {
    const char* path;
    const char* names;
  } clips[] = {{"missing.mov", "missing.mov"}, {"text.dpx", "text"}, {"empty", "empty"}};
  for (const auto& clip : clips) {
    window_->open(QString::fromStdString(at(clip.path)));
    EXPECT_TRUE(says(said(), clip.names)) << clip.path;
    EXPECT_FALSE(desk().isOpen());
  }
  open();
  place({{300, 240}});
  window_->open(QString::fromStdString(at("missing.mov")));
  EXPECT_TRUE(says(said(), "missing.mov"));
  EXPECT_EQ(points().NumberOfPoints(), 1) << "what was open goes on";
}

TEST_F(Desktop, AFrameThatVanishesIsNamedAndComesBack) {
  makeShot("other");
  open();
  fs::rename(at("other/scan.1005.dpx"), at("kept.dpx"));
  answerWith("OK");
  window_->open(QString::fromStdString(at("other/scan.####.dpx")));
  EXPECT_TRUE(says(said(), "1005")) << "a hole is found when it is opened";
  fs::rename(at("kept.dpx"), at("other/scan.1005.dpx"));
  // Too much for memory is not needed: what was never looked at is not decoded yet.
  fs::resize_file(at("other/scan.1005.dpx"), 1000);
  open(at("other/scan.####.dpx"));
  operator_.click(viewer(), {5, 5});
  desk().goToFrame(1005);
  ASSERT_TRUE(operator_.waitFor([this] { return !desk().frameFailure(1005).empty(); }));
  EXPECT_TRUE(says(desk().frameFailure(1005), "1005"));
  keepPicture("broken_frame");
  operator_.type("l");
  ASSERT_TRUE(operator_.waitFor([this] { return desk().displayedFrame() == 1008; }))
      << "playback goes on behind it";
  operator_.type("k");
  fs::copy_file(at("shot/scan.1005.dpx"), at("other/scan.1005.dpx"),
                fs::copy_options::overwrite_existing);
  desk().goToFrame(1005);
  operator_.type("F5");
  EXPECT_TRUE(operator_.waitFor([this] { return desk().frameBefore(1005) != nullptr; }));
}

TEST_F(Desktop, ABrokenFrameEndsTheRenderAndNotTheProgram) {
  open();
  place({{120, 90}, {500, 110}, {300, 240}});
  track();
  fs::resize_file(at("shot/scan.1009.dpx"), 1000);
  answerWith("OK");
  operator_.type("Shift+g");
  ASSERT_TRUE(operator_.waitFor([this] { return isIdle() && !said_.empty(); }));
  EXPECT_TRUE(says(said(), "1009"));
  EXPECT_TRUE(fs::exists(at("shot/steady/scan.1003.dpx")));
  EXPECT_FALSE(fs::exists(at("shot/steady/scan.1009.dpx")));
  EXPECT_EQ(points().NumberOfPoints(), 3);
  operator_.type("Right");
  EXPECT_TRUE(window_->isVisible());
}

TEST_F(Desktop, ADiskThatFillsEndsTheRenderAndLeavesWholeFrames) {
  open();
  place({{120, 90}, {500, 110}, {300, 240}});
  track();
  // To a program, a quota that is used up and a disk that is full are the same.
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit usual{};
  getrlimit(RLIMIT_FSIZE, &usual);
  const rlimit tight = {200'000, usual.rlim_max};
  setrlimit(RLIMIT_FSIZE, &tight);
  answerWith("OK");
  operator_.type("Shift+g");
  EXPECT_TRUE(operator_.waitFor([this] { return isIdle() && !said_.empty(); }));
  setrlimit(RLIMIT_FSIZE, &usual);
  EXPECT_TRUE(says(said(), "steady/scan.1001.dpx"));
  EXPECT_TRUE(fs::is_empty(at("shot/steady"))) << "no frame, and no part of one";
  operator_.type("Shift+g");
  EXPECT_TRUE(operator_.waitFor([this] {
    return isIdle() && fs::exists(at("shot/steady/scan.1012.dpx"));
  })) << "there is room again";
}

TEST_F(Desktop, WhatIsThereIsReplacedOnlyWhenTheOperatorSaysSo) {
  open();
  place({{120, 90}, {500, 110}, {300, 240}});
  track();
  fs::create_directories(at("shot/steady"));
  std::ofstream(at("shot/steady/scan.1004.dpx")) << "somebody's";
  answerWith("Cancel");
  operator_.type("Shift+g");
  operator_.settle();
  EXPECT_TRUE(says(said(), "scan.1004.dpx"));
  EXPECT_TRUE(isIdle());
  EXPECT_EQ(fs::file_size(at("shot/steady/scan.1004.dpx")), 10u);
  answerWith("Replace");
  operator_.type("Shift+g");
  ASSERT_TRUE(operator_.waitFor(
      [this] { return isIdle() && fs::exists(at("shot/steady/scan.1012.dpx")); }));
  EXPECT_GT(fs::file_size(at("shot/steady/scan.1004.dpx")), 100'000u);
}

TEST_F(Desktop, ClosingInTheMiddleAsksAndSavesThePoints) {
  makeShot("long", 150);
  open(at("long/scan.####.dpx"));
  place({{120, 90}, {500, 110}, {300, 240}});
  track();
  operator_.type("Shift+g");
  ASSERT_TRUE(operator_.waitFor([this] { return desk().resultFrames().size() > 2; }));
  answerWith("Cancel");
  EXPECT_FALSE(window_->close());
  EXPECT_FALSE(said().empty());
  EXPECT_TRUE(window_->isVisible());
  answerWith("Stop It");
  EXPECT_TRUE(window_->close());
  EXPECT_FALSE(said().empty());
  window_.reset();
  EXPECT_TRUE(fs::exists(at("long/stab_auto.points")));
  for (const fs::directory_entry& file : fs::directory_iterator(at("long/steady")))
    EXPECT_EQ(file.path().extension(), ".dpx") << file.path();
}

TEST_F(Desktop, ASecondWindowOnTheClipIsAskedFor) {
  open(at("shot"));
  EXPECT_EQ(desk().session().getFolderText(), at("shot/scan.1001.dpx")) << "its points lie there";
  answerWith("Cancel");
  CQtApplication second;
  CMainWindow other(second);
  for (const char* name : {"shot/scan.####.dpx", "shot/scan.1004.dpx", "shot"}) {
    other.open(QString::fromStdString(at(name)));
    EXPECT_TRUE(says(said(), "another Stabilize window")) << name;
    EXPECT_FALSE(other.desk().isOpen()) << name;
  }
}

TEST_F(Desktop, SettingsThatAreDamagedDoNotEndTheProgram) {
  const QString file = QString::fromStdString(ConfigFolder() + "/stabilize/desktop.ini");
  QSettings(file, QSettings::IniFormat).setValue("appearance", "Mauve");
  CQtApplication second;
  CMainWindow other(second);
  EXPECT_TRUE(other.close());
  EXPECT_EQ(QSettings(file, QSettings::IniFormat).value("appearance").toString(), "System");
}

TEST(DesktopApplication, AnExceptionOfAHandlerIsToldOnceAndThePointsStay) {
  class CThrowing : public QObject {
    bool event(QEvent*) override { throw std::runtime_error("no thread"); }
  } receiver;
  auto& application = static_cast<CDesktopApplication&>(*qApp);
  QStringList told;
  application.onException = [&](const QString& text) { told.push_back(text); };
  for (int i = 0; i < 2; ++i) {
    QEvent event(QEvent::User);
    EXPECT_FALSE(QCoreApplication::sendEvent(&receiver, &event));
  }
  EXPECT_EQ(told, QStringList("no thread"));
  application.onException = {};
}

}  // namespace
