#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <vector>

#include "support/ImageFormat.h"
#include "support/Memory.h"
#include "support/PixelRegionList.h"
#include "support/Threads.h"

/// One frame as it travels between host and processors: format, samples from a pool, regions that a
/// tool changed. Samples are 16-bit, interleaved, rows directly one after another; contents of
/// fresh memory are undefined. THREAD: belongs to one holder at a time; no lock of its own. Shared
/// samples may be read on other threads meanwhile, and are written to through samples() alone.
class CToolFrameBuffer {
 public:
  struct SInvisibleFieldBuffer {
    std::uint16_t* buffer = nullptr;
    int fieldIndex = 0;
    int fieldPeriod = 0;
  };

  /// Both null or both given. No samples are taken yet; the format is copied, the pool must outlive
  /// the buffer.
  CToolFrameBuffer(const CImageFormat* format, CBufferPool* allocator);
  virtual ~CToolFrameBuffer();
  CToolFrameBuffer(const CToolFrameBuffer&) = delete;
  CToolFrameBuffer& operator=(const CToolFrameBuffer&) = delete;

  /// Takes what memory is missing, the main buffer and one for each invisible field. False when
  /// some is still missing (always without an allocator); what was taken stays, try again later.
  bool ensureSamples();
  /// Gives all memory back to the allocator, shared samples when their last holder lets go.
  void releaseSamples();
  /// Copies kind, end-of-material mark, copied flag and changed regions and, as asked, samples and
  /// invisible fields; the frame index stays. False when memory is missing; the buffer stays usable
  /// for another attempt. REQUIRES: both formats have the same bytes per field.
  bool CopyFrom(const CToolFrameBuffer& source, bool withSamples, bool withFields);

  /// Puts the current samples of the original-values list's regions into that list and moves it to
  /// the end of the changed-regions list.
  void keepOriginals();
  /// Brings the original-values list's regions of the main samples into the invisible fields: into
  /// the first field's lines, the second's, or both, as index and period of each say.
  void mergeInvisibleFields();

  void markEndOfMaterial() { endOfMaterial_ = true; }
  bool isEndOfMaterial() const { return endOfMaterial_; }
  void setFrameIndex(int frame) { frameIndex_ = frame; }
  int frameIndex() const { return frameIndex_; }
  void setFrameKind(int kind) { frameKind_ = kind; }
  int frameKind() const { return frameKind_; }
  void setRenderFlag(bool flag) { renderFlag_ = flag; }
  bool renderFlag() const { return renderFlag_; }
  void setNotCacheable(bool flag) { notCacheable_ = flag; }
  bool isNotCacheable() const { return notCacheable_; }
  void setCopiedFlag(bool flag) { copied_ = flag; }
  bool copiedFlag() const { return copied_; }

  /// Null until ensureSamples succeeded.
  const std::uint16_t* samples() const { return samples_.get(); }
  /// The same to write to. A frame whose samples are shared takes its own copy first, so that what
  /// others see stays as it is; null, and nothing changed, when there is no memory for it.
  std::uint16_t* samples();
  /// The samples as they are now, whatever becomes of the frame, even after its and the allocator's
  /// end: a copy that costs nothing unless the frame is written to. Null until ensureSamples
  /// succeeded.
  std::shared_ptr<const std::uint16_t> shareSamples();
  /// Null without a format.
  const CImageFormat* imageFormat() const { return format_.get(); }
  CBufferPool* allocator() const { return allocator_; }
  std::vector<SInvisibleFieldBuffer>& invisibleFields() { return invisibleFields_; }
  CPixelRegionList& originalValues() { return originalValues_; }
  CPixelRegionList& changedRegions() { return changedRegions_; }

 private:
  bool takeSamples();
  bool takeFieldBuffers();

  int frameIndex_ = -1;
  int frameKind_ = 0;
  bool endOfMaterial_ = false;
  std::shared_ptr<std::uint16_t> samples_;
  bool shared_ = false;  ///< the samples may have another holder
  std::vector<SInvisibleFieldBuffer> invisibleFields_;
  std::unique_ptr<CImageFormat> format_;
  bool copied_ = false;
  CBufferPool* allocator_;
  CPixelRegionList originalValues_;
  CPixelRegionList changedRegions_;
  bool renderFlag_ = false;
  bool notCacheable_ = false;
};

/// Thread-safe list of frames, oldest first; owns what it holds. A processor's edge uses one as its
/// queue, the host keeps one as the tool frame cache.
class CToolFrameCache {
 public:
  CToolFrameCache() = default;
  ~CToolFrameCache();
  CToolFrameCache(const CToolFrameCache&) = delete;
  CToolFrameCache& operator=(const CToolFrameCache&) = delete;

  /// False when the list is full and the frame is no end-of-material mark; the caller then still
  /// owns the frame.
  bool add(CToolFrameBuffer* frame);
  /// The first frame with that index, now the caller's; null when there is none.
  CToolFrameBuffer* takeByIndex(int frame);
  CToolFrameBuffer* takeOldest();
  bool isFull();
  bool isEmpty();
  int count();
  void clear();
  /// Only ever raises; negative counts as 0; 0 = unlimited.
  void raiseLimit(int limit);

  /// Cache operations of the tool frame cache.
  void setEnabled(bool enabled);
  bool isEnabled();
  /// Takes ownership of a released frame: caches it without its regions and render flag, or deletes
  /// it (cache disabled, frame kind not 0, end of material). A copy of the same index is replaced;
  /// when the cache is full its oldest frame gives way. Null is ignored.
  void CacheFrame(CToolFrameBuffer* frame);
  /// The oldest frame, now the caller's; null when there is none.
  CToolFrameBuffer* GetOldest();

 private:
  // REQUIRES, all three: the lock is held.
  bool isFullLocked() const;
  CToolFrameBuffer* takeOldestLocked();
  CToolFrameBuffer* takeByIndexLocked(int index);

  CThreadLock lock_;  // guards everything below
  std::list<CToolFrameBuffer*> frames_;
  int limit_ = 0;
  bool enabled_ = true;
};
