#include "ViewBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <cmath>

CViewBar::CViewBar(QWidget* parent) : QWidget(parent) {
  setObjectName("ViewBar");
  auto* const row = new QHBoxLayout(this);
  row->setContentsMargins(6, 2, 6, 2);
  row->setSpacing(4);
  const struct {
    const char* text;
    const char* hint;
  } modes[] = {{"Before", "The shot as it is (B: before and after)"},
               {"After", "The result, where there is one (B: before and after)"},
               {"Split", "Before left, after right of a line that can be dragged (W)"},
               {"Side", "Before and after side by side (Y)"}};
  for (int mode = 0; mode < 4; ++mode) {
    auto* const button = new QToolButton(this);
    button->setObjectName(QString("Compare%1").arg(modes[mode].text));
    button->setText(modes[mode].text);
    button->setToolTip(modes[mode].hint);
    button->setCheckable(true);
    button->setAutoExclusive(true);
    button->setFocusPolicy(Qt::NoFocus);
    QObject::connect(button, &QToolButton::clicked, this, [this, mode] {
      if (onCompare) onCompare(static_cast<ECompare>(mode));
    });
    row->addWidget(button);
    compareButtons_.push_back(button);
  }
  compareButtons_.front()->setChecked(true);
  // Which one is on is to be seen on a dark palette, too.
  setStyleSheet(
      "QToolButton { padding: 2px 7px; border: 1px solid palette(mid); border-radius: 3px; }"
      "QToolButton:checked { background: palette(highlight); color: palette(highlighted-text); }"
      "QToolButton:pressed { background: palette(mid); }");
  row->addSpacing(10);
  exposure_ = addSlider("Exposure", "Exposure", -60, 60, "Exposure of what is seen, in stops");
  gamma_ = addSlider("Gamma", "Gamma", -20, 20, "Gamma of what is seen");
  values_ = new QLabel(this);
  values_->setMinimumWidth(fontMetrics().horizontalAdvance("+6.0 EV  γ 4.00") + 4);
  row->addWidget(values_);
  auto* const reset = new QToolButton(this);
  reset->setText("Reset");
  reset->setToolTip("Show the code values as they are");
  reset->setFocusPolicy(Qt::NoFocus);
  QObject::connect(reset, &QToolButton::clicked, this, [this] {
    exposure_->setValue(0);
    gamma_->setValue(0);
  });
  row->addWidget(reset);
  row->addStretch(1);
  zoom_ = new QToolButton(this);
  zoom_->setObjectName("Zoom");
  zoom_->setFocusPolicy(Qt::NoFocus);
  zoom_->setToolTip("Fit the picture (Ctrl+0); again: 100 % (Ctrl+1)");
  zoom_->setMinimumWidth(fontMetrics().horizontalAdvance("Fit 1600.0 %") + 16);
  QObject::connect(zoom_, &QToolButton::clicked, this, [this] {
    const auto& act = fitted_ ? onWholeSize : onFit;
    if (act) act();
  });
  row->addWidget(zoom_);
  tellGrade();
}

QSlider* CViewBar::addSlider(const char* name, const char* label, int low, int high,
                             const char* hint) {
  auto* const text = new QLabel(label, this);
  auto* const slider = new QSlider(Qt::Horizontal, this);
  slider->setObjectName(name);
  slider->setRange(low, high);
  slider->setToolTip(hint);
  slider->setMinimumWidth(56);
  slider->setMaximumWidth(120);
  slider->setFocusPolicy(Qt::TabFocus);
  QObject::connect(slider, &QSlider::valueChanged, this, [this] { tellGrade(); });
  layout()->addWidget(text);
  layout()->addWidget(slider);
  return slider;
}

void CViewBar::tellGrade() {
  if (!gamma_ || !values_) return;
  const SViewGrade grade{exposure_->value() / 10.0, std::exp2(gamma_->value() / 10.0)};
  values_->setText(QString("%1%2 EV  γ %3")
                       .arg(grade.stops > 0.0 ? "+" : "")
                       .arg(grade.stops, 0, 'f', 1)
                       .arg(grade.gamma, 0, 'f', 2));
  if (onGrade) onGrade(grade);
}

void CViewBar::setCompare(ECompare compare) {
  compareButtons_[static_cast<std::size_t>(compare)]->setChecked(true);
}

void CViewBar::setZoom(double zoom, bool fitted) {
  zoom_->setText(QString("%1%2 %").arg(fitted ? "Fit " : "").arg(zoom * 100.0, 0, 'f', 1));
  fitted_ = fitted;
}
