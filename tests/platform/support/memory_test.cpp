#include "support/Memory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <numeric>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

std::uintptr_t offsetFrom(std::size_t boundary, const void* memory) {
  return reinterpret_cast<std::uintptr_t>(memory) % boundary;
}

TEST(Memory, AlignedBlocksStartWhereAsked) {
  for (const std::size_t alignment : {1u, 4u, 8u, 64u, 4096u, 1u << 21}) {
    void* const memory = QTXmemalign(alignment, 100);
    ASSERT_NE(memory, nullptr) << alignment;
    EXPECT_EQ(offsetFrom(alignment, memory), 0u) << alignment;
    std::memset(memory, 7, 100);
    QTXfree(memory);
  }
  EXPECT_EQ(QTXmemalign(0, 8), nullptr);
  EXPECT_EQ(QTXmemalign(48, 8), nullptr);
}

TEST(Memory, NoBytesAreStillABlockAndNullIsATextThatIsNotThere) {
  void* const empty = QTXmalloc(0);
  EXPECT_NE(empty, nullptr);
  QTXfree(empty);
  EXPECT_EQ(QTXstrdup(nullptr), nullptr);
  char* const copy = QTXstrdup("reel 4");
  EXPECT_STREQ(copy, "reel 4");
  QTXfree(copy);
  QTXfree(nullptr);
}

TEST(Memory, ObjectsAndArraysAreBuiltAndDestroyed) {
  static int alive = 0;
  struct SCounted {
    SCounted() { ++alive; }
    ~SCounted() { --alive; }
  };
  SCounted* const one = QTXnew<SCounted>();
  SCounted* const many = QTXnewArray<SCounted>(5);
  EXPECT_EQ(alive, 6);
  QTXdelete(one);
  QTXdeleteArray(many);
  EXPECT_EQ(alive, 0);
}

TEST(PreallocPool, LocksAreCountedPerPool) {
  constexpr int pool = PREALLOC_POOL_BUFFER_HOLDERS;
  EXPECT_FALSE(QTXunlockPreallocPool(pool));
  EXPECT_TRUE(QTXlockPreallocPool(pool));
  EXPECT_TRUE(QTXlockPreallocPool(pool));
  QTXresetPreallocPool(pool);
  EXPECT_FALSE(QTXunlockPreallocPool(pool + 1));
  EXPECT_TRUE(QTXunlockPreallocPool(pool));
  EXPECT_TRUE(QTXunlockPreallocPool(pool));
  EXPECT_FALSE(QTXunlockPreallocPool(pool));
  for (const int none : {-1, 4, 1000}) {
    EXPECT_FALSE(QTXlockPreallocPool(none)) << none;
    EXPECT_FALSE(QTXunlockPreallocPool(none)) << none;
  }
}

TEST(CBufferPool, HandsOutAtMostItsLimitAndTheLastReturnedFirst) {
  CBufferPool pool(1000, 3);
  void* const a = pool.allocateBuffer();
  void* const b = pool.allocateBuffer();
  void* const c = pool.allocateBuffer();
  EXPECT_EQ((std::set<void*>{a, b, c, nullptr}.size()), 4u);
  EXPECT_EQ(pool.allocateBuffer(), nullptr);
  EXPECT_EQ(pool.buffersInUse(), 3);

  pool.freeBuffer(nullptr);
  pool.freeBuffer(a);
  pool.freeBuffer(c);
  EXPECT_EQ(pool.buffersInUse(), 1);
  EXPECT_EQ(pool.allocateBuffer(), c);
  EXPECT_EQ(pool.allocateBuffer(), a);
  EXPECT_EQ(pool.allocateBuffer(), nullptr);
  for (void* buffer : {a, b, c}) {
    std::memset(buffer, 1, pool.bytesPerBuffer());
    pool.freeBuffer(buffer);
  }
}

TEST(CBufferPool, ASharedBufferGoesBackWithItsLastHolderEvenAfterThePool) {
  auto pool = std::make_unique<CBufferPool>(1000, 2);
  std::shared_ptr<void> first = pool->allocateShared();
  const std::shared_ptr<void> second = pool->allocateShared();
  EXPECT_EQ(pool->allocateShared(), nullptr);
  std::shared_ptr<void> holder = first;
  first.reset();
  EXPECT_EQ(pool->allocateBuffer(), nullptr) << "somebody still looks at it";
  void* const memory = holder.get();
  holder.reset();
  EXPECT_EQ(pool->buffersInUse(), 1);
  first = pool->allocateShared();
  EXPECT_EQ(first.get(), memory);
  pool.reset();
  std::memset(first.get(), 1, 1000);
}

TEST(CBufferPool, BuffersStartOnACacheLineAndLargeOnesOnAHugePage) {
  const struct {
    std::size_t bytes, boundary;
  } cases[] = {
      {1, 64}, {1000, 64}, {(2u << 20) - 1, 64}, {2u << 20, 2u << 20}, {7654321, 2u << 20}};
  for (const auto& c : cases) {
    CBufferPool pool(c.bytes, 0);
    for (int i = 0; i < 3; ++i) {
      void* const buffer = pool.allocateBuffer();
      ASSERT_NE(buffer, nullptr);
      EXPECT_EQ(offsetFrom(c.boundary, buffer), 0u) << c.bytes;
      static_cast<char*>(buffer)[c.bytes - 1] = 1;
      pool.freeBuffer(buffer);
    }
  }
}

TEST(CLargeAllocator, HoldsElementsAndThrowsWithoutMemory) {
  std::vector<double, CLargeAllocator<double>> values(300000, 2.5);
  EXPECT_EQ(offsetFrom(2u << 20, values.data()), 0u);
  EXPECT_EQ(std::accumulate(values.begin(), values.end(), 0.0), 750000.0);
  EXPECT_THROW(static_cast<void>(CLargeAllocator<double>().allocate(std::size_t{1} << 61)),
               std::bad_alloc);
  EXPECT_EQ(QTXmallocLarge(~std::size_t{0}), nullptr);
}

TEST(CBufferPool, NoMemoryIsNullAndCountsNothing) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizer's allocator ends the process instead of giving null";
#endif
  CBufferPool pool(std::size_t{1} << 60, 2);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(pool.allocateBuffer(), nullptr);
  EXPECT_EQ(pool.allocateShared(), nullptr);
  EXPECT_EQ(pool.buffersInUse(), 0);
}

TEST(CBufferPool, NeverGivesOneBufferToTwoThreads) {
  CBufferPool pool(4096, 6);
  std::atomic<int> clashes{0};
  std::vector<std::thread> workers;
  for (int id = 1; id <= 4; ++id) {
    workers.emplace_back([&pool, &clashes, id] {
      for (int n = 0; n < 500; ++n) {
        auto* const buffer = static_cast<unsigned char*>(pool.allocateBuffer());
        if (buffer == nullptr) continue;
        std::memset(buffer, id, 4096);
        for (int i = 0; i < 4096; i += 511) clashes += buffer[i] != id;
        pool.freeBuffer(buffer);
      }
    });
  }
  for (std::thread& worker : workers) worker.join();
  EXPECT_EQ(clashes, 0);
  EXPECT_EQ(pool.buffersInUse(), 0);
}

}  // namespace
