#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "FrameTrace.h"
#include "ToolObj/ToolFrameBuffer.h"
#include "support/Trace.h"

// Frames are deleted and lines are traced outside the lock: both reach locks of others.

namespace {

void traceCache(const std::string& event, int frame, const char* end) {
  if (!TracesAt(FRAME_TRACE_LEVEL)) return;
  std::string line = "'''''''''''' TFC: ";
  TraceAt(FRAME_TRACE_LEVEL, line.append(event).append(std::to_string(frame)).append(end));
}

int indexOf(const CToolFrameBuffer* frame) {
  return frame ? frame->frameIndex() : -1;
}

}  // namespace

CToolFrameCache::~CToolFrameCache() {
  clear();
}

bool CToolFrameCache::isFullLocked() const {
  return limit_ != 0 && static_cast<int>(frames_.size()) >= limit_;
}

CToolFrameBuffer* CToolFrameCache::takeOldestLocked() {
  if (frames_.empty()) return nullptr;
  CToolFrameBuffer* frame = frames_.front();
  frames_.pop_front();
  return frame;
}

CToolFrameBuffer* CToolFrameCache::takeByIndexLocked(int index) {
  const auto found = std::find_if(frames_.begin(), frames_.end(), [index](CToolFrameBuffer* frame) {
    return frame->frameIndex() == index;
  });
  if (found == frames_.end()) return nullptr;
  CToolFrameBuffer* frame = *found;
  frames_.erase(found);
  return frame;
}

bool CToolFrameCache::add(CToolFrameBuffer* frame) {
  const CAutoThreadLock lock(lock_, "CToolFrameCache::add");
  if (isFullLocked() && !frame->isEndOfMaterial()) return false;
  frames_.push_back(frame);
  return true;
}

CToolFrameBuffer* CToolFrameCache::takeByIndex(int frame) {
  const CAutoThreadLock lock(lock_, "CToolFrameCache::takeByIndex");
  return takeByIndexLocked(frame);
}

CToolFrameBuffer* CToolFrameCache::takeOldest() {
  const CAutoThreadLock lock(lock_, "CToolFrameCache::takeOldest");
  return takeOldestLocked();
}

bool CToolFrameCache::isFull() {
  const CAutoThreadLock lock(lock_, "CToolFrameCache::isFull");
  return isFullLocked();
}

bool CToolFrameCache::isEmpty() {
  const CAutoThreadLock lock(lock_, "CToolFrameCache::isEmpty");
  return frames_.empty();
}

int CToolFrameCache::count() {
  const CAutoThreadLock lock(lock_, "CToolFrameCache::count");
  return static_cast<int>(frames_.size());
}

void CToolFrameCache::clear() {
  std::list<CToolFrameBuffer*> doomed;
  {
    const CAutoThreadLock lock(lock_, "CToolFrameCache::clear");
    doomed.swap(frames_);
  }
  for (CToolFrameBuffer* frame : doomed) delete frame;
}

void CToolFrameCache::raiseLimit(int limit) {
  const CAutoThreadLock lock(lock_, "CToolFrameCache::raiseLimit");
  limit_ = std::max(limit_, limit);
}

void CToolFrameCache::setEnabled(bool enabled) {
  const CAutoThreadLock lock(lock_, "CToolFrameCache::setEnabled");
  enabled_ = enabled;
}

bool CToolFrameCache::isEnabled() {
  const CAutoThreadLock lock(lock_, "CToolFrameCache::isEnabled");
  return enabled_;
}

void CToolFrameCache::CacheFrame(CToolFrameBuffer* frame) {
  const int index = indexOf(frame);
  std::unique_ptr<CToolFrameBuffer> released(frame);
  if (!isEnabled()) {
    traceCache("DISABLED - can't add ", index, "");
    return;
  }
  if (!frame || frame->frameKind() != 0 || frame->isEndOfMaterial()) {
    traceCache("Reject(", index, ")");
    return;
  }
  frame->originalValues().Clear();
  frame->changedRegions().Clear();
  frame->setRenderFlag(false);
  std::unique_ptr<CToolFrameBuffer> replaced;
  std::unique_ptr<CToolFrameBuffer> evicted;
  {
    const CAutoThreadLock lock(lock_, "CToolFrameCache::CacheFrame");
    replaced.reset(takeByIndexLocked(index));
    if (isFullLocked()) evicted.reset(takeOldestLocked());
    frames_.push_back(released.get());
    released.release();
  }
  traceCache(replaced ? "Replace(" : "Add(", index, ")");
}

CToolFrameBuffer* CToolFrameCache::GetOldest() {
  CToolFrameBuffer* frame = takeOldest();
  if (!frame) {
    TraceAt(FRAME_TRACE_LEVEL, "'''''''''''' TFC: GetOldest returned NULL");
    return nullptr;
  }
  if (!isEnabled()) TraceAssertion(FRAME_TRACE_FILE, 1435, "enabledFlag");
  traceCache("GetOldest returned ", frame->frameIndex(), "");
  return frame;
}
