#include "support/Hook.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class Hook : public testing::Test {
 protected:
  void listen(const void* who, int slot, const std::string& name) {
    hook.subscribe(who, slot, [this, name] { calls += name; });
  }
  std::string notified() {
    calls.clear();
    hook.notify();
    return calls;
  }

  CBHook hook;
  std::string calls;
  int me = 0, you = 0;
};

TEST_F(Hook, CallsInOrderOfSubscriptionAndReplacesInPlace) {
  EXPECT_EQ(notified(), "");
  listen(&me, 0, "a");
  listen(&you, 0, "b");
  listen(&me, 1, "c");
  EXPECT_EQ(notified(), "abc");
  listen(&me, 0, "A");
  EXPECT_EQ(notified(), "Abc");
  hook.unsubscribe(&me, 0);
  hook.unsubscribe(&me, 7);
  EXPECT_EQ(notified(), "bc");
}

TEST_F(Hook, HoldingRemembersOneNotification) {
  listen(&me, 0, "a");
  hook.hold();
  hook.hold();
  EXPECT_EQ(notified(), "");
  hook.release();
  EXPECT_EQ(notified(), "");
  EXPECT_TRUE(hook.isPending());
  hook.release();
  hook.release();
  EXPECT_TRUE(hook.isPending());
  EXPECT_EQ(notified(), "a") << "releasing more often than holding must not matter";
  EXPECT_FALSE(hook.isPending());
}

TEST_F(Hook, CallbackMayTakeOutOthersAndItselfAndPutInNewOnes) {
  hook.subscribe(&me, 0, [this] {
    calls += "1";
    hook.unsubscribe(&you, 0);
    hook.unsubscribe(&me, 0);
    for (int slot = 10; slot < 40; ++slot) listen(&me, slot, "n");
    calls += "2";
  });
  listen(&you, 0, "gone");
  listen(&you, 1, "b");
  EXPECT_EQ(notified(), "12b");
  EXPECT_EQ(notified(), "b" + std::string(30, 'n'));
}

TEST_F(Hook, CallbackMayNotifyAgain) {
  int depth = 0;
  hook.subscribe(&me, 0, [&] {
    if (++depth < 3) hook.notify();
  });
  listen(&you, 0, "b");
  EXPECT_EQ(notified(), "bbb");
}

struct SValue {
  int field = 1;
  int writes = 0;
  int fired = 0;
  lValueProperty<int> property;
  explicit SValue(bool always = false)
      : property(
            &field,
            [this](const int& value) {
              field = value;
              ++writes;
            },
            always) {}
  void listen(int slot) {
    property.subscribe(this, slot, [this] { ++fired; });
  }
};

TEST(ValueProperty, FiresOnChangeOnANewListenerAndAlwaysWhenToldTo) {
  SValue value;
  value.listen(0);
  value.property = 1;
  EXPECT_EQ(value.fired, 1) << "a listener was added since the last notification";
  value.property = 1;
  EXPECT_EQ(value.fired, 1);
  value.property = 2;
  EXPECT_EQ(value.fired, 2);
  EXPECT_EQ(value.property, 2);
  EXPECT_EQ(value.writes, 3);

  SValue always(true);
  always.listen(0);
  for (int i = 0; i < 3; ++i) always.property = 1;
  EXPECT_EQ(always.fired, 3);
}

TEST(ValueProperty, ReadsThroughFieldOrGetter) {
  int field = 5;
  const roValueProperty<int> byField(&field);
  const roValueProperty<int> byGetter([&field] { return field * 2; });
  field = 7;
  EXPECT_EQ(byField.get(), 7);
  EXPECT_EQ(byGetter, 14);
}

TEST(ValueProperty, HeldChangeIsToldByTheNextNotification) {
  SValue value;
  value.listen(0);
  value.property.hold();
  value.property = 9;
  EXPECT_EQ(value.fired, 0);
  EXPECT_EQ(value.property.get(), 9);
  value.property.release();
  EXPECT_TRUE(value.property.isPending());
  value.property.notify();
  EXPECT_EQ(value.fired, 1);
}

}  // namespace
