#include "SequenceWriter.h"

#include <algorithm>
#include <filesystem>

#include "ClipOutput.h"
#include "FrameRates.h"
#include "ImageFile.h"
#include "support/Trace.h"

namespace fs = std::filesystem;

namespace {

/// Depth that the file type has for the source's.
int DepthFor(const std::string& extension, int sourceDepth) {
  if (extension != "dpx") return sourceDepth <= 8 ? 8 : 16;
  for (const int depth : {8, 10, 12})
    if (sourceDepth <= depth) return depth;
  return 16;
}

class CSequenceWriter : public IClipWriter {
 public:
  CSequenceWriter(const SSequencePattern& pattern, IClipReader& source, int first,
                  const SWriteOptions& options)
      : pattern_(pattern), source_(source), threads_(std::max(1, options.threads)) {
    const SClipInfo& info = source.info();
    const std::string extension = pattern.extension() == "tiff" ? "tif" : pattern.extension();
    const std::string sourceFile = source.sourceFile(first);
    if (!sourceFile.empty()) kind_ = ReadImageTraits(sourceFile);
    fromSameType_ = !sourceFile.empty() && kind_.extension == extension;
    if (info.floatSamples && !fromSameType_)
      throw CClipError(pattern.text() + ": half and float samples go into their own type, " +
                       kind_.extension + ", only");
    if (extension == "exr" && !info.floatSamples)
      throw CClipError(pattern.text() + ": integer code values cannot be written as OpenEXR");
    if (fromSameType_) return;
    kind_.extension = extension;
    kind_.width = info.format.getPixelsPerLine();
    kind_.height = info.format.getLinesPerFrame();
    kind_.bitDepth = DepthFor(extension, info.bitDepth);
    kind_.originX = kind_.originY = 0;
    if (info.timecodeKnown && extension != "dpx")
      TraceAt(1, pattern.text() + ": this type of file has no place for a timecode");
  }

  void writeFrame(int frame, const std::uint16_t* samples) override {
    const std::string path = pattern_.filePath(frame);
    try {
      WriteImage(path, targetOf(frame), threads_, samples);
    } catch (const CClipError& error) {
      throw CClipError("frame " + std::to_string(frame) + ": " + error.what());
    }
  }

  void finish() override {}
  bool isParallel() const override { return true; }

 private:
  SImageTarget targetOf(int frame) const {
    SImageTarget target{kind_, source_.sourceFile(frame), {}, {}, frame};
    if (fromSameType_ || kind_.extension != "dpx") return target;
    const SClipInfo& info = source_.info();
    if (info.frameRateKnown) target.frameRate = info.frameRate;
    if (info.timecodeKnown)
      target.timecode = AdvanceTimecode(info.startTimecode, frame - info.firstFrame);
    return target;
  }

  SSequencePattern pattern_;
  IClipReader& source_;
  SImageTraits kind_;
  bool fromSameType_ = false;
  int threads_ = 1;
};

}  // namespace

std::unique_ptr<IClipWriter> CreateSequence(const std::string& path, IClipReader& source, int first,
                                            int end, const SWriteOptions& options) {
  const SSequencePattern pattern = ResolveOutput(path, source.info(), first, end).pattern;
  auto writer = std::make_unique<CSequenceWriter>(pattern, source, first, options);
  std::error_code error;
  if (!pattern.folder.empty() && !fs::is_directory(pattern.folder, error))
    fs::create_directory(pattern.folder, error);
  if (error) throw CClipError(pattern.folder + ": " + error.message());
  return writer;
}
