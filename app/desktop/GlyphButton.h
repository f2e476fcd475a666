#pragma once

#include <QToolButton>

enum class EGlyph { first, back, play, pause, forward, last };

/// A button with one of the signs of a player, in the colour of its text: legible on any palette.
class CGlyphButton : public QToolButton {
 public:
  CGlyphButton(EGlyph glyph, QWidget* parent);
  void setGlyph(EGlyph glyph);
  QSize sizeHint() const override { return {30, 24}; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  EGlyph glyph_;
};
