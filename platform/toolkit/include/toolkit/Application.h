#pragma once

#include <atomic>
#include <string>

enum class ECursor { normal, busy, appStarting };
enum class EConfirmation { proceed = 0, cancel = 1 };

/// The seam to a window toolkit: what the tool asks of whichever application it runs in. The class
/// itself is the headless application: nothing is shown, every question is answered "proceed", no
/// file is chosen.
/// THREAD: the user-interface thread, except `processMessages`, `setCursor` and `cursor` (any: the
/// smoothing thread shows the busy cursor).
class TApplication {
 public:
  TApplication() = default;
  virtual ~TApplication();
  TApplication(const TApplication&) = delete;
  TApplication& operator=(const TApplication&) = delete;

  virtual void beep();
  virtual void setCursor(ECursor cursor);
  virtual ECursor cursor() const { return cursor_; }
  /// Lets pending window messages through; called by processing threads once a frame.
  virtual void processMessages();
  virtual void showError(const std::string& text);
  virtual EConfirmation confirm(const std::string& question);
  /// A file dialog with its title, a pattern of names ("*.points") and a name to begin with. The
  /// chosen path; empty when the operator cancelled.
  virtual std::string askFileToOpen(const std::string& title, const std::string& pattern,
                                    const std::string& suggestedName);
  virtual std::string askFileToSave(const std::string& title, const std::string& pattern,
                                    const std::string& suggestedName);

 private:
  std::atomic<ECursor> cursor_ = ECursor::normal;
};

/// The application object that this process' toolkit code uses. Never null: until one is set it is
/// the headless one. The caller of `SetApplication` keeps the object alive and takes it back by
/// setting the previous one; null restores the headless one.
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
