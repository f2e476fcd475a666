#include "support/Hook.h"

#include <algorithm>

namespace {

auto isCallBack(const void* subscriber, int slot) {
  return [subscriber, slot](const CBHook::CallBackData& entry) {
    return entry.subscriber == subscriber && entry.slot == slot;
  };
}

}  // namespace

void CBHook::subscribe(const void* subscriber, int slot, std::function<void()> call) {
  subscriberAdded_ = true;
  const auto entry =
      std::find_if(callBacks_.begin(), callBacks_.end(), isCallBack(subscriber, slot));
  if (entry != callBacks_.end()) {
    entry->call = std::move(call);
  } else {
    callBacks_.push_back({subscriber, slot, std::move(call)});
  }
}

void CBHook::unsubscribe(const void* subscriber, int slot) {
  std::erase_if(callBacks_, isCallBack(subscriber, slot));
}

void CBHook::notify() {
  if (holdCount_ > 0) {
    pending_ = true;
    return;
  }
  pending_ = false;
  subscriberAdded_ = false;

  std::vector<std::pair<const void*, int>> round;
  round.reserve(callBacks_.size());
  for (const CallBackData& entry : callBacks_) round.emplace_back(entry.subscriber, entry.slot);
  for (const auto& [subscriber, slot] : round) {
    // Looked up anew: an earlier callback may have taken this one out, and its owner with it.
    const auto entry =
        std::find_if(callBacks_.begin(), callBacks_.end(), isCallBack(subscriber, slot));
    if (entry == callBacks_.end()) continue;
    const std::function<void()> call = entry->call;  // it may take itself out while it runs
    if (call) call();
  }
}
