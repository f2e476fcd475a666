#pragma once

#include <functional>
#include <string>

#include "Desk.h"
#include "Viewer.h"

/// The mouse over the picture: what the tool does not take places, picks and drags points.
/// THREAD: the user-interface thread.
class CPointMouse {
 public:
  CPointMouse(CDesk& desk, CViewer& viewer) : desk_(desk), viewer_(viewer) {}
  void act(const SPointerAct& act);
  /// A drag under way is taken back.
  void cancel();

  std::function<void(const std::string&)> onRefusal;

 private:
  bool tellTool(const SPointerAct& act, int action);
  void press(const SPointerAct& act);
  void release();

  CDesk& desk_;
  CViewer& viewer_;
  bool dragging_ = false;
  bool magnified_ = false;  ///< the lens was on before the drag
  double grabX_ = 0.0;      ///< from the pointer to the point
  double grabY_ = 0.0;
};
