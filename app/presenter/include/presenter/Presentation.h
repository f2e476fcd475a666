#pragma once

#include <QPointer>
#include <QWidget>
#include <memory>
#include <vector>

#include "toolkit/Controls.h"

class CControlPresenter;

/// Shows a control and everything below it with Qt widgets and keeps both in step: what the program
/// sets is seen, what the operator does reaches the control by the operator's operations. Every
/// widget is named after its control, lies where its control lies, and shows its hint as a tool
/// tip; tab stops follow the order of the controls.
///
/// The tree is taken as it is at construction. The presentation goes before its controls; it owns
/// its widgets, unless a parent of Qt's has taken them along. THREAD: the user-interface thread.
class CPresentation {
 public:
  explicit CPresentation(TControl& root, QWidget* parent = nullptr);
  ~CPresentation();
  CPresentation(const CPresentation&) = delete;
  CPresentation& operator=(const CPresentation&) = delete;

  QWidget* widget() const { return widget_; }

 private:
  QWidget* present(TControl& control, QWidget* parent);

  std::vector<std::unique_ptr<CControlPresenter>> presenters_;
  QPointer<QWidget> widget_;
};

/// The field that is being typed into is left and so says what it holds; to be called before
/// anything that takes no focus from it acts: a push button, a menu. THREAD: as CPresentation.
void LeaveEdit();
