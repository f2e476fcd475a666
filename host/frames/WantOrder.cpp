#include "WantOrder.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

class COrder {
 public:
  COrder(const SWant& want, std::size_t count, const std::function<bool(int)>& isLeftOut)
      : want_(want), count_(count), isLeftOut_(isLeftOut) {
    add(want.frame);
  }

  void playOn() {
    const int length = want_.end - want_.first;
    int at = entry();
    for (int i = 0; i < length && !isFull(); ++i) {
      addOther(at);
      at += want_.direction > 0 ? 1 : -1;
      if (at == want_.end) at = want_.first;
      if (at < want_.first) at = want_.end - 1;
    }
  }

  void playBackInBlocks() {
    const int at = entry();
    const int current = blockOf(at);
    const int blocks = blockOf(want_.end - 1) + 1;
    addRun(beginOf(current), at + 1);
    for (int i = 1; i < blocks; ++i) addBlock((current - i + blocks) % blocks);
    addRun(at + 1, beginOf(current + 1));
  }

  void spread() {
    const int reach =
        std::max(std::abs(want_.frame - want_.first), std::abs(want_.end - 1 - want_.frame));
    for (int distance = 1; distance <= reach && !isFull(); ++distance) {
      addRun(want_.frame + distance, want_.frame + distance + 1);
      addRun(want_.frame - distance, want_.frame - distance + 1);
    }
  }

  void spreadInBlocks() {
    const int at = std::clamp(want_.frame, want_.first, want_.end - 1);
    const int current = blockOf(at);
    addRun(at, beginOf(current + 1));
    addRun(beginOf(current), at);
    const int reach = std::max(current, blockOf(want_.end - 1) - current);
    for (int distance = 1; distance <= reach && !isFull(); ++distance) {
      addBlock(current + distance);
      addBlock(current - distance);
    }
  }

  std::vector<int> take() { return std::move(frames_); }

 private:
  bool isFull() const { return frames_.size() >= count_; }
  int blockOf(int frame) const { return (frame - want_.first) / want_.block; }
  int beginOf(int block) const { return want_.first + block * want_.block; }

  // Where playing is, or where it comes into the range.
  int entry() const {
    if (want_.frame >= want_.first && want_.frame < want_.end) return want_.frame;
    return want_.direction > 0 ? want_.first : want_.end - 1;
  }

  void add(int frame) {
    if (!isFull() && !isLeftOut_(frame)) frames_.push_back(frame);
  }
  void addOther(int frame) {
    if (frame != want_.frame) add(frame);
  }
  void addRun(int first, int end) {
    first = std::max(first, want_.first);
    end = std::min(end, want_.end);
    for (int frame = first; frame < end && !isFull(); ++frame) addOther(frame);
  }
  void addBlock(int block) { addRun(beginOf(block), beginOf(block + 1)); }

  const SWant& want_;
  const std::size_t count_;
  const std::function<bool(int)>& isLeftOut_;
  std::vector<int> frames_;
};

}  // namespace

std::vector<int> OrderOfWant(const SWant& want, std::size_t count,
                             const std::function<bool(int frame)>& isLeftOut) {
  COrder order(want, count, isLeftOut);
  if (want.first < want.end) {
    if (want.direction == 0 && want.block > 1)
      order.spreadInBlocks();
    else if (want.direction == 0)
      order.spread();
    else if (want.direction < 0 && want.block > 1)
      order.playBackInBlocks();
    else
      order.playOn();
  }
  return order.take();
}
