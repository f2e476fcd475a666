#include "Appearance.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <QToolTip>

namespace {

struct SColors {
  const char* window;
  const char* base;
  const char* button;
  const char* text;
  const char* disabled;
  const char* highlight;
};

constexpr SColors LIGHT = {"#eeeeee", "#ffffff", "#e4e4e4", "#111111", "#8a8a8a", "#2f6fb4"};
constexpr SColors DARK = {"#2b2b2b", "#1e1e1e", "#3a3a3a", "#e6e6e6", "#7d7d7d", "#3f83c8"};

QPalette paletteOf(const SColors& colors) {
  QPalette palette((QColor(colors.button)), QColor(colors.window));
  palette.setColor(QPalette::Base, QColor(colors.base));
  palette.setColor(QPalette::AlternateBase, QColor(colors.window));
  palette.setColor(QPalette::Highlight, QColor(colors.highlight));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(colors.highlight).lighter(120));
  palette.setColor(QPalette::ToolTipBase, QColor(colors.base));
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                          QPalette::ToolTipText, QPalette::PlaceholderText}) {
    palette.setColor(role, QColor(colors.text));
    palette.setColor(QPalette::Disabled, role, QColor(colors.disabled));
  }
  return palette;
}

}  // namespace

void ApplyAppearance(EAppearance appearance) {
  static const QPalette system = QApplication::palette();
  const QPalette palette = appearance == EAppearance::dark    ? paletteOf(DARK)
                           : appearance == EAppearance::light ? paletteOf(LIGHT)
                                                              : system;
  QApplication::setPalette(palette);
  QToolTip::setPalette(palette);
}
