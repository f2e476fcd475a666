#include "Viewer.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "OverlayPainter.h"

namespace {

constexpr double WHEEL_STEP = 120.0;
constexpr double ZOOM_STEP = 1.25;
constexpr double CENTRE = 0.5;  // of the first pixel

}  // namespace

CViewer::CViewer(QWidget* parent) : QWidget(parent) {
  setObjectName("Viewer");
  setMouseTracking(true);
  setFocusPolicy(Qt::ClickFocus);
  setMinimumSize(320, 180);
  setCursor(Qt::CrossCursor);
  setAttribute(Qt::WA_OpaquePaintEvent);
}

void CViewer::setClip(const SClipInfo& info) {
  scaler_.setClip(info);
  lens_.setClip(info);
  before_.reset();
  after_.reset();
  scaledBefore_ = {};
  scaledAfter_ = {};
  view_.setPicture(scaler_.picture());
  updateView();
}

void CViewer::setFrames(SharedSamples before, SharedSamples after, const QString& notice) {
  // What is not decoded yet comes in a moment: no black picture in between.
  if (before || !notice.isEmpty()) before_ = std::move(before);
  after_ = std::move(after);
  notice_ = notice;
  update();
}

void CViewer::setOverlay(const SOverlay& overlay) {
  overlay_ = overlay;
  update();
}

void CViewer::setCompare(ECompare compare) {
  compare_ = compare;
  updateView();
}

void CViewer::setGrade(const SViewGrade& grade) {
  scaler_.setGrade(grade);
  lens_.setGrade(grade);
  update();
}

void CViewer::setMagnifier(bool on) {
  magnifier_ = on;
  update();
}

void CViewer::setPointer(const QCursor* pointer) {
  setCursor(pointer ? *pointer : QCursor(Qt::CrossCursor));
}

QSizeF CViewer::paneSize() const {
  const double width = compare_ == ECompare::sideBySide ? this->width() / 2.0 : this->width();
  return {width, double(height())};
}

void CViewer::updateView() {
  view_.setViewer(paneSize(), devicePixelRatioF());
  if (onZoom) onZoom();
  update();
}

void CViewer::resizeEvent(QResizeEvent*) {
  updateView();
}

void CViewer::zoomTo(double zoom) {
  view_.zoomTo(zoom, {paneSize().width() / 2.0, paneSize().height() / 2.0});
  updateView();
}

void CViewer::zoomBy(double factor) {
  zoomTo(view_.zoom() * factor);
}

void CViewer::fit() {
  view_.fit();
  updateView();
}

QPointF CViewer::inFirstPane(QPointF at) const {
  if (compare_ == ECompare::sideBySide && at.x() >= paneSize().width())
    at.rx() -= paneSize().width();
  return at;
}

bool CViewer::isOnWipe(const QPointF& at) const {
  constexpr double REACH = 5.0;
  return compare_ == ECompare::split && std::abs(at.x() - wipeX()) <= REACH;
}

void CViewer::wheelEvent(QWheelEvent* event) {
  wheel_ += event->angleDelta().y() / WHEEL_STEP;
  const double steps = std::trunc(wheel_);
  wheel_ -= steps;
  if (steps != 0.0)
    view_.zoomTo(view_.zoom() * std::pow(ZOOM_STEP, steps), inFirstPane(event->position()));
  updateView();
  event->accept();
}

bool CViewer::isOnResult(const QPointF& at) const {
  switch (compare_) {
    case ECompare::before: return false;
    case ECompare::after: return after_ != nullptr;
    case ECompare::split: return after_ != nullptr && at.x() >= wipeX();
    case ECompare::sideBySide: return at.x() >= paneSize().width();
  }
  return false;
}

// One button at a time: another one that goes down meanwhile neither ends nor changes the drag.
void CViewer::mousePressEvent(QMouseEvent* event) {
  if (drag_ != EDrag::none) return;
  last_ = event->position();
  dragButton_ = event->button();
  if (event->button() == Qt::MiddleButton)
    drag_ = EDrag::pan;
  else if (event->button() == Qt::LeftButton && isOnWipe(last_))
    drag_ = EDrag::wipe;
  else {
    drag_ = EDrag::pass;
    passOn(SPointerAct::EKind::press, last_, event->button(), event->modifiers());
  }
}

