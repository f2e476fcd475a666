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
  application.advanceClock(30);
  fast.setInterval(50);
  application.advanceClock(70);
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

TEST_F(Screen, AHandlerMaySwitchTimersAndMoveTheClock) {
  std::string story;
  const auto tell = [&](const char* who) {
    story += who + std::to_string(application.milliseconds()) + " ";
  };
  TTimer first(10), second(10), third(10);
  first.onTimer = [&] {
    tell("a");
    third.setEnabled(false);
    first.setInterval(25);
  };
  second.onTimer = [&] {
    tell("b");
    second.setEnabled(false);
    application.advanceClock(40);  // as a dialog does that the operator leaves open
    tell("back");
  };
  third.onTimer = [&] { tell("never"); };
  for (TTimer* timer : {&first, &second, &third}) timer->setEnabled(true);
  application.advanceClock(30);
  EXPECT_EQ(story, "a10 b10 a35 back50 ") << "equal times in the order of making";
  EXPECT_EQ(application.milliseconds(), 50) << "the clock never turns back";
  application.advanceClock(10);
  EXPECT_EQ(story, "a10 b10 a35 back50 a60 ");
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

TEST_F(Screen, AHandlersWindowMayTakeAnothersMessagesAlong) {
  std::string story;
  auto victim = std::make_unique<CListener>("Victim", story);
  class CKiller : public TForm {
   public:
    explicit CKiller(std::unique_ptr<CListener>& prey) : TForm("Killer"), prey_(prey) {}
    void handleMessage(const SMessage&) override { prey_.reset(); }

   private:
    std::unique_ptr<CListener>& prey_;
  } killer(victim);
  application.setMainForm(victim.get());
  application.postMessage(*victim, {7});
  application.postMessage(killer, {8});
  application.postMessage(*victim, {9});
  application.deliverMessages();
  EXPECT_EQ(story, "Victim7 ");
  EXPECT_EQ(application.mainForm(), nullptr);
  EXPECT_EQ(application.forms(), std::vector<TForm*>{&killer});
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
  TButton off("Off", &panel), unsure("Unsure", &panel);
  ok.setModalResult(MODAL_OK);
  cancel.setModalResult(MODAL_CANCEL);
  off.setModalResult(MODAL_OK);
  off.setEnabled(false);
  unsure.setModalResult(MODAL_OK);
  unsure.onClick = [&] { form.setModalResult(MODAL_NONE); };
  for (const auto& [button, result] :
       std::initializer_list<std::pair<TButton*, int>>{{&cancel, MODAL_CANCEL},
                                                       {&ok, MODAL_OK},
                                                       {&plain, MODAL_CANCEL},
                                                       {&ok, MODAL_OK},
                                                       {&off, MODAL_CANCEL},
                                                       {&unsure, MODAL_CANCEL}}) {
    application.inModalForm = [button = button](TForm& shown) {
      EXPECT_TRUE(shown.isVisible());
      button->click();
    };
    EXPECT_EQ(form.showModal(), result) << button->name();
    EXPECT_FALSE(form.isVisible());
  }
}

}  // namespace
