#include "support/Memory.h"

#include <sanitizer/asan_interface.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <new>
#include <vector>

namespace {

constexpr std::size_t kCacheLine = 64;
constexpr std::size_t kHugePage = std::size_t{2} << 20;

constexpr int kPreallocPools = 4;

struct SPreallocLocks {
  std::mutex mutex;
  std::array<int, kPreallocPools> counts{};
};

SPreallocLocks& preallocLocks() {
  static SPreallocLocks locks;
  return locks;
}

bool isPreallocPool(int pool) {
  return pool >= 0 && pool < kPreallocPools;
}

}  // namespace

void* QTXmalloc(std::size_t bytes) {
  return std::malloc(std::max<std::size_t>(bytes, 1));
}

void QTXfree(void* memory) {
  std::free(memory);
}

void* QTXmemalign(std::size_t alignment, std::size_t bytes) {
  if (!std::has_single_bit(alignment)) return nullptr;
  void* memory = nullptr;
  const int failed =
      posix_memalign(&memory, std::max(alignment, sizeof(void*)), std::max<std::size_t>(bytes, 1));
  return failed == 0 ? memory : nullptr;
}

void* QTXmallocLarge(std::size_t bytes) {
  if (bytes < kHugePage) return QTXmemalign(kCacheLine, bytes);
  if (bytes > static_cast<std::size_t>(-1) - kHugePage) return nullptr;
  const std::size_t whole = (bytes + kHugePage - 1) / kHugePage * kHugePage;
  void* const memory = QTXmemalign(kHugePage, whole);
  // Best effort: without huge pages the memory works as well, with 512 times the page faults.
  if (memory != nullptr) (void)madvise(memory, whole, MADV_HUGEPAGE);
  return memory;
}

char* QTXstrdup(const char* text) {
  return text == nullptr ? nullptr : strdup(text);
}

bool QTXlockPreallocPool(int pool) {
  if (!isPreallocPool(pool)) return false;
  SPreallocLocks& locks = preallocLocks();
  std::lock_guard lock(locks.mutex);
  ++locks.counts[pool];
  return true;
}

bool QTXunlockPreallocPool(int pool) {
  if (!isPreallocPool(pool)) return false;
  SPreallocLocks& locks = preallocLocks();
  std::lock_guard lock(locks.mutex);
  if (locks.counts[pool] == 0) return false;
  --locks.counts[pool];
  return true;
}

void QTXresetPreallocPool(int) {}

std::size_t QTXgetSizeOfPreallocPool(int) {
  return 0;
}

std::size_t MachineMemory() {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long pageSize = sysconf(_SC_PAGESIZE);
  if (pages <= 0 || pageSize <= 0) return 0;
  const std::size_t machine = static_cast<std::size_t>(pages) * static_cast<std::size_t>(pageSize);
  std::size_t container = 0;
  std::ifstream limit("/sys/fs/cgroup/memory.max");  // a number, "max", or not there
  return limit >> container ? std::min(machine, container) : machine;
}

struct CBufferPool::SBuffers {
  const std::size_t bytes;
  const int limit;
  std::mutex mutex;
  std::vector<void*> free;
  int inUse = 0;

  SBuffers(std::size_t bytesPerBuffer, int most) : bytes(bytesPerBuffer), limit(most) {}
  ~SBuffers() {
    for (void* buffer : free) {
      ASAN_UNPOISON_MEMORY_REGION(buffer, bytes);
      QTXfree(buffer);
    }
  }
  void* take();
  void giveBack(void* buffer);
};

void* CBufferPool::SBuffers::take() {
  {
    std::lock_guard lock(mutex);
    if (limit > 0 && inUse >= limit) return nullptr;
    ++inUse;
    if (!free.empty()) {
      void* const buffer = free.back();  // the last one given back is the warmest
      free.pop_back();
      ASAN_UNPOISON_MEMORY_REGION(buffer, bytes);
      return buffer;
    }
  }
  void* const buffer = QTXmallocLarge(bytes);
  if (buffer == nullptr) {
    std::lock_guard lock(mutex);
    --inUse;
  }
  return buffer;
}

void CBufferPool::SBuffers::giveBack(void* buffer) {
  if (buffer == nullptr) return;
  std::lock_guard lock(mutex);
  --inUse;
  try {
    free.push_back(buffer);
    ASAN_POISON_MEMORY_REGION(buffer, bytes);  // use after giving back is caught
  } catch (const std::bad_alloc&) {
    QTXfree(buffer);
  }
}

CBufferPool::CBufferPool(std::size_t bytesPerBuffer, int limit)
    : bytesPerBuffer_(bytesPerBuffer),
      buffers_(std::make_shared<SBuffers>(bytesPerBuffer, limit)) {}

CBufferPool::~CBufferPool() = default;

void* CBufferPool::allocateBuffer() {
  return buffers_->take();
}

void CBufferPool::freeBuffer(void* buffer) {
  buffers_->giveBack(buffer);
}

std::shared_ptr<void> CBufferPool::allocateShared() {
  void* const buffer = buffers_->take();
  if (buffer == nullptr) return nullptr;
  try {
    // When there is no memory for the count of holders, the buffer is given back at once.
    return {buffer, [buffers = buffers_](void* last) { buffers->giveBack(last); }};
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

int CBufferPool::buffersInUse() const {
  std::lock_guard lock(buffers_->mutex);
  return buffers_->inUse;
}
