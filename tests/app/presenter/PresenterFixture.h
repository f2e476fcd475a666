#pragma once

#include <gtest/gtest.h>

#include <QTest>
#include <memory>

#include "presenter/Presentation.h"
#include "presenter/QtApplication.h"

/// A panel of controls, and the window that shows it. Tests make the controls first.
class Presenter : public ::testing::Test {
 protected:
  Presenter() : panel("Panel") {
    SetApplication(&application);
    panel.setBounds({40, 30, 320, 240});
  }
  ~Presenter() override { SetApplication(nullptr); }

  /// The presentation, which goes before the controls that the test made above.
  [[nodiscard]] std::unique_ptr<CPresentation> show() {
    auto shown = std::make_unique<CPresentation>(panel);
    presentation = shown.get();
    presentation->widget()->show();
    presentation->widget()->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(presentation->widget()));
    return shown;
  }
  template <typename T>
  T& find(const char* name) {
    return *presentation->widget()->findChild<T*>(name);
  }
  static void place(TControl& control, int row) { control.setBounds({10, 10 + 26 * row, 120, 22}); }

  CQtApplication application;
  TPanel panel;
  CPresentation* presentation = nullptr;
};
