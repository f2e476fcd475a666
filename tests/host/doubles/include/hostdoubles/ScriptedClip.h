#pragma once

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "clip/ClipWriter.h"

/// Every sample of frame f is f. Fails on demand and counts what is asked of it.
class CScriptedReader : public IClipReader {
 public:
  CScriptedReader(int first, int end, bool parallel = false) : parallel_(parallel) {
    info_.path = "scripted.####.dpx";
    info_.format = CImageFormat(16, 8);
    info_.firstFrame = first;
    info_.endFrame = end;
  }
  const SClipInfo& info() const override { return info_; }
  bool isParallel() const override { return parallel_; }
  void readFrame(int frame, std::uint16_t* samples) override {
    ++reads;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      order_.push_back(frame);
    }
    if (frame == failingFrame)
      throw CClipError(info_.path + ": frame " + std::to_string(frame) + " is broken");
    std::fill(samples, samples + info_.format.getBytesPerField() / 2,
              static_cast<std::uint16_t>(frame));
  }

  /// Frames in the order in which they were asked for.
  std::vector<int> order() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return order_;
  }

  int failingFrame = -1;
  std::atomic<int> reads{0};

 private:
  SClipInfo info_;
  const bool parallel_;
  mutable std::mutex mutex_;
  std::vector<int> order_;
};

/// Remembers the first sample of every frame it got.
class CScriptedWriter : public IClipWriter {
 public:
  explicit CScriptedWriter(bool parallel = false) : parallel_(parallel) {}
  void writeFrame(int frame, const std::uint16_t* samples) override {
    if (frame == failingFrame)
      throw CClipError("scripted output: frame " + std::to_string(frame) + ": disk full");
    std::lock_guard<std::mutex> lock(mutex_);
    order.push_back(frame);
    firstSample[frame] = samples[0];
  }
  void finish() override {}
  bool isParallel() const override { return parallel_; }

  int failingFrame = -1;
  std::vector<int> order;
  std::map<int, int> firstSample;

 private:
  std::mutex mutex_;
  const bool parallel_;
};
