#pragma once

#include <QPointF>
#include <QSize>
#include <QSizeF>

/// Where a picture lies in a viewer, and how large. Positions in the picture are in pixels whose
/// first one spans 0 to 1; positions in the viewer are in its widget's units. `zoom` is viewer
/// device pixels per picture pixel: 1 is 100 % on any screen.
class CViewTransform {
 public:
  static constexpr double SMALLEST = 1.0 / 64.0;
  static constexpr double LARGEST = 16.0;

  void setPicture(QSize picture);
  void setViewer(QSizeF viewer, double devicePixelRatio);

  /// Fits the picture now and whenever the viewer changes, until the operator zooms or pans.
  void fit();
  bool isFitted() const { return fitted_; }
  double zoom() const { return zoom_; }
  /// Zooms so that what is under `at` stays there.
  void zoomTo(double zoom, QPointF at);
  void pan(QPointF by);
  /// Brings a place of the picture to the middle of the viewer.
  void centreOn(QPointF place);

  QPointF toPicture(QPointF viewer) const;
  QPointF toViewer(QPointF picture) const;
  /// Viewer units of one picture pixel.
  double scale() const { return zoom_ / ratio_; }
  QSizeF viewer() const { return viewer_; }
  double devicePixelRatio() const { return ratio_; }

 private:
  void applyFit();
  void keepInSight();

  QSize picture_;
  QSizeF viewer_{1.0, 1.0};
  double ratio_ = 1.0;
  double zoom_ = 1.0;
  QPointF origin_;  ///< of the picture, in the viewer
  bool fitted_ = true;
};
