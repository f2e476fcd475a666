#pragma once

#include <limits>
#include <string>

#include "support/Hook.h"
#include "toolkit/Application.h"

/// A slider and a small edit field that show the same whole number. The operator drags, turns the
/// wheel or types; the owner learns of it through `NotifyWidget`'s click handler and then through
/// `changeHook`. What the owner sets is not told to anybody. Typed text counts once it is left or
/// Return is pressed; Escape and Ctrl+Z take it back. THREAD: the user-interface thread.
class TTrackEditFrame : public TControl {
 public:
  explicit TTrackEditFrame(std::string name, TControl* parent = nullptr);

  TLabel TitleLabel;
  TLabel MinLabel;
  TLabel MaxLabel;
  TTrackBar TrackBar;
  TPanel TrackBarDisabledPanel;  ///< covers the bar while the frame is disabled
  TLabel TrackBarMinPositionTick;
  TLabel TrackBarMaxPositionTick;
  TPanel EditAlignmentPanel;
  TEdit Edit;
  TPanel EditDisabledPanel;  ///< stands in for the edit while the frame is disabled
  TLabel EditDisabledLabel;
  /// Its click handler is the owner's; every change of the operator's inverts it.
  TCheckBox NotifyWidget;
  TTimer DeferredUpdateTimer;
  CBHook changeHook;

  /// The whole frame goes grey or comes back; the frame as a control stays enabled.
  void enable(bool enabled);
  bool isFrameEnabled() const { return TrackBar.isEnabled(); }
  /// A value outside the new range is moved into it. REQUIRES: minimum <= maximum.
  void setRange(int minimum, int maximum);
  int minimum() const { return TrackBar.minimum(); }
  int maximum() const { return TrackBar.maximum(); }
  /// Clamped to the range.
  void setValue(int value);
  int value() const { return TrackBar.position(); }
  /// With it, a drag is told once, within half a second after the mouse button came up.
  void setDeferredUpdate(bool deferred) { deferredUpdate_ = deferred; }

 private:
  static constexpr int NO_VALUE = std::numeric_limits<int>::min();

  void onTrackBarChange();
  bool updateEditFromBar();
  bool updateBarFromEdit(int value);
  void showSelection();
  void notify();
  void onEditEnter();
  void onEditExit();
  void onEditKeyPress(char& key);
  void leaveEdit();
  bool onMouseWheel(int steps);
  void onDeferredUpdate();
  void layOut();

  int rememberedValue_ = NO_VALUE;  ///< when the edit got the focus
  bool updating_ = false;           ///< the frame itself writes the bar or the edit
  bool notificationsSuppressed_ = false;
  bool deferredUpdate_ = false;
};
