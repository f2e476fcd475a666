#include "Timeline.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>
#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace {

constexpr double MARGIN = 10.0;
constexpr double RULER = 34.0;
constexpr double LANE = 8.0;
constexpr double LANE_GAP = 4.0;
constexpr double HANDLE = 9.0;
constexpr double FEWEST_FRAMES = 8.0;

const QColor TRACKED(90, 200, 110);
const QColor RESULTS(80, 170, 240);
const QColor CACHED(150, 150, 150);
const QColor MARKS(240, 190, 80);

double laneTop(int lane) {
  return RULER + LANE_GAP + lane * (LANE + LANE_GAP);
}

}  // namespace

CTimeline::CTimeline(QWidget* parent) : QWidget(parent) {
  setObjectName("Timeline");
  setMouseTracking(true);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void CTimeline::setContent(const STimelineContent& content) {
  if (content == content_) return;
  const bool otherClip = !(content.clip == content_.clip);
  const bool moved = content.displayed != content_.displayed;
  content_ = content;
  if (otherClip) setRange(content_.clip.first, content_.clip.end);
  if (moved) followDisplayed();
  update();
}

void CTimeline::setRange(double first, double end) {
  const double whole = std::max(content_.clip.end - content_.clip.first, 1);
  const double length = std::clamp(end - first, std::min(FEWEST_FRAMES, whole), whole);
  rangeFirst_ =
      std::clamp(first, double(content_.clip.first), content_.clip.first + whole - length);
  rangeEnd_ = rangeFirst_ + length;
  update();
}

void CTimeline::followDisplayed() {
  const double length = rangeEnd_ - rangeFirst_;
  if (content_.displayed < rangeFirst_) setRange(content_.displayed, content_.displayed + length);
  if (content_.displayed + 1 > rangeEnd_)
    setRange(content_.displayed + 1 - length, content_.displayed + 1);
}

double CTimeline::xOf(double frame) const {
  const double width = this->width() - 2.0 * MARGIN;
  return MARGIN + (frame - rangeFirst_) / (rangeEnd_ - rangeFirst_) * width;
}

double CTimeline::frameAt(double x) const {
  const double width = std::max(this->width() - 2.0 * MARGIN, 1.0);
  return rangeFirst_ + (x - MARGIN) / width * (rangeEnd_ - rangeFirst_);
}

int CTimeline::wholeFrameAt(double x) const {
  return std::clamp(static_cast<int>(std::floor(frameAt(x))), content_.clip.first,
                    std::max(content_.clip.end - 1, content_.clip.first));
}

CTimeline::EDrag CTimeline::handleAt(const QPointF& at) const {
  if (at.y() > RULER) return EDrag::none;
  const auto isAt = [&](int mark, double side) {
    const double x = xOf(mark);
    return mark >= 0 && (at.x() - x) * side >= -3.0 && (at.x() - x) * side <= HANDLE + 2.0;
  };
  // IN's handle lies to the right of its line, OUT's to the left: both can be had where they meet.
  if (at.y() > RULER - HANDLE - 4.0 && isAt(content_.markIn, 1.0)) return EDrag::markIn;
  if (at.y() > RULER - HANDLE - 4.0 && isAt(content_.markOut, -1.0)) return EDrag::markOut;
  return EDrag::none;
}

void CTimeline::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || content_.clip.end <= content_.clip.first) return;
  drag_ = handleAt(event->position());
  draggedIn_ = content_.markIn;
  draggedOut_ = content_.markOut;
  if (drag_ == EDrag::none) drag_ = EDrag::scrub;
  dragTo(event->position());
}

void CTimeline::dragTo(const QPointF& at) {
  const int edge = static_cast<int>(std::lround(frameAt(at.x())));
  const SSpan& clip = content_.clip;
  if (drag_ == EDrag::scrub && onScrub) onScrub(wholeFrameAt(at.x()));
  if (drag_ == EDrag::markIn)
    draggedIn_ = std::clamp(edge, clip.first, (draggedOut_ > 0 ? draggedOut_ : clip.end) - 1);
  if (drag_ == EDrag::markOut)
    draggedOut_ = std::clamp(edge, std::max(draggedIn_, clip.first) + 1, clip.end);
  update();
}

void CTimeline::mouseMoveEvent(QMouseEvent* event) {
  if (drag_ != EDrag::none) return dragTo(event->position());
  setCursor(handleAt(event->position()) == EDrag::none ? Qt::ArrowCursor : Qt::SizeHorCursor);
}

void CTimeline::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const EDrag drag = std::exchange(drag_, EDrag::none);
  if (drag == EDrag::markIn && draggedIn_ != content_.markIn && onMarkIn) onMarkIn(draggedIn_);
  if (drag == EDrag::markOut && draggedOut_ != content_.markOut && onMarkOut)
    onMarkOut(draggedOut_);
  update();
}

void CTimeline::wheelEvent(QWheelEvent* event) {
  const QPoint delta = event->angleDelta();
  const double steps = (delta.y() != 0 ? delta.y() : delta.x()) / 120.0;
  const double length = rangeEnd_ - rangeFirst_;
  if (event->modifiers() & Qt::ShiftModifier) {
    setRange(rangeFirst_ - steps * length / 8.0, rangeEnd_ - steps * length / 8.0);
  } else {
    const double at = frameAt(event->position().x());
    const double factor = std::pow(0.8, steps);
    setRange(at - (at - rangeFirst_) * factor, at + (rangeEnd_ - at) * factor);
  }
  event->accept();
}

