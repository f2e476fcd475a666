#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMenuBar>

#include "Appearance.h"
#include "MainWindow.h"

namespace {

// Plain keys go through the key router, behind the tool and the focused control: a menu only names
// them.
QString named(const char* text, const char* key) {
  return QString("%1\t%2").arg(text, key);
}

}  // namespace

QAction* CMainWindow::addAction(QMenu* menu, const QString& text, const QKeySequence& shortcut,
                                std::function<void()> act) {
  QAction* const action = menu->addAction(text);
  action->setShortcut(shortcut);
  connect(action, &QAction::triggered, this, [act = std::move(act)] {
    LeaveEdit();
    act();
  });
  return action;
}

void CMainWindow::buildMenus() {
  buildFileMenu();
  buildPointsMenu();
  buildViewMenu();
  buildPlayMenu();
  buildHelpMenu();
}

void CMainWindow::buildFileMenu() {
  QMenu* const file = menuBar()->addMenu("&File");
  addAction(file, "&Open Clip...", QKeySequence("Ctrl+O"), [this] { chooseClip(); });
  recent_ = file->addMenu("Open &Recent");
  fillRecent();
  file->addSeparator();
  clipActions_.push_back(
      addAction(file, "O&utput...", QKeySequence("Ctrl+Shift+O"), [this] { editOutput(); }));
  clipActions_.push_back(
      addAction(file, "Read Frames A&gain", QKeySequence("F5"), [this] { desk_->retryFrames(); }));
  file->addSeparator();
  addAction(file, "&Quit", QKeySequence("Ctrl+Q"), [this] { close(); });
}

void CMainWindow::buildPointsMenu() {
  QMenu* const points = menuBar()->addMenu("&Points");
  undo_ = addAction(points, "&Undo", QKeySequence("Ctrl+Z"), [this] { desk_->points().undo(); });
  redo_ =
      addAction(points, "&Redo", QKeySequence("Ctrl+Shift+Z"), [this] { desk_->points().redo(); });
  points->addSeparator();
  quietActions_.push_back(addAction(points, "&Find Points...", {}, [this] {
    if (const std::string refusal = desk_->findingRefusal(); !refusal.empty()) {
      application_.beep();
      return showMessage(refusal);
    }
    bool given = false;
    const int count =
        QInputDialog::getInt(this, "Find Points", "How many points", 16, 1, 200, 1, &given);
    if (given) desk_->findPoints(count);
  }));
  quietActions_.push_back(addAction(points, named("&Delete Selected", "Del"), {},
                                    [this] { onPlainKey(Qt::Key_Delete); }));
  // What can be undone is known when it is asked for.
  connect(points, &QMenu::aboutToShow, this, [this] {
    const bool open = hasClip();
    undo_->setEnabled(open && desk_->points().canUndo());
    redo_->setEnabled(open && desk_->points().canRedo());
    undo_->setText(undo_->isEnabled()
                       ? "&Undo " + QString::fromStdString(desk_->points().undoText())
                       : QString("&Undo"));
  });
  connect(points, &QMenu::aboutToHide, this, [this] { enableActions(); });
}

void CMainWindow::buildViewMenu() {
  QMenu* const view = menuBar()->addMenu("&View");
  const auto add = [&](const QString& text, const QKeySequence& key, std::function<void()> act) {
    clipActions_.push_back(addAction(view, text, key, std::move(act)));
  };
  add("&Fit", QKeySequence("Ctrl+0"), [this] { viewer_->fit(); });
  add("&100 %", QKeySequence("Ctrl+1"), [this] { viewer_->zoomTo(1.0); });
  add("Zoom &In", QKeySequence("Ctrl++"), [this] { viewer_->zoomBy(2.0); });
  add("Zoom &Out", QKeySequence("Ctrl+-"), [this] { viewer_->zoomBy(0.5); });
  view->addSeparator();
  add(named("&Before / After", "B"), {}, [this] { onPlainKey(Qt::Key_B); });
  add(named("Split &Wipe", "W"), {}, [this] { onPlainKey(Qt::Key_W); });
  add(named("&Side by Side", "Y"), {}, [this] { onPlainKey(Qt::Key_Y); });
  add(named("&Magnifier", "M"), {}, [this] { onPlainKey(Qt::Key_M); });
  view->addSeparator();
  QAction* const listAction = list_->toggleViewAction();
  listAction->setText("&Process List");
  view->addAction(listAction);
  addAction(view, "F&ull Screen", QKeySequence("F11"),
            [this] { setWindowState(windowState() ^ Qt::WindowFullScreen); });
  QMenu* const appearance = view->addMenu("&Appearance");
  appearances_ = new QActionGroup(this);
  for (const char* name : {"System", "Light", "Dark"}) {
    QAction* const action =
        appearance->addAction(name, this, [this, name] { setAppearance(name); });
    action->setCheckable(true);
    appearances_->addAction(action);
  }
}

void CMainWindow::buildPlayMenu() {
  QMenu* const play = menuBar()->addMenu("Pla&y");
  const auto add = [&](const char* text, const char* key, int code) {
    clipActions_.push_back(
        addAction(play, named(text, key), {}, [this, code] { onPlainKey(code); }));
  };
  add("Play &Backwards", "J", Qt::Key_J);
  add("&Stop", "K", Qt::Key_K);
  add("&Play", "L", Qt::Key_L);
  play->addSeparator();
  add("Go to Mark &IN", "Home", Qt::Key_Home);
  add("Go to Last &Marked Frame", "End", Qt::Key_End);
  play->addSeparator();
  add("Set Mark I&N", "I", Qt::Key_I);
  add("Set Mark O&UT", "O", Qt::Key_O);
  const auto unset = [&](const char* text, const char* key, bool in) {
    clipActions_.push_back(
        addAction(play, text, QKeySequence(key), [this, in] { setMark(in, false); }));
  };
  unset("Clear Mark IN", "Alt+I", true);
  unset("Clear Mark OUT", "Alt+O", false);
}

