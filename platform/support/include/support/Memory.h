#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

/// Raw memory of the support library. Null on failure, never an exception.
void* QTXmalloc(std::size_t bytes);
void QTXfree(void* memory);
/// `alignment` is a power of two. Freed with QTXfree.
void* QTXmemalign(std::size_t alignment, std::size_t bytes);
/// Memory for data of megabytes: a block of 2 MB and more starts on a 2 MB boundary and asks for
/// huge pages, smaller ones start on a cache line. Fresh memory costs a page fault for each page
/// that is touched, often more than the work that is done in it. Freed with QTXfree.
void* QTXmallocLarge(std::size_t bytes);
/// Heap copy of a text, freed with QTXfree; null for null.
char* QTXstrdup(const char* text);

/// One object, null on failure to get memory; what its constructor throws passes through.
template <typename T, typename... Arguments>
T* QTXnew(Arguments&&... arguments) {
  return new (std::nothrow) T(std::forward<Arguments>(arguments)...);
}
template <typename T>
void QTXdelete(T* object) {
  delete object;
}
/// `count` value-initialised objects, null on failure to get memory. Given back with
/// QTXdeleteArray.
template <typename T>
T* QTXnewArray(std::size_t count) {
  return new (std::nothrow) T[count]();
}
template <typename T>
void QTXdeleteArray(T* objects) {
  delete[] objects;
}

/// QTXmallocLarge for containers.
template <typename T>
class CLargeAllocator {
 public:
  using value_type = T;

  CLargeAllocator() = default;
  template <typename TOther>
  explicit(false) CLargeAllocator(const CLargeAllocator<TOther>&) noexcept {}

  T* allocate(std::size_t count) {
    if (count > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_array_new_length();
    void* const memory = QTXmallocLarge(count * sizeof(T));
    if (memory == nullptr) throw std::bad_alloc();
    return static_cast<T*>(memory);
  }
  void deallocate(T* memory, std::size_t) noexcept { QTXfree(memory); }

  friend bool operator==(const CLargeAllocator&, const CLargeAllocator&) { return true; }
};

/// Numbered pools, 0 to 3, that a tool locks while it is active. They reserve no bytes here: frame
/// samples are recycled by CBufferPool and the small holders are well served by the heap, so only
/// the locks are kept. THREAD: any.
constexpr int PREALLOC_POOL_BUFFER_HOLDERS = 2;
/// Counts the lock; false when the pool does not exist.
bool QTXlockPreallocPool(int pool);
/// Takes one lock back; false when the pool was not locked.
bool QTXunlockPreallocPool(int pool);
/// Forgets what was handed out of the pool's reserve; locks stay. Nothing to do without a reserve.
void QTXresetPreallocPool(int pool);
/// Bytes reserved by the pool: 0.
std::size_t QTXgetSizeOfPreallocPool(int pool);

/// Bytes of memory that this process may count on: the machine's, or its container's where that has
/// less. 0 when it cannot be told.
std::size_t MachineMemory();

/// Recycling pool of equally sized, 64-byte aligned frame buffers. A buffer is taken from the
/// system once and reused until the pool dies, the last one given back first: a fresh 50 MB buffer
/// costs far more in page faults than the work done in it. Buffers are QTXmallocLarge's. At most
/// `limit` buffers are handed out at a time.
/// THREAD: any. The pool must outlive its buffers' use, but for shared ones.
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
  /// A buffer that goes back when the last of its holders lets go, which may be after the pool's
  /// end. Null as allocateBuffer.
  std::shared_ptr<void> allocateShared();

  std::size_t bytesPerBuffer() const { return bytesPerBuffer_; }
  int buffersInUse() const;

 private:
  struct SBuffers;

  const std::size_t bytesPerBuffer_;
  const std::shared_ptr<SBuffers> buffers_;  // shared with the shared buffers
};
