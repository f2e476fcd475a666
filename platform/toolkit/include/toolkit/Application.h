#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "toolkit/Form.h"

enum class ECursor { normal, busy, appStarting };
enum class EConfirmation { proceed = 0, cancel = 1 };

/// What a dialog that asks for a file shows, and the name chosen in it.
struct SFileDialog {
  enum class EKind { open, save };
  EKind kind = EKind::open;
  std::string title;
  std::string defaultExtension;  ///< without the dot; added to a name that has none
  std::string filter;            ///< "text|pattern|text|pattern"
  std::string initialFolder;
  std::string fileName;
  bool pathMustExist = false;
  bool fileMustExist = false;
};

/// A timer of the application's clock. Off when it is made. THREAD: `setInterval` and `setEnabled`
/// any; everything else, and `onTimer`, the user-interface thread. The application that is set when
/// it is made outlives it.
class TTimer {
 public:
  explicit TTimer(int milliseconds, std::function<void()> onTimer = {});
  ~TTimer();
  TTimer(const TTimer&) = delete;
  TTimer& operator=(const TTimer&) = delete;

  int interval() const;
  /// Another interval than before begins now if the timer runs. REQUIRES: 1 or more.
  void setInterval(int milliseconds);
  bool isEnabled() const;
  /// Switching on what is on already changes nothing.
  void setEnabled(bool enabled);
  std::function<void()> onTimer;

 private:
  friend class TApplication;
  TApplication& application_;
  int interval_;              // guarded, as all below, by the application's timer lock
  std::int64_t dueTime_ = 0;  // on the application's clock
  bool enabled_ = false;
};

/// The seam to a window toolkit: what the tool asks of whichever application it runs in, and the
/// bookkeeping that every application needs. The class itself is an application without a screen
/// and without an operator: nothing is shown, every question is answered "proceed", no file is
/// chosen, modal forms are cancelled, and its clock stands still until somebody moves it.
/// THREAD: the user-interface thread, except `processMessages`, `setCursor`, `cursor` and
/// `milliseconds` (any).
class TApplication {
 public:
  TApplication() = default;
  virtual ~TApplication();
  TApplication(const TApplication&) = delete;
  TApplication& operator=(const TApplication&) = delete;

  virtual void beep();
  virtual void setCursor(ECursor cursor);
  virtual ECursor cursor() const { return cursor_; }
  virtual void showError(const std::string& text);
  virtual EConfirmation confirm(const std::string& question);
  /// The chosen path; empty when the operator cancelled.
  virtual std::string chooseFile(const SFileDialog& dialog);
  /// Shows a form until it has a modal result.
  virtual int runModal(TForm& form);
  /// Bounds of each monitor, the first one first.
  virtual std::vector<SBounds> monitors() const;
  virtual bool isShiftDown() const { return false; }
  virtual bool isLeftButtonDown() const { return false; }

  /// The clock of the timers. Who runs the application moves it, a live one by no more than a blink
  /// at a time: whatever falls due on the way runs, in its order, each at its time.
  std::int64_t milliseconds() const { return now_; }
  void advanceClock(int milliseconds);

  /// The windows there are, from the bottom of the z-order to its top.
  const std::vector<TForm*>& forms() const { return forms_; }
  void raise(TForm& form);
  /// The application's main window; null: none.
  TForm* mainForm() const { return mainForm_; }
  void setMainForm(TForm* form) { mainForm_ = form; }
  /// Queues a message; a window that goes takes its messages along.
  void postMessage(TForm& form, const SMessage& message);
  /// Hands every queued message to its window, those among them that are queued meanwhile.
  void deliverMessages();
  /// Lets a toolkit's own pending events through; called by processing threads once a frame.
  virtual void processMessages();

 private:
  friend class TForm;
  friend class TTimer;
  struct SQueued {
    TForm* form;
    SMessage message;
  };
  TTimer* takeDueTimer(std::int64_t until);

  std::vector<TForm*> forms_;
  std::vector<SQueued> queue_;
  TForm* mainForm_ = nullptr;
  mutable std::mutex timerLock_;
  std::vector<TTimer*> timers_;  // guarded by timerLock_
  std::atomic<std::int64_t> now_{0};
  std::atomic<ECursor> cursor_ = ECursor::normal;
};

/// The application object that this process' toolkit code uses. Never null: until one is set it is
/// one without a screen. The caller of `SetApplication` keeps the object alive and takes it back by
/// setting the previous one; null restores the one without a screen.
TApplication* Application();
void SetApplication(TApplication* application);

/// Modal dialogs through the application. The result of the confirmation is 0 for continue and
/// 1 for cancel.
void _QTXErrorDialog(const std::string& text);
int _QTXConfirmationDialog(const std::string& question);

/// Busy cursor for the time of a scope.
class CBusyCursor {
 public:
  CBusyCursor();
  ~CBusyCursor();
  CBusyCursor(const CBusyCursor&) = delete;
  CBusyCursor& operator=(const CBusyCursor&) = delete;

 private:
  ECursor previous_;
};
