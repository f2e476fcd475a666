#include <QMessageBox>
#include <QScrollBar>
#include <QStatusBar>
#include <algorithm>

#include "MainWindow.h"

namespace {

std::vector<SSpan> spansOf(const std::vector<int>& frames) {
  std::vector<SSpan> spans;
  for (const int frame : frames) {
    if (!spans.empty() && spans.back().end == frame)
      ++spans.back().end;
    else
      spans.push_back({frame, frame + 1});
  }
  return spans;
}

}  // namespace

void CMainWindow::showClip() {
  const SClipInfo& info = desk_->info();
  player_->stop();
  centre_->setCurrentWidget(working_);
  viewer_->setClip(info);
  setWindowTitle(QString::fromStdString(info.path) + " - Stabilize");
  showOutput();
  statusBar()->showMessage(QString("%1, %2 x %3, %4 bit, %5 fps, %6 frames")
                               .arg(QString::fromStdString(info.kind))
                               .arg(info.format.getPixelsPerLine())
                               .arg(info.format.getLinesPerFrame())
                               .arg(info.bitDepth)
                               .arg(info.frameRate.value(), 0, 'g', 5)
                               .arg(info.frameCount()));
  setCompare(ECompare::before);
  enableActions();
  showMarks();
  viewer_->setFocus();
}

QString CMainWindow::frameNotice(int frame) {
  const std::string failure = desk_->frameFailure(frame);
  if (failure.empty()) return {};
  return QString::fromStdString(failure) + "\n\nF5 reads it again.";
}

void CMainWindow::showFrame() {
  if (!hasClip()) return;
  const int frame = desk_->displayedFrame();
  viewer_->setFrames(desk_->frameBefore(frame), desk_->frameAfter(frame), frameNotice(frame));
  transport_->setFrame(frame, timecodeText(frame));
  showOverlay();
}

void CMainWindow::showOverlay() {
  if (!hasClip()) return;
  viewer_->setOverlay(desk_->session().overlay());
  refreshTimeline();
}

void CMainWindow::showCachedFrames() {
  const int frame = desk_->displayedFrame();
  // Who previews wants to see what comes out, until they look at what was there before.
  if (!resultSeen_ && desk_->isBusy() && desk_->frameAfter(frame)) {
    resultSeen_ = true;
    if (viewer_->compare() == ECompare::before) setCompare(ECompare::after);
  }
  viewer_->setFrames(desk_->frameBefore(frame), desk_->frameAfter(frame), frameNotice(frame));
  refreshTimeline();
}

void CMainWindow::showMarks() {
  const int in = desk_->session().getMarkIn();
  const int out = desk_->session().getMarkOut();
  const auto text = [](int mark) { return mark < 0 ? QString("-") : QString::number(mark); };
  transport_->setMarks(QString("IN %1   OUT %2").arg(text(in), text(out)) +
                       (in >= 0 && out > in ? QString("   %1 frames").arg(out - in) : QString()));
  refreshTimeline();
}

void CMainWindow::refreshTimeline() {
  if (!hasClip()) return;
  CShotSession& session = desk_->session();
  STimelineContent content;
  content.clip = {desk_->info().firstFrame, desk_->info().endFrame};
  content.displayed = desk_->displayedFrame();
  content.markIn = session.getMarkIn();
  content.markOut = session.getMarkOut();
  if (const CTrackingPointsEditor* editor = session.editor(); editor && editor->trackingArray()) {
    const CTrackingArray& array = *editor->trackingArray();
    if (array.FrameCount() > 1) content.tracked = {{array.FirstFrame(), array.EndFrame()}};
  }
  content.results = spansOf(desk_->resultFrames());
  for (const SFrameSpan& span : desk_->cachedFrames())
    content.cached.push_back({span.first, span.end});
  timeline_->setContent(content);
}

void CMainWindow::showProgress(bool busy) {
  if (busy) {
    player_->stop();
    resultSeen_ = false;
    // A button that the pass switches off would hand the keyboard to the next slider.
    viewer_->setFocus();
  }
  enableActions();
  showOverlay();
}

void CMainWindow::showPanel(const std::string& title, TControl& panel) {
  panel_ = std::make_unique<CPresentation>(panel, nullptr);
  QWidget* const widget = panel_->widget();
  widget->setAccessibleName(QString::fromStdString(title));
  panelArea_->setWidget(widget);
  // With room for the scroll bar that a low window needs: it must not hide a part of the panel.
  panelArea_->setFixedWidth(panel.bounds().width +
                            panelArea_->verticalScrollBar()->sizeHint().width());
}

void CMainWindow::removePanel() {
  panelArea_->takeWidget();
  panel_.reset();
}

void CMainWindow::showPointer(const SCursorImage* pointer) {
  if (!pointer) return viewer_->setPointer(nullptr);
  const QImage image(reinterpret_cast<const uchar*>(pointer->pixels.data()), pointer->width,
                     pointer->height, QImage::Format_ARGB32);
  const QCursor cursor(QPixmap::fromImage(image), pointer->hotX, pointer->hotY);
  viewer_->setPointer(&cursor);
}

void CMainWindow::showResult(bool) {
  onPlainKey(Qt::Key_B);
}

void CMainWindow::setHelpPages(const std::string& operation, const std::string& hotKeys) {
  operationPage_ = QString::fromStdString(operation);
  hotKeysPage_ = QString::fromStdString(hotKeys);
}

void CMainWindow::showOutput() {
  const QString output = QString::fromStdString(desk_->output());
  output_->setText("Output: " + (output.isEmpty() ? QString("asked for") : output));
  output_->setToolTip(output_->text());
}

void CMainWindow::showMessage(const std::string& text) {
  constexpr int MILLISECONDS = 12000;
  statusBar()->showMessage(QString::fromStdString(text), MILLISECONDS);
}

void CMainWindow::showFailure(const std::string& text) {
  application_.showError(text);
}

bool CMainWindow::confirm(const std::string& question, const std::string& yes) {
  return application_.ask(question, yes);
}

std::string CMainWindow::chooseOutput(const std::string& suggestion) {
  const std::string text = application_.askText(
      "Output",
      "Where renders are written: a folder or pattern for frames (name.####.dpx), or a video "
      "(.mov, .mkv, .mp4)",
      suggestion);
  return QString::fromStdString(text).trimmed().toStdString();
}
