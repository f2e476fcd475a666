#include "ToolObj/ToolFrameBuffer.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "FrameTrace.h"
#include "support/Trace.h"

namespace {

// Larger frames are built all the same; the line tells whoever reads the trace.
constexpr int WIDTH_LIMIT = 10000;
constexpr int HEIGHT_LIMIT = 7500;

void traceNewBuffer(const CImageFormat* frameImageFormat) {
  if (!TracesAt(FRAME_TRACE_LEVEL)) return;
  if (!frameImageFormat) {
    TraceAt(FRAME_TRACE_LEVEL, "NEW tool frame buffer - NULL frameImageFormat!");
    return;
  }
  std::string line = "NEW tool frame buffer, ";
  line.append(std::to_string(frameImageFormat->getTotalFrameWidth())).append(" x ");
  line.append(std::to_string(frameImageFormat->getTotalFrameHeight()));
  TraceAt(FRAME_TRACE_LEVEL, line);
}

}  // namespace

CToolFrameBuffer::CToolFrameBuffer(const CImageFormat* format, CBufferPool* allocator)
    : format_(format ? std::make_unique<CImageFormat>(*format) : nullptr), allocator_(allocator) {
  if ((format == nullptr) != (allocator == nullptr)) {
    TraceAssertion(FRAME_TRACE_FILE, 64,
                   "(newImageFormat == NULL && frameBufferAllocator == NULL) || "
                   "(newImageFormat != NULL && frameBufferAllocator != NULL)");
  }
  if (format_ && format_->getTotalFrameWidth() >= WIDTH_LIMIT) {
    TraceAssertion(FRAME_TRACE_FILE, 69, "frameImageFormat->getTotalFrameWidth() < 10000");
  }
  if (format_ && format_->getTotalFrameHeight() >= HEIGHT_LIMIT) {
    TraceAssertion(FRAME_TRACE_FILE, 70, "frameImageFormat->getTotalFrameHeight() < 7500");
  }
  traceNewBuffer(format_.get());
}

CToolFrameBuffer::~CToolFrameBuffer() {
  releaseSamples();
}

bool CToolFrameBuffer::takeSamples() {
  if (!samples_ && allocator_) {
    samples_ = std::static_pointer_cast<std::uint16_t>(allocator_->allocateShared());
    shared_ = false;
  }
  return samples_ != nullptr;
}

bool CToolFrameBuffer::takeFieldBuffers() {
  const auto take = [this](SInvisibleFieldBuffer& field) {
    if (!field.buffer && allocator_)
      field.buffer = static_cast<std::uint16_t*>(allocator_->allocateBuffer());
    return field.buffer != nullptr;
  };
  return std::all_of(invisibleFields_.begin(), invisibleFields_.end(), take);
}

bool CToolFrameBuffer::ensureSamples() {
  return takeSamples() && takeFieldBuffers();
}

std::uint16_t* CToolFrameBuffer::samples() {
  if (!shared_) return samples_.get();
  const std::shared_ptr<std::uint16_t> before = std::move(samples_);
  if (!takeSamples()) {
    samples_ = before;
    shared_ = true;
    return nullptr;
  }
  std::memcpy(samples_.get(), before.get(), allocator_->bytesPerBuffer());
  return samples_.get();
}

std::shared_ptr<const std::uint16_t> CToolFrameBuffer::shareSamples() {
  shared_ = samples_ != nullptr;
  return samples_;
}

void CToolFrameBuffer::releaseSamples() {
  samples_.reset();
  shared_ = false;
  if (!allocator_) return;
  for (SInvisibleFieldBuffer& field : invisibleFields_) {
    allocator_->freeBuffer(std::exchange(field.buffer, nullptr));
  }
}

bool CToolFrameBuffer::CopyFrom(const CToolFrameBuffer& source, bool withSamples, bool withFields) {
  frameKind_ = source.frameKind_;
  endOfMaterial_ = source.endOfMaterial_;
  copied_ = source.copied_;
  if (withSamples) {
    if (std::exchange(shared_, false)) samples_.reset();  // they stay with their other holders
    if (!takeSamples()) return false;
  }
  if (withFields) {
    if (invisibleFields_.size() < source.invisibleFields_.size()) {
      invisibleFields_.resize(source.invisibleFields_.size());
    }
    for (std::size_t i = 0; i < source.invisibleFields_.size(); ++i) {
      invisibleFields_[i].fieldIndex = source.invisibleFields_[i].fieldIndex;
      invisibleFields_[i].fieldPeriod = source.invisibleFields_[i].fieldPeriod;
    }
    if (!takeFieldBuffers()) return false;
  }
  changedRegions_ = source.changedRegions_;
  if (!format_) return true;
  const std::size_t bytes = format_->getBytesPerField();
  if (withSamples && source.samples_) std::memcpy(samples_.get(), source.samples(), bytes);
  if (withFields) {
    for (std::size_t i = 0; i < source.invisibleFields_.size(); ++i) {
      const std::uint16_t* from = source.invisibleFields_[i].buffer;
      if (from) std::memcpy(invisibleFields_[i].buffer, from, bytes);
    }
  }
  return true;
}

void CToolFrameBuffer::keepOriginals() {
  if (format_ && samples_) {
    originalValues_.ReplacePixelsFromFrame(
        samples_.get(), format_->getPixelsPerLine(), format_->getLinesPerFrame(),
        format_->getComponentCountExcAlpha(), CPixelRegionList::EField::both);
  }
  changedRegions_.TakeFrom(originalValues_);
}

void CToolFrameBuffer::mergeInvisibleFields() {
  if (!format_ || !samples_) return;
  for (const SInvisibleFieldBuffer& field : invisibleFields_) {
    if (!field.buffer) continue;
    const auto copyLinesOf = [this, &field](CPixelRegionList::EField lines) {
      originalValues_.CopyPixelsFrameToFrame(
          samples_.get(), field.buffer, format_->getPixelsPerLine(), format_->getLinesPerFrame(),
          format_->getComponentCountExcAlpha(), lines);
    };
    const bool everyField = field.fieldPeriod < 2;
    const bool ownField = !everyField && field.fieldIndex % field.fieldPeriod == 0;
    if (everyField || ownField) copyLinesOf(CPixelRegionList::EField::first);
    if (everyField || !ownField) copyLinesOf(CPixelRegionList::EField::second);
  }
}
