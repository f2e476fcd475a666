#pragma once

#include <string>
#include <vector>

/// One control of a window, as logic sees it: a name and states, nothing drawn. A control hangs
/// below its parent, which it must not outlive. THREAD: the user-interface thread.
class TControl {
 public:
  /// `parent` may be null; it is not owned and does not own.
  explicit TControl(std::string name, TControl* parent = nullptr);
  virtual ~TControl();
  TControl(const TControl&) = delete;
  TControl& operator=(const TControl&) = delete;

  const std::string& name() const { return name_; }
  TControl* parent() const { return parent_; }
  /// In order of creation, which is their order on the window.
  const std::vector<TControl*>& children() const { return children_; }
  bool isEnabled() const { return enabled_; }
  void setEnabled(bool enabled) { enabled_ = enabled; }

 private:
  std::string name_;
  TControl* parent_;
  std::vector<TControl*> children_;
  bool enabled_ = true;
};

/// One of several choices: the radio buttons below one parent exclude each other.
class TRadioButton : public TControl {
 public:
  using TControl::TControl;

  bool isChecked() const { return checked_; }
  /// Checking one unchecks its siblings.
  void setChecked(bool checked);

 private:
  bool checked_ = false;
};
