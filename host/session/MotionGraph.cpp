#include "session/MotionGraph.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr double WIDTH = 1200.0;
constexpr double LEFT = 78.0;
constexpr double RIGHT = 24.0;
constexpr double TOP = 88.0;
constexpr double PANEL_HEIGHT = 190.0;
constexpr double PANEL_GAP = 46.0;
constexpr double BOTTOM = 44.0;

struct SPanel {
  const char* title;
  const char* unit;
  double SFrameMotion::*value;
  double smallestSpan;  // so that noise does not fill the panel
};

constexpr SPanel PANELS[] = {{"Horizontal", "px", &SFrameMotion::x, 1.0},
                             {"Vertical", "px", &SFrameMotion::y, 1.0},
                             {"Rotation", "\xC2\xB0", &SFrameMotion::angle, 0.05}};

std::string number(double value, int digits) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  // "-0.0" says nothing that "0.0" does not.
  const std::string shown = text;
  return shown.find_first_not_of("-0.") == std::string::npos && shown[0] == '-' ? shown.substr(1)
                                                                                : shown;
}

std::string escaped(const std::string& text) {
  std::string result;
  for (char c : text) {
    if (c == '&')
      result += "&amp;";
    else if (c == '<')
      result += "&lt;";
    else if (c == '>')
      result += "&gt;";
    else
      result += c;
  }
  return result;
}

/// 1, 2 or 5 times a power of ten, so that about `wanted` steps fit.
double niceStep(double span, double wanted) {
  const double raw = span / wanted;
  const double power = std::pow(10.0, std::floor(std::log10(raw)));
  const double lead = raw / power;
  return power * (lead <= 1.0 ? 1.0 : lead <= 2.0 ? 2.0 : lead <= 5.0 ? 5.0 : 10.0);
}

struct SAxis {
  double low = 0.0;
  double high = 1.0;
  double step = 1.0;
  double at(double value) const { return (value - low) / (high - low); }
  int digits() const { return std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9))); }
};

SAxis valueAxis(const std::vector<SMotionCurve>& curves, const SPanel& panel) {
  double low = 0.0;
  double high = 0.0;
  for (const SMotionCurve& curve : curves)
    for (const SFrameMotion& motion : curve.motion) {
      low = std::min(low, motion.*panel.value);
      high = std::max(high, motion.*panel.value);
    }
  if (high - low < panel.smallestSpan) {
    const double middle = (high + low) * 0.5;
    low = middle - panel.smallestSpan * 0.5;
    high = middle + panel.smallestSpan * 0.5;
  }
  const double step = niceStep(high - low, 5.0);
  return {std::floor(low / step) * step, std::ceil(high / step) * step, step};
}

SAxis frameAxis(const std::vector<SMotionCurve>& curves) {
  SAxis axis{1e300, -1e300, 1.0};
  for (const SMotionCurve& curve : curves)
    for (const SFrameMotion& motion : curve.motion) {
      axis.low = std::min(axis.low, static_cast<double>(motion.frame));
      axis.high = std::max(axis.high, static_cast<double>(motion.frame));
    }
  if (axis.high <= axis.low) axis.high = axis.low + 1.0;
  axis.step = std::max(1.0, niceStep(axis.high - axis.low, 12.0));
  return axis;
}

std::string line(double x0, double y0, double x1, double y1, const char* color) {
  return "<line x1=\"" + number(x0, 1) + "\" y1=\"" + number(y0, 1) + "\" x2=\"" + number(x1, 1) +
         "\" y2=\"" + number(y1, 1) + "\" stroke=\"" + color + "\"/>\n";
}

std::string text(double x, double y, const std::string& words, const char* more) {
  return "<text x=\"" + number(x, 1) + "\" y=\"" + number(y, 1) + "\" " + more + ">" +
         escaped(words) + "</text>\n";
}

