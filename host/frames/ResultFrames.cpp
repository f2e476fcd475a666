#include "frames/ResultFrames.h"

#include <algorithm>
#include <cstring>
#include <iterator>

CResultFrames::CResultFrames(std::size_t bytes, std::size_t bytesPerFrame)
    : bytesPerFrame_(bytesPerFrame),
      capacity_(std::max<std::size_t>(1, bytes / bytesPerFrame)),
      pool_(bytesPerFrame, 0) {}

// What goes is let go of by the caller, without the lock: its memory returns to the pool.
std::vector<CResultFrames::Samples> CResultFrames::makeRoom(int frame) {
  std::vector<Samples> gone;
  const std::lock_guard lock(mutex_);
  const auto forget = [&](std::map<int, Samples>::iterator kept) {
    gone.push_back(std::move(kept->second));
    kept_.erase(kept);
  };
  if (const auto old = kept_.find(frame); old != kept_.end()) forget(old);
  while (kept_.size() >= capacity_) {
    const auto last = std::prev(kept_.end());
    forget(frame - kept_.begin()->first > last->first - frame ? kept_.begin() : last);
  }
  return gone;
}

void CResultFrames::put(int frame, const std::uint16_t* samples) {
  makeRoom(frame);
  auto kept = std::static_pointer_cast<std::uint16_t>(pool_.allocateShared());
  if (!kept) return;
  std::memcpy(kept.get(), samples, bytesPerFrame_);
  const std::lock_guard lock(mutex_);
  kept_[frame] = std::move(kept);
}

CResultFrames::Samples CResultFrames::find(int frame) const {
  const std::lock_guard lock(mutex_);
  const auto found = kept_.find(frame);
  return found == kept_.end() ? nullptr : found->second;
}

std::vector<int> CResultFrames::frames() const {
  const std::lock_guard lock(mutex_);
  std::vector<int> result;
  for (const auto& [frame, samples] : kept_) result.push_back(frame);
  return result;
}
