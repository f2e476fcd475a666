#pragma once

#include <QApplication>
#include <QSet>
#include <QString>
#include <functional>

/// Qt's application in which an exception of a handler is told, and the program lives on: the
/// points of a shot are not lost to a thread that could not be started. THREAD: the user-interface
/// thread.
class CDesktopApplication : public QApplication {
 public:
  using QApplication::QApplication;
  bool notify(QObject* receiver, QEvent* event) override;

  /// Each text is told once: what fails may fail with every tick.
  std::function<void(const QString&)> onException;

 private:
  void tell(const QString& text);

  QSet<QString> told_;
};
