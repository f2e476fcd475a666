#include <gtest/gtest.h>

#include <QStyleFactory>
#include <cstdio>
#include <optional>

#include "DesktopApplication.h"
#include "XServer.h"

// Tests act in real windows on a screen of their own. One that only lists itself needs none.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
  const CXServer server;
  if (!server.isRunning()) {
    std::fputs("Xvfb does not start: the tests have no screen\n", stderr);
    return 1;
  }
  qputenv("QT_QPA_PLATFORM", "xcb");
  CDesktopApplication application(argc, argv);
  QApplication::setApplicationDisplayName("Stabilize");
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  return RUN_ALL_TESTS();
}
