#include "ControlPresenter.h"

#include <QFocusEvent>
#include <QWheelEvent>
#include <cmath>
#include <utility>

namespace {

/// The part of a hint that is shown beside the pointer.
QString toolTipOf(const TControl& control) {
  return QString::fromStdString(control.hint()).section('|', 0, 0).replace("\r\n", "\n");
}

QColor fixedColor(EColor color) {
  switch (color) {
    case EColor::cream: return {255, 249, 224};
    case EColor::navy: return {0, 0, 128};
    case EColor::blue: return {40, 90, 230};
    case EColor::yellow: return {240, 200, 40};
    default: return {};
  }
}

}  // namespace

CControlPresenter::CControlPresenter(TControl& control, QWidget& widget)
    : control_(control), widget_(&widget) {
  widget.setObjectName(QString::fromStdString(control.name()));
  widget.installEventFilter(this);
  control.changedHook.subscribe(this, 0, [this] { update(); });
}

CControlPresenter::~CControlPresenter() {
  control_.changedHook.unsubscribe(this, 0);
}

void CControlPresenter::update() {
  if (!widget_) return;
  const bool outer = std::exchange(updating_, true);
  const SBounds& bounds = control_.bounds();
  widget_->resize(bounds.width, bounds.height);
  if (!root_) widget_->move(bounds.left, bounds.top);
  widget_->setToolTip(toolTipOf(control_));
  // A widget that is switched off with the focus would hand it to the next one, which nobody chose.
  const bool operable = control_.isEnabled() && control_.isVisible();
  if (!operable && widget_->hasFocus()) widget_->clearFocus();
  widget_->setEnabled(control_.isEnabled());
  widget_->setVisible(control_.isVisible());
  widget_->setFocusPolicy(focusPolicy(control_.isTabStop()));
  QFont font = widget_->font();
  font.setBold(control_.isBold());
  widget_->setFont(font);
  updateColor();
  updateKind();
  updateFocus();
  updating_ = outer;
}

Qt::FocusPolicy CControlPresenter::focusPolicy(bool) const {
  return Qt::NoFocus;
}

Qt::Alignment CControlPresenter::alignment() const {
  switch (control_.alignment()) {
    case EAlignment::center: return Qt::AlignCenter;
    case EAlignment::right: return Qt::AlignRight | Qt::AlignVCenter;
    default: return Qt::AlignLeft | Qt::AlignVCenter;
  }
}

// Fixed colours bring the colour of their text along: the palette may be a dark one.
void CControlPresenter::updateColor() {
  const EColor color = control_.color();
  QPalette palette;
  const QColor fixed = fixedColor(color);
  if (fixed.isValid()) {
    palette.setColor(QPalette::Window, fixed);
    palette.setColor(QPalette::Base, fixed);
    palette.setColor(QPalette::WindowText, fixed.lightness() > 127 ? Qt::black : Qt::white);
  } else if (color == EColor::buttonFace) {
    palette.setColor(QPalette::Base, palette.color(QPalette::Window));
  }
  const bool own = fixed.isValid() || color == EColor::buttonFace;
  if (own || widget_->testAttribute(Qt::WA_SetPalette))
    widget_->setPalette(own ? palette : QPalette());
  widget_->setAutoFillBackground(own);  // it may lie over a sibling
}

void CControlPresenter::updateFocus() {
  const bool left = std::exchange(wasFocused_, control_.isFocused()) && !control_.isFocused();
  if (control_.isFocused() && !widget_->hasFocus()) widget_->setFocus(Qt::OtherFocusReason);
  if (left && widget_->hasFocus()) widget_->clearFocus();
}

bool CControlPresenter::onWheel(QWheelEvent& event) {
  constexpr double STEP = 120.0;
  wheel_ += event.angleDelta().y() / STEP;
  const int steps = static_cast<int>(std::trunc(wheel_));
  wheel_ -= steps;
  // Less than a step is not yet a turn; the answer to none says who would take it.
  if (!control_.wheel(steps)) return false;
  event.accept();
  return true;
}

bool CControlPresenter::eventFilter(QObject* object, QEvent* event) {
  if (object != widget_ || updating_) return false;
  switch (event->type()) {
    case QEvent::FocusIn:
      if (!control_.isFocused() && widget_->focusPolicy() != Qt::NoFocus) control_.focus();
      return false;
    case QEvent::FocusOut: {
      const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
      const bool elsewhere =
          reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
      if (control_.isFocused() && !elsewhere) DropFocus();
      return false;
    }
    case QEvent::Wheel: return onWheel(static_cast<QWheelEvent&>(*event));
    default: return false;
  }
}
