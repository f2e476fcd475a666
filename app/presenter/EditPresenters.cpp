#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QSpinBox>

#include "ControlPresenter.h"

namespace {

constexpr char BACK = '\b';
constexpr char RETURN = '\r';
constexpr char ESCAPE = 27;
constexpr char CTRL_Z = 26;

/// A line edit all of whose characters, however they come, pass the control first.
class CFilteredEdit : public QLineEdit {
 public:
  CFilteredEdit(TEdit& control, QWidget* parent) : QLineEdit(parent), control_(control) {
    setContextMenuPolicy(Qt::NoContextMenu);
    setAcceptDrops(false);
    setDragEnabled(false);
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (event->matches(QKeySequence::Paste)) {
      for (const QChar c : QApplication::clipboard()->text()) typeFiltered(c.toLatin1());
    } else if (const char key = characterOf(*event); key == 0) {
      QLineEdit::keyPressEvent(event);
    } else {
      typeFiltered(key);
    }
    follow();
    event->accept();
  }
  // X11 pastes with the middle button.
  void mouseReleaseEvent(QMouseEvent* event) override {
    if (event->button() != Qt::MiddleButton) QLineEdit::mouseReleaseEvent(event);
  }

 private:
  static char characterOf(const QKeyEvent& event) {
    switch (event.key()) {
      case Qt::Key_Backspace: return BACK;
      case Qt::Key_Return:
      case Qt::Key_Enter: return RETURN;
      case Qt::Key_Escape: return ESCAPE;
      case Qt::Key_Z:
        if (event.modifiers() == Qt::ControlModifier) return CTRL_Z;
        break;
      default: break;
    }
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) return 0;
    const QString text = event.text();
    const bool printable = text.size() == 1 && text.front().isPrint();
    return printable ? text.front().toLatin1() : '\0';
  }
  void typeFiltered(char key) {
    // The control may take all of it, and set a text of its own.
    const char left = control_.filterKey(key);
    if (left == BACK)
      backspace();
    else if (static_cast<unsigned char>(left) >= ' ')
      insert(QString(QChar::fromLatin1(left)));
  }
  void follow() { control_.setText(text().toStdString()); }

  TEdit& control_;
};

class CLinePresenter : public CControlPresenter {
 public:
  using CControlPresenter::CControlPresenter;

 protected:
  Qt::FocusPolicy focusPolicy(bool tabStop) const override {
    return tabStop ? Qt::StrongFocus : Qt::ClickFocus;
  }
};

class CEditPresenter : public CLinePresenter {
 public:
  CEditPresenter(TEdit& control, CFilteredEdit& edit)
      : CLinePresenter(control, edit), control_(control), edit_(edit) {
    QObject::connect(&edit, &QLineEdit::textEdited, this, [this](const QString& text) {
      if (!isUpdating()) control_.setText(text.toStdString());
    });
    QObject::connect(&edit, &QLineEdit::selectionChanged, this, [this] {
      if (!isUpdating() && !edit_.hasSelectedText()) control_.selectNone();
    });
  }

 protected:
  void updateKind() override {
    const QString text = QString::fromStdString(control_.text());
    if (edit_.text() != text) edit_.setText(text);
    if (control_.isAllSelected()) edit_.selectAll();
    edit_.setAlignment(alignment());
  }

 private:
  TEdit& control_;
  CFilteredEdit& edit_;
};

class CTimecodePresenter : public CLinePresenter {
 public:
  CTimecodePresenter(VTimeCodeEdit& control, QLineEdit& edit)
      : CLinePresenter(control, edit), control_(control), edit_(edit) {
    edit.setAlignment(Qt::AlignCenter);
    QObject::connect(&edit, &QLineEdit::textEdited, this, [this](const QString& text) {
      if (!isUpdating()) control_.typeText(text.toStdString());
    });
    QObject::connect(&edit, &QLineEdit::returnPressed, this, [] { DropFocus(); });
  }

 protected:
  void updateKind() override {
    const QString text = QString::fromStdString(control_.text());
    if (edit_.text() != text) edit_.setText(text);
  }

 private:
  VTimeCodeEdit& control_;
  QLineEdit& edit_;
};

class CSpinPresenter : public CLinePresenter {
 public:
  CSpinPresenter(TCSpinEdit& control, QSpinBox& box)
      : CLinePresenter(control, box), control_(control), box_(box) {
    QObject::connect(&box, &QSpinBox::valueChanged, this, [this](int value) {
      if (!isUpdating()) control_.setValue(value);
    });
  }

 protected:
  void updateKind() override {
    box_.setMaximum(control_.maximum());
    box_.setValue(control_.value());
  }

 private:
  TCSpinEdit& control_;
  QSpinBox& box_;
};

class CComboPresenter : public CLinePresenter {
 public:
  CComboPresenter(TComboBox& control, QComboBox& box)
      : CLinePresenter(control, box), control_(control), box_(box) {
    QObject::connect(&box, &QComboBox::activated, this, [this](int index) {
      if (!isUpdating()) control_.setItemIndex(index);
    });
  }

 protected:
  void updateKind() override {
    QStringList items;
    for (const std::string& item : control_.items()) items << QString::fromStdString(item);
    QStringList shown;
    for (int i = 0; i < box_.count(); ++i) shown << box_.itemText(i);
    if (shown != items) {
      box_.clear();
      box_.addItems(items);
    }
    box_.setCurrentIndex(control_.itemIndex());
  }

 private:
  TComboBox& control_;
  QComboBox& box_;
};

}  // namespace

std::unique_ptr<CControlPresenter> PresentEdit(TControl& control, QWidget* parent) {
  if (auto* const edit = dynamic_cast<TEdit*>(&control))
    return std::make_unique<CEditPresenter>(*edit, *new CFilteredEdit(*edit, parent));
  if (auto* const timecode = dynamic_cast<VTimeCodeEdit*>(&control))
    return std::make_unique<CTimecodePresenter>(*timecode, *new QLineEdit(parent));
  if (auto* const spin = dynamic_cast<TCSpinEdit*>(&control))
    return std::make_unique<CSpinPresenter>(*spin, *new QSpinBox(parent));
  if (auto* const combo = dynamic_cast<TComboBox*>(&control))
    return std::make_unique<CComboPresenter>(*combo, *new QComboBox(parent));
  return nullptr;
}
