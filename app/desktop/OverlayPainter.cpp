#include "OverlayPainter.h"

#include <QPainterPath>
#include <cmath>

namespace {

// Points are positions between pixel centres; the first pixel's centre lies half a pixel in.
constexpr double CENTRE = 0.5;

class CRimmedLines {
 public:
  CRimmedLines(QPainter& painter, const QColor& color) : painter_(painter), color_(color) {}
  void path(const QPainterPath& path, Qt::PenStyle style = Qt::SolidLine) const {
    painter_.setBrush(Qt::NoBrush);
    painter_.setPen(QPen(QColor(0, 0, 0, 150), 3.0));
    painter_.drawPath(path);
    painter_.setPen(QPen(color_, 1.25, style));
    painter_.drawPath(path);
  }

 private:
  QPainter& painter_;
  const QColor color_;
};

QPainterPath box(const QPointF& centre, double halfWidth, double halfHeight) {
  QPainterPath path;
  path.addRect(
      QRectF(centre - QPointF(halfWidth, halfHeight), centre + QPointF(halfWidth, halfHeight)));
  return path;
}

QPainterPath cross(const QPointF& centre, double arm) {
  constexpr double GAP = 1.5;  // the place itself stays visible
  QPainterPath path;
  for (const QPointF& way : {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1), QPointF(0, -1)}) {
    path.moveTo(centre + way * GAP);
    path.lineTo(centre + way * arm);
  }
  return path;
}

void paintTrackBox(QPainter& painter, const SOverlay::STrackBox& trackBox,
                   const CViewTransform& view) {
  const QPointF centre = view.toViewer({trackBox.x + CENTRE, trackBox.y + CENTRE});
  const double scale = view.scale();
  const CRimmedLines lines(painter, OverlayColor(trackBox.color));
  lines.path(cross(centre, trackBox.highlight ? 9.0 : 6.0));
  lines.path(
      box(centre, (trackBox.halfWidth + CENTRE) * scale, (trackBox.halfHeight + CENTRE) * scale));
  if (!trackBox.highlight) return;
  const CRimmedLines selected(painter, QColor(255, 255, 255));
  selected.path(box(centre, 3.5, 3.5));
  if (trackBox.searchHalfWidth > 0)
    lines.path(box(centre, (trackBox.searchHalfWidth + CENTRE) * scale,
                   (trackBox.searchHalfHeight + CENTRE) * scale),
               Qt::DashLine);
}

void paintArrow(QPainter& painter, const SOverlay::SArrow& arrow, const CViewTransform& view) {
  const QPointF from = view.toViewer({arrow.fromX + CENTRE, arrow.fromY + CENTRE});
  const QPointF to = view.toViewer({arrow.toX + CENTRE, arrow.toY + CENTRE});
  const QPointF way = to - from;
  const double distance = std::hypot(way.x(), way.y());
  QPainterPath path(from);
  path.lineTo(to);
  if (distance > 0.0) {
    const QPointF along = way / distance;
    const QPointF across(-along.y(), along.x());
    const double scale = view.scale();
    const QPointF base = to - along * (arrow.length * scale);
    path.moveTo(base + across * (arrow.width * scale / 2.0));
    path.lineTo(to);
    path.lineTo(base - across * (arrow.width * scale / 2.0));
  }
  CRimmedLines(painter, OverlayColor(arrow.color)).path(path);
}

}  // namespace

QColor OverlayColor(int code) {
  switch (code) {
    case 2: return {90, 220, 110};
    case 4: return {80, 190, 255};
    case 8: return {240, 120, 240};
    default: return {255, 190, 60};
  }
}

void PaintOverlay(QPainter& painter, const SOverlay& overlay, const CViewTransform& view) {
  painter.setRenderHint(QPainter::Antialiasing);
  for (const SOverlay::SRectangle& rectangle : overlay.rectangles) {
    // The box is what lies inside: its lines run along the outer edges of its pixels.
    QPainterPath path;
    path.addRect(QRectF(view.toViewer({double(rectangle.rect.left), double(rectangle.rect.top)}),
                        view.toViewer({rectangle.rect.right + 1.0, rectangle.rect.bottom + 1.0})));
    CRimmedLines(painter, OverlayColor(rectangle.color)).path(path);
  }
  for (const SOverlay::SArrow& arrow : overlay.arrows) paintArrow(painter, arrow, view);
  for (const SOverlay::STrackBox& trackBox : overlay.trackBoxes)
    paintTrackBox(painter, trackBox, view);
}
