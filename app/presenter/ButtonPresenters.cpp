#include <QAbstractButton>
#include <QCheckBox>
#include <QKeyEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>
#include <algorithm>

#include "ControlPresenter.h"
#include "presenter/Presentation.h"

namespace {

/// A button whose click is the control's; its look comes back from the control.
class CButtonPresenter : public CControlPresenter {
 public:
  CButtonPresenter(TButtonControl& control, QAbstractButton& button)
      : CControlPresenter(control, button), control_(control), button_(button) {
    QObject::connect(&button, &QAbstractButton::clicked, this, [this] { onClicked(); });
  }

 protected:
  void updateKind() override {
    button_.setText(QString::fromStdString(control_.caption()));
    if (button_.isCheckable()) button_.setChecked(isChecked());
  }
  virtual bool isChecked() const { return false; }
  virtual void onClicked() {
    // Qt has turned its own check mark by now; whatever comes of the click, the control says.
    LeaveEdit();
    control_.click();
    update();
  }
  // A click of the mouse leaves the keyboard where it is: the next Space must not click again.
  Qt::FocusPolicy focusPolicy(bool tabStop) const override {
    return tabStop ? Qt::TabFocus : Qt::NoFocus;
  }

 private:
  TButtonControl& control_;
  QAbstractButton& button_;
};

class CPushButtonPresenter : public CButtonPresenter {
 public:
  CPushButtonPresenter(TButton& control, QPushButton& button)
      : CButtonPresenter(control, button), control_(control), button_(button) {
    button.setAutoDefault(false);
  }

 protected:
  void updateKind() override {
    CButtonPresenter::updateKind();
    button_.setDefault(control_.isDefault());
  }

 private:
  TButton& control_;
  QPushButton& button_;
};

class CToolButtonPresenter : public CButtonPresenter {
 public:
  CToolButtonPresenter(TToolButton& control, QToolButton& button)
      : CButtonPresenter(control, button), control_(control), button_(button) {
    QObject::connect(&button, &QAbstractButton::pressed, this, [this] {
      if (!isHeldKind()) return;
      LeaveEdit();
      control_.press();
    });
    QObject::connect(&button, &QAbstractButton::released, this, [this] { control_.release(); });
  }
  ~CToolButtonPresenter() override { control_.release(); }

 protected:
  void updateKind() override {
    button_.setCheckable(control_.staysDown());
    CButtonPresenter::updateKind();
    fitText();
  }
  bool isChecked() const override { return control_.isDown(); }
  // One that is held has had its click when it came up.
  void onClicked() override {
    if (isHeldKind()) return update();
    LeaveEdit();
    control_.press();
    control_.release();
    update();
  }
  bool eventFilter(QObject* object, QEvent* event) override {
    const bool gone = event->type() == QEvent::Hide ||
                      (event->type() == QEvent::EnabledChange && !button_.isEnabled());
    if (gone) control_.release();
    return CButtonPresenter::eventFilter(object, event);
  }

 private:
  // Small buttons have small room: a text in full, smaller, says more than half of one.
  void fitText() {
    constexpr int LARGEST = 12;
    constexpr int SMALLEST = 9;
    constexpr int PADDING = 6;
    QFont font = button_.font();
    for (int size = LARGEST; size >= SMALLEST; --size) {
      font.setPixelSize(size);
      if (QFontMetrics(font).horizontalAdvance(button_.text()) + PADDING <= button_.width()) break;
    }
    button_.setFont(font);
  }
  bool isHeldKind() const { return control_.onPress || control_.onRelease; }
  TToolButton& control_;
  QToolButton& button_;
};

class CCheckBoxPresenter : public CButtonPresenter {
 public:
  CCheckBoxPresenter(TCheckBox& control, QCheckBox& box)
      : CButtonPresenter(control, box), control_(control) {}

 protected:
  bool isChecked() const override { return control_.isChecked(); }
  Qt::FocusPolicy focusPolicy(bool tabStop) const override {
    return tabStop ? Qt::StrongFocus : Qt::ClickFocus;
  }

 private:
  TCheckBox& control_;
};

class CRadioButtonPresenter : public CButtonPresenter {
 public:
  CRadioButtonPresenter(TRadioButton& control, QRadioButton& button)
      : CButtonPresenter(control, button), control_(control) {
    button.setAutoExclusive(false);  // the controls exclude each other
  }

 protected:
  bool isChecked() const override { return control_.isChecked(); }
  Qt::FocusPolicy focusPolicy(bool tabStop) const override {
    return tabStop ? Qt::StrongFocus : Qt::ClickFocus;
  }
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::KeyPress)
      if (const int way = wayOf(static_cast<QKeyEvent*>(event)->key()); way != 0) {
        chooseNext(way);
        return true;
      }
    return CButtonPresenter::eventFilter(object, event);
  }

 private:
  static int wayOf(int key) {
    if (key == Qt::Key_Up || key == Qt::Key_Left) return -1;
    return key == Qt::Key_Down || key == Qt::Key_Right ? 1 : 0;
  }
  /// Arrows choose among those that can be chosen, round and round.
  void chooseNext(int way) {
    std::vector<TRadioButton*> group;
    for (TControl* sibling : control_.parent()->children()) {
      auto* const radio = dynamic_cast<TRadioButton*>(sibling);
      if (radio && radio->isOperable()) group.push_back(radio);
    }
    const auto here = std::find(group.begin(), group.end(), &control_) - group.begin();
    const auto count = static_cast<std::ptrdiff_t>(group.size());
    if (count < 2 || here == count) return;
    TRadioButton* const next = group[static_cast<std::size_t>((here + way + count) % count)];
    next->focus();
    next->click();
  }
  TRadioButton& control_;
};

}  // namespace

void LeaveEdit() {
  TControl* const focused = FocusedControl();
  const bool isEdit = dynamic_cast<TEdit*>(focused) || dynamic_cast<VTimeCodeEdit*>(focused) ||
                      dynamic_cast<TCSpinEdit*>(focused);
  if (isEdit) DropFocus();
}

std::unique_ptr<CControlPresenter> PresentButton(TControl& control, QWidget* parent) {
  if (auto* const check = dynamic_cast<TCheckBox*>(&control))
    return std::make_unique<CCheckBoxPresenter>(*check, *new QCheckBox(parent));
  if (auto* const radio = dynamic_cast<TRadioButton*>(&control))
    return std::make_unique<CRadioButtonPresenter>(*radio, *new QRadioButton(parent));
  if (auto* const tool = dynamic_cast<TToolButton*>(&control))
    return std::make_unique<CToolButtonPresenter>(*tool, *new QToolButton(parent));
  if (auto* const button = dynamic_cast<TButton*>(&control))
    return std::make_unique<CPushButtonPresenter>(*button, *new QPushButton(parent));
  return nullptr;
}
