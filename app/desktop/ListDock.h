#pragma once

#include <QDockWidget>
#include <QProcess>
#include <QTreeWidget>
#include <functional>

#include "session/ProcessListFile.h"

class QLabel;
class QPushButton;

/// The process list: shots with what was captured of them. They are run by the command line, in a
/// process of its own, so that the window stays free and neither takes the other down.
/// THREAD: the user-interface thread.
class CListDock : public QDockWidget {
 public:
  CListDock(const CProcessListFile& file, QWidget* parent);
  ~CListDock() override;

  void reload();
  std::function<void(const SQueuedShot&)> onOpenEntry;
  std::function<void(const QString&)> onFailure;

 private:
  void run();
  void stop();
  void removeSelected();
  void resetSelected();
  void change(const std::function<void(CProcessList&)>& edit);
  void showState();
  std::vector<int> selected() const;
  void takeOutput();

  const CProcessListFile& file_;
  QTreeWidget* list_ = nullptr;
  QPushButton* run_ = nullptr;
  QPushButton* stop_ = nullptr;
  QPushButton* remove_ = nullptr;
  QPushButton* reset_ = nullptr;
  QLabel* state_ = nullptr;
  QProcess process_;
};
