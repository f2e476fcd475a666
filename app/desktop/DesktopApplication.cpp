#include "DesktopApplication.h"

#include <exception>

bool CDesktopApplication::notify(QObject* receiver, QEvent* event) {
  try {
    return QApplication::notify(receiver, event);
  } catch (const std::exception& error) {
    tell(QString::fromUtf8(error.what()));
  } catch (...) {
    tell("unknown");
  }
  return false;
}

void CDesktopApplication::tell(const QString& text) {
  if (told_.contains(text)) return;
  told_.insert(text);
  qCritical("%s", qPrintable(text));
  if (onException) onException(text);
}
