#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/Hook.h"
#include "support/Timecode.h"

/// The controls of a window, as its logic sees them: names, states and handlers, nothing drawn. A
/// presenter shows them with whatever toolkit the host has; without one the same logic runs, and is
/// tested, without a screen.
///
/// Two directions, and they do not mix. The program sets a state with a setter; no handler runs,
/// except where a setter says so. The operator acts: click, type, wheel, focus; handlers run.
/// Presenters and tests act through the operator's operations alone.
///
/// A control hangs below its parent, which outlives it and does not own it. Every change of what
/// can be seen of a control notifies its `changedHook`. THREAD: the user-interface thread.

/// Where a control lies in its parent, or a form on the desktop. Pixels.
struct SBounds {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  int right() const { return left + width; }
  int bottom() const { return top + height; }
  friend bool operator==(const SBounds&, const SBounds&) = default;
};

enum class EColor { standard, buttonFace, window, cream, navy, blue, yellow };
enum class EAlignment { left, center, right };

/// Any control; by itself a bare area.
class TControl {
 public:
  explicit TControl(std::string name, TControl* parent = nullptr);
  virtual ~TControl();
  TControl(const TControl&) = delete;
  TControl& operator=(const TControl&) = delete;

  const std::string& name() const { return name_; }
  TControl* parent() const { return parent_; }
  /// In order of creation: the tab order, and from the back to the front.
  const std::vector<TControl*>& children() const { return children_; }

  /// "&" stands before the key that reaches the control, "&&" for an ampersand.
  const std::string& caption() const { return caption_; }
  void setCaption(const std::string& caption) { assign(caption_, caption); }
  /// Shown while the pointer rests on the control. Behind a "|": a longer one.
  const std::string& hint() const { return hint_; }
  void setHint(const std::string& hint) { assign(hint_, hint); }
  /// A number that belongs to the control's owner.
  int tag() const { return tag_; }
  void setTag(int tag) { tag_ = tag; }
  const SBounds& bounds() const { return bounds_; }
  void setBounds(const SBounds& bounds);
  EColor color() const { return color_; }
  void setColor(EColor color) { assign(color_, color); }
  bool isBold() const { return bold_; }
  void setBold(bool bold) { assign(bold_, bold); }
  EAlignment alignment() const { return alignment_; }
  void setAlignment(EAlignment alignment) { assign(alignment_, alignment); }

  /// The control's own state, whatever its parents are.
  bool isEnabled() const { return enabled_; }
  /// What is disabled or hidden loses the focus before, and so does everything in it.
  void setEnabled(bool enabled);
  bool isVisible() const { return visible_; }
  void setVisible(bool visible);
  /// The same along the whole chain of parents.
  bool isEnabledInWindow() const;
  bool isShowing() const;
  /// What an operator can act on: both.
  bool isOperable() const { return isEnabledInWindow() && isShowing(); }

  /// Reached by the Tab key.
  bool isTabStop() const { return tabStop_; }
  void setTabStop(bool tabStop) { assign(tabStop_, tabStop); }

  /// Gives the control the keyboard focus: the one that had it leaves first. A control that is not
  /// operable does not take it.
  void focus();
  bool isFocused() const;
  /// A turn of the wheel, up above 0. Goes to the control and then its parents until one takes it.
  bool wheel(int steps);

  std::function<void()> onEnter;  ///< the focus came
  std::function<void()> onExit;   ///< the focus went; what was typed is taken
  std::function<bool(int steps)> onWheel;
  std::function<void()> onResize;

  CBHook changedHook;

 protected:
  void changed() { changedHook.notify(); }
  template <typename T>
  void assign(T& field, const T& value) {
    if (field == value) return;
    field = value;
    changed();
  }
  /// The focus goes.
  virtual void leave();

 private:
  friend void DropFocus();
  void dropFocusWithin() const;
  std::string name_;
  TControl* parent_;
  std::vector<TControl*> children_;
  std::string caption_;
  std::string hint_;
  SBounds bounds_;
  EColor color_ = EColor::standard;
  EAlignment alignment_ = EAlignment::left;
  int tag_ = 0;
  bool bold_ = false;
  bool enabled_ = true;
  bool visible_ = true;
  bool tabStop_ = false;
};

/// The control that has the keyboard focus; null: none of ours.
TControl* FocusedControl();
/// The focus went elsewhere.
void DropFocus();

enum class EBevel { none, raised };

class TPanel : public TControl {
 public:
  using TControl::TControl;
  EBevel innerBevel() const { return innerBevel_; }
  void setInnerBevel(EBevel bevel) { assign(innerBevel_, bevel); }

 private:
  EBevel innerBevel_ = EBevel::none;
};

class TGroupBox : public TControl {
 public:
  using TControl::TControl;
};

