#include "session/SideBySide.h"

#include <algorithm>

namespace {

constexpr int BAR_WIDTH = 8;
constexpr std::uint16_t BAR_SAMPLE = 0x3000;

int evenBelow(int value) {
  return std::max(2, value & ~1);
}

}  // namespace

CSideBySideReader::CSideBySideReader(IClipReader& left, IClipReader& right, int first, int end,
                                     int rightOffset, int maxWidth)
    : left_(left), right_(right), rightOffset_(rightOffset), info_(left.info()) {
  const CImageFormat& format = left.info().format;
  while (2 * (format.getPixelsPerLine() / reduction_) + BAR_WIDTH > maxWidth) ++reduction_;
  pictureWidth_ = evenBelow(format.getPixelsPerLine() / reduction_);
  pictureHeight_ = evenBelow(format.getLinesPerFrame() / reduction_);
  info_.format = CImageFormat(2 * pictureWidth_ + BAR_WIDTH, pictureHeight_);
  info_.firstFrame = first;
  info_.endFrame = end;
  info_.bitDepth = std::min(info_.bitDepth, 10);
  picture_.resize(format.getBytesPerField() / sizeof(std::uint16_t));
}

void CSideBySideReader::readFrame(int frame, std::uint16_t* samples) {
  const std::size_t count = info_.format.getBytesPerField() / sizeof(std::uint16_t);
  std::fill(samples, samples + count, BAR_SAMPLE);
  left_.readFrame(frame, picture_.data());
  place(picture_, 0, samples);
  right_.readFrame(frame + rightOffset_, picture_.data());
  place(picture_, pictureWidth_ + BAR_WIDTH, samples);
}

void CSideBySideReader::place(const std::vector<std::uint16_t>& picture, int left,
                              std::uint16_t* samples) const {
  const std::size_t sourceStride =
      static_cast<std::size_t>(left_.info().format.getPixelsPerLine()) * 3;
  const std::size_t targetStride = static_cast<std::size_t>(info_.format.getPixelsPerLine()) * 3;
  const unsigned area = static_cast<unsigned>(reduction_ * reduction_);
  std::vector<unsigned> sums(static_cast<std::size_t>(pictureWidth_) * 3);
  for (int y = 0; y < pictureHeight_; ++y) {
    std::fill(sums.begin(), sums.end(), area / 2);
    for (int dy = 0; dy < reduction_; ++dy) {
      const std::uint16_t* source =
          picture.data() + static_cast<std::size_t>(y * reduction_ + dy) * sourceStride;
      for (int x = 0; x < pictureWidth_; ++x)
        for (int dx = 0; dx < reduction_; ++dx)
          for (int c = 0; c < 3; ++c) sums[static_cast<std::size_t>(3 * x + c)] += *source++;
    }
    std::uint16_t* target =
        samples + static_cast<std::size_t>(y) * targetStride + static_cast<std::size_t>(left) * 3;
    for (std::size_t i = 0; i < sums.size(); ++i)
      target[i] = static_cast<std::uint16_t>(sums[i] / area);
  }
}
