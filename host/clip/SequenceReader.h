#pragma once

#include "ImageFile.h"
#include "SequencePattern.h"
#include "clip/ClipReader.h"

/// The frames of an image sequence, one file each. Knows the kind of its first frame and checks the
/// last one on opening; any other that differs is named when it is met.
class CSequenceReader : public IClipReader {
 public:
  CSequenceReader(const std::string& path, int threads);
  const SClipInfo& info() const override { return info_; }
  void readFrame(int frame, std::uint16_t* samples) override;
  std::unique_ptr<IClipFrame> openFrame(int frame, CBufferPool& pool) override;
  bool isParallel() const override { return true; }
  std::string sourceFile(int frame) const override { return sequence_.pattern.filePath(frame); }
  std::map<std::string, std::string> metadata() const override;

 private:
  void requireFrame(int frame) const;

  SSequence sequence_;
  SImageTraits traits_;
  SClipInfo info_;
  int threads_ = 1;
};
