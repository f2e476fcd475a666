#include "ui/TrackEditFrame.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace {

constexpr char RETURN = '\r';
constexpr char ESCAPE = 27;
constexpr char CTRL_Z = 26;

/// The leading digits; 0 when there are none. What no control could hold is the largest there is.
int leadingNumber(const std::string& text) {
  unsigned value = 0;  // which takes no sign
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  constexpr int LARGEST = std::numeric_limits<int>::max();
  if (error == std::errc::result_out_of_range || value > LARGEST) return LARGEST;
  return static_cast<int>(value);
}

}  // namespace

TTrackEditFrame::TTrackEditFrame(std::string name, TControl* parent)
    : TControl(std::move(name), parent),
      TitleLabel("TitleLabel", this),
      MinLabel("MinLabel", this),
      MaxLabel("MaxLabel", this),
      TrackBar("TrackBar", this),
      TrackBarDisabledPanel("TrackBarDisabledPanel", this),
      TrackBarMinPositionTick("TrackBarMinPositionTick", this),
      TrackBarMaxPositionTick("TrackBarMaxPositionTick", this),
      EditAlignmentPanel("EditAlignmentPanel", this),
      Edit("Edit", &EditAlignmentPanel),
      EditDisabledPanel("EditDisabledPanel", this),
      EditDisabledLabel("EditDisabledLabel", &EditDisabledPanel),
      NotifyWidget("NotifyWidget", this),
      DeferredUpdateTimer(500, [this] { onDeferredUpdate(); }) {
  MinLabel.setCaption("Min");
  MaxLabel.setCaption("Max");
  MaxLabel.setAlignment(EAlignment::right);
  TrackBarMinPositionTick.setColor(EColor::navy);
  TrackBarMaxPositionTick.setColor(EColor::navy);
  EditDisabledPanel.setColor(EColor::buttonFace);
  for (TControl* hidden : {static_cast<TControl*>(&TrackBarDisabledPanel),
                           static_cast<TControl*>(&TrackBarMinPositionTick),
                           static_cast<TControl*>(&TrackBarMaxPositionTick),
                           static_cast<TControl*>(&EditDisabledPanel)})
    hidden->setVisible(false);
  NotifyWidget.setTabStop(false);
  TrackBar.setPosition(50);
  showSelection();
  updateEditFromBar();

  TrackBar.onChange = [this] { onTrackBarChange(); };
  TrackBar.onEnter = [this] { TitleLabel.setBold(true); };
  TrackBar.onExit = [this] { TitleLabel.setBold(false); };
  Edit.onEnter = [this] { onEditEnter(); };
  Edit.onExit = [this] { onEditExit(); };
  Edit.onKeyPress = [this](char& key) { onEditKeyPress(key); };
  onWheel = [this](int steps) { return onMouseWheel(steps); };
  onResize = [this] { layOut(); };
  layOut();
}

void TTrackEditFrame::enable(bool enabled) {
  for (TControl* control : {static_cast<TControl*>(&TitleLabel), static_cast<TControl*>(&MinLabel),
                            static_cast<TControl*>(&MaxLabel), static_cast<TControl*>(&TrackBar),
                            static_cast<TControl*>(&Edit)})
    control->setEnabled(enabled);
  TrackBar.setSliderVisible(enabled);
  showSelection();
  TrackBarDisabledPanel.setVisible(!enabled);
  Edit.setColor(enabled ? EColor::window : EColor::buttonFace);
  EditDisabledPanel.setVisible(!enabled);
}

void TTrackEditFrame::setRange(int minimum, int maximum) {
  notificationsSuppressed_ = true;
  if (TrackBar.maximum() < minimum) {
    TrackBar.setMaximum(maximum);
    TrackBar.setMinimum(minimum);
  } else {
    TrackBar.setMinimum(minimum);
    TrackBar.setMaximum(maximum);
  }
  notificationsSuppressed_ = false;
  showSelection();
}

void TTrackEditFrame::setValue(int value) {
  notificationsSuppressed_ = true;
  TrackBar.setPosition(value);
  updateEditFromBar();
  notificationsSuppressed_ = false;
}

void TTrackEditFrame::showSelection() {
  TrackBar.setSelection(isFrameEnabled() ? TrackBar.minimum() : TrackBar.position(),
                        TrackBar.position());
}

void TTrackEditFrame::onTrackBarChange() {
  showSelection();
  if (!updateEditFromBar()) return;
  if (deferredUpdate_ && !notificationsSuppressed_ && Application()->isLeftButtonDown()) {
    DeferredUpdateTimer.setEnabled(true);
    return;
  }
  DeferredUpdateTimer.setEnabled(false);
  notify();
}

