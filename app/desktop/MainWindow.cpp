#include "MainWindow.h"

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QMimeData>
#include <QPushButton>
#include <QStatusBar>
#include <QVBoxLayout>

#include "support/Files.h"

namespace {

constexpr int MOST_RECENT = 10;

}  // namespace

CMainWindow::CMainWindow(CQtApplication& application)
    : application_(application),
      settings_(QString::fromStdString(ConfigFolder() + "/stabilize/desktop.ini"),
                QSettings::IniFormat) {
  setObjectName("MainWindow");
  setWindowTitle("Stabilize");
  setAcceptDrops(true);
  buildCentre();
  desk_ = std::make_unique<CDesk>(application_, static_cast<IDeskWindow&>(*this));
  list_ = new CListDock(desk_->list(), this);
  addDockWidget(Qt::BottomDockWidgetArea, list_);
  list_->hide();
  help_ = new CHelpWindow(this);
  player_ = std::make_unique<CPlayer>(*desk_);
  mouse_ = std::make_unique<CPointMouse>(*desk_, *viewer_);
  keys_ = std::make_unique<CKeyRouter>(*this);
  buildMenus();
  connectParts();
  enableActions();
  setAppearance(settings_.value("appearance", "System").toString());
  resize(1280, 800);
  restoreGeometry(settings_.value("geometry").toByteArray());
  restoreState(settings_.value("state").toByteArray());
}

// The tool closes while there is still a window to take its panel back from.
CMainWindow::~CMainWindow() {
  keys_.reset();
  player_.reset();
  desk_.reset();
}

void CMainWindow::buildCentre() {
  viewer_ = new CViewer(this);
  viewBar_ = new CViewBar(this);
  timeline_ = new CTimeline(this);
  transport_ = new CTransportBar(this);
  auto* const left = new QWidget(this);
  auto* const column = new QVBoxLayout(left);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(viewer_, 1);
  column->addWidget(viewBar_);
  column->addWidget(timeline_);
  column->addWidget(transport_);
  column->addWidget(buildOutputRow());
  panelArea_ = new QScrollArea(this);
  panelArea_->setObjectName("PanelArea");
  panelArea_->setFrameShape(QFrame::NoFrame);
  panelArea_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  panelArea_->setFocusPolicy(Qt::NoFocus);
  working_ = new QWidget(this);
  auto* const row = new QHBoxLayout(working_);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(0);
  row->addWidget(left, 1);
  row->addWidget(panelArea_);
  centre_ = new QStackedWidget(this);
  centre_->addWidget(buildWelcome());
  centre_->addWidget(working_);
  setCentralWidget(centre_);
  pixel_ = new QLabel(this);
  statusBar()->addPermanentWidget(pixel_);
}

QWidget* CMainWindow::buildOutputRow() {
  auto* const widget = new QWidget(this);
  auto* const row = new QHBoxLayout(widget);
  row->setContentsMargins(6, 2, 6, 4);
  output_ = new QLabel(widget);
  output_->setObjectName("Output");
  output_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  output_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  auto* const change = new QPushButton("Output...", widget);
  change->setObjectName("ChangeOutput");
  change->setToolTip("Where renders are written");
  change->setFocusPolicy(Qt::NoFocus);
  connect(change, &QPushButton::clicked, this, [this] { editOutput(); });
  row->addWidget(output_, 1);
  row->addWidget(change);
  return widget;
}

QWidget* CMainWindow::buildWelcome() {
  auto* const widget = new QWidget(this);
  auto* const column = new QVBoxLayout(widget);
  auto* const text = new QLabel(
      "<p style='font-size:18pt'>Stabilize</p>"
      "<p>Open a shot: a video, a folder of frames, or any frame of a sequence.<br>"
      "Or drop it here.</p>",
      widget);
  text->setAlignment(Qt::AlignCenter);
  auto* const open = new QPushButton("Open Clip...", widget);
  open->setObjectName("WelcomeOpen");
  connect(open, &QPushButton::clicked, this, [this] { chooseClip(); });
  column->addStretch(1);
  column->addWidget(text);
  column->addWidget(open, 0, Qt::AlignCenter);
  column->addStretch(1);
  return widget;
}

