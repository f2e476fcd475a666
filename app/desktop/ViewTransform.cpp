#include "ViewTransform.h"

#include <algorithm>
#include <cmath>

void CViewTransform::setPicture(QSize picture) {
  picture_ = picture;
  fit();
}

void CViewTransform::setViewer(QSizeF viewer, double devicePixelRatio) {
  const QPointF middle = toPicture({viewer_.width() / 2.0, viewer_.height() / 2.0});
  viewer_ = viewer;
  ratio_ = devicePixelRatio;
  if (fitted_)
    applyFit();
  else
    centreOn(middle);
}

void CViewTransform::fit() {
  fitted_ = true;
  applyFit();
}

void CViewTransform::applyFit() {
  if (picture_.isEmpty() || viewer_.isEmpty()) return;
  zoom_ = std::clamp(
      std::min(viewer_.width() / picture_.width(), viewer_.height() / picture_.height()) * ratio_,
      SMALLEST, LARGEST);
  centreOn({picture_.width() / 2.0, picture_.height() / 2.0});
}

void CViewTransform::zoomTo(double zoom, QPointF at) {
  const QPointF place = toPicture(at);
  zoom_ = std::clamp(zoom, SMALLEST, LARGEST);
  origin_ = at - place * scale();
  fitted_ = false;
  keepInSight();
}

void CViewTransform::pan(QPointF by) {
  origin_ += by;
  fitted_ = false;
  keepInSight();
}

void CViewTransform::centreOn(QPointF place) {
  origin_ = QPointF(viewer_.width() / 2.0, viewer_.height() / 2.0) - place * scale();
  keepInSight();
}

// A strip of the picture always stays in the viewer. Pictures begin on whole device pixels: their
// pixels are sharp at 100 %.
void CViewTransform::keepInSight() {
  constexpr double STRIP = 32.0;
  const auto keep = [this](double origin, double length, double viewer) {
    const double low = std::min(STRIP - length, 0.0);
    const double high = std::max(viewer - STRIP, viewer - length);
    return std::round(std::clamp(origin, low, std::max(low, high)) * ratio_) / ratio_;
  };
  origin_ = {keep(origin_.x(), picture_.width() * scale(), viewer_.width()),
             keep(origin_.y(), picture_.height() * scale(), viewer_.height())};
}

QPointF CViewTransform::toPicture(QPointF viewer) const {
  return (viewer - origin_) / scale();
}

QPointF CViewTransform::toViewer(QPointF picture) const {
  return picture * scale() + origin_;
}