void CViewer::mouseMoveEvent(QMouseEvent* event) {
  const QPointF at = event->position();
  if (drag_ == EDrag::pan) view_.pan(at - last_);
  if (drag_ == EDrag::wipe) wipe_ = std::clamp(at.x() / std::max(width(), 1), 0.0, 1.0);
  last_ = at;
  if (drag_ == EDrag::none || drag_ == EDrag::pass)
    passOn(SPointerAct::EKind::move, at, Qt::NoButton, event->modifiers());
  update();
}

void CViewer::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != dragButton_) return;
  if (drag_ == EDrag::pass)
    passOn(SPointerAct::EKind::release, event->position(), event->button(), event->modifiers());
  drag_ = EDrag::none;
  dragButton_ = Qt::NoButton;
  update();
}

void CViewer::passOn(SPointerAct::EKind kind, const QPointF& at, Qt::MouseButton button,
                     Qt::KeyboardModifiers modifiers) {
  if (!onPointer || scaler_.picture().isEmpty()) return;
  const QPointF place = view_.toPicture(inFirstPane(at));
  onPointer({kind, place.x() - CENTRE, place.y() - CENTRE, button, modifiers, view_.scale(),
             isOnResult(at)});
}

void CViewer::enterEvent(QEnterEvent*) {
  inside_ = true;
}

void CViewer::leaveEvent(QEvent*) {
  inside_ = false;
  update();
}

void CViewer::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), QColor(24, 24, 24));
  switch (compare_) {
    case ECompare::before: paintPane(painter, 0.0, scaledBefore_, before_, nullptr); break;
    case ECompare::after: paintCompared(painter); break;
    case ECompare::split: paintSplit(painter); break;
    case ECompare::sideBySide:
      paintPane(painter, 0.0, scaledBefore_, before_, "Before");
      paintPane(painter, paneSize().width(), scaledAfter_, after_, "After");
      break;
  }
  paintNotice(painter);
  if (magnifier_ && inside_) paintMagnifier(painter);
}

void CViewer::paintCompared(QPainter& painter) {
  if (after_)
    paintPane(painter, 0.0, scaledAfter_, after_, "After");
  else
    paintPane(painter, 0.0, scaledBefore_, before_, "Before (no result of this frame yet)");
}

void CViewer::paintSplit(QPainter& painter) {
  paintPane(painter, 0.0, scaledBefore_, before_, "Before");
  if (after_) {
    painter.save();
    painter.setClipRect(QRectF(wipeX(), 0.0, width() - wipeX(), height()));
    paintPane(painter, 0.0, scaledAfter_, after_, nullptr);
    painter.restore();
    paintLabel(painter, wipeX(), "After");
  }
  painter.setPen(QPen(QColor(255, 255, 255, 200), 1.0));
  painter.drawLine(QPointF(wipeX(), 0.0), QPointF(wipeX(), height()));
}

void CViewer::paintFrame(QPainter& painter, SScaled& scaled, const SharedSamples& samples) {
  const double ratio = devicePixelRatioF();
  const QSizeF pane = paneSize();
  const QSize size(static_cast<int>(std::ceil(pane.width() * ratio)),
                   static_cast<int>(std::ceil(pane.height() * ratio)));
  const QRectF source(view_.toPicture({0.0, 0.0}), QSizeF(size) / view_.zoom());
  if (scaled.samples != samples || scaled.source != source || scaled.size != size ||
      !(scaled.grade == scaler_.grade())) {
    scaled = {samples, source, size, scaler_.grade(), scaler_.scale(samples.get(), source, size)};
    scaled.image.setDevicePixelRatio(ratio);
  }
  painter.drawImage(QPointF(0.0, 0.0), scaled.image);
}