void CMainWindow::connectParts() {
  viewer_->onPointer = [this](const SPointerAct& act) {
    mouse_->act(act);
    showPointer(act.x, act.y);
  };
  viewer_->onZoom = [this] { viewBar_->setZoom(viewer_->zoom(), viewer_->isFitted()); };
  mouse_->onRefusal = [this](const std::string& why) {
    application_.beep();
    showMessage(why);
  };
  viewBar_->onCompare = [this](ECompare compare) { setCompare(compare); };
  viewBar_->onGrade = [this](const SViewGrade& grade) { viewer_->setGrade(grade); };
  viewBar_->onFit = [this] { viewer_->fit(); };
  viewBar_->onWholeSize = [this] { viewer_->zoomTo(1.0); };
  timeline_->timecodeOf = [this](int frame) { return timecodeText(frame); };
  timeline_->onScrub = [this](int frame) {
    player_->stop();
    if (!desk_->isDisplayTaken()) desk_->goToFrame(frame);
  };
  timeline_->onMarkIn = [this](int frame) { moveMark(true, frame); };
  timeline_->onMarkOut = [this](int frame) { moveMark(false, frame); };
  transport_->onFirst = [this] { onPlainKey(Qt::Key_Home); };
  transport_->onLast = [this] { onPlainKey(Qt::Key_End); };
  transport_->onStep = [this](int frames) { step(frames); };
  transport_->onPlay = [this] { player_->toggle(); };
  transport_->onTyped = [this](const QString& text) { goToTyped(text); };
  player_->onChange = [this] { transport_->setPlaying(player_->isPlaying(), player_->text()); };
  list_->onOpenEntry = [this](const SQueuedShot& entry) {
    if (desk_->openEntry(entry)) rememberClip(QString::fromStdString(entry.options.input));
  };
  list_->onFailure = [this](const QString& text) { showFailure(text.toStdString()); };
  QTimer::singleShot(0, list_, [this] { list_->reload(); });  // its errors need a window
  keys_->toTool = [this](CUserInput& input) { return hasClip() && desk_->shot().input(input); };
  keys_->toolKnows = [this](const CUserInput& input) {
    return hasClip() && desk_->shot().knows(input);
  };
  keys_->toHost = [this](const QKeyEvent& event) { return onKey(event); };
}

void CMainWindow::open(const QString& path) {
  player_->stop();
  if (desk_->open(path.toStdString())) rememberClip(path);
}

void CMainWindow::rememberClip(const QString& path) {
  const QString whole = path.startsWith("test") ? path : QFileInfo(path).absoluteFilePath();
  QStringList clips = settings_.value("recent").toStringList();
  clips.removeAll(whole);
  clips.prepend(whole);
  settings_.setValue("recent", QStringList(clips.mid(0, MOST_RECENT)));
  fillRecent();
}

QString CMainWindow::timecodeText(int frame) {
  if (!hasClip()) return {};
  return QString::fromStdString(desk_->session().getClip()->timecodeOfFrame(frame).toText());
}

void CMainWindow::goToTyped(const QString& text) {
  if (!hasClip() || desk_->isDisplayTaken()) return;
  bool isNumber = false;
  int frame = text.trimmed().toInt(&isNumber);
  if (!isNumber) {
    const IClip& clip = *desk_->session().getClip();
    CTimecode typed = clip.startTimecode();
    if (!typed.fromText(text.trimmed().toStdString()))
      return showMessage("\"" + text.toStdString() + "\" is neither a frame nor a timecode");
    frame = clip.frameOfTimecode(typed);
  }
  player_->stop();
  desk_->goToFrame(frame);
}

void CMainWindow::step(int frames) {
  if (!hasClip() || desk_->isDisplayTaken()) return;
  player_->stop();
  desk_->goToFrame(desk_->displayedFrame() + frames);
}

// The displayed frame is the last one of the shot: OUT is one past it.
void CMainWindow::setMark(bool in, bool set) {
  if (!hasClip()) return;
  CShotSession& session = desk_->session();
  const int frame = desk_->displayedFrame();
  if (in && set && session.getMarkOut() >= 0 && frame >= session.getMarkOut())
    return showMessage("Mark IN must lie before mark OUT");
  if (!in && set && frame < session.getMarkIn())
    return showMessage("Mark OUT must lie behind mark IN");
  moveMark(in, !set ? -1 : in ? frame : frame + 1);
}

void CMainWindow::moveMark(bool in, int frame) {
  if (desk_->isBusy()) return showMessage("The marks stay while the shot is being worked on");
  if (in)
    desk_->session().setMarkIn(frame);
  else
    desk_->session().setMarkOut(frame);
}

void CMainWindow::showPointer(double x, double y) {
  const int column = static_cast<int>(std::lround(x));
  const int row = static_cast<int>(std::lround(y));
  int maximum = 0;
  float parts[3];
  if (!hasClip() || !desk_->frameBefore(desk_->displayedFrame()) ||
      !desk_->session().readDisplayedPixel(column, row, maximum, parts))
    return pixel_->clear();
  pixel_->setText(QString("x %1  y %2   R %3  G %4  B %5")
                      .arg(column)
                      .arg(row)
                      .arg(std::lround(parts[0] * maximum))
                      .arg(std::lround(parts[1] * maximum))
                      .arg(std::lround(parts[2] * maximum)));
}

void CMainWindow::closeEvent(QCloseEvent* event) {
  if (application_.modalDepth() > 0 || !desk_->mayClose()) return event->ignore();
  settings_.setValue("geometry", saveGeometry());
  settings_.setValue("state", saveState());
  settings_.setValue("appearance", appearances_->checkedAction()->text());
  event->accept();
}

void CMainWindow::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) viewer_->setFocus();
  QMainWindow::keyPressEvent(event);
}

void CMainWindow::dragEnterEvent(QDragEnterEvent* event) {
  const QList<QUrl> urls = event->mimeData()->urls();
  if (urls.size() == 1 && urls.front().isLocalFile()) event->acceptProposedAction();
}

void CMainWindow::dropEvent(QDropEvent* event) {
  const QString path = event->mimeData()->urls().front().toLocalFile();
  event->acceptProposedAction();
  activateWindow();
  open(path);
}
