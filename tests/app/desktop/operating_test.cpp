#include <QApplication>
#include <QDialog>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "DesktopFixture.h"

namespace fs = std::filesystem;

namespace {

std::string bytesOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// The points as options of the command line, to the last bit.
std::string pointOptions(const CTrackingPoints& points) {
  std::string options;
  for (const auto& [index, point] : points.Entries()) {
    char text[80];
    std::snprintf(text, sizeof text, " --point %.17g,%.17g", point.x, point.y);
    options += text;
  }
  return options;
}

const std::initializer_list<QPointF> PLACES = {{120, 90}, {500, 110}, {300, 240}, {140, 380}};

TEST_F(Desktop, AShotIsStabilisedAsTheCommandLineDoesIt) {
  open();
  keepPicture("opened");
  place(PLACES);
  EXPECT_EQ(points().NumberOfPoints(), 4);
  keepPicture("points");
  const std::string placed = pointOptions(points().FindPoints(1001));
  track();
  EXPECT_EQ(points().TrackState(), TRACK_STATE_Tracked);
  keepPicture("tracked");

  operator_.type("Shift+d");
  ASSERT_TRUE(operator_.waitFor([this] { return isIdle() && desk().resultFrames().size() == 12; }));
  EXPECT_FALSE(fs::exists(at("shot/steady"))) << "a preview writes nothing";
  EXPECT_EQ(viewer().compare(), ECompare::after);
  operator_.type("w");
  keepPicture("split");

  operator_.click(button("RenderAllButton"));
  ASSERT_TRUE(operator_.waitFor(
      [this] { return isIdle() && fs::exists(at("shot/steady/scan.1012.dpx")); }));
  operator_.settle();
  keepPicture("rendered");
  window_.reset();
  ASSERT_TRUE(fs::exists(at("shot/stab_auto.points"))) << "the points of a closed window are kept";

  const std::string line = std::string(STAB_PROGRAM) + " '" + clip() + "' -o '" +
                           at("line/scan.####.dpx") + "' -q" + placed;
  ASSERT_EQ(std::system(line.c_str()), 0) << line;
  int compared = 0;
  for (const fs::directory_entry& file : fs::directory_iterator(at("line"))) {
    EXPECT_TRUE(bytesOf(file) == bytesOf(fs::path(at("shot/steady")) / file.path().filename()))
        << file;
    ++compared;
  }
  EXPECT_EQ(compared, 12);
}

TEST_F(Desktop, ARenderIsPausedGoesOnAndIsStopped) {
  makeShot("long", 150);
  open(at("long/scan.####.dpx"));
  place(PLACES);
  track();
  operator_.type("Shift+g");
  ASSERT_TRUE(operator_.waitFor([this] { return desk().resultFrames().size() > 4; }));
  operator_.type("space");
  ASSERT_TRUE(operator_.waitFor([this] { return button("ResumeButton").isVisible(); }));
  const std::size_t paused = desk().resultFrames().size();
  keepPicture("paused");
  EXPECT_LT(paused, 150u);
  operator_.settle();
  EXPECT_EQ(desk().resultFrames().size(), paused);
  const int shown = desk().displayedFrame();
  operator_.type("Left");
  EXPECT_EQ(desk().displayedFrame(), shown - 1) << "one can look around meanwhile";
  EXPECT_EQ(viewer().compare(), ECompare::after);
  for (const char* key : {"t", "i", "Shift_L"}) operator_.type(key);
  operator_.settle();
  EXPECT_EQ(viewer().compare(), ECompare::before) << "and at what was there before";
  EXPECT_EQ(desk().session().getMarkIn(), 1001);
  operator_.type("Return");  // go on from here
  EXPECT_TRUE(button("ResumeButton").isVisible()) << "no command hides the way back";
  operator_.type("space");
  ASSERT_TRUE(operator_.waitFor([&] { return desk().resultFrames().size() > paused + 4; }));
  operator_.type("Ctrl+space");
  ASSERT_TRUE(operator_.waitFor([this] { return isIdle(); }));
  int files = 0;
  for (const fs::directory_entry& file : fs::directory_iterator(at("long/steady"))) {
    EXPECT_EQ(file.path().extension(), ".dpx") << "whole frames only";
    ++files;
  }
  EXPECT_LT(files, 150);
  EXPECT_GE(files, 9);
  EXPECT_TRUE(fs::exists(at("long/steady/scan." + std::to_string(1000 + files) + ".dpx")))
      << "the pause lost none";
}

TEST_F(Desktop, PointsAreDraggedDeletedAndBroughtBack) {
  open();
  place({{300, 240}});
  const CTrackPoint placed = points().FindPoints(1001).Entries().at(0);
  EXPECT_NEAR(placed.x, 300, 1.0);
  EXPECT_NEAR(placed.y, 240, 1.0);
  const auto x = [this] { return points().FindPoints(1001).Entries().at(0).x; };

  operator_.moveTo(viewer(), inViewer(300, 240));
  operator_.press();
  operator_.moveTo(viewer(), inViewer(320, 250));
  operator_.moveTo(viewer(), inViewer(340, 260));
  EXPECT_TRUE(viewer().hasMagnifier());
  keepPicture("magnifier");
  operator_.release();
  EXPECT_FALSE(viewer().hasMagnifier());
  EXPECT_NEAR(x(), placed.x + 40, 1.5);
  const double dragged = x();
  operator_.type("Alt+Right");
  EXPECT_NEAR(x(), dragged + 0.1, 1e-9);
  operator_.type("Delete");
  EXPECT_EQ(points().NumberOfPoints(), 0);
  operator_.type("Ctrl+z");
  operator_.type("Ctrl+z");
  EXPECT_EQ(x(), dragged);
  operator_.type("Ctrl+z");
  EXPECT_EQ(x(), placed.x);
  operator_.type("Ctrl+Shift+z");
  EXPECT_EQ(x(), dragged);
  operator_.type("Right");
  operator_.click(viewer(), inViewer(200, 200));
  EXPECT_EQ(points().NumberOfPoints(), 1) << "points are placed on the IN frame";
}

TEST_F(Desktop, ASecondButtonLeavesNoPointAtThePointer) {
  open();
  operator_.moveTo(viewer(), inViewer(300, 240));
  operator_.press();
  operator_.press(2);
  operator_.release();
  operator_.release(2);
  EXPECT_FALSE(viewer().hasMagnifier());
  ASSERT_EQ(points().NumberOfPoints(), 1);
  const CTrackingPoints placed = points().FindPoints(1001);
  operator_.moveTo(viewer(), inViewer(340, 260));
  operator_.settle();
  EXPECT_TRUE(points().FindPoints(1001) == placed);
  operator_.type("y");
  operator_.click(viewer(), {viewer().width() * 0.75, viewer().height() * 0.5});
  EXPECT_EQ(points().NumberOfPoints(), 1) << "none in the result, whose picture has moved";
}

TEST_F(Desktop, PointsThatAreFoundAreOneStepAndCanBeTracked) {
  open();
  place({{300, 240}});
  desk().findPoints(12);
  EXPECT_GE(points().NumberOfPoints(), 8);
  track();
  EXPECT_EQ(points().TrackState(), TRACK_STATE_Tracked);
  operator_.type("Ctrl+z");
  EXPECT_EQ(points().NumberOfPoints(), 1);
  operator_.type("Right");
  desk().findPoints(12);
  EXPECT_EQ(points().NumberOfPoints(), 1) << "on the IN frame only";
}

TEST_F(Desktop, KeysStepPlayAndMark) {
  open();
  const auto frame = [this] { return desk().displayedFrame(); };
  const struct {
    const char* key;
    int frame;
  } steps[] = {{"Right", 1002}, {"Shift+Right", 1012}, {"Left", 1011}, {"o", 1011},
               {"Home", 1001},  {"Right", 1002},       {"i", 1002},    {"End", 1011},
               {"Home", 1002},  {"Shift+Left", 1001},  {"Left", 1001}};
  for (const auto& step : steps) {
    operator_.type(step.key);
    EXPECT_EQ(frame(), step.frame) << step.key;
  }
  EXPECT_EQ(desk().session().getMarkIn(), 1002);
  EXPECT_EQ(desk().session().getMarkOut(), 1012);
  operator_.type("Home");
  operator_.type("l");
  ASSERT_TRUE(operator_.waitFor([&] { return frame() > 1004; }));
  operator_.type("k");
  const int stopped = frame();
  operator_.settle();
  EXPECT_EQ(frame(), stopped);
  operator_.type("j");
  ASSERT_TRUE(operator_.waitFor([&] { return frame() != stopped; }));
  operator_.type("k");
}

TEST_F(Desktop, WhatIsTypedIntoAnEditIsNoCommand) {
  open();
  QWidget& frame = find("TrackingBoxSizeTrackEdit");
  QLineEdit& edit = *frame.findChild<QLineEdit*>("Edit");
  operator_.type("2");
  EXPECT_TRUE(frame.findChild<QWidget*>("TrackBar")->hasFocus()) << "the tool's key leads there";
  operator_.type("Right");
  EXPECT_EQ(edit.text(), "11") << "the arrow is the slider's";
  EXPECT_EQ(desk().displayedFrame(), 1001);
  operator_.click(edit);
  operator_.type("Ctrl+a");
  operator_.typeText("1x4");
  EXPECT_EQ(edit.text(), "14");
  operator_.type("Return");
  EXPECT_FALSE(edit.hasFocus());
  int x = 0, y = 0, left = 0, right = 0, up = 0, down = 0;
  points().GetBoxExtents(x, y, left, right, up, down);
  EXPECT_EQ(x, 14);
  EXPECT_EQ(desk().session().getMarkIn(), 1001);
}

TEST_F(Desktop, EscapeLeavesAFieldAndWhatWasTypedIsDropped) {
  open();
  for (const char* name : {"Frame", "Timecode"}) {
    QLineEdit& edit = find<QLineEdit>(name);
    const QString before = edit.text();
    operator_.click(edit);
    operator_.typeText("77");
    EXPECT_NE(edit.text(), before);
    operator_.type("Escape");
    EXPECT_FALSE(edit.hasFocus());
    EXPECT_EQ(edit.text(), before);
    EXPECT_TRUE(viewer().hasFocus());
  }
  QLineEdit& frame = find<QLineEdit>("Frame");
  operator_.click(frame);
  operator_.type("Ctrl+a");
  operator_.typeText("1008");
  operator_.type("Return");
  EXPECT_EQ(desk().displayedFrame(), 1008);
  EXPECT_EQ(find<QLineEdit>("Timecode").text(), "01:00:00:07");
}

TEST_F(Desktop, ADialogLeavesNoModifierHeld) {
  open();
  auto& picker = static_cast<QToolButton&>(button("ColorPickButton"));
  QTimer closer;
  QObject::connect(&closer, &QTimer::timeout, &closer, [this] {
    QWidget* const dialog = QApplication::activeModalWidget();
    if (!dialog || !dialog->isVisible()) return;
    operator_.letGo("Shift_L");
    operator_.letGo("Control_L");
    static_cast<QDialog*>(dialog)->reject();
  });
  closer.start(20);
  operator_.hold("Control_L");
  operator_.hold("Shift_L");
  EXPECT_TRUE(picker.isChecked());
  operator_.type("o");  // the output
  EXPECT_TRUE(operator_.waitFor([&] { return !picker.isChecked(); }));
}

TEST_F(Desktop, TheColourPickerFindsTheBorder) {
  open();
  operator_.hold("Control_L");
  operator_.hold("Shift_L");
  EXPECT_TRUE(static_cast<QToolButton&>(button("ColorPickButton")).isChecked());
  EXPECT_EQ(viewer().cursor().shape(), Qt::BitmapCursor);
  operator_.letGo("Shift_L");
  EXPECT_FALSE(static_cast<QToolButton&>(button("ColorPickButton")).isChecked());
  EXPECT_EQ(viewer().cursor().shape(), Qt::CrossCursor);
  operator_.letGo("Control_L");
  operator_.click(button("ColorPickButton"));
  const int before = points().NumberOfPoints();
  operator_.click(viewer(), inViewer(2, 2));
  EXPECT_EQ(points().NumberOfPoints(), before) << "the click is the tool's";
}

TEST_F(Desktop, AShotIsCapturedToTheListAndTheListIsRun) {
  open();
  place(PLACES);
  track();
  operator_.type("comma");
  EXPECT_EQ(desk().list().read().shots().size(), 1u);
  find("ProcessList").show();
  operator_.settle();
  operator_.click(button("RunList"));
  const auto state = [this] { return desk().list().read().shots().front().state; };
  ASSERT_TRUE(operator_.waitFor([&] { return state() == EShotState::done; }));
  EXPECT_TRUE(fs::exists(at("shot/steady/scan.1012.dpx")));
  keepPicture("process_list");
  ASSERT_TRUE(operator_.waitFor([this] { return button("RunList").isEnabled(); }));
  operator_.click(viewer(), {5, 5});
  operator_.type("Shift+a");
  EXPECT_EQ(points().NumberOfPoints(), 0);
  auto& entries = find<QTreeWidget>("Entries");
  const QPointF first = entries.visualItemRect(entries.topLevelItem(0)).center();
  operator_.click(*entries.viewport(), first);
  operator_.click(*entries.viewport(), first);
  ASSERT_TRUE(operator_.waitFor([this] { return points().NumberOfPoints() == 4; }))
      << "a double click opens the entry again";
  entries.setFocus();
  entries.topLevelItem(0)->setSelected(true);
  operator_.type("Delete");
  EXPECT_EQ(desk().list().read().shots().size(), 0u) << "the entry, no point";
  EXPECT_EQ(points().NumberOfPoints(), 4);
}

TEST_F(Desktop, MarksAreDraggedInTheTimeline) {
  open();
  auto& timeline = static_cast<CTimeline&>(find("Timeline"));
  const auto drag = [&](double from, double to) {
    operator_.moveTo(timeline, {from, 28});
    operator_.press();
    operator_.moveTo(timeline, {(from + to) / 2.0, 28});
    operator_.moveTo(timeline, {to, 28});
    operator_.release();
  };
  drag(timeline.xOf(1001) + 2, timeline.xOf(1004) + 2);
  EXPECT_EQ(desk().session().getMarkIn(), 1004);
  drag(timeline.xOf(1013) - 2, timeline.xOf(1010) - 2);
  EXPECT_EQ(desk().session().getMarkOut(), 1010);
  operator_.click(timeline, {timeline.xOf(1007) + 4, 60});
  EXPECT_EQ(desk().displayedFrame(), 1007);
  drag(timeline.xOf(1004) + 2, timeline.xOf(1013));
  EXPECT_EQ(desk().session().getMarkIn(), 1009) << "the marks stay apart";
}

}  // namespace
