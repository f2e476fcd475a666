#include "ChartWidget.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <cmath>
#include <limits>

#include "ControlPresenter.h"

namespace {

constexpr double SMALLEST_SPAN = 1e-6;

/// A step of 1, 2 or 5 times a power of ten that leaves at least `pixels` between two ticks.
double tickStep(double span, double length, double pixels) {
  const double least = span * pixels / std::max(length, 1.0);
  const double decade = std::pow(10.0, std::floor(std::log10(least)));
  for (const double step : {1.0, 2.0, 5.0})
    if (step * decade >= least) return step * decade;
  return 10.0 * decade;
}

QColor markerColor(EColor color) {
  return color == EColor::yellow ? QColor(232, 178, 30) : QColor(70, 130, 245);
}

}  // namespace

CChartWidget::CChartWidget(const TLineChart& chart, QWidget* parent)
    : QWidget(parent), chart_(chart) {
  setMouseTracking(true);
  showAll();
}

QRectF CChartWidget::everything() const {
  double left = std::numeric_limits<double>::max();
  double right = std::numeric_limits<double>::lowest();
  double low = left;
  double high = right;
  for (const TLineChart::SSeries& series : chart_.series())
    for (const TLineChart::SPoint& point : series.points) {
      left = std::min(left, point.x);
      right = std::max(right, point.x);
      low = std::min(low, point.y);
      high = std::max(high, point.y);
    }
  if (left > right) left = low = 0.0, right = high = 1.0;
  if (!chart_.leftAxis().automatic) {
    low = chart_.leftAxis().minimum;
    high = chart_.leftAxis().maximum;
  }
  return {left, low, std::max(right - left, 1.0), std::max(high - low, SMALLEST_SPAN)};
}

void CChartWidget::follow() {
  const QRectF now = everything();
  const bool whole = seen_ == all_;
  // A chart of another shot is another chart.
  if (whole || now.left() != all_.left() || now.right() != all_.right()) seen_ = now;
  all_ = now;
  update();
}

void CChartWidget::showAll() {
  seen_ = all_ = everything();
  update();
}

QRectF CChartWidget::plot() const {
  constexpr double LEFT = 44.0;
  constexpr double BOTTOM = 15.0;
  constexpr double RIGHT = 8.0;
  constexpr double TOP = 5.0;
  return QRectF(rect()).adjusted(LEFT, TOP, -RIGHT, -BOTTOM);
}

QPointF CChartWidget::toWidget(double x, double y) const {
  const QRectF area = plot();
  return {area.left() + (x - seen_.left()) / seen_.width() * area.width(),
          area.bottom() - (y - seen_.top()) / seen_.height() * area.height()};
}

QPointF CChartWidget::toChart(const QPointF& at) const {
  const QRectF area = plot();
  return {seen_.left() + (at.x() - area.left()) / area.width() * seen_.width(),
          seen_.top() + (area.bottom() - at.y()) / area.height() * seen_.height()};
}

void CChartWidget::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton && event->button() != Qt::RightButton)
    return event->ignore();
  drag_ = event->button();
  from_ = to_ = event->position();
}

void CChartWidget::mouseMoveEvent(QMouseEvent* event) {
  if (drag_ == Qt::RightButton) scrollBy(event->position() - to_);
  to_ = event->position();
  if (drag_ != Qt::NoButton) update();
}

void CChartWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != drag_) return;
  drag_ = Qt::NoButton;
  constexpr double CLICK = 4.0;
  const QPointF way = event->position() - from_;
  if (event->button() == Qt::LeftButton && std::hypot(way.x(), way.y()) > CLICK) {
    if (way.y() < 0.0)
      showAll();
    else
      zoomTo(QRectF(from_, event->position()).normalized());
  }
  update();
}

void CChartWidget::mouseDoubleClickEvent(QMouseEvent*) {
  showAll();
}

