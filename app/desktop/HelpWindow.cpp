#include "HelpWindow.h"

CHelpWindow::CHelpWindow(QWidget* parent) : QTextBrowser(parent) {
  setObjectName("HelpWindow");
  setWindowFlag(Qt::Window);
  setSearchPaths({":/help"});
  setOpenExternalLinks(false);
  resize(760, 720);
}

void CHelpWindow::showPage(const QString& name) {
  setSource(QUrl("qrc:/help/" + name));
  setWindowTitle(documentTitle().isEmpty() ? QString("Stabilize help") : documentTitle());
  show();
  raise();
  activateWindow();
}
