#include "presenter/QtApplication.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>

#include "FormDialog.h"

namespace {

constexpr int TICK_MILLISECONDS = 10;

QStringList nameFilters(const std::string& filter) {
  const QStringList parts = QString::fromStdString(filter).split('|', Qt::SkipEmptyParts);
  QStringList filters;
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2)
    filters << QString("%1 (%2)").arg(parts[i],
                                      QString(parts[i + 1]).replace(';', ' ').replace("*.*", "*"));
  return filters;
}

void showCursor(ECursor cursor) {
  QGuiApplication::restoreOverrideCursor();
  if (cursor == ECursor::busy) QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  if (cursor == ECursor::appStarting) QGuiApplication::setOverrideCursor(Qt::BusyCursor);
}

}  // namespace

/// For the time of a dialog.
class CQtApplication::CModal {
 public:
  explicit CModal(CQtApplication& application) : application_(application) {
    ++application_.modalDepth_;
    if (application_.onModalBegin) application_.onModalBegin();
  }
  ~CModal() {
    --application_.modalDepth_;
    if (application_.onModalEnd) application_.onModalEnd();
  }
  CModal(const CModal&) = delete;
  CModal& operator=(const CModal&) = delete;

 private:
  CQtApplication& application_;
};

CQtApplication::CQtApplication() {
  QObject::connect(&timer_, &QTimer::timeout, &context_, [this] { tick(); });
  clock_.start();
  timer_.start(TICK_MILLISECONDS);
}

CQtApplication::~CQtApplication() {
  showCursor(ECursor::normal);
}

// A handler that opens a dialog does not return for long; the clock goes on without it.
void CQtApplication::tick() {
  if (ticking_ && modalDepth_ == 0) return;
  const std::int64_t now = clock_.elapsed();
  const int passed =
      static_cast<int>(std::min<std::int64_t>(now - std::exchange(told_, now), 1000));
  const bool outer = std::exchange(ticking_, true);
  advanceClock(passed);
  deliverMessages();
  ticking_ = outer;
}

void CQtApplication::beep() {
  QApplication::beep();
}

void CQtApplication::setCursor(ECursor cursor) {
  if (cursor_.exchange(cursor) == cursor) return;
  QMetaObject::invokeMethod(
      &context_, [cursor] { showCursor(cursor); }, Qt::AutoConnection);
}

void CQtApplication::showError(const std::string& text) {
  const CModal modal(*this);
  QMessageBox box(QMessageBox::Warning, QApplication::applicationDisplayName(),
                  QString::fromStdString(text).trimmed(), QMessageBox::Ok,
                  QApplication::activeWindow());
  box.setTextFormat(Qt::PlainText);
  box.exec();
}

EConfirmation CQtApplication::confirm(const std::string& question) {
  return ask(question, "Continue") ? EConfirmation::proceed : EConfirmation::cancel;
}

bool CQtApplication::ask(const std::string& question, const std::string& yes) {
  const CModal modal(*this);
  QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(),
                  QString::fromStdString(question).trimmed(), QMessageBox::Cancel,
                  QApplication::activeWindow());
  box.setTextFormat(Qt::PlainText);
  const QPushButton* const agree =
      box.addButton(QString::fromStdString(yes), QMessageBox::AcceptRole);
  box.setDefaultButton(QMessageBox::Cancel);
  box.exec();
  return box.clickedButton() == agree;
}

std::string CQtApplication::askText(const std::string& title, const std::string& label,
                                    const std::string& text) {
  const CModal modal(*this);
  bool given = false;
  const QString answer = QInputDialog::getText(
      QApplication::activeWindow(), QString::fromStdString(title), QString::fromStdString(label),
      QLineEdit::Normal, QString::fromStdString(text), &given);
  return given ? answer.toStdString() : std::string();
}

std::string CQtApplication::chooseFile(const SFileDialog& wanted) {
  const CModal modal(*this);
  QFileDialog dialog(QApplication::activeWindow(), QString::fromStdString(wanted.title));
  const bool open = wanted.kind == SFileDialog::EKind::open;
  dialog.setAcceptMode(open ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
  dialog.setFileMode(wanted.fileMustExist ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
  dialog.setNameFilters(nameFilters(wanted.filter));
  dialog.setDefaultSuffix(QString::fromStdString(wanted.defaultExtension));
  if (!wanted.initialFolder.empty())
    dialog.setDirectory(QString::fromStdString(wanted.initialFolder));
  if (!wanted.fileName.empty()) dialog.selectFile(QString::fromStdString(wanted.fileName));
  if (dialog.exec() != QDialog::Accepted) return {};
  return dialog.selectedFiles().value(0).toStdString();
}

int CQtApplication::runModal(TForm& form) {
  const CModal modal(*this);
  CFormDialog(form, QApplication::activeWindow()).exec();
  return form.modalResult();
}

std::vector<SBounds> CQtApplication::monitors() const {
  std::vector<SBounds> result;
  for (const QScreen* screen : QGuiApplication::screens()) {
    const QRect area = screen->geometry();
    result.push_back({area.left(), area.top(), area.width(), area.height()});
  }
  return result;
}

bool CQtApplication::isShiftDown() const {
  return QGuiApplication::queryKeyboardModifiers() & Qt::ShiftModifier;
}

bool CQtApplication::isLeftButtonDown() const {
  return QGuiApplication::mouseButtons() & Qt::LeftButton;
}