class TLabel : public TControl {
 public:
  using TControl::TControl;
};

/// What one clicks.
class TButtonControl : public TControl {
 public:
  explicit TButtonControl(std::string name, TControl* parent = nullptr);
  /// A click, by the operator or by the program: nothing happens while the control, or what it
  /// stands in, is disabled. Otherwise its own state changes first, then `onClick` runs.
  void click();
  std::function<void()> onClick;

 protected:
  /// False: the click changes nothing and is not told.
  virtual bool takeClick() { return true; }
};

enum EModalResult { MODAL_NONE = 0, MODAL_OK = 1, MODAL_CANCEL = 2 };

/// A push button. In a modal form its result, unless it is MODAL_NONE, closes the form.
class TButton : public TButtonControl {
 public:
  using TButtonControl::TButtonControl;
  int modalResult() const { return modalResult_; }
  void setModalResult(int result) { modalResult_ = result; }
  bool isDefault() const { return default_; }
  void setDefault(bool isDefault) { assign(default_, isDefault); }
  /// Answers the Escape key.
  bool isCancel() const { return cancel_; }
  void setCancel(bool isCancel) { assign(cancel_, isCancel); }

 protected:
  bool takeClick() override;

 private:
  int modalResult_ = MODAL_NONE;
  bool default_ = false;
  bool cancel_ = false;
};

/// A small button, which may stay down and may be held.
class TToolButton : public TButtonControl {
 public:
  using TButtonControl::TButtonControl;
  bool isDown() const { return down_; }
  void setDown(bool down) { assign(down_, down); }
  /// A presenter shows it as one that stays down; what it stays down for is its owner's.
  bool staysDown() const { return staysDown_; }
  void setStaysDown(bool staysDown) { assign(staysDown_, staysDown); }
  /// The mouse button goes down on it and comes up again; coming up is also a click. A control that
  /// is not enabled is not pressed.
  void press();
  void release();
  std::function<void()> onPress;
  std::function<void()> onRelease;

 private:
  bool down_ = false;
  bool staysDown_ = false;
  bool pressed_ = false;
};

/// A click inverts it.
class TCheckBox : public TButtonControl {
 public:
  using TButtonControl::TButtonControl;
  bool isChecked() const { return checked_; }
  void setChecked(bool checked) { assign(checked_, checked); }

 protected:
  bool takeClick() override;

 private:
  bool checked_ = false;
};

/// One of several choices: the radio buttons below one parent exclude each other. A click on the
/// one that is chosen is none.
class TRadioButton : public TButtonControl {
 public:
  using TButtonControl::TButtonControl;
  bool isChecked() const { return checked_; }
  /// Checking one unchecks its siblings.
  void setChecked(bool checked);

 protected:
  bool takeClick() override;

 private:
  bool checked_ = false;
};

/// A line of text. Keys are characters: '\b' back, '\r' Return, 27 Escape, 26 Ctrl+Z.
class TEdit : public TControl {
 public:
  explicit TEdit(std::string name, TControl* parent = nullptr);
  const std::string& text() const { return text_; }
  void setText(const std::string& text);
  /// The next character replaces what is selected.
  bool isAllSelected() const { return allSelected_; }
  void selectAll() { assign(allSelected_, true); }
  void selectNone() { assign(allSelected_, false); }

  /// A key of the operator: `onKeyPress` may change it, or swallow it by making it 0; what is left
  /// of it edits the text at its end. Ignored while the edit is not operable.
  void type(char key);
  /// The same without the editing, for a presenter whose own control edits: the key to edit with,
  /// or 0.
  char filterKey(char key);
  std::function<void(char& key)> onKeyPress;

 private:
  std::string text_;
  bool allSelected_ = false;
};

/// A timecode of the clip. Text that was typed is taken by `commit`, which leaving it does too.
class VTimeCodeEdit : public TControl {
 public:
  explicit VTimeCodeEdit(std::string name, TControl* parent = nullptr);
  const CTimecode& timecode() const { return timecode_; }
  void setTimecode(const CTimecode& timecode);
  /// What the field reads: the timecode, or what is being typed.
  const std::string& text() const { return text_; }
  void typeText(const std::string& text);
  /// Typed text becomes the timecode, at the rate of the one before. What is no timecode is
  /// dropped.
  void commit();

 protected:
  void leave() override;

 private:
  CTimecode timecode_;
  std::string text_;
};

/// Two digits with arrows: a number from 0 to its maximum.
class TCSpinEdit : public TControl {
 public:
  explicit TCSpinEdit(std::string name, TControl* parent = nullptr);
  int value() const { return value_; }
  void setValue(int value);
  int maximum() const { return maximum_; }
  void setMaximum(int maximum);

