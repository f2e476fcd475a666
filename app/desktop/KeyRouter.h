#pragma once

#include <QObject>
#include <QPoint>
#include <QTimer>
#include <functional>

#include "ToolObj/UserInput.h"

class QKeyEvent;
class QWidget;

/// Brings the keys of a window to whom they belong, in this order: the edit that is being typed
/// into; the tool; the focused control, for the keys that work it; the host. Menu shortcuts that
/// the tool wants for itself do not fire. A modifier that comes up over another window is told,
/// too, once this one has the keyboard again: a dialog leaves none of them held. Key repeats reach
/// only the host and edits: a held key is one command. THREAD: the user-interface thread.
class CKeyRouter : public QObject {
 public:
  /// Watches the application; only keys of `window` are routed. The window outlives this.
  explicit CKeyRouter(QWidget& window);
  ~CKeyRouter() override;

  /// True: the tool used it.
  std::function<bool(CUserInput&)> toTool;
  /// The tool has a command for it.
  std::function<bool(const CUserInput&)> toolKnows;
  /// True: the host used it.
  std::function<bool(const QKeyEvent&)> toHost;

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  bool isOurs(QObject* object) const;
  bool route(QKeyEvent& event);
  void rememberHeld(const CUserInput& input);
  void releaseHeld();
  void tellUp(int key);
  void tellPlainShift(const CUserInput& up);

  QWidget& window_;
  int held_ = 0;  ///< modifiers that the tool was told of going down, and not yet of coming up
  bool shiftDue_ = false;  ///< Shift came up while others were held
  QTimer heldTimer_;
};
