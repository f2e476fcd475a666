#pragma once

#include <QRectF>
#include <QWidget>
#include <vector>

#include "toolkit/Controls.h"

/// Draws a line chart. The right button grabs and scrolls it; a rectangle that is drawn downwards
/// with the left button is zoomed to, one drawn upwards zooms out to everything, as a double click
/// does. The pointer on a point tells its label.
class CChartWidget : public QWidget {
 public:
  CChartWidget(const TLineChart& chart, QWidget* parent);

  /// The chart has other points or another axis: what of them is seen stays where it can.
  void follow();
  /// What is seen, in the chart's units; y grows upwards.
  QRectF seen() const { return seen_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  bool event(QEvent* event) override;

 private:
  QRectF everything() const;
  QRectF plot() const;
  QPointF toWidget(double x, double y) const;
  QPointF toChart(const QPointF& at) const;
  void zoomTo(const QRectF& drawn);
  void scrollBy(const QPointF& by);
  void showAll();
  void paintAxes(QPainter& painter) const;
  void paintBottomTicks(QPainter& painter) const;
  void paintLeftTicks(QPainter& painter) const;
  void paintSeries(QPainter& painter, const TLineChart::SSeries& series, const QColor& color) const;
  void paintMarkers(QPainter& painter, const TLineChart::SSeries& series) const;
  QString labelAt(const QPointF& at) const;

  const TLineChart& chart_;
  QRectF all_;   ///< everything(), as it was when last followed
  QRectF seen_;  ///< x and y in the chart's units; top is the smallest y
  Qt::MouseButton drag_ = Qt::NoButton;
  QPointF from_;
  QPointF to_;
};