std::string panelSvg(const SPanel& panel, double top, const SAxis& frames, bool last,
                     const std::vector<SMotionCurve>& curves) {
  const double width = WIDTH - LEFT - RIGHT;
  const SAxis values = valueAxis(curves, panel);
  const auto x = [&](double frame) { return LEFT + width * frames.at(frame); };
  const auto y = [&](double value) { return top + PANEL_HEIGHT * (1.0 - values.at(value)); };
  std::string svg = text(LEFT, top - 9, std::string(panel.title) + " (" + panel.unit + ")",
                         "font-weight=\"600\" fill=\"#222\"");
  for (int i = 0; values.low + i * values.step <= values.high + values.step * 1e-6; ++i) {
    const double value = values.low + i * values.step;
    const bool zero = std::abs(value) < values.step * 1e-6;
    svg += line(LEFT, y(value), WIDTH - RIGHT, y(value), zero ? "#9aa0a6" : "#e6e8ea");
    svg += text(LEFT - 8, y(value) + 4, number(value, values.digits()),
                "text-anchor=\"end\" fill=\"#555\"");
  }
  for (double frame = std::ceil(frames.low / frames.step) * frames.step; frame <= frames.high;
       frame += frames.step) {
    svg += line(x(frame), top, x(frame), top + PANEL_HEIGHT, "#f0f1f3");
    if (last)
      svg += text(x(frame), top + PANEL_HEIGHT + 18, number(frame, 0),
                  "text-anchor=\"middle\" fill=\"#555\"");
  }
  for (const SMotionCurve& curve : curves) {
    svg += "<polyline fill=\"none\" stroke-width=\"" + number(curve.width, 1) +
           "\" stroke-linejoin=\"round\" stroke=\"" + curve.color + "\" points=\"";
    for (const SFrameMotion& motion : curve.motion)
      svg += number(x(motion.frame), 2) + "," + number(y(motion.*panel.value), 2) + " ";
    svg += "\"/>\n";
  }
  return svg;
}

std::string legendSvg(const std::vector<SMotionCurve>& curves) {
  std::string svg;
  double x = LEFT;
  for (const SMotionCurve& curve : curves) {
    svg += "<line x1=\"" + number(x, 1) + "\" y1=\"44\" x2=\"" + number(x + 22, 1) +
           "\" y2=\"44\" stroke-width=\"3\" stroke=\"" + curve.color + "\"/>\n";
    svg += text(x + 28, 48, curve.name, "fill=\"#333\"");
    x += 52.0 + 7.4 * static_cast<double>(curve.name.size());
  }
  return svg;
}

}  // namespace

std::string MotionGraphAsSvg(const std::string& title, const std::vector<SMotionCurve>& curves) {
  std::vector<SMotionCurve> shown;
  for (const SMotionCurve& curve : curves)
    if (!curve.motion.empty()) shown.push_back(curve);
  const double panels = static_cast<double>(std::size(PANELS));
  const double height = TOP + panels * PANEL_HEIGHT + (panels - 1.0) * PANEL_GAP + BOTTOM;
  std::string svg =
      "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + number(WIDTH, 0) + "\" height=\"" +
      number(height, 0) + "\" viewBox=\"0 0 " + number(WIDTH, 0) + " " + number(height, 0) +
      "\" font-family=\"DejaVu Sans, Helvetica, Arial, sans-serif\" font-size=\"12\">\n"
      "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
  svg += text(LEFT, 26, title, "font-size=\"16\" font-weight=\"600\" fill=\"#111\"");
  if (shown.empty()) return svg + text(LEFT, TOP, "No motion was measured.", "") + "</svg>\n";
  svg += legendSvg(shown);
  const SAxis frames = frameAxis(shown);
  double top = TOP;
  for (const SPanel& panel : PANELS) {
    svg += panelSvg(panel, top, frames, &panel == std::end(PANELS) - 1, shown);
    top += PANEL_HEIGHT + PANEL_GAP;
  }
  return svg + "</svg>\n";
}
