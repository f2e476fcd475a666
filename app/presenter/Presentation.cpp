#include "presenter/Presentation.h"

#include "ControlPresenter.h"

CPresentation::CPresentation(TControl& root, QWidget* parent) {
  widget_ = present(root, parent);
  // Layouts of controls reckon with a text of this height.
  constexpr int TEXT_PIXELS = 12;
  QFont font = widget_->font();
  font.setPixelSize(TEXT_PIXELS);
  widget_->setFont(font);
  presenters_.front()->setRoot();
  for (const auto& presenter : presenters_) presenter->update();
  widget_->setMinimumSize(root.bounds().width, root.bounds().height);
}

CPresentation::~CPresentation() {
  presenters_.clear();
  delete widget_;
}

QWidget* CPresentation::present(TControl& control, QWidget* parent) {
  std::unique_ptr<CControlPresenter> presenter;
  for (const auto make : {PresentButton, PresentEdit, PresentTrackBar, PresentChart, PresentArea})
    if (!presenter) presenter = make(control, parent);
  QWidget* const widget = presenter->widget();
  presenters_.push_back(std::move(presenter));
  for (TControl* child : control.children()) present(*child, widget);
  return widget;
}
