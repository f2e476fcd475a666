#include "ListDock.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace {

enum EColumn { COLUMN_NUMBER, COLUMN_STATE, COLUMN_FRAMES, COLUMN_INPUT, COLUMN_OUTPUT };

}  // namespace

CListDock::CListDock(const CProcessListFile& file, QWidget* parent)
    : QDockWidget("Process list", parent), file_(file) {
  setObjectName("ProcessList");
  auto* const content = new QWidget(this);
  auto* const column = new QVBoxLayout(content);
  column->setContentsMargins(6, 4, 6, 4);
  list_ = new QTreeWidget(content);
  list_->setObjectName("Entries");
  list_->setRootIsDecorated(false);
  list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list_->setHeaderLabels({"Number", "State", "Frames", "Shot", "Output"});
  list_->setToolTip("Double-click opens an entry again");
  column->addWidget(list_);
  auto* const row = new QHBoxLayout;
  const auto add = [&](const char* name, const char* text, const char* hint) {
    auto* const button = new QPushButton(text, content);
    button->setObjectName(name);
    button->setToolTip(hint);
    row->addWidget(button);
    return button;
  };
  run_ = add("RunList", "Run", "Track and render what waits, in a process of its own");
  stop_ = add("StopList", "Stop", "Stop after what is written; the entry can go on later");
  reset_ = add("ResetEntry", "Reset", "Let the selected entries wait again");
  remove_ = add("RemoveEntry", "Remove", "Take the selected entries out of the list");
  state_ = new QLabel(content);
  row->addWidget(state_, 1);
  column->addLayout(row);
  setWidget(content);
  QObject::connect(run_, &QPushButton::clicked, this, [this] { run(); });
  QObject::connect(stop_, &QPushButton::clicked, this, [this] { stop(); });
  QObject::connect(reset_, &QPushButton::clicked, this, [this] { resetSelected(); });
  QObject::connect(remove_, &QPushButton::clicked, this, [this] { removeSelected(); });
  QObject::connect(list_, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) {
    try {
      CProcessList list = file_.read();
      const SQueuedShot* const shot = list.find(item->text(COLUMN_NUMBER).toInt());
      if (shot && onOpenEntry) onOpenEntry(*shot);
    } catch (const CProcessListError& error) {
      if (onFailure) onFailure(error.what());
    }
  });
  QObject::connect(list_, &QTreeWidget::itemSelectionChanged, this, [this] { showState(); });
  process_.setProcessChannelMode(QProcess::MergedChannels);
  QObject::connect(&process_, &QProcess::readyRead, this, [this] { takeOutput(); });
  QObject::connect(&process_, &QProcess::stateChanged, this, [this] { reload(); });
  QObject::connect(&process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart && onFailure)
      onFailure("The list cannot be run: " + process_.program() + ": " + process_.errorString());
  });
  auto* const removeKey = new QAction(this);
  removeKey->setShortcut(QKeySequence::Delete);
  removeKey->setShortcutContext(Qt::WidgetShortcut);
  QObject::connect(removeKey, &QAction::triggered, remove_, &QPushButton::click);
  list_->addAction(removeKey);
}

// The shot that is being made ends as an interrupted one.
CListDock::~CListDock() {
  process_.disconnect();
  if (process_.state() == QProcess::NotRunning) return;
  process_.terminate();
  process_.waitForFinished();
}

void CListDock::reload() {
  const std::vector<int> chosen = selected();
  list_->clear();
  try {
    if (file_.exists()) {
      for (const CProcessList list = file_.read(); const SQueuedShot& shot : list.shots()) {
        auto* const item = new QTreeWidgetItem(
            list_, {QString::number(shot.number), QString::fromStdString(ToText(shot.state)),
                    QString("%1-%2").arg(*shot.options.in).arg(*shot.options.out - 1),
                    QString::fromStdString(shot.options.input),
                    QString::fromStdString(shot.options.output)});
        item->setSelected(std::find(chosen.begin(), chosen.end(), shot.number) != chosen.end());
        if (!shot.message.empty())
          item->setToolTip(COLUMN_STATE, QString::fromStdString(shot.message));
      }
    }
  } catch (const CProcessListError& error) {
    if (onFailure) onFailure(error.what());
  }
  for (const int column : {COLUMN_NUMBER, COLUMN_STATE, COLUMN_FRAMES})
    list_->resizeColumnToContents(column);
  showState();
}

std::vector<int> CListDock::selected() const {
  std::vector<int> numbers;
  for (const QTreeWidgetItem* item : list_->selectedItems())
    numbers.push_back(item->text(COLUMN_NUMBER).toInt());
  return numbers;
}

void CListDock::showState() {
  const bool running = process_.state() != QProcess::NotRunning;
  run_->setEnabled(!running && list_->topLevelItemCount() > 0);
  stop_->setEnabled(running);
  remove_->setEnabled(!running && !list_->selectedItems().isEmpty());
  reset_->setEnabled(!running && !list_->selectedItems().isEmpty());
}

void CListDock::run() {
  state_->setText("Running");
  process_.start(QDir(QCoreApplication::applicationDirPath()).filePath("stabilize"),
                 {"queue", "run", QString::fromStdString(file_.path())});
}

void CListDock::stop() {
  process_.terminate();
}

void CListDock::takeOutput() {
  const QStringList lines = QString::fromUtf8(process_.readAll()).split('\n', Qt::SkipEmptyParts);
  if (!lines.isEmpty()) state_->setText(lines.back().section('\r', -1).left(160));
  reload();
}

void CListDock::change(const std::function<void(CProcessList&)>& edit) {
  try {
    file_.change(edit);
  } catch (const CProcessListError& error) {
    if (onFailure) onFailure(error.what());
  }
  reload();
}

void CListDock::removeSelected() {
  const std::vector<int> numbers = selected();
  change([&](CProcessList& list) {
    for (const int number : numbers) list.remove(number);
  });
}

void CListDock::resetSelected() {
  const std::vector<int> numbers = selected();
  change([&](CProcessList& list) {
    for (const int number : numbers)
      if (SQueuedShot* const shot = list.find(number)) LetWaitAgain(*shot);
  });
}
