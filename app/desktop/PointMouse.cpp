#include "PointMouse.h"

#include <QCursor>
#include <cmath>

#include "KeyInput.h"

namespace {

constexpr double REACH = 9.0;  // viewer units around a point that still mean it

// The middle button moves the picture and gets nowhere else.
int buttonCode(Qt::MouseButton button) {
  switch (button) {
    case Qt::LeftButton: return 1;
    case Qt::RightButton: return 2;
    default: return 0;
  }
}

}  // namespace

bool CPointMouse::tellTool(const SPointerAct& act, int action) {
  CUserInput input;
  input.action = action;
  input.key = buttonCode(act.button);
  input.modifiers = ToolModifiers(act.modifiers);
  const QPoint pointer = QCursor::pos();
  input.x = pointer.x();
  input.y = pointer.y();
  input.imageX = static_cast<int>(std::lround(act.x));
  input.imageY = static_cast<int>(std::lround(act.y));
  if (action != CUserInput::ACTION_NONE) return desk_.shot().input(input);
  desk_.shot().pointerMoved(input);
  return false;
}

void CPointMouse::act(const SPointerAct& act) {
  if (!desk_.isOpen()) return;
  switch (act.kind) {
    case SPointerAct::EKind::press:
      if (!tellTool(act, CUserInput::ACTION_BUTTON_DOWN) && act.button == Qt::LeftButton)
        press(act);
      break;
    case SPointerAct::EKind::move:
      if (dragging_)
        desk_.points().moveTo(act.x + grabX_, act.y + grabY_);
      else
        tellTool(act, CUserInput::ACTION_NONE);
      break;
    case SPointerAct::EKind::release:
      if (dragging_)
        release();
      else
        tellTool(act, CUserInput::ACTION_BUTTON_UP);
      break;
  }
}

void CPointMouse::press(const SPointerAct& act) {
  if (act.onResult) {
    if (onRefusal) onRefusal("Points stand in the picture before: B goes there");
    return;
  }
  if (!desk_.isBusy()) desk_.shot().showPoints();
  CPointEditing& points = desk_.points();
  int index = points.pointAt(act.x, act.y, REACH / act.pixelScale);
  if (index >= 0) {
    points.select(index);
    const CTrackingArray& array = *desk_.session().editor()->trackingArray();
    const CTrackPoint& point = array.FindPoints(desk_.displayedFrame()).Entries().at(index);
    grabX_ = point.x - act.x;
    grabY_ = point.y - act.y;
  } else {
    const std::string refusal = points.refusal(act.x, act.y);
    if (!refusal.empty()) {
      if (onRefusal) onRefusal(refusal);
      return;
    }
    index = points.place(act.x, act.y);
    grabX_ = grabY_ = 0.0;
  }
  if (index < 0 || !points.beginMove(index)) return;
  dragging_ = true;
  magnified_ = viewer_.hasMagnifier();
  viewer_.setMagnifier(true);
}

void CPointMouse::release() {
  dragging_ = false;
  desk_.points().endMove();
  viewer_.setMagnifier(magnified_);
}

void CPointMouse::cancel() {
  if (!dragging_) return;
  desk_.points().cancelMove();
  release();
}
