#pragma once

#include <cstdint>

#include "toolkit/Controls.h"

class TApplication;

/// A message to a window, by number. Numbers and meaning of the two values are the windows'; the
/// toolkit itself has these two.
struct SMessage {
  unsigned number = 0;
  std::intptr_t wParam = 0;
  void* lParam = nullptr;
};
enum EToolkitMessage : unsigned { MESSAGE_CLOSE = 0x0010, MESSAGE_INIT_MENU = 0x0116 };

enum class EBorderStyle { none, single, sizeable, dialog, toolWindow, sizeableToolWindow };
enum class EFormStyle { normal, stayOnTop };
enum class EWindowState { normal, minimized, maximized };
enum class EFormPosition { designed, ownerCenter };

/// A window. Hidden when it is made. It belongs to the application that is set at that moment,
/// which outlives it. Its bounds lie on the desktop.
class TForm : public TControl {
 public:
  /// `owner` may be null; it outlives the form.
  explicit TForm(std::string name, TForm* owner = nullptr);
  ~TForm() override;

  TApplication& application() const { return application_; }
  TForm* owner() const { return owner_; }

  EBorderStyle borderStyle() const { return borderStyle_; }
  void setBorderStyle(EBorderStyle style) { assign(borderStyle_, style); }
  EFormStyle formStyle() const { return formStyle_; }
  void setFormStyle(EFormStyle style) { assign(formStyle_, style); }
  EWindowState windowState() const { return windowState_; }
  void setWindowState(EWindowState state) { assign(windowState_, state); }
  EFormPosition position() const { return position_; }
  void setPosition(EFormPosition position) { assign(position_, position); }
  /// The buttons of its title bar.
  bool hasSystemButtons() const { return systemButtons_; }
  void setSystemButtons(bool shown) { assign(systemButtons_, shown); }

  void show() { setVisible(true); }
  void hide() { setVisible(false); }
  /// Asks `onCloseQuery` and hides the window unless the answer is false.
  bool close();
  std::function<bool()> onCloseQuery;

  /// Shows the form through the application until it has a modal result, which is returned.
  int showModal();
  int modalResult() const { return modalResult_; }
  void setModalResult(int result) { assign(modalResult_, result); }

  /// A message sent or delivered to the window.
  virtual void handleMessage(const SMessage& message);

 private:
  TApplication& application_;
  TForm* owner_;
  EBorderStyle borderStyle_ = EBorderStyle::sizeable;
  EFormStyle formStyle_ = EFormStyle::normal;
  EWindowState windowState_ = EWindowState::normal;
  EFormPosition position_ = EFormPosition::designed;
  bool systemButtons_ = true;
  int modalResult_ = MODAL_NONE;
};