QString CTimeline::hintAt(const QPointF& at) const {
  const char* const lanes[] = {"tracked", "result of the last preview or render",
                               "decoded, kept in memory"};
  const int frame = wholeFrameAt(at.x());
  QString text = QString("frame %1").arg(frame);
  if (timecodeOf) text += "  " + timecodeOf(frame);
  for (int lane = 0; lane < 3; ++lane)
    if (at.y() >= laneTop(lane) - LANE_GAP / 2.0 && at.y() < laneTop(lane) + LANE + LANE_GAP / 2.0)
      text += QString("\nlane: %1").arg(lanes[lane]);
  return text;
}

bool CTimeline::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip && content_.clip.end > content_.clip.first) {
    const auto* const help = static_cast<QHelpEvent*>(event);
    QToolTip::showText(help->globalPos(), hintAt(help->pos()), this);
    return true;
  }
  return QWidget::event(event);
}

void CTimeline::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Base));
  if (content_.clip.end <= content_.clip.first) return;
  painter.setRenderHint(QPainter::Antialiasing);
  paintLanes(painter);
  paintRuler(painter);
  paintMarks(painter);
  paintPlayhead(painter);
}

int CTimeline::rulerStep() const {
  constexpr double WIDEST_LABEL = 92.0;
  const double pixels = (width() - 2.0 * MARGIN) / (rangeEnd_ - rangeFirst_);
  for (int decade = 1; decade < 100'000'000; decade *= 10)
    for (const int step : {1, 2, 5})
      if (step * decade * pixels >= WIDEST_LABEL) return step * decade;
  return 100'000'000;
}

void CTimeline::paintRuler(QPainter& painter) const {
  QFont font = painter.font();
  font.setPixelSize(10);
  painter.setFont(font);
  const int step = rulerStep();
  const QColor text = palette().color(QPalette::Text);
  QColor faint = text;
  faint.setAlpha(150);
  for (int frame = static_cast<int>(std::floor(rangeFirst_ / step)) * step; frame < rangeEnd_;
       frame += step) {
    if (frame < content_.clip.first) continue;
    const double x = xOf(frame);
    painter.setPen(faint);
    painter.drawLine(QPointF(x, RULER - 6.0), QPointF(x, RULER));
    const QString timecode = timecodeOf ? timecodeOf(frame) : QString();
    const QString number = QString::number(frame);
    const QFontMetricsF metrics(font);
    const double room = width() - x - 3.0;
    painter.setPen(text);
    if (metrics.horizontalAdvance(number) <= room) painter.drawText(QPointF(x + 3.0, 11.0), number);
    painter.setPen(faint);
    if (metrics.horizontalAdvance(timecode) <= room)
      painter.drawText(QPointF(x + 3.0, 23.0), timecode);
  }
  painter.setPen(faint);
  painter.drawLine(QPointF(MARGIN, RULER), QPointF(width() - MARGIN, RULER));
}

void CTimeline::paintLanes(QPainter& painter) const {
  const auto paint = [&](int lane, const std::vector<SSpan>& spans, const QColor& color) {
    const QRectF whole(MARGIN, laneTop(lane), width() - 2.0 * MARGIN, LANE);
    QColor empty = palette().color(QPalette::Text);
    empty.setAlpha(22);
    painter.fillRect(whole, empty);
    for (const SSpan& span : spans) {
      const double left = xOf(span.first);
      const QRectF bar(left, whole.top(), std::max(xOf(span.end) - left, 1.0), LANE);
      painter.fillRect(bar & whole, color);
    }
  };
  paint(0, content_.tracked, TRACKED);
  paint(1, content_.results, RESULTS);
  paint(2, content_.cached, CACHED);
}

void CTimeline::paintMarks(QPainter& painter) const {
  const int in = drag_ == EDrag::markIn ? draggedIn_ : content_.markIn;
  const int out = drag_ == EDrag::markOut ? draggedOut_ : content_.markOut;
  QColor shade = palette().color(QPalette::Base);
  shade.setAlpha(170);
  if (in >= 0)
    painter.fillRect(QRectF(0.0, RULER, std::max(xOf(in), 0.0), height() - RULER), shade);
  if (out >= 0 && xOf(out) < width())
    painter.fillRect(QRectF(xOf(out), RULER, width() - xOf(out), height() - RULER), shade);
  painter.setPen(QPen(MARKS.darker(130), 1.0));
  painter.setBrush(MARKS);
  for (const auto& [mark, side] : {std::pair(in, 1.0), std::pair(out, -1.0)}) {
    if (mark < 0) continue;
    const double x = xOf(mark);
    painter.drawLine(QPointF(x, RULER - HANDLE), QPointF(x, height()));
    QPainterPath flag(QPointF(x, RULER - HANDLE - 3.0));
    flag.lineTo(x + side * HANDLE, RULER - HANDLE / 2.0 - 1.5);
    flag.lineTo(x, RULER);
    flag.closeSubpath();
    painter.drawPath(flag);
  }
}

void CTimeline::paintPlayhead(QPainter& painter) const {
  const double left = xOf(content_.displayed);
  const double width = std::max(xOf(content_.displayed + 1) - left, 1.0);
  QColor color = palette().color(QPalette::Highlight);
  color.setAlpha(90);
  painter.fillRect(QRectF(left, 0.0, width, height()), color);
  color.setAlpha(255);
  painter.setPen(QPen(color, 2.0));
  painter.drawLine(QPointF(left + width / 2.0, 0.0), QPointF(left + width / 2.0, height()));
}
