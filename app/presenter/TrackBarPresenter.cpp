#include <QPainter>
#include <QSlider>
#include <QStyleOptionSlider>
#include <algorithm>

#include "ControlPresenter.h"

namespace {

/// A slider with a filled part, and a handle that may be missing.
class CTrackSlider : public QSlider {
 public:
  CTrackSlider(TTrackBar& control, QWidget* parent)
      : QSlider(Qt::Horizontal, parent), control_(control) {}

 protected:
  void paintEvent(QPaintEvent*) override {
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRectF handle =
        style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintGroove(painter, handle.center().y() + 0.5, handle.width());
    if (control_.isSliderVisible()) paintHandle(painter, handle);
  }

 private:
  double xOf(int position, double handleWidth) const {
    const double span = width() - handleWidth;
    const int range = std::max(maximum() - minimum(), 1);
    return handleWidth / 2.0 + span * (position - minimum()) / range;
  }
  QColor faded(QPalette::ColorRole role, int alpha) const {
    QColor color = palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, role);
    color.setAlpha(alpha);
    return color;
  }
  void paintGroove(QPainter& painter, double y, double handleWidth) const {
    constexpr double THICK = 4.0;
    painter.setPen(QPen(faded(QPalette::WindowText, 110), 1.0));
    painter.setBrush(palette().color(QPalette::Base));
    const double left = xOf(minimum(), handleWidth);
    const double right = xOf(maximum(), handleWidth);
    painter.drawRoundedRect(QRectF(left, y - THICK / 2.0, right - left, THICK), 2.0, 2.0);
    const double from = xOf(std::max(control_.selectionStart(), minimum()), handleWidth);
    const double to = xOf(std::min(control_.selectionEnd(), maximum()), handleWidth);
    if (to > from) {
      painter.setPen(Qt::NoPen);
      painter.setBrush(faded(QPalette::Highlight, isEnabled() ? 255 : 120));
      painter.drawRoundedRect(QRectF(from, y - THICK / 2.0, to - from, THICK), 2.0, 2.0);
    }
    painter.setPen(QPen(faded(QPalette::WindowText, 110), 1.0));
    const int step = std::max(control_.tickFrequency(), 1);
    for (int tick = minimum(); tick <= maximum(); tick += step) {
      const double x = xOf(tick, handleWidth);
      painter.drawLine(QPointF(x, y + 7.0), QPointF(x, y + 10.0));
    }
  }
  void paintHandle(QPainter& painter, const QRectF& handle) const {
    const QRectF knob(handle.center().x() - 4.0, handle.center().y() - 7.0, 9.0, 15.0);
    const bool focused = hasFocus();
    painter.setPen(
        QPen(focused ? palette().color(QPalette::Highlight) : faded(QPalette::WindowText, 170),
             focused ? 2.0 : 1.0));
    painter.setBrush(palette().color(QPalette::Button).lighter(isSliderDown() ? 125 : 108));
    painter.drawRoundedRect(knob, 2.5, 2.5);
  }

  TTrackBar& control_;
};

class CTrackBarPresenter : public CControlPresenter {
 public:
  CTrackBarPresenter(TTrackBar& control, CTrackSlider& slider)
      : CControlPresenter(control, slider), control_(control), slider_(slider) {
    QObject::connect(&slider, &QSlider::valueChanged, this, [this](int value) {
      if (isUpdating()) return;
      control_.setPosition(value);
      update();
    });
  }

 protected:
  void updateKind() override {
    slider_.setRange(control_.minimum(), control_.maximum());
    slider_.setPageStep(control_.pageSize());
    slider_.setValue(control_.position());
    slider_.QWidget::update();
  }
  Qt::FocusPolicy focusPolicy(bool tabStop) const override {
    return tabStop ? Qt::StrongFocus : Qt::ClickFocus;
  }

 private:
  TTrackBar& control_;
  CTrackSlider& slider_;
};

}  // namespace

std::unique_ptr<CControlPresenter> PresentTrackBar(TControl& control, QWidget* parent) {
  auto* const bar = dynamic_cast<TTrackBar*>(&control);
  if (!bar) return nullptr;
  return std::make_unique<CTrackBarPresenter>(*bar, *new CTrackSlider(*bar, parent));
}
