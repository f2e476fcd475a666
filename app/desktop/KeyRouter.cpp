#include "KeyRouter.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QRadioButton>
#include <QTextEdit>
#include <QWidget>

#include "KeyInput.h"

namespace {

template <typename... T>
bool isAny(const QWidget* widget) {
  return (... || (qobject_cast<const T*>(widget) != nullptr));
}

bool isModifier(int key) {
  return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt;
}

bool isTextEdit(const QWidget* widget) {
  return isAny<QLineEdit, QAbstractSpinBox, QTextEdit>(widget);
}

// Keys that type or move the cursor. Commands with Ctrl or Alt that an edit has no use for go on.
bool isForEdit(const QKeyEvent& event) {
  if (isModifier(event.key())) return false;
  const Qt::KeyboardModifiers commands = Qt::ControlModifier | Qt::AltModifier;
  if ((event.modifiers() & commands) == 0)
    return event.key() < Qt::Key_F1 || event.key() > Qt::Key_F35;
  for (const QKeySequence::StandardKey key :
       {QKeySequence::Copy, QKeySequence::Cut, QKeySequence::Paste, QKeySequence::SelectAll,
        QKeySequence::Undo, QKeySequence::MoveToNextWord, QKeySequence::MoveToPreviousWord})
    if (const_cast<QKeyEvent&>(event).matches(key)) return true;
  return false;
}

bool isArrow(int key) {
  return key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Up || key == Qt::Key_Down;
}

/// Keys that work the control itself.
bool isForControl(const QWidget* widget, const QKeyEvent& event) {
  const int key = event.key();
  if (key == Qt::Key_Tab || key == Qt::Key_Backtab) return true;
  if (event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) return false;
  const bool moves = isArrow(key) || key == Qt::Key_Home || key == Qt::Key_End ||
                     key == Qt::Key_PageUp || key == Qt::Key_PageDown;
  if (isAny<QAbstractSlider, QComboBox, QAbstractItemView>(widget) && moves) return true;
  if (isAny<QAbstractItemView>(widget) && key == Qt::Key_Delete) return true;
  if (isAny<QRadioButton>(widget) && isArrow(key)) return true;
  return isAny<QAbstractButton, QComboBox>(widget) && key == Qt::Key_Space;
}

constexpr int HELD_MILLISECONDS = 50;

struct SModifierKey {
  int key;
  int bit;
};
constexpr int SHIFT_KEY = 0x10;
constexpr SModifierKey MODIFIER_KEYS[] = {{SHIFT_KEY, CUserInput::MODIFIER_SHIFT},
                                          {0x11, CUserInput::MODIFIER_CTRL},
                                          {0x12, CUserInput::MODIFIER_ALT}};

}  // namespace

CKeyRouter::CKeyRouter(QWidget& window) : window_(window) {
  qApp->installEventFilter(this);
  heldTimer_.setInterval(HELD_MILLISECONDS);
  connect(&heldTimer_, &QTimer::timeout, this, [this] { releaseHeld(); });
}

CKeyRouter::~CKeyRouter() {
  qApp->removeEventFilter(this);
}

/// An event goes to the focused widget first and then up its parents: once is enough.
bool CKeyRouter::isOurs(QObject* object) const {
  if (QApplication::activeModalWidget() || QApplication::activePopupWidget()) return false;
  QWidget* const focused = window_.focusWidget() ? window_.focusWidget() : &window_;
  return object == focused && focused->window() == &window_;
}

bool CKeyRouter::eventFilter(QObject* object, QEvent* event) {
  const QEvent::Type type = event->type();
  if (type != QEvent::KeyPress && type != QEvent::KeyRelease && type != QEvent::ShortcutOverride)
    return false;
  if (!isOurs(object)) return false;
  auto& key = static_cast<QKeyEvent&>(*event);
  if (type != QEvent::ShortcutOverride) return route(key);
  if (isTextEdit(window_.focusWidget()) && isForEdit(key)) return false;
  const CUserInput input = ToUserInput(key);
  if (!isModifier(key.key()) && toolKnows && toolKnows(input)) event->accept();
  return event->isAccepted();
}

bool CKeyRouter::route(QKeyEvent& event) {
  const QWidget* const focused = window_.focusWidget();
  const bool press = event.type() == QEvent::KeyPress;
  if (isTextEdit(focused) && isForEdit(event)) return false;
  if (!event.isAutoRepeat() && toTool) {
    CUserInput input = ToUserInput(event);
    const QPoint pointer = QCursor::pos();
    input.x = pointer.x();
    input.y = pointer.y();
    rememberHeld(input);
    const bool used = input.key != 0 && toTool(input);
    tellPlainShift(input);
    if (used) return true;
  }
  if (isForControl(focused, event)) return false;
  return press && toHost && toHost(event);
}

void CKeyRouter::rememberHeld(const CUserInput& input) {
  for (const SModifierKey& modifier : MODIFIER_KEYS) {
    if (input.key != modifier.key) continue;
    const bool down = input.action == CUserInput::ACTION_KEY_DOWN;
    held_ = down ? held_ | modifier.bit : held_ & ~modifier.bit;
  }
  if (held_ != 0 && !heldTimer_.isActive()) heldTimer_.start();
}

void CKeyRouter::releaseHeld() {
  // Behind a dialog the tool may be in the middle of something, and hears nothing.
  if (QApplication::activeModalWidget()) return;
  const int down = ToolModifiers(QGuiApplication::queryKeyboardModifiers());
  for (const SModifierKey& modifier : MODIFIER_KEYS) {
    if ((held_ & modifier.bit) == 0 || (down & modifier.bit) != 0) continue;
    held_ &= ~modifier.bit;
    tellUp(modifier.key);
  }
  if (held_ == 0) heldTimer_.stop();
}

void CKeyRouter::tellUp(int key) {
  CUserInput input;
  input.action = CUserInput::ACTION_KEY_UP;
  input.key = key;
  input.modifiers = held_;
  if (toTool) toTool(input);
  tellPlainShift(input);
}

// Tools know the end of Shift by its key alone. Where it came up before Ctrl or Alt, it is told
// again once they are up as well.
void CKeyRouter::tellPlainShift(const CUserInput& up) {
  if (up.action != CUserInput::ACTION_KEY_UP) return;
  if (up.key == SHIFT_KEY) shiftDue_ = up.modifiers != 0;
  if (!shiftDue_ || held_ != 0) return;
  shiftDue_ = false;
  CUserInput shift;
  shift.action = CUserInput::ACTION_KEY_UP;
  shift.key = SHIFT_KEY;
  if (toTool) toTool(shift);
}