void CChartWidget::zoomTo(const QRectF& drawn) {
  const QRectF area = drawn.intersected(plot());
  if (area.width() < 2.0 || area.height() < 2.0) return;
  const QPointF low = toChart(area.bottomLeft());
  const QPointF high = toChart(area.topRight());
  seen_ = QRectF(low.x(), low.y(), std::max(high.x() - low.x(), SMALLEST_SPAN),
                 std::max(high.y() - low.y(), SMALLEST_SPAN));
}

// Not beyond what there is: a chart that was lost is not found again.
void CChartWidget::scrollBy(const QPointF& by) {
  const QRectF area = plot();
  const double x = seen_.left() - by.x() / area.width() * seen_.width();
  const double y = seen_.top() + by.y() / area.height() * seen_.height();
  seen_.moveTo(std::clamp(x, all_.left(), std::max(all_.left(), all_.right() - seen_.width())),
               std::clamp(y, all_.top(), std::max(all_.top(), all_.bottom() - seen_.height())));
}

bool CChartWidget::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    const auto* const help = static_cast<QHelpEvent*>(event);
    const QString label = labelAt(help->pos());
    if (!label.isEmpty()) {
      QToolTip::showText(help->globalPos(), label, this);
      return true;
    }
  }
  return QWidget::event(event);
}

QString CChartWidget::labelAt(const QPointF& at) const {
  constexpr double REACH = 8.0;
  double nearest = REACH;
  QString label;
  for (const TLineChart::SSeries& series : chart_.series())
    for (const TLineChart::SPoint& point : series.points) {
      const QPointF place = toWidget(point.x, point.y) - at;
      const double distance = std::hypot(place.x(), place.y());
      if (distance >= nearest) continue;
      nearest = distance;
      label = QString("%1\nframe %2  %3: %4")
                  .arg(QString::fromStdString(series.title))
                  .arg(point.x)
                  .arg(QString::fromStdString(point.label))
                  .arg(point.y, 0, 'f', 2);
    }
  return label;
}

void CChartWidget::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), palette().color(QPalette::Base));
  paintAxes(painter);
  painter.setClipRect(plot());
  for (const TLineChart::SSeries& series : chart_.series()) {
    paintSeries(painter, series, markerColor(series.markerColor));
    paintMarkers(painter, series);
  }
  if (drag_ != Qt::LeftButton) return;
  painter.setPen(QPen(palette().color(QPalette::Highlight), 1.0, Qt::DashLine));
  painter.drawRect(QRectF(from_, to_).normalized());
}

void CChartWidget::paintAxes(QPainter& painter) const {
  QFont small = font();
  small.setPixelSize(10);
  painter.setFont(small);
  paintLeftTicks(painter);
  paintBottomTicks(painter);
  const QRectF area = plot();
  painter.setPen(palette().color(QPalette::Mid));
  painter.drawRect(area);
  painter.save();
  painter.setPen(palette().color(QPalette::Text));
  painter.translate(9.0, area.center().y());
  painter.rotate(-90.0);
  painter.drawText(QRectF(-area.height() / 2.0 - 6.0, -7.0, area.height() + 12.0, 14.0),
                   Qt::AlignCenter, QString::fromStdString(chart_.leftAxis().caption));
  painter.restore();
}

void CChartWidget::paintLeftTicks(QPainter& painter) const {
  const QRectF area = plot();
  QColor grid = palette().color(QPalette::Text);
  grid.setAlpha(40);
  const double step = tickStep(seen_.height(), area.height(), 16.0);
  for (double y = std::ceil(seen_.top() / step) * step; y <= seen_.bottom() + step / 1e6;
       y += step) {
    const double row = toWidget(0.0, y).y();
    painter.setPen(grid);
    painter.drawLine(QPointF(area.left(), row), QPointF(area.right(), row));
    painter.setPen(palette().color(QPalette::Text));
    const double shown = std::abs(y) < step / 1e3 ? 0.0 : y;
    painter.drawText(QRectF(14.0, row - 7.0, area.left() - 17.0, 14.0),
                     Qt::AlignRight | Qt::AlignVCenter, QString::number(shown, 'g', 5));
  }
}

