#include "Operator.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QStringList>
#include <QThread>

// X's macros would take words of everybody else's, so it comes last.
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

COperator::COperator() : display_(XOpenDisplay(nullptr)) {}

COperator::~COperator() {
  XCloseDisplay(display_);
}

bool COperator::waitFor(const std::function<bool()>& condition) {
  XSync(display_, 0);
  for (const QDeadlineTimer deadline(60'000); !condition();) {
    if (deadline.hasExpired()) return false;
    QApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
  }
  return true;
}

// Qt's connection gets the server's events behind a round trip of ours.
void COperator::settle() {
  XSync(display_, 0);
  for (int round = 0; round < 5; ++round) {
    QApplication::processEvents();
    QThread::msleep(4);
  }
  QApplication::processEvents();
}

void COperator::moveTo(const QWidget& widget, QPointF at) {
  const double ratio = widget.devicePixelRatioF();
  const QPointF place = widget.mapToGlobal(at) * ratio;
  XTestFakeMotionEvent(display_, -1, static_cast<int>(place.x()), static_cast<int>(place.y()), 0);
  settle();
}

void COperator::press(int button) {
  XTestFakeButtonEvent(display_, static_cast<unsigned>(button), 1, 0);
  settle();
}

void COperator::release(int button) {
  XTestFakeButtonEvent(display_, static_cast<unsigned>(button), 0, 0);
  settle();
}

void COperator::click(const QWidget& widget, QPointF at, int button) {
  moveTo(widget, at);
  press(button);
  release(button);
}

void COperator::click(const QWidget& widget) {
  click(widget, QPointF(widget.width() / 2.0, widget.height() / 2.0));
}

void COperator::turnWheel(int steps) {
  const int button = steps > 0 ? 4 : 5;
  for (int step = 0; step < std::abs(steps); ++step) {
    press(button);
    release(button);
  }
}

void COperator::send(const QString& key, bool down) {
  const KeySym symbol = XStringToKeysym(key.toLatin1().constData());
  XTestFakeKeyEvent(display_, XKeysymToKeycode(display_, symbol), down ? 1 : 0, 0);
  settle();
}

void COperator::type(const QString& chord) {
  QStringList keys = chord.split('+');
  for (QString& key : keys) {
    if (key == "Shift") key = "Shift_L";
    if (key == "Ctrl") key = "Control_L";
    if (key == "Alt") key = "Alt_L";
  }
  for (const QString& key : keys) send(key, true);
  for (auto key = keys.rbegin(); key != keys.rend(); ++key) send(*key, false);
}

void COperator::typeText(const QString& text) {
  for (const QChar c : text) {
    const QString name = c == '/'   ? "slash"
                         : c == '.' ? "period"
                         : c == '-' ? "minus"
                         : c == ':' ? "Shift+semicolon"
                         : c == '_' ? "Shift+minus"
                         : c == '#' ? "Shift+3"
                                    : QString(c);
    type(name);
  }
}