 private:
  int value_ = 0;
  int maximum_ = 99;
};

/// A drop-down list.
class TComboBox : public TControl {
 public:
  explicit TComboBox(std::string name, TControl* parent = nullptr);
  const std::vector<std::string>& items() const { return items_; }
  void setItems(const std::vector<std::string>& items) { assign(items_, items); }
  /// -1: none of the list.
  int itemIndex() const;
  void setItemIndex(int index);
  const std::string& text() const { return text_; }
  void setText(const std::string& text) { assign(text_, text); }

 private:
  std::vector<std::string> items_;
  std::string text_;
};

/// A slider. REQUIRES: minimum() <= maximum() at any moment; who moves both moves them in an order
/// that keeps it.
class TTrackBar : public TControl {
 public:
  explicit TTrackBar(std::string name, TControl* parent = nullptr);
  int minimum() const { return minimum_; }
  int maximum() const { return maximum_; }
  void setMinimum(int minimum);
  void setMaximum(int maximum);
  int position() const { return position_; }
  /// Clamped to the range. `onChange` runs when the position changes, whoever changes it, a change
  /// of the range among them.
  void setPosition(int position);
  std::function<void()> onChange;

  int pageSize() const { return pageSize_; }
  void setPageSize(int pageSize) { assign(pageSize_, pageSize); }
  int tickFrequency() const { return tickFrequency_; }
  void setTickFrequency(int frequency) { assign(tickFrequency_, frequency); }
  /// The part of the bar that is shown as filled.
  int selectionStart() const { return selectionStart_; }
  int selectionEnd() const { return selectionEnd_; }
  void setSelection(int start, int end);
  bool isSliderVisible() const { return sliderVisible_; }
  void setSliderVisible(bool visible) { assign(sliderVisible_, visible); }

 private:
  int minimum_ = 0;
  int maximum_ = 100;
  int position_ = 0;
  int pageSize_ = 5;
  int tickFrequency_ = 5;
  int selectionStart_ = 0;
  int selectionEnd_ = 0;
  bool sliderVisible_ = true;
};

/// A row of texts at the foot of a window.
class TStatusBar : public TControl {
 public:
  struct SPanel {
    std::string text;
    int width = 0;
    friend bool operator==(const SPanel&, const SPanel&) = default;
  };
  using TControl::TControl;
  const std::vector<SPanel>& panels() const { return panels_; }
  void setPanels(const std::vector<SPanel>& panels) { assign(panels_, panels); }
  /// REQUIRES: such a panel.
  void setPanelText(int panel, const std::string& text) { assign(panels_.at(panel).text, text); }

 private:
  std::vector<SPanel> panels_;
};

enum class EMarker { none, circle, diamond };

/// A chart of lines over one left axis and one bottom axis. Scrolling and zooming are the
/// presenter's.
class TLineChart : public TControl {
 public:
  struct SPoint {
    double x = 0.0;
    double y = 0.0;
    std::string label;
    friend bool operator==(const SPoint&, const SPoint&) = default;
  };
  struct SSeries {
    std::string title;
    EMarker marker = EMarker::none;
    EColor markerColor = EColor::standard;
    std::vector<SPoint> points;
  };
  struct SLeftAxis {
    std::string caption;
    bool automatic = true;
    double minimum = 0.0;
    double maximum = 0.0;
    friend bool operator==(const SLeftAxis&, const SLeftAxis&) = default;
  };
  using TControl::TControl;

  /// Returns the series' index.
  int addSeries(const std::string& title, EMarker marker, EColor markerColor);
  const std::vector<SSeries>& series() const { return series_; }
  /// REQUIRES, both: such a series.
  void clear(int series);
  void addPoint(int series, double x, double y, const std::string& label);

  const SLeftAxis& leftAxis() const { return leftAxis_; }
  void setLeftAxis(const SLeftAxis& axis) { assign(leftAxis_, axis); }
  /// REQUIRES, both: the minimum stays below the maximum.
  void setLeftMinimum(double minimum) { assign(leftAxis_.minimum, minimum); }
  void setLeftMaximum(double maximum) { assign(leftAxis_.maximum, maximum); }
  double bottomIncrement() const { return bottomIncrement_; }
  void setBottomIncrement(double increment) { assign(bottomIncrement_, increment); }
  bool isTitleVisible() const { return titleVisible_; }
  void setTitleVisible(bool visible) { assign(titleVisible_, visible); }
  bool isLegendVisible() const { return legendVisible_; }
  void setLegendVisible(bool visible) { assign(legendVisible_, visible); }

 private:
  std::vector<SSeries> series_;
  SLeftAxis leftAxis_;
  double bottomIncrement_ = 0.0;
  bool titleVisible_ = true;
  bool legendVisible_ = true;
};
