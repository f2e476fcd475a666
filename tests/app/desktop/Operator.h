#pragma once

#include <QPoint>
#include <QString>
#include <QWidget>
#include <functional>

struct _XDisplay;

/// Hands at mouse and keyboard: events come from the X server, as a person's do. While the operator
/// waits, the program under test runs. THREAD: the user-interface thread.
class COperator {
 public:
  COperator();
  ~COperator();
  COperator(const COperator&) = delete;
  COperator& operator=(const COperator&) = delete;

  /// Lets the program run until `condition` holds; false: it did not for a minute.
  bool waitFor(const std::function<bool()>& condition);
  /// Lets the program take in all that was done until now.
  void settle();

  void moveTo(const QWidget& widget, QPointF at);
  void press(int button = 1);
  void release(int button = 1);
  void click(const QWidget& widget, QPointF at, int button = 1);
  /// In the middle.
  void click(const QWidget& widget);
  void turnWheel(int steps);
  /// "Shift+g", "Ctrl+Home": modifiers, then one key by its X name.
  void type(const QString& chord);
  void hold(const QString& key) { send(key, true); }
  void letGo(const QString& key) { send(key, false); }
  /// Digits, letters and punctuation, one after another.
  void typeText(const QString& text);

 private:
  void send(const QString& key, bool down);

  _XDisplay* display_;
};
