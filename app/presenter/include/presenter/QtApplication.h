#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>

#include "toolkit/Application.h"

/// The toolkit's application on Qt: its dialogs, pointer, keyboard and clock are the screen's.
/// Needs a QApplication, which outlives it. THREAD: as TApplication.
class CQtApplication : public TApplication {
 public:
  CQtApplication();
  ~CQtApplication() override;

  void beep() override;
  void setCursor(ECursor cursor) override;
  ECursor cursor() const override { return cursor_; }
  void showError(const std::string& text) override;
  EConfirmation confirm(const std::string& question) override;
  std::string chooseFile(const SFileDialog& dialog) override;
  int runModal(TForm& form) override;
  std::vector<SBounds> monitors() const override;
  bool isShiftDown() const override;
  bool isLeftButtonDown() const override;

  /// A question of the program's own, with the text of the button that agrees.
  bool ask(const std::string& question, const std::string& yes);
  /// A line of text that the operator may change; empty: they gave it up, or left nothing.
  std::string askText(const std::string& title, const std::string& label, const std::string& text);

  /// Dialogs that are open now, one within the other. While one is, its caller is in the middle of
  /// something.
  int modalDepth() const { return modalDepth_; }
  std::function<void()> onModalBegin;
  std::function<void()> onModalEnd;

 private:
  class CModal;
  void tick();

  QObject context_;  ///< calls from other threads are queued to it
  QTimer timer_;
  QElapsedTimer clock_;
  std::int64_t told_ = 0;  ///< of the clock, in milliseconds
  bool ticking_ = false;
  int modalDepth_ = 0;
  std::atomic<ECursor> cursor_ = ECursor::normal;
};
