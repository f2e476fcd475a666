#pragma once

#include <cstdint>
#include <vector>

#include "clip/ClipReader.h"

/// Two clips as one: left picture, a narrow bar, right picture, both reduced so that the whole is
/// at most `maxWidth` wide (and even in both directions, as video wants it). Frame numbers and rate
/// are the left clip's. THREAD: one at a time. The two readers must outlive it and show frames of
/// one size.
class CSideBySideReader : public IClipReader {
 public:
  /// Frames [first, end) of both; `rightOffset` is added to a frame number for the right clip.
  CSideBySideReader(IClipReader& left, IClipReader& right, int first, int end, int rightOffset,
                    int maxWidth);

  const SClipInfo& info() const override { return info_; }
  void readFrame(int frame, std::uint16_t* samples) override;

 private:
  void place(const std::vector<std::uint16_t>& picture, int left, std::uint16_t* samples) const;

  IClipReader& left_;
  IClipReader& right_;
  const int rightOffset_;
  int reduction_ = 1;  // whole-number box filter: every source pixel counts the same
  int pictureWidth_ = 0;
  int pictureHeight_ = 0;
  SClipInfo info_;
  std::vector<std::uint16_t> picture_;
};
