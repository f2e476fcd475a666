#include "DecodedFrame.h"

#include <algorithm>
#include <string>

#include "clip/ClipReader.h"

namespace {

class CDecodedFrame : public IClipFrame {
 public:
  CDecodedFrame(const CImageFormat& format, CBufferPool& pool)
      : format_(format),
        pool_(pool),
        samples_(static_cast<std::uint16_t*>(pool.allocateBuffer())) {}
  ~CDecodedFrame() override { pool_.freeBuffer(samples_); }
  CDecodedFrame(const CDecodedFrame&) = delete;
  CDecodedFrame& operator=(const CDecodedFrame&) = delete;

  std::uint16_t* samples() { return samples_; }

  void read(std::uint16_t* samples) const override {
    std::copy_n(samples_, format_.getBytesPerField() / sizeof *samples_, samples);
  }
  void readPart(const SRect& part, std::uint16_t* samples) const override {
    const auto pitch = 3 * static_cast<std::size_t>(format_.getPixelsPerLine());
    const auto count = 3 * static_cast<std::size_t>(part.right - part.left + 1);
    const std::uint16_t* row = samples_ + static_cast<std::size_t>(part.top) * pitch +
                               3 * static_cast<std::size_t>(part.left);
    for (int y = part.top; y <= part.bottom; ++y, row += pitch)
      samples = std::copy_n(row, count, samples);
  }
  std::size_t bytes() const override { return format_.getBytesPerField(); }

 private:
  const CImageFormat format_;
  CBufferPool& pool_;
  std::uint16_t* const samples_;
};

}  // namespace

std::unique_ptr<IClipFrame> DecodeFrame(IClipReader& reader, int frame, CBufferPool& pool) {
  auto decoded = std::make_unique<CDecodedFrame>(reader.info().format, pool);
  if (decoded->samples() == nullptr)
    throw CClipError(reader.info().path + ": frame " + std::to_string(frame) +
                     ": no memory for the frame");
  reader.readFrame(frame, decoded->samples());
  return decoded;
}

std::unique_ptr<IClipFrame> IClipReader::openFrame(int frame, CBufferPool& pool) {
  return DecodeFrame(*this, frame, pool);
}