void CMainWindow::buildHelpMenu() {
  QMenu* const help = menuBar()->addMenu("&Help");
  addAction(help, named("&Operation", "F1"), {}, [this] { help_->showPage(operationPage_); });
  addAction(help, "&Hot Keys", {}, [this] { help_->showPage(hotKeysPage_); });
}

void CMainWindow::fillRecent() {
  recent_->clear();
  const QStringList clips = settings_.value("recent").toStringList();
  for (const QString& clip : clips)
    recent_->addAction(QString(clip).replace("&", "&&"), this, [this, clip] { open(clip); });
  recent_->setEnabled(!clips.isEmpty());
}

void CMainWindow::enableActions() {
  const bool open = hasClip();
  const bool quiet = open && !desk_->isBusy();
  for (QAction* action : clipActions_) action->setEnabled(open);
  for (QAction* action : quietActions_) action->setEnabled(quiet);
  undo_->setEnabled(quiet);
  redo_->setEnabled(quiet);
}

void CMainWindow::setCompare(ECompare compare) {
  viewer_->setCompare(compare);
  viewBar_->setCompare(compare);
}

void CMainWindow::setAppearance(const QString& name) {
  appearances_->actions().front()->setChecked(true);  // a name that is none of them: the system's
  for (QAction* action : appearances_->actions())
    if (action->text() == name) action->setChecked(true);
  ApplyAppearance(name == "Dark"    ? EAppearance::dark
                  : name == "Light" ? EAppearance::light
                                    : EAppearance::system);
}

bool CMainWindow::onKey(const QKeyEvent& event) {
  // The tool knows this key, too, and only beeps.
  if (event.key() == Qt::Key_F1) help_->showPage(operationPage_);
  if (!hasClip()) return event.key() == Qt::Key_F1;
  if (event.key() == Qt::Key_Left || event.key() == Qt::Key_Right || event.key() == Qt::Key_Up ||
      event.key() == Qt::Key_Down)
    return onArrow(event);
  if (event.modifiers() & ~Qt::KeypadModifier) return false;
  return !event.isAutoRepeat() && onPlainKey(event.key());
}

// A tenth of a pixel, as an eye at 1600 % can tell; with Shift a whole one.
bool CMainWindow::onArrow(const QKeyEvent& event) {
  const int along = event.key() == Qt::Key_Left ? -1 : event.key() == Qt::Key_Right ? 1 : 0;
  const int down = event.key() == Qt::Key_Up ? -1 : event.key() == Qt::Key_Down ? 1 : 0;
  const bool shift = event.modifiers() & Qt::ShiftModifier;
  if (event.modifiers() & Qt::AltModifier) {
    const double by = shift ? 1.0 : 0.1;
    const int selected = desk_->session().editor()->selectedPoint;
    if (selected >= 0) desk_->points().nudge(selected, along * by, down * by);
    return true;
  }
  if ((event.modifiers() & Qt::ControlModifier) || along == 0) return false;
  step(along * (shift ? 10 : 1));
  return true;
}

bool CMainWindow::onPlainKey(int key) {
  if (!hasClip()) return false;
  CShotSession& session = desk_->session();
  switch (key) {
    case Qt::Key_Home: step(std::max(session.getMarkIn(), 0) - desk_->displayedFrame()); break;
    case Qt::Key_End: goToEnd(); break;
    case Qt::Key_I: setMark(true, true); break;
    case Qt::Key_O: setMark(false, true); break;
    case Qt::Key_J:
    case Qt::Key_K:
    case Qt::Key_L: player_->key(static_cast<char>(key)); break;
    case Qt::Key_Space: player_->toggle(); break;
    case Qt::Key_B:
      setCompare(viewer_->compare() == ECompare::after ? ECompare::before : ECompare::after);
      break;
    case Qt::Key_W: setCompare(ECompare::split); break;
    case Qt::Key_Y: setCompare(ECompare::sideBySide); break;
    case Qt::Key_M: viewer_->setMagnifier(!viewer_->hasMagnifier()); break;
    case Qt::Key_Delete: {
      const int selected = session.editor()->selectedPoint;
      if (selected >= 0 && !desk_->points().remove(selected)) application_.beep();
      break;
    }
    case Qt::Key_Escape:
      mouse_->cancel();
      viewer_->setFocus();
      break;
    default: return false;
  }
  return true;
}

void CMainWindow::goToEnd() {
  const int out = desk_->session().getMarkOut();
  step((out > 0 ? out : desk_->info().endFrame) - 1 - desk_->displayedFrame());
}

void CMainWindow::chooseClip() {
  const QString folder = hasClip() ? QString::fromStdString(desk_->info().path)
                                   : settings_.value("recent").toStringList().value(0);
  const QString path = QFileDialog::getOpenFileName(
      this, "Open a clip: a video, or any frame of a sequence", QFileInfo(folder).absolutePath());
  if (!path.isEmpty()) open(path);
}

void CMainWindow::editOutput() {
  if (hasClip()) desk_->chooseOutput();
}
