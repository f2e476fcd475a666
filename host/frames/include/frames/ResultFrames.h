#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "support/Memory.h"

/// Finished frames of a pass, kept for whoever wants to look at them again. Bounded: what is
/// farthest from the newest goes first. THREAD: any.
class CResultFrames {
 public:
  /// `bytesPerFrame` of samples; outlives everything where someone holds it.
  using Samples = std::shared_ptr<const std::uint16_t>;

  /// `bytes`: bound on what is kept; the newest frame is kept whatever it says.
  CResultFrames(std::size_t bytes, std::size_t bytesPerFrame);

  /// Copies the frame's samples. Without memory for them the frame is not kept.
  void put(int frame, const std::uint16_t* samples);
  /// Null: not kept.
  Samples find(int frame) const;
  /// In order.
  std::vector<int> frames() const;

 private:
  std::vector<Samples> makeRoom(int frame);

  const std::size_t bytesPerFrame_;
  const std::size_t capacity_;  // in frames
  CBufferPool pool_;
  mutable std::mutex mutex_;
  std::map<int, Samples> kept_;  // guarded by mutex_
};
