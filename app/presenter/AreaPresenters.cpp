#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

#include "ControlPresenter.h"

namespace {

class CPanelPresenter : public CControlPresenter {
 public:
  CPanelPresenter(TPanel& control, QFrame& frame)
      : CControlPresenter(control, frame), control_(control), frame_(frame) {}

 protected:
  void updateKind() override {
    const bool raised = control_.innerBevel() == EBevel::raised;
    frame_.setFrameStyle(raised ? QFrame::Panel | QFrame::Raised : QFrame::NoFrame);
    frame_.setLineWidth(raised ? 2 : 0);
    // What is raised is what is going on.
    if (raised) {
      QPalette palette;
      palette.setColor(QPalette::Window, palette.color(QPalette::Highlight));
      frame_.setPalette(palette);
      frame_.setAutoFillBackground(true);
    }
  }

 private:
  TPanel& control_;
  QFrame& frame_;
};

/// A group whose frame runs through its title, whatever the style does: what it holds is laid out
/// for that.
class CGroupFrame : public QGroupBox {
 public:
  using QGroupBox::QGroupBox;

 protected:
  void paintEvent(QPaintEvent*) override {
    constexpr double TITLE = 16.0;
    constexpr double INDENT = 8.0;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlpha(70);
    painter.setPen(QPen(line, 1.0));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, TITLE / 2.0, -0.5, -0.5), 3.0, 3.0);
    QFont bold = font();
    bold.setBold(true);
    painter.setFont(bold);
    const QString text = title();
    const double width = QFontMetricsF(bold).horizontalAdvance(text);
    if (width <= 0.0) return;
    painter.fillRect(QRectF(INDENT - 3.0, 0.0, width + 6.0, TITLE),
                     palette().color(QPalette::Window));
    painter.setPen(
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    painter.drawText(QRectF(INDENT, 0.0, width + 1.0, TITLE), Qt::AlignVCenter, text);
  }
};

class CGroupBoxPresenter : public CControlPresenter {
 public:
  CGroupBoxPresenter(TGroupBox& control, QGroupBox& box)
      : CControlPresenter(control, box), control_(control), box_(box) {}

 protected:
  void updateKind() override {
    box_.setTitle(QString::fromStdString(control_.caption()).trimmed());
  }

 private:
  TGroupBox& control_;
  QGroupBox& box_;
};

class CLabelPresenter : public CControlPresenter {
 public:
  CLabelPresenter(TLabel& control, QLabel& label)
      : CControlPresenter(control, label), control_(control), label_(label) {
    label.setTextFormat(Qt::PlainText);
  }

 protected:
  void updateKind() override {
    label_.setText(QString::fromStdString(control_.caption()));
    label_.setAlignment(alignment());
  }

 private:
  TLabel& control_;
  QLabel& label_;
};

class CStatusBarPresenter : public CControlPresenter {
 public:
  CStatusBarPresenter(TStatusBar& control, QWidget& row)
      : CControlPresenter(control, row), control_(control), row_(row) {
    auto* const layout = new QHBoxLayout(&row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
  }

 protected:
  void updateKind() override {
    const std::vector<TStatusBar::SPanel>& panels = control_.panels();
    while (labels_.size() < panels.size()) {
      auto* const label = new QLabel(&row_);
      label->setTextFormat(Qt::PlainText);
      label->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
      row_.layout()->addWidget(label);
      label->show();
      labels_.push_back(label);
    }
    for (std::size_t i = 0; i < panels.size(); ++i) {
      labels_[i]->setText(QString::fromStdString(panels[i].text));
      const bool last = i + 1 == panels.size();
      labels_[i]->setMinimumWidth(panels[i].width);
      labels_[i]->setMaximumWidth(last ? QWIDGETSIZE_MAX : panels[i].width);
    }
  }

 private:
  TStatusBar& control_;
  QWidget& row_;
  std::vector<QLabel*> labels_;
};

}  // namespace

std::unique_ptr<CControlPresenter> PresentArea(TControl& control, QWidget* parent) {
  if (auto* const panel = dynamic_cast<TPanel*>(&control))
    return std::make_unique<CPanelPresenter>(*panel, *new QFrame(parent));
  if (auto* const group = dynamic_cast<TGroupBox*>(&control))
    return std::make_unique<CGroupBoxPresenter>(*group, *new CGroupFrame(parent));
  if (auto* const label = dynamic_cast<TLabel*>(&control))
    return std::make_unique<CLabelPresenter>(*label, *new QLabel(parent));
  if (auto* const status = dynamic_cast<TStatusBar*>(&control))
    return std::make_unique<CStatusBarPresenter>(*status, *new QWidget(parent));
  return std::make_unique<CControlPresenter>(control, *new QWidget(parent));
}