void CViewer::paintPane(QPainter& painter, double left, SScaled& scaled,
                        const SharedSamples& samples, const char* label) {
  painter.save();
  painter.translate(left, 0.0);
  painter.setClipRect(QRectF({0.0, 0.0}, paneSize()), Qt::IntersectClip);
  if (samples) paintFrame(painter, scaled, samples);
  // Points lie where the shot has them; in the result the picture has moved from under them.
  SOverlay shown = overlay_;
  if (&scaled == &scaledAfter_) shown = {overlay_.rectangles, {}, {}};
  PaintOverlay(painter, shown, view_);
  if (label) paintLabel(painter, 0.0, label);
  painter.restore();
}

void CViewer::paintLabel(QPainter& painter, double left, const char* label) {
  const QRectF place(left + 8.0, 6.0, width(), 20.0);
  painter.setPen(QColor(0, 0, 0, 200));
  painter.drawText(place.translated(1.0, 1.0), Qt::AlignLeft, label);
  painter.setPen(Qt::white);
  painter.drawText(place, Qt::AlignLeft, label);
}

void CViewer::paintNotice(QPainter& painter) {
  if (notice_.isEmpty()) return;
  const QRectF area = QRectF(rect()).adjusted(24.0, 24.0, -24.0, -24.0);
  constexpr int FLAGS = Qt::AlignCenter | Qt::TextWordWrap;
  QRectF box = painter.boundingRect(area, FLAGS, notice_).adjusted(-14.0, -10.0, 14.0, 10.0);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(40, 40, 40, 225));
  painter.drawRoundedRect(box, 6.0, 6.0);
  painter.setPen(QColor(255, 210, 140));
  painter.drawText(box, FLAGS, notice_);
}

void CViewer::paintMagnifier(QPainter& painter) {
  constexpr double SIDE = 168.0;
  constexpr double DISTANCE = 28.0;
  const bool after = compare_ == ECompare::after && after_;
  const SharedSamples& samples = after ? after_ : before_;
  if (!samples) return;
  const double zoom = std::clamp(view_.zoom() * 4.0, 4.0, CViewTransform::LARGEST);
  const double ratio = devicePixelRatioF();
  const int pixels = static_cast<int>(SIDE * ratio);
  const QPointF place = view_.toPicture(inFirstPane(last_));
  const QSizeF span(pixels / zoom, pixels / zoom);
  CViewTransform lensView;
  lensView.setPicture(scaler_.picture());
  lensView.setViewer({SIDE, SIDE}, ratio);
  lensView.zoomTo(zoom, {0.0, 0.0});
  lensView.centreOn(place);
  const QRectF source(lensView.toPicture({0.0, 0.0}), span);
  QImage image = lens_.scale(samples.get(), source, {pixels, pixels});
  image.setDevicePixelRatio(ratio);
  QPointF corner = last_ + QPointF(DISTANCE, DISTANCE);
  if (corner.x() + SIDE > width()) corner.rx() = last_.x() - DISTANCE - SIDE;
  if (corner.y() + SIDE > height()) corner.ry() = last_.y() - DISTANCE - SIDE;
  painter.save();
  painter.translate(corner);
  painter.fillRect(QRectF(0.0, 0.0, SIDE, SIDE), QColor(24, 24, 24));
  painter.setClipRect(QRectF(0.0, 0.0, SIDE, SIDE));
  painter.drawImage(QPointF(0.0, 0.0), image);
  PaintOverlay(painter, overlay_, lensView);
  const QPointF middle = lensView.toViewer(place);
  painter.setPen(QPen(QColor(255, 255, 255, 170), 1.0));
  painter.drawLine(QPointF(middle.x(), 0.0), QPointF(middle.x(), SIDE));
  painter.drawLine(QPointF(0.0, middle.y()), QPointF(SIDE, middle.y()));
  painter.setPen(QPen(Qt::black, 2.0));
  painter.drawRect(QRectF(0.0, 0.0, SIDE, SIDE));
  painter.restore();
}
