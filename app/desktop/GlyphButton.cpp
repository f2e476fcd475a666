#include "GlyphButton.h"

#include <QPainter>
#include <QPainterPath>

namespace {

constexpr double HIGH = 6.0;  // half the height of a sign

void addTriangle(QPainterPath& path, double x, double way) {
  path.moveTo(x, -HIGH);
  path.lineTo(x + way * 8.0, 0.0);
  path.lineTo(x, HIGH);
  path.closeSubpath();
}

void addBar(QPainterPath& path, double x) {
  path.addRect(QRectF(x - 1.5, -HIGH, 3.0, 2.0 * HIGH));
}

// Around its middle.
QPainterPath pathOf(EGlyph glyph) {
  QPainterPath path;
  switch (glyph) {
    case EGlyph::first:
      addBar(path, -5.0);
      addTriangle(path, 5.0, -1.0);
      break;
    case EGlyph::back:
      addTriangle(path, 0.0, -1.0);
      addTriangle(path, 8.0, -1.0);
      break;
    case EGlyph::play: addTriangle(path, -4.0, 1.3); break;
    case EGlyph::pause:
      addBar(path, -3.5);
      addBar(path, 3.5);
      break;
    case EGlyph::forward:
      addTriangle(path, -8.0, 1.0);
      addTriangle(path, 0.0, 1.0);
      break;
    case EGlyph::last:
      addTriangle(path, -5.0, 1.0);
      addBar(path, 5.0);
      break;
  }
  return path;
}

}  // namespace

CGlyphButton::CGlyphButton(EGlyph glyph, QWidget* parent) : QToolButton(parent), glyph_(glyph) {
  setAutoRaise(true);
  setFocusPolicy(Qt::NoFocus);
}

void CGlyphButton::setGlyph(EGlyph glyph) {
  glyph_ = glyph;
  update();
}

void CGlyphButton::paintEvent(QPaintEvent* event) {
  QToolButton::paintEvent(event);
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(QRectF(rect()).center());
  painter.fillPath(
      pathOf(glyph_),
      palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText));
}
