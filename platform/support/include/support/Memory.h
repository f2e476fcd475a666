#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

/// Raw memory of the support library. Null on failure, never an exception.
void* QTXmalloc(std::size_t bytes);
void QTXfree(void* memory);
/// `alignment` is a power of two. Freed with QTXfree.
void* QTXmemalign(std::size_t alignment, std::size_t bytes);
/// Heap copy of a text, freed with QTXfree; null for null.
char* QTXstrdup(const char* text);

/// Numbered pools that a host may reserve before a pass. Pool 2 holds frame-buffer holders.
constexpr int PREALLOC_POOL_BUFFER_HOLDERS = 2;
/// Counts the lock; false when the pool does not exist.
bool QTXlockPreallocPool(int pool);
/// False when the pool was not locked.
bool QTXunlockPreallocPool(int pool);
void QTXresetPreallocPool(int pool);
/// Bytes reserved by the pool.
std::size_t QTXgetSizeOfPreallocPool(int pool);

/// Recycling pool of equally sized, 64-byte aligned frame buffers. A buffer is taken from the
/// system once and reused until the pool dies: a fresh 50 MB buffer costs far more in page faults
/// than the work done in it. At most `limit` buffers are handed out at a time.
/// THREAD: any. The pool must outlive its buffers' use.
class CBufferPool {
 public:
  /// `limit` 0: no limit.
  CBufferPool(std::size_t bytesPerBuffer, int limit);
  ~CBufferPool();
  CBufferPool(const CBufferPool&) = delete;
  CBufferPool& operator=(const CBufferPool&) = delete;

  /// Null when the limit is reached or the system has no memory left. Contents are undefined.
  void* allocateBuffer();
  /// Null is ignored.
  void freeBuffer(void* buffer);

  std::size_t bytesPerBuffer() const { return bytesPerBuffer_; }
  int buffersInUse() const;

 private:
  const std::size_t bytesPerBuffer_;
  const int limit_;
  mutable std::mutex mutex_;
  std::vector<void*> free_;
  int inUse_ = 0;
};
