#pragma once

#include <QObject>
#include <QPalette>
#include <QPointer>
#include <QWidget>
#include <memory>

#include "toolkit/Controls.h"

/// What all presenters share: place, text of the hint, enabled, visible, font and colour, keyboard
/// focus and wheel. One for each control; outlives neither its control nor is outlived by its
/// subscription.
class CControlPresenter : public QObject {
 public:
  CControlPresenter(TControl& control, QWidget& widget);
  ~CControlPresenter() override;

  QWidget* widget() const { return widget_; }
  /// The root lies where its container puts it.
  void setRoot() { root_ = true; }
  /// Shows the control's state. Nothing that happens in here is an act of the operator.
  void update();

 protected:
  /// What only this kind of control has.
  virtual void updateKind() {}
  /// Focus policy of a tab stop and of anything else.
  virtual Qt::FocusPolicy focusPolicy(bool tabStop) const;
  bool eventFilter(QObject* object, QEvent* event) override;
  bool isUpdating() const { return updating_; }
  Qt::Alignment alignment() const;

 private:
  void updateColor();
  void updateFocus();
  bool onWheel(QWheelEvent& event);

  TControl& control_;
  QPointer<QWidget> widget_;
  bool updating_ = false;
  bool root_ = false;
  bool wasFocused_ = false;
  double wheel_ = 0.0;  ///< what is left of an incomplete step
};

// One maker for each kind; null when the control is of another. Kinds that derive from others are
// asked first (see Presentation.cpp).
std::unique_ptr<CControlPresenter> PresentButton(TControl& control, QWidget* parent);
std::unique_ptr<CControlPresenter> PresentEdit(TControl& control, QWidget* parent);
std::unique_ptr<CControlPresenter> PresentTrackBar(TControl& control, QWidget* parent);
std::unique_ptr<CControlPresenter> PresentChart(TControl& control, QWidget* parent);
std::unique_ptr<CControlPresenter> PresentArea(TControl& control, QWidget* parent);