// The chart's own increment is the least: frames have no halves.
void CChartWidget::paintBottomTicks(QPainter& painter) const {
  const QRectF area = plot();
  QColor grid = palette().color(QPalette::Text);
  grid.setAlpha(40);
  const double least =
      seen_.width() < 3.0 * chart_.bottomIncrement() ? 1.0 : chart_.bottomIncrement();
  const double step = std::max(tickStep(seen_.width(), area.width(), 56.0), least);
  for (double x = std::ceil(seen_.left() / step) * step; x <= seen_.right(); x += step) {
    const double column = toWidget(x, 0.0).x();
    painter.setPen(grid);
    painter.drawLine(QPointF(column, area.top()), QPointF(column, area.bottom()));
    painter.setPen(palette().color(QPalette::Text));
    const QString text = QString::number(x, 'f', 0);
    const double half = painter.fontMetrics().horizontalAdvance(text) / 2.0 + 1.0;
    const double middle = std::min(column, width() - half);
    painter.drawText(QRectF(middle - half, area.bottom() + 1.0, 2.0 * half, 13.0), Qt::AlignCenter,
                     text);
  }
}

// However many points there are, a column of pixels shows where its line comes in, its extremes and
// where it goes out.
void CChartWidget::paintSeries(QPainter& painter, const TLineChart::SSeries& series,
                               const QColor& color) const {
  QPolygonF line;
  double column = std::numeric_limits<double>::quiet_NaN();
  QPointF low;
  QPointF high;
  QPointF last;
  const auto finishColumn = [&] {
    if (std::isnan(column)) return;
    line << low << high << last;
  };
  for (const TLineChart::SPoint& point : series.points) {
    const QPointF at = toWidget(point.x, point.y);
    if (std::floor(at.x()) != column) {
      finishColumn();
      column = std::floor(at.x());
      line << at;
      low = high = at;
    }
    if (at.y() < high.y()) high = at;
    if (at.y() > low.y()) low = at;
    last = at;
  }
  finishColumn();
  painter.setPen(QPen(color, 1.2));
  painter.drawPolyline(line);
}

void CChartWidget::paintMarkers(QPainter& painter, const TLineChart::SSeries& series) const {
  constexpr double ROOM = 6.0;  // pixels between two markers that are told apart
  const double perFrame = plot().width() / seen_.width();
  if (series.marker == EMarker::none || perFrame < ROOM) return;
  constexpr double RADIUS = 2.4;
  painter.setPen(QPen(palette().color(QPalette::Text), 0.6));
  painter.setBrush(markerColor(series.markerColor));
  for (const TLineChart::SPoint& point : series.points) {
    const QPointF at = toWidget(point.x, point.y);
    if (series.marker == EMarker::circle) {
      painter.drawEllipse(at, RADIUS, RADIUS);
    } else {
      const double r = RADIUS * 1.3;
      painter.drawConvexPolygon(QPolygonF(
          {at + QPointF(0, -r), at + QPointF(r, 0), at + QPointF(0, r), at + QPointF(-r, 0)}));
    }
  }
  painter.setBrush(Qt::NoBrush);
}

namespace {

class CChartPresenter : public CControlPresenter {
 public:
  CChartPresenter(TLineChart& control, CChartWidget& chart)
      : CControlPresenter(control, chart), chart_(chart) {}

 protected:
  void updateKind() override { chart_.follow(); }

 private:
  CChartWidget& chart_;
};

}  // namespace

std::unique_ptr<CControlPresenter> PresentChart(TControl& control, QWidget* parent) {
  auto* const chart = dynamic_cast<TLineChart*>(&control);
  if (!chart) return nullptr;
  return std::make_unique<CChartPresenter>(*chart, *new CChartWidget(*chart, parent));
}
