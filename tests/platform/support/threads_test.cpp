#include "support/Threads.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/HRTimer.h"
#include "support/Trace.h"

namespace {

struct SBlock {
  int number = 0;
  std::atomic<int>* sum = nullptr;
  CThreadEvent* gate = nullptr;
};

void addNumber(void* argument, BThreadHandle self) {
  const SBlock mine = *static_cast<SBlock*>(argument);
  EXPECT_EQ(BThreadBegin(self), 0);
  if (mine.gate != nullptr) mine.gate->Wait();
  *mine.sum += mine.number;
  EXPECT_EQ(BThreadEnd(self), 0);
}

TEST(BThread, SpawnerMayReuseItsBlockAndWaitForAllSeesEveryEnd) {
  std::atomic<int> sum{0};
  CThreadEvent gate;
  SBlock block{0, &sum, &gate};
  for (int i = 1; i <= 40; ++i) {
    block.number = i;
    ASSERT_NE(BThreadSpawn(addNumber, &block), nullptr);
  }
  EXPECT_EQ(sum, 0);
  gate.Set();
  BThreadWaitForAll();
  EXPECT_EQ(sum, 40 * 41 / 2);
}

TEST(BThread, ThreadsMaySpawnThreads) {
  static std::atomic<int> sum{0};
  sum = 0;
  const auto parent = [](void*, BThreadHandle self) {
    BThreadBegin(self);
    SBlock block{7, &sum, nullptr};
    EXPECT_NE(BThreadSpawn(addNumber, &block), nullptr);
    BThreadEnd(self);
  };
  for (int i = 0; i < 10; ++i) ASSERT_NE(BThreadSpawn(parent, nullptr), nullptr);
  BThreadWaitForAll();
  EXPECT_EQ(sum, 70);
}

TEST(BThread, SpawnReturnsThoughTheThreadNeverBegins) {
  std::atomic<bool> ran{false};
  const auto silent = [](void* argument, BThreadHandle) {
    *static_cast<std::atomic<bool>*>(argument) = true;
  };
  ASSERT_NE(BThreadSpawn(silent, &ran), nullptr);
  EXPECT_TRUE(ran);
  BThreadWaitForAll();
}

TEST(BThread, AnEscapedExceptionEndsTheThreadAloneAndIsTraced) {
  std::vector<std::string> lines;
  SetTraceSink([&lines](const std::string& line) { lines.push_back(line); });
  const auto thrower = [](void*, BThreadHandle self) {
    BThreadBegin(self);
    throw std::runtime_error("no film in the gate");
  };
  ASSERT_NE(BThreadSpawn(thrower, nullptr), nullptr);
  BThreadWaitForAll();
  SetTraceSink({});
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], "ERROR: BThread: an exception left the thread function: no film in the gate");
}

TEST(BThread, NoThreadGivesNull) {
  EXPECT_EQ(BThreadSpawn(nullptr, nullptr), nullptr);
  EXPECT_NE(BThreadBegin(nullptr), 0);
  EXPECT_NE(BThreadEnd(nullptr), 0);

  pthread_attr_t usual;
  ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
  pthread_attr_t hopeless = usual;
  ASSERT_EQ(pthread_attr_setstacksize(&hopeless, std::size_t{1} << 50), 0);
  ASSERT_EQ(pthread_setattr_default_np(&hopeless), 0);
  std::atomic<int> sum{0};
  SBlock block{1, &sum, nullptr};
  const BThreadHandle refused = BThreadSpawn(addNumber, &block);
  ASSERT_EQ(pthread_setattr_default_np(&usual), 0);
  EXPECT_EQ(refused, nullptr);

  EXPECT_NE(BThreadSpawn(addNumber, &block), nullptr) << "a refusal must not spoil the next spawn";
  BThreadWaitForAll();
  EXPECT_EQ(sum, 1);
}

TEST(CCountingWait, WaitReturnsAfterTheLastRelease) {
  for (int round = 0; round < 50; ++round) {
    CCountingWait join;  // dies right after Wait: a release must not touch it later
    int done[4] = {};
    join.SetCount(4);
    std::vector<std::thread> workers;
    for (int& mine : done) {
      workers.emplace_back([&mine, &join] {
        mine = 1;
        join.ReleaseOne();
      });
    }
    join.Wait();
    EXPECT_EQ(done[0] + done[1] + done[2] + done[3], 4);
    for (std::thread& worker : workers) worker.join();
  }
  CCountingWait nothing;
  nothing.Wait();
  nothing.SetCount(0);
  nothing.Wait();
}

TEST(CThreadLock, OneHolderAtATime) {
  CThreadLock lock;
  int plain = 0;
  std::vector<std::thread> workers;
  for (int i = 0; i < 4; ++i) {
    workers.emplace_back([&] {
      for (int n = 0; n < 2000; ++n) {
        const CAutoThreadLock held(lock, "test");
        ++plain;
      }
    });
  }
  for (std::thread& worker : workers) worker.join();
  EXPECT_EQ(plain, 8000);
}

TEST(CThreadEvent, StaysSetUntilReset) {
  CThreadEvent event;
  EXPECT_FALSE(event.IsSet());
  std::thread setter([&event] { event.Set(); });
  event.Wait();
  event.Wait();
  setter.join();
  EXPECT_TRUE(event.IsSet());
  event.Reset();
  EXPECT_FALSE(event.IsSet());
}

TEST(CHRTimer, CountsMillisecondsFromStart) {
  CHRTimer timer;
  const std::int64_t before = qtxGetUST();
  QTXmillisleep(3);
  const std::int64_t slept = qtxGetUST() - before;
  EXPECT_GE(slept, 3000);
  EXPECT_GE(timer.Read() * 1000.0, static_cast<double>(slept));
  EXPECT_GE(AvailableProcessorCoreCount(), 1);
}

}  // namespace
