#include "PanelPicture.h"

#include <algorithm>
#include <sstream>

namespace {

constexpr int CHARACTER = 6;
constexpr int MARK = 22;

class CPainter {
 public:
  void draw(const TControl& control, int x, int y) {
    if (!control.isVisible()) return;
    x += control.bounds().left;
    y += control.bounds().top;
    ink_ = control.isEnabledInWindow() ? "black" : "#aaa";
    drawKind(control, x, y);
    for (const TControl* child : control.children()) draw(*child, x, y);
  }
  std::string text(int width, int height) const {
    std::ostringstream svg;
    svg << "<svg xmlns='http://www.w3.org/2000/svg' width='" << width << "' height='" << height
        << "' font-family='DejaVu Sans Condensed' font-size='11'>"
        << "<rect width='100%' height='100%' fill='#eee'/>" << body_.str() << "</svg>\n";
    return svg.str();
  }

 private:
  void drawKind(const TControl& c, int x, int y) {
    const SBounds& b = c.bounds();
    const int middle = y + b.height / 2 + 4;
    if (dynamic_cast<const TGroupBox*>(&c)) {
      box(x, y + 7, b.width, b.height - 7, "none", "#999");
      box(x + 5, y + 2, CaptionWidth(c), 12, "#eee", "none");
      write(x + 8, y + 11, ShownCaption(c), "start", true);
    } else if (const auto* check = dynamic_cast<const TCheckBox*>(&c)) {
      if (b.width == 0) return;
      box(x, middle - 11, 12, 12, "white", "#555");
      if (check->isChecked()) write(x + 2, middle - 1, "\u2713");
      write(x + MARK - 6, middle, ShownCaption(c));
    } else if (const auto* radio = dynamic_cast<const TRadioButton*>(&c)) {
      body_ << "<circle cx='" << x + 6 << "' cy='" << middle - 4
            << "' r='5.5' fill='white' stroke='#555'/>";
      if (radio->isChecked())
        body_ << "<circle cx='" << x + 6 << "' cy='" << middle - 4 << "' r='3'/>";
      write(x + MARK - 6, middle, ShownCaption(c));
    } else if (dynamic_cast<const TButtonControl*>(&c)) {
      box(x, y, b.width, b.height, "#ddd", "#777");
      write(x + b.width / 2, middle, ShownCaption(c), "middle");
    } else if (const auto* bar = dynamic_cast<const TTrackBar*>(&c)) {
      drawBar(*bar, x, y);
    } else if (const auto* chart = dynamic_cast<const TLineChart*>(&c)) {
      drawChart(*chart, x, y);
    } else {
      drawText(c, x, y, middle);
    }
  }
  void drawText(const TControl& c, int x, int y, int middle) {
    const SBounds& b = c.bounds();
    if (const auto* status = dynamic_cast<const TStatusBar*>(&c)) {
      for (const TStatusBar::SPanel& panel : status->panels()) {
        box(x, y, panel.width, b.height, "#e4e4e4", "#bbb");
        write(x + 4, middle, panel.text);
        x += panel.width;
      }
    } else if (const auto* edit = dynamic_cast<const TEdit*>(&c)) {
      box(x, y, b.width, b.height, "white", "#777");
      write(x + 4, middle, edit->text());
    } else if (const auto* timecode = dynamic_cast<const VTimeCodeEdit*>(&c)) {
      box(x, y, b.width, b.height, "white", "#777");
      write(x + b.width / 2, middle, timecode->text(), "middle");
    } else if (dynamic_cast<const TLabel*>(&c)) {
      const bool right = c.alignment() == EAlignment::right;
      const bool center = c.alignment() == EAlignment::center;
      write(center  ? x + b.width / 2
            : right ? x + b.width
                    : x,
            middle, ShownCaption(c),
            center  ? "middle"
            : right ? "end"
                    : "start",
            c.isBold());
    } else if (c.color() == EColor::cream) {
      box(x, y, b.width, b.height, "#fffbe0", "#ccb");
    } else if (const auto* panel = dynamic_cast<const TPanel*>(&c);
               panel != nullptr && panel->innerBevel() == EBevel::raised) {
      box(x, y, b.width, b.height, "#fc6", "#c80");
    } else if (c.parent() != nullptr && c.children().empty() && b.width > 0) {
      box(x, y, b.width, b.height, "none", "#ccc");
    }
  }
  void drawBar(const TTrackBar& bar, int x, int y) {
    const SBounds& b = bar.bounds();
    const int range = std::max(1, bar.maximum() - bar.minimum());
    const auto place = [&](int value) {
      return x + 5 + (b.width - 10) * (value - bar.minimum()) / range;
    };
    const int at = place(bar.position());
    const int filledFrom = place(bar.selectionStart());
    box(x + 5, y + b.height / 2 - 2, b.width - 10, 4, "white", "#999");
    box(filledFrom, y + b.height / 2 - 2, place(bar.selectionEnd()) - filledFrom, 4, "#55a",
        "none");
    if (bar.isSliderVisible()) box(at - 4, y + 3, 8, b.height - 6, "#ddd", "#555");
  }
  void drawChart(const TLineChart& chart, int x, int y) {
    const SBounds& b = chart.bounds();
    box(x, y, b.width, b.height, "white", "#999");
    write(x + 4, y + 12, chart.leftAxis().caption);
    const double low = chart.leftAxis().minimum;
    const double scale = b.height / std::max(1e-9, chart.leftAxis().maximum - low);
    for (const TLineChart::SSeries& series : chart.series()) {
      if (series.points.empty()) continue;
      const double first = series.points.front().x;
      const double span = std::max(1.0, series.points.back().x - first);
      body_ << "<polyline fill='none' stroke='"
            << (series.markerColor == EColor::blue ? "blue" : "#c90") << "' points='";
      for (const TLineChart::SPoint& p : series.points)
        body_ << x + (p.x - first) * b.width / span << ',' << y + b.height - (p.y - low) * scale
              << ' ';
      body_ << "'/>";
    }
  }
  void box(int x, int y, int width, int height, const char* fill, const char* stroke) {
    body_ << "<rect x='" << x << ".5' y='" << y << ".5' width='" << std::max(0, width - 1)
          << "' height='" << std::max(0, height - 1) << "' fill='" << fill << "' stroke='" << stroke
          << "'/>";
  }
  void write(int x, int y, const std::string& text, const char* anchor = "start",
             bool bold = false) {
    body_ << "<text x='" << x << "' y='" << y << "' text-anchor='" << anchor << "' fill='" << ink_
          << "'" << (bold ? " font-weight='bold'" : "") << '>';
    for (const char character : text) {
      if (character == '&') {
        body_ << "&amp;";
      } else if (character == '<') {
        body_ << "&lt;";
      } else {
        body_ << character;
      }
    }
    body_ << "</text>";
  }

  std::ostringstream body_;
  std::string ink_;
};

}  // namespace

std::string PanelPicture(const TControl& root) {
  CPainter painter;
  painter.draw(root, 0, 0);
  return painter.text(root.bounds().width, root.bounds().height);
}

std::string ShownCaption(const TControl& control) {
  std::string shown;
  const std::string& caption = control.caption();
  for (std::size_t i = 0; i < caption.size(); ++i) {
    if (caption[i] == '&' && ++i == caption.size()) break;
    shown += caption[i];
  }
  return shown;
}

int CaptionWidth(const TControl& control) {
  const std::string shown = ShownCaption(control);
  const auto characters =
      std::count_if(shown.begin(), shown.end(), [](char c) { return (c & 0xC0) != 0x80; });
  const bool marked = dynamic_cast<const TCheckBox*>(&control) != nullptr ||
                      dynamic_cast<const TRadioButton*>(&control) != nullptr;
  return static_cast<int>(characters) * CHARACTER + (marked ? MARK : 0);
}
