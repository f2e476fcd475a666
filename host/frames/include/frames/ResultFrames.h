#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

/// Finished frames of a pass, kept for whoever wants to look at them again. Bounded: what is
/// farthest from the newest goes first. THREAD: any.
class CResultFrames {
 public:
  using Samples = std::shared_ptr<const std::uint16_t>;

  /// `bytes`: bound on what is kept; the newest frame is kept whatever it says.
  explicit CResultFrames(std::size_t bytes) : bytes_(bytes) {}

  /// Copies `count` samples.
  void put(int frame, const std::uint16_t* samples, std::size_t count);
  /// Null: not kept. What was given out outlives everything.
  Samples find(int frame) const;
  /// In order.
  std::vector<int> frames() const;
  void clear();

 private:
  using Buffer = std::shared_ptr<std::vector<std::uint16_t>>;
  Buffer takeBuffer(int frame, std::size_t count);

  const std::size_t bytes_;
  mutable std::mutex mutex_;
  std::map<int, Buffer> kept_;  // guarded by mutex_
  std::size_t used_ = 0;        // guarded by mutex_
};
