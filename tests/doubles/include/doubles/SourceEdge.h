#pragma once

#include <algorithm>
#include <functional>
#include <memory>

#include "ToolObj/ToolNode.h"
#include "doubles/CallLog.h"

/// Input edge that makes the frames it is asked for, every sample the frame's number; a withheld
/// frame never comes. `onFrame` sees each frame before it is handed over and may change it.
class CSourceEdge : public CToolEdge {
 public:
  explicit CSourceEdge(const CImageFormat& format, CBufferPool& pool) : pool_(pool) {
    setImageFormat(format);
  }
  CCallLog requests;
  int withheldFrame = -1;
  std::function<void(CToolFrameBuffer&)> onFrame;

 protected:
  CToolFrameBuffer* requestFrame(int frame) override {
    requests.add(CCallLog::text("request", frame));
    if (frame < 0 || frame == withheldFrame) return nullptr;
    auto buffer = std::make_unique<CToolFrameBuffer>(imageFormat(), &pool_);
    if (!buffer->ensureSamples()) return nullptr;
    buffer->setFrameIndex(frame);
    const std::size_t samples = imageFormat()->getBytesPerField() / sizeof(std::uint16_t);
    std::fill_n(buffer->samples(), samples, static_cast<std::uint16_t>(frame));
    if (onFrame) onFrame(*buffer);
    return buffer.release();
  }

 private:
  CBufferPool& pool_;
};
