#pragma once

#include <functional>
#include <utility>
#include <vector>

/// Change notifier: an ordered list of subscriptions and a hold count.
/// THREAD: the user-interface thread.
class CBHook {
 public:
  /// One subscription: who, which of their callbacks, and the call itself. `subscriber` and `slot`
  /// are its identity; `slot` tells several callbacks of one subscriber apart.
  struct CallBackData {
    const void* subscriber = nullptr;
    int slot = 0;
    std::function<void()> call;
  };

  /// Subscribing the same (subscriber, slot) again replaces the earlier entry in its place.
  void subscribe(const void* subscriber, int slot, std::function<void()> call);
  void unsubscribe(const void* subscriber, int slot);

  /// While held, a notification is only remembered; otherwise every callback is called in order of
  /// subscription and the remembered mark is cleared. A callback may subscribe and unsubscribe: one
  /// taken out before its turn is not called, one put in is called from the next notification on.
  void notify();
  void hold() { ++holdCount_; }
  /// Does not notify by itself.
  void release() {
    if (holdCount_ > 0) --holdCount_;
  }
  bool isPending() const { return pending_; }

 protected:
  bool subscriberAdded_ = false;  // since the last notification

 private:
  std::vector<CallBackData> callBacks_;
  int holdCount_ = 0;
  bool pending_ = false;
};

/// Read-only observable value: reads through a backing field or a getter.
template <typename T>
class roValueProperty : public CBHook {
 public:
  explicit roValueProperty(const T* field) : field_(field) {}
  explicit roValueProperty(std::function<T()> getter) : getter_(std::move(getter)) {}
  roValueProperty(const roValueProperty&) = delete;
  roValueProperty& operator=(const roValueProperty&) = delete;

  T get() const { return field_ ? *field_ : getter_(); }
  operator T() const { return get(); }  // NOLINT: a property reads like its value

 private:
  const T* field_ = nullptr;
  std::function<T()> getter_;
};

/// Observable value that is written through a setter. A write notifies when the value changed, when
/// somebody subscribed since the last notification, or always if so configured.
template <typename T>
class lValueProperty : public roValueProperty<T> {
 public:
  lValueProperty(const T* field, std::function<void(const T&)> setter, bool alwaysNotify = false)
      : roValueProperty<T>(field), setter_(std::move(setter)), alwaysNotify_(alwaysNotify) {}

  lValueProperty& operator=(const T& value) {
    const bool changed = !(this->get() == value);
    setter_(value);
    if (changed || this->subscriberAdded_ || alwaysNotify_) this->notify();
    return *this;
  }

 private:
  std::function<void(const T&)> setter_;
  bool alwaysNotify_;
};
