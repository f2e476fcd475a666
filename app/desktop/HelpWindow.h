#pragma once

#include <QTextBrowser>

/// The tool's help pages. They name each other by relative links.
class CHelpWindow : public QTextBrowser {
 public:
  explicit CHelpWindow(QWidget* parent);
  /// Shows a page of ours by its file name.
  void showPage(const QString& name);
};
