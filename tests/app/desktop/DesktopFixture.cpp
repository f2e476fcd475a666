#include "DesktopFixture.h"

#include <QApplication>
#include <QScopeGuard>
#include <cstdlib>

namespace fs = std::filesystem;

Desktop::Desktop() {
  std::string name = testing::TempDir() + "stab_desktop_XXXXXX";
  folder_ = mkdtemp(name.data());
  makeShot("shot");
  window_ = std::make_unique<CMainWindow>(application_);
  window_->setGeometry(0, 0, 1280, 800);
  window_->show();
  // No window manager gives the keyboard to the window.
  window_->activateWindow();
  EXPECT_TRUE(operator_.waitFor([this] { return window_->isActiveWindow(); }));
  operator_.settle();
}

Desktop::~Desktop() {
  window_.reset();
  if (!getenv("STAB_KEEP")) fs::remove_all(folder_);
}

void Desktop::makeShot(const std::string& name, int frames) {
  fs::create_directories(folder_ / name);
  const std::string line = std::string(STAB_PROGRAM) + " test-shot -o '" + at(name) +
                           "/scan.####.dpx' --dust 0 --no-subject -q --width 640 --height 480 "
                           "--frames " +
                           std::to_string(frames);
  ASSERT_EQ(std::system(line.c_str()), 0) << line;
}

void Desktop::open(const std::string& path) {
  window_->open(QString::fromStdString(path));
  ASSERT_TRUE(desk().isOpen());
  ASSERT_TRUE(
      operator_.waitFor([this] { return desk().frameBefore(desk().displayedFrame()) != nullptr; }));
  operator_.settle();
}

QPointF Desktop::inViewer(double x, double y) {
  return viewer().transform().toViewer({x + 0.5, y + 0.5});
}

void Desktop::place(std::initializer_list<QPointF> places) {
  for (const QPointF& place : places) operator_.click(viewer(), inViewer(place.x(), place.y()));
}

void Desktop::track() {
  operator_.click(button("TrackButton"));
  ASSERT_TRUE(operator_.waitFor(
      [this] { return isIdle() && desk().session().editor()->smoothedMotion() != nullptr; }));
  operator_.settle();
}

QMessageBox* Desktop::box() {
  return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

void Desktop::answerWith(const char* button) {
  answers_.disconnect();
  QObject::connect(&answers_, &QTimer::timeout, &answers_, [this, button] { answerBox(button); });
  answers_.start(20);
}

void Desktop::answerBox(const QString& text) {
  QMessageBox* const open = box();
  if (!open || !open->isVisible() || open == answered_) return;
  answered_ = open;
  const auto forget = qScopeGuard([this] { answered_ = nullptr; });
  said_ += open->text().toStdString() + "\n";
  for (QAbstractButton* button : open->buttons())
    if (button->text().remove('&') == text) return operator_.click(*button);
  ADD_FAILURE() << "no button " << text.toStdString() << " in: " << said_;
  open->reject();
}

void Desktop::keepPicture(const char* name) {
  operator_.settle();
  const fs::path folder = fs::path(testing::TempDir()) / "stabilize-desktop-pictures";
  fs::create_directories(folder);
  EXPECT_TRUE(window_->grab().save(QString::fromStdString((folder / name).string() + ".png")));
}