bool TTrackEditFrame::updateEditFromBar() {
  const std::string text = std::to_string(TrackBar.position());
  // The edit may read what was typed; what stands in for it reads what counts.
  EditDisabledLabel.setCaption(text);
  if (updating_) return false;
  if (text == Edit.text()) return false;
  updating_ = true;
  Edit.setText(text);
  updating_ = false;
  return true;
}

bool TTrackEditFrame::updateBarFromEdit(int value) {
  if (updating_ || value == TrackBar.position()) return false;
  const int before = TrackBar.position();
  updating_ = true;
  TrackBar.setPosition(value);
  updating_ = false;
  return TrackBar.position() != before;
}

void TTrackEditFrame::notify() {
  if (notificationsSuppressed_) return;
  NotifyWidget.click();
  changeHook.notify();
}

void TTrackEditFrame::onDeferredUpdate() {
  if (Application()->isLeftButtonDown()) return;
  DeferredUpdateTimer.setEnabled(false);
  notify();
}

void TTrackEditFrame::onEditEnter() {
  rememberedValue_ = TrackBar.position();
  Edit.selectAll();
  TitleLabel.setBold(true);
}

void TTrackEditFrame::onEditExit() {
  const int value = leadingNumber(Edit.text());
  Edit.setText(std::to_string(value));
  if (updateBarFromEdit(value)) notify();
  Edit.selectAll();
  rememberedValue_ = NO_VALUE;
  TitleLabel.setBold(false);
}

void TTrackEditFrame::onEditKeyPress(char& key) {
  const bool printable = key >= ' ' && key <= '~';
  if (key == RETURN) {
    key = 0;
    leaveEdit();
  } else if (key == ESCAPE || key == CTRL_Z) {
    key = 0;
    if (rememberedValue_ != NO_VALUE) {
      // What was typed goes first: were it the remembered number, the bar's way back to it would
      // change no text and not be told.
      updateEditFromBar();
      TrackBar.setPosition(rememberedValue_);
    }
    leaveEdit();
  } else if (printable && (key < '0' || key > '9')) {
    Application()->beep();
    key = 0;
  }
}

// Once: moving the focus alone would take the text a second time.
void TTrackEditFrame::leaveEdit() {
  if (Edit.isFocused()) {
    TrackBar.focus();
  } else {
    onEditExit();
    TrackBar.focus();
  }
}

bool TTrackEditFrame::onMouseWheel(int steps) {
  if (TrackBar.isEnabledInWindow() && steps != 0)
    TrackBar.setPosition(TrackBar.position() + (steps > 0 ? 1 : -1));
  return true;
}

// The title and the ends' labels take the room that they need; the bar has what is left.
void TTrackEditFrame::layOut() {
  constexpr int EDIT_WIDTH = 34;
  constexpr int EDIT_HEIGHT = 22;
  constexpr int LABEL_HEIGHT = 14;
  constexpr int GAP = 6;
  const int width = bounds().width;
  const int top = TitleLabel.caption().empty() ? 0 : LABEL_HEIGHT;
  const int barWidth = std::max(0, width - EDIT_WIDTH - GAP);
  const SBounds edit = {width - EDIT_WIDTH, top, EDIT_WIDTH, EDIT_HEIGHT};
  TitleLabel.setBounds({0, 0, width, top});
  TrackBar.setBounds({0, top, barWidth, EDIT_HEIGHT});
  TrackBarDisabledPanel.setBounds(TrackBar.bounds());
  TrackBarMinPositionTick.setBounds({0, top + EDIT_HEIGHT - 2, 2, 2});
  TrackBarMaxPositionTick.setBounds({std::max(0, barWidth - 2), top + EDIT_HEIGHT - 2, 2, 2});
  const int labelTop = top + EDIT_HEIGHT;
  MinLabel.setBounds({0, labelTop, barWidth / 2, LABEL_HEIGHT});
  MaxLabel.setBounds({barWidth / 2, labelTop, barWidth - barWidth / 2, LABEL_HEIGHT});
  EditAlignmentPanel.setBounds(edit);
  Edit.setBounds({0, 0, EDIT_WIDTH, EDIT_HEIGHT});
  EditDisabledPanel.setBounds(edit);
  EditDisabledLabel.setBounds({4, 4, EDIT_WIDTH - 8, LABEL_HEIGHT});
  NotifyWidget.setBounds({width, top, 0, EDIT_HEIGHT});
}
