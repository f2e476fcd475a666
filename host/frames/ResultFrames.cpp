#include "frames/ResultFrames.h"

#include <algorithm>
#include <iterator>

// A buffer that makes room is used again where nobody else holds it: fresh memory of this size
// costs more than the copy.
CResultFrames::Buffer CResultFrames::takeBuffer(int frame, std::size_t count) {
  Buffer spare;
  const auto forget = [&](std::map<int, Buffer>::iterator kept) {
    used_ -= kept->second->size() * sizeof(std::uint16_t);
    spare = std::move(kept->second);
    kept_.erase(kept);
  };
  if (const auto old = kept_.find(frame); old != kept_.end()) forget(old);
  while (!kept_.empty() && used_ + count * sizeof(std::uint16_t) > bytes_) {
    const auto last = std::prev(kept_.end());
    forget(frame - kept_.begin()->first > last->first - frame ? kept_.begin() : last);
  }
  if (spare && spare.use_count() == 1 && spare->size() == count) return spare;
  return nullptr;
}

void CResultFrames::put(int frame, const std::uint16_t* samples, std::size_t count) {
  Buffer buffer;
  {
    const std::lock_guard lock(mutex_);
    buffer = takeBuffer(frame, count);
  }
  if (!buffer) buffer = std::make_shared<std::vector<std::uint16_t>>(count);
  std::copy_n(samples, count, buffer->begin());
  const std::lock_guard lock(mutex_);
  used_ += count * sizeof(std::uint16_t);
  kept_[frame] = std::move(buffer);
}

CResultFrames::Samples CResultFrames::find(int frame) const {
  const std::lock_guard lock(mutex_);
  const auto found = kept_.find(frame);
  if (found == kept_.end()) return nullptr;
  return {found->second, found->second->data()};
}

std::vector<int> CResultFrames::frames() const {
  const std::lock_guard lock(mutex_);
  std::vector<int> result;
  for (const auto& [frame, buffer] : kept_) result.push_back(frame);
  return result;
}

void CResultFrames::clear() {
  const std::lock_guard lock(mutex_);
  kept_.clear();
  used_ = 0;
}
