#include "frames/FrameStore.h"

#include <gtest/gtest.h>

#include "hostdoubles/ScriptedClip.h"

namespace {

class FrameStore : public ::testing::TestWithParam<bool> {
 protected:
  std::unique_ptr<CToolFrameBuffer> wait(CFrameStore& store, int frame) {
    return std::unique_ptr<CToolFrameBuffer>(store.waitFor(frame, cancelled_));
  }
  std::atomic<bool> cancelled_{false};
};

TEST_P(FrameStore, HandsOutEveryFrameWithItsOwnSamples) {
  CScriptedReader reader(10, 60, GetParam());
  CFrameStore store(reader, {4, 3});
  store.start(10, 60);
  for (int frame = 10; frame < 60; ++frame) {
    const auto buffer = wait(store, frame);
    ASSERT_TRUE(buffer);
    EXPECT_EQ(buffer->frameIndex(), frame);
    EXPECT_EQ(buffer->samples()[5], frame);
  }
  EXPECT_EQ(reader.reads, 50) << "each frame is decoded once";
}

TEST_P(FrameStore, WhatIsKeptIsNotDecodedAgainWhileThereIsRoom) {
  CScriptedReader reader(10, 30, GetParam());
  const std::size_t frameBytes = reader.info().format.getBytesPerField();
  const struct {
    std::size_t bytes;
    int kept;
  } cases[] = {{0, 0}, {frameBytes - 1, 0}, {7 * frameBytes, 7}, {1000 * frameBytes, 20}};
  for (const auto& c : cases) {
    CFrameStore store(reader, {4, 3, c.bytes});
    reader.reads = 0;
    for (int pass = 0; pass < 2; ++pass) {
      store.start(10, 30);
      for (int frame = 10; frame < 30; ++frame) {
        auto buffer = wait(store, frame);
        ASSERT_TRUE(buffer);
        EXPECT_EQ(buffer->frameIndex(), frame);
        EXPECT_EQ(buffer->samples()[5], frame);
        if (pass == 0) store.keep(std::move(buffer));
      }
      store.stop();
    }
    EXPECT_EQ(reader.reads, 40 - c.kept) << c.bytes;
  }
}

TEST_P(FrameStore, ReadsNoFurtherAheadThanItMay) {
  CScriptedReader reader(0, 100, GetParam());
  CFrameStore store(reader, {5, 3});
  store.start(0, 100);
  ASSERT_TRUE(wait(store, 0));
  store.stop();  // waits for what is under way
  EXPECT_LE(reader.reads, 1 + 5);
}

TEST_P(FrameStore, AFrameThatCannotBeReadIsNamedAndTheOthersStillCome) {
  CScriptedReader reader(0, 10, GetParam());
  reader.failingFrame = 3;
  CFrameStore store(reader, {4, 2});
  store.start(0, 10);
  for (int frame = 0; frame < 3; ++frame) ASSERT_TRUE(wait(store, frame));
  for (int attempt = 0; attempt < 2; ++attempt) {
    try {
      wait(store, 3);
      FAIL() << "frame 3 must not be there";
    } catch (const CClipError& error) {
      EXPECT_NE(std::string(error.what()).find("frame 3"), std::string::npos);
    }
  }
  EXPECT_EQ(wait(store, 4)->samples()[0], 4);
}

TEST_P(FrameStore, GoesWhereItIsAsked) {
  CScriptedReader reader(0, 100, GetParam());
  CFrameStore store(reader, {4, 2});
  store.start(0, 100);
  for (int frame : {0, 1, 50, 51, 2, 99, 0}) EXPECT_EQ(wait(store, frame)->samples()[0], frame);
}

TEST_P(FrameStore, AWaitingTakerHearsOfItsCancellation) {
  CScriptedReader reader(0, 10, GetParam());
  CFrameStore store(reader, {4, 2});
  store.start(0, 10);
  cancelled_ = true;
  store.wake();
  EXPECT_FALSE(wait(store, 9));
}

INSTANTIATE_TEST_SUITE_P(Readers, FrameStore, ::testing::Bool(),
                         [](const auto& info) { return info.param ? "Parallel" : "OneAtATime"; });

}  // namespace
