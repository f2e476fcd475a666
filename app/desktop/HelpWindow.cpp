#include "HelpWindow.h"

#include <QShortcut>

CHelpWindow::CHelpWindow(QWidget* parent) : QTextBrowser(parent) {
  setObjectName("HelpWindow");
  setWindowFlag(Qt::Window);
  setSearchPaths({":/help"});
  setOpenExternalLinks(false);
  resize(760, 720);
  connect(this, &QTextBrowser::sourceChanged, this, [this] {
    setWindowTitle(documentTitle().isEmpty() ? QString("Stabilize help") : documentTitle());
  });
  for (const char* key : {"Esc", "Ctrl+W"})
    connect(new QShortcut(QKeySequence(key), this), &QShortcut::activated, this, &QWidget::close);
}

void CHelpWindow::showPage(const QString& name) {
  setSource(QUrl("qrc:/help/" + name));
  show();
  raise();
  activateWindow();
}
