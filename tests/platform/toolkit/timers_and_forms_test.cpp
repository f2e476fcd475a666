#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

#include "toolkit/HeadlessApplication.h"

namespace {

class Screen : public testing::Test {
 protected:
  Screen() { SetApplication(&application); }
  ~Screen() override { SetApplication(nullptr); }
  THeadlessApplication application;
};

TEST_F(Screen, TimersRunWhenTheyAreDueInTheirOrder) {
  std::string story;
  TTimer slow(300, [&] { story += "s" + std::to_string(application.milliseconds()) + " "; });
  TTimer fast(200, [&] { story += "f" + std::to_string(application.milliseconds()) + " "; });
  application.advanceClock(1000);
  EXPECT_EQ(story, "") << "off when made";
  const auto start = application.milliseconds();
  ASSERT_EQ(start, 1000);
  slow.setEnabled(true);
  fast.setEnabled(true);
  application.advanceClock(150);
  fast.setEnabled(true);
  application.advanceClock(250);
  EXPECT_EQ(story, "f1200 s1300 f1400 ");
  fast.setInterval(50);
  fast.setInterval(50);
  application.advanceClock(100);
  EXPECT_EQ(story, "f1200 s1300 f1400 f1450 f1500 ");
  fast.setEnabled(false);
  application.advanceClock(100);
  EXPECT_EQ(story, "f1200 s1300 f1400 f1450 f1500 s1600 ");
}

TEST_F(Screen, ATimerMayGoInAHandler) {
  std::string story;
  auto other = std::make_unique<TTimer>(20, [&] { story += "other "; });
  std::unique_ptr<TTimer> own;
  own = std::make_unique<TTimer>(10, [&] {
    other.reset();
    own.reset();
    story += "own ";
  });
  other->setEnabled(true);
  own->setEnabled(true);
  application.advanceClock(100);
  EXPECT_EQ(story, "own ");
}

TEST_F(Screen, AnotherThreadSwitchesATimerThatRunsHere) {
  int ticks = 0;
  const auto here = std::this_thread::get_id();
  TTimer timer(250, [&] {
    ++ticks;
    EXPECT_EQ(std::this_thread::get_id(), here);
  });
  std::thread worker([&] {
    for (int i = 0; i < 200; ++i) {
      timer.setInterval(i % 2 == 0 ? 10 : 250);
      timer.setEnabled(true);
    }
    timer.setInterval(10);
  });
  for (int i = 0; i < 50; ++i) application.advanceClock(5);
  worker.join();
  application.advanceClock(10);
  EXPECT_GT(ticks, 0);
}

class CListener : public TForm {
 public:
  CListener(const std::string& name, std::string& story) : TForm(name), story_(story) {}
  void handleMessage(const SMessage& message) override {
    story_ += name() + std::to_string(message.number) + " ";
    if (message.number == 1) application().postMessage(*this, {2});
    TForm::handleMessage(message);
  }

 private:
  std::string& story_;
};

TEST_F(Screen, MessagesWaitTheirTurnAndGoWithTheirWindow) {
  std::string story;
  CListener a("A", story);
  auto b = std::make_unique<CListener>("B", story);
  application.postMessage(a, {1});
  application.postMessage(*b, {1});
  application.postMessage(a, {3});
  EXPECT_EQ(story, "");
  b.reset();
  application.deliverMessages();
  EXPECT_EQ(story, "A1 A3 A2 ");
  EXPECT_EQ(application.forms(), std::vector<TForm*>{&a});
}

TEST_F(Screen, AFormIsRaisedClosedOrKeptOpen) {
  TForm a("A"), b("B");
  application.raise(a);
  EXPECT_EQ(application.forms(), (std::vector<TForm*>{&b, &a}));
  a.show();
  a.onCloseQuery = [] { return false; };
  a.handleMessage({MESSAGE_CLOSE});
  EXPECT_TRUE(a.isVisible());
  a.onCloseQuery = {};
  EXPECT_TRUE(a.close());
  EXPECT_FALSE(a.isVisible());
}

TEST_F(Screen, AModalFormHasTheResultOfTheButtonThatEndedIt) {
  TForm form("Form");
  TPanel panel("Panel", &form);
  TButton ok("Ok", &panel), cancel("Cancel", &panel), plain("Plain", &panel);
  ok.setModalResult(MODAL_OK);
  cancel.setModalResult(MODAL_CANCEL);
  for (const auto& [button, result] : std::initializer_list<std::pair<TButton*, int>>{
           {&ok, MODAL_OK}, {&cancel, MODAL_CANCEL}, {&plain, MODAL_CANCEL}}) {
    application.inModalForm = [button = button](TForm& shown) {
      EXPECT_TRUE(shown.isVisible());
      button->click();
    };
    EXPECT_EQ(form.showModal(), result) << button->name();
    EXPECT_FALSE(form.isVisible());
  }
}

}  // namespace
