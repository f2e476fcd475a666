#include <gtest/gtest.h>

#include <QApplication>
#include <QStyleFactory>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  return RUN_ALL_TESTS();
}
