#include "toolkit/Application.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class CHostApplication : public TApplication {
 public:
  void showError(const std::string& text) override { shown = text; }
  EConfirmation confirm(const std::string& question) override {
    asked = question;
    return EConfirmation::cancel;
  }
  std::string shown, asked;
};

TEST(Application, HeadlessOneIsThereFromTheStartAndProceeds) {
  ASSERT_NE(Application(), nullptr);
  EXPECT_EQ(_QTXConfirmationDialog("Continue anyway?"), 0);
  _QTXErrorDialog("nobody sees this");
  Application()->beep();
  Application()->processMessages();
}

TEST(Application, DialogsGoToTheHostsUntilItIsTakenBack) {
  CHostApplication host;
  SetApplication(&host);
  EXPECT_EQ(Application(), &host);
  EXPECT_EQ(_QTXConfirmationDialog("Continue anyway?"), 1);
  _QTXErrorDialog("no clip");
  SetApplication(nullptr);
  EXPECT_EQ(host.asked, "Continue anyway?");
  EXPECT_EQ(host.shown, "no clip");
  ASSERT_NE(Application(), nullptr);
  EXPECT_EQ(_QTXConfirmationDialog("again?"), 0);
}

TEST(CBusyCursor, ScopesNestAndPutTheCursorBack) {
  Application()->setCursor(ECursor::appStarting);
  {
    const CBusyCursor outer;
    EXPECT_EQ(Application()->cursor(), ECursor::busy);
    { const CBusyCursor inner; }
    EXPECT_EQ(Application()->cursor(), ECursor::busy);
  }
  EXPECT_EQ(Application()->cursor(), ECursor::appStarting);
  Application()->setCursor(ECursor::normal);
}

}  // namespace
