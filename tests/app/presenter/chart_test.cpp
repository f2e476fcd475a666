#include <QImage>

#include "../../../app/presenter/ChartWidget.h"
#include "PresenterFixture.h"

namespace {

class Chart : public Presenter {
 protected:
  Chart() : chart("Chart", &panel) {
    chart.setBounds({0, 0, 300, 200});
    chart.addSeries("Points", EMarker::circle, EColor::yellow);
    for (int x = 100; x <= 200; ++x) chart.addPoint(0, x, (x % 7) - 3, "label");
    chart.setLeftAxis({"Left", false, -5.0, 5.0});
  }
  CChartWidget& shown() { return dynamic_cast<CChartWidget&>(find<QWidget>("Chart")); }
  void drag(Qt::MouseButton button, QPoint from, QPoint to) {
    QTest::mousePress(&shown(), button, {}, from);
    QTest::mouseMove(&shown(), (from + to) / 2);
    QMouseEvent move(QEvent::MouseMove, to, shown().mapToGlobal(to), Qt::NoButton, button, {});
    QApplication::sendEvent(&shown(), &move);
    QTest::mouseRelease(&shown(), button, {}, to);
  }

  TLineChart chart;
};

TEST_F(Chart, ADrawnRectangleZoomsAndOneUpwardsZoomsOut) {
  auto window = show();
  const QRectF all(100.0, -5.0, 100.0, 10.0);
  EXPECT_EQ(shown().seen(), all);
  drag(Qt::LeftButton, {120, 40}, {220, 100});
  const QRectF zoomed = shown().seen();
  EXPECT_TRUE(all.contains(zoomed));
  EXPECT_LT(zoomed.width(), 50.0);
  drag(Qt::RightButton, {150, 100}, {120, 90});
  EXPECT_GT(shown().seen().left(), zoomed.left()) << "grabbed and scrolled";
  EXPECT_EQ(shown().seen().size(), zoomed.size());
  drag(Qt::RightButton, {10, 100}, {2000, 90});
  EXPECT_EQ(shown().seen().left(), 100.0) << "not beyond what there is";
  drag(Qt::LeftButton, {220, 100}, {120, 40});
  EXPECT_EQ(shown().seen(), all);
  QTest::mouseClick(&shown(), Qt::LeftButton, {}, {150, 90});
  EXPECT_EQ(shown().seen(), all) << "a click is no rectangle";
}

TEST_F(Chart, NewPointsKeepTheZoomOfTheSameFramesOnly) {
  auto window = show();
  drag(Qt::LeftButton, {120, 40}, {220, 100});
  const QRectF zoomed = shown().seen();
  chart.addPoint(0, 150.0, 2.0, "again");
  EXPECT_EQ(shown().seen(), zoomed);
  chart.addPoint(0, 260.0, 0.0, "longer");
  EXPECT_EQ(shown().seen(), QRectF(100.0, -5.0, 160.0, 10.0));
  chart.clear(0);
  shown().grab();
}

TEST_F(Chart, AManyPointsLineStillShowsItsExtremes) {
  chart.clear(0);
  for (int x = 0; x < 100'000; ++x) chart.addPoint(0, x, x == 50'000 ? 4.9 : 0.0, "");
  auto window = show();
  const QImage picture = shown().grab().toImage();
  bool spike = false;
  for (int x = 160; x < 185; ++x) {
    const QColor color = picture.pixelColor(x, 40);
    spike |= color.red() > color.blue() + 60;
  }
  EXPECT_TRUE(spike) << "one frame of a hundred thousand";
}

}  // namespace
