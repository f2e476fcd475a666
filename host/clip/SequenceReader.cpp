#include "SequenceReader.h"

#include <algorithm>
#include <utility>

#include "CodeValues.h"
#include "DpxPicture.h"

namespace {

std::string KindText(const SImageTraits& traits, bool isSingleFile) {
  std::string name = traits.extension;
  for (char& c : name) c = static_cast<char>(c - 32);
  if (name == "TIF") name = "TIFF";
  if (name == "EXR") name = "OpenEXR";
  return name + (isSingleFile ? " image" : " sequence");
}

std::string FrameText(int frame) {
  return "frame " + std::to_string(frame) + ": ";
}

CImageFormat FormatOf(const SImageTraits& traits) {
  CImageFormat format(traits.width, traits.height);
  format.setPixelPacking(traits.bitDepth == 8    ? CImageFormat::PACKING_8_BITS
                         : traits.bitDepth == 10 ? CImageFormat::PACKING_10_BITS
                                                 : CImageFormat::PACKING_16_BITS);
  const std::uint16_t one = WidenHalf(0x3C00);
  if (traits.isFloat) format.setBlackWhite({0, 0, 0}, {one, one, one});
  return format;
}

/// A frame that lies in its file as it is.
class CPlainFrame : public IClipFrame {
 public:
  CPlainFrame(std::unique_ptr<CDpxPicture> picture, int frame)
      : picture_(std::move(picture)), frame_(frame) {}
  void read(std::uint16_t* samples) const override {
    named([&] { picture_->read(samples); });
  }
  void readPart(const SRect& part, std::uint16_t* samples) const override {
    named([&] { picture_->readPart(part, samples); });
  }
  void fetch() const override {
    named([&] { picture_->fetch(); });
  }
  std::size_t bytes() const override { return 0; }

 private:
  template <typename Read>
  void named(Read read) const {
    try {
      read();
    } catch (const CClipError& error) {
      throw CClipError(FrameText(frame_) + error.what());
    }
  }

  const std::unique_ptr<const CDpxPicture> picture_;
  const int frame_;
};

}  // namespace

CSequenceReader::CSequenceReader(const std::string& path, int threads)
    : sequence_(FindSequence(path)), threads_(std::max(1, threads)) {
  const std::vector<int>& frames = sequence_.frames;
  const std::string lastFile = sequence_.pattern.filePath(frames.back());
  traits_ = ReadImageTraits(sequence_.pattern.filePath(frames.front()));
  const SImageTraits last = ReadImageTraits(lastFile);
  if (!last.isSameKind(traits_))
    throw CClipError(FrameText(frames.back()) + lastFile + ": is " + last.text() +
                     ", the first frame is " + traits_.text());
  info_.path = path;
  info_.kind = KindText(traits_, sequence_.pattern.isSingleFile());
  info_.format = FormatOf(traits_);
  info_.bitDepth = traits_.bitDepth;
  info_.floatSamples = traits_.isFloat;
  info_.firstFrame = frames.front();
  info_.endFrame = frames.back() + 1;
  info_.frameRateKnown = traits_.frameRate.has_value();
  info_.frameRate = traits_.frameRate.value_or(SFrameRate{});
  info_.timecodeKnown = traits_.timecode.has_value();
  info_.startTimecode = traits_.timecode.value_or(CTimecode(0, 24, false));
  info_.fileExtension = sequence_.pattern.extension();
}

std::map<std::string, std::string> CSequenceReader::metadata() const {
  return ReadImageMetadata(sourceFile(info_.firstFrame));
}

void CSequenceReader::requireFrame(int frame) const {
  if (frame < info_.firstFrame || frame >= info_.endFrame)
    throw CClipError(FrameText(frame) + info_.path + ": outside the clip");
}

void CSequenceReader::readFrame(int frame, std::uint16_t* samples) {
  requireFrame(frame);
  try {
    ReadImage(sourceFile(frame), traits_, threads_, samples);
  } catch (const CClipError& error) {
    throw CClipError(FrameText(frame) + error.what());
  }
}

std::unique_ptr<IClipFrame> CSequenceReader::openFrame(int frame, CBufferPool& pool) {
  requireFrame(frame);
  std::unique_ptr<CDpxPicture> picture;
  try {
    // Alpha is looked at everywhere or not at all: such pictures are read whole.
    if (traits_.channels == 3) picture = OpenPlainPicture(sourceFile(frame), traits_);
  } catch (const CClipError& error) {
    throw CClipError(FrameText(frame) + error.what());
  }
  if (!picture) return IClipReader::openFrame(frame, pool);
  return std::make_unique<CPlainFrame>(std::move(picture), frame);
}
