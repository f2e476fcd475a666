#include <gtest/gtest.h>

#include <thread>

#include "ToolObj/AutotoolStatus.h"

TEST(AutotoolQueue, GivesEntriesInOrderAndKeepsItsEventInStep) {
  AutotoolCommandQueue queue("commands", 0);
  CAutotoolCommand command;
  EXPECT_EQ(queue.Take(command), AutotoolCommandQueue::QUEUE_EMPTY);
  EXPECT_EQ(AutotoolCommandQueue::QUEUE_EMPTY, -3100);
  EXPECT_FALSE(queue.Event().IsSet());
  queue.Add({CAutotoolCommand::RUN, nullptr});
  queue.Add({CAutotoolCommand::STOP, nullptr});
  EXPECT_EQ(queue.Waiting().size(), 2u);
  EXPECT_EQ(queue.Take(command), 0);
  EXPECT_EQ(command.command, 2);
  EXPECT_TRUE(queue.Event().IsSet());
  EXPECT_EQ(queue.Take(command), 0);
  EXPECT_EQ(command.command, 1);
  EXPECT_FALSE(queue.Event().IsSet());
}

TEST(AutotoolQueue, DropsAndCountsTheOldestBeyondItsLimit) {
  AutotoolStatusQueue queue("statuses", 2);
  for (int code = 1; code <= 4; ++code) queue.Add({CAutotoolStatus::ERROR_STATUS, code, -1, -1});
  EXPECT_EQ(queue.DroppedCount(), 2);
  CAutotoolStatus status;
  ASSERT_EQ(queue.Take(status), 0);
  EXPECT_EQ(status.errorCode, 3);
  ASSERT_EQ(queue.Take(status), 0);
  EXPECT_EQ(status.errorCode, 4);
  EXPECT_EQ(queue.Take(status), AutotoolStatusQueue::QUEUE_EMPTY);
}

// A reader that only ever waits for the event and then empties the queue misses nothing.
TEST(AutotoolQueue, WakesAReaderForEveryEntry) {
  constexpr int COUNT = 2000;
  AutotoolStatusQueue queue("statuses", 0);
  std::thread writer([&queue] {
    for (int i = 0; i < COUNT; ++i) queue.Add({CAutotoolStatus::RUNNING, 0, i, -1});
  });
  int expected = 0;
  while (expected < COUNT) {
    queue.Event().Wait();
    CAutotoolStatus status;
    while (queue.Take(status) == 0) EXPECT_EQ(status.frameA, expected++);
  }
  writer.join();
  EXPECT_FALSE(queue.Event().IsSet());
}
