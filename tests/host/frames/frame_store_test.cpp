#include "frames/FrameStore.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>

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

TEST_P(FrameStore, OpenedFramesComeInOrderWithWhatIsWanted) {
  for (const EFrameForm form : {EFrameForm::opened, EFrameForm::both}) {
    CScriptedReader reader(10, 60, GetParam());
    CFrameStore store(reader, {4, 3});
    store.start(10, 60, form);
    for (int frame = 10; frame < 60; ++frame) {
      const SOpenedFrame opened = store.waitForOpened(frame, cancelled_);
      ASSERT_TRUE(opened);
      std::uint16_t pixel[3] = {};
      opened.clipFrame->readPart({5, 2, 5, 2}, pixel);
      EXPECT_EQ(pixel[1], frame);
      ASSERT_EQ(opened.samples != nullptr, form == EFrameForm::both);
      if (opened.samples) {
        EXPECT_EQ(opened.samples->samples()[5], frame);
      }
    }
    EXPECT_EQ(reader.reads, 50) << "each frame is opened once";
  }
}

/// Frames whose parts cost as much as all of them.
class CReaderOfWholes : public CScriptedReader {
 public:
  using CScriptedReader::CScriptedReader;
  std::unique_ptr<IClipFrame> openFrame(int frame, CBufferPool& pool) override {
    return std::make_unique<CWhole>(CScriptedReader::openFrame(frame, pool));
  }

 private:
  class CWhole : public IClipFrame {
   public:
    explicit CWhole(std::unique_ptr<IClipFrame> frame) : frame_(std::move(frame)) {}
    void read(std::uint16_t* samples) const override { frame_->read(samples); }
    void readPart(const SRect& part, std::uint16_t* samples) const override {
      frame_->readPart(part, samples);
    }
    bool givesParts() const override { return false; }
    std::size_t bytes() const override { return frame_->bytes(); }

   private:
    std::unique_ptr<IClipFrame> frame_;
  };
};

TEST(FrameStoreWholes, FramesThatGiveNoPartsComeDecoded) {
  CReaderOfWholes reader(0, 10);
  CFrameStore store(reader, {4, 2});
  const std::atomic<bool> never{false};
  store.start(0, 10, EFrameForm::opened);
  for (int frame = 0; frame < 10; ++frame) {
    const SOpenedFrame opened = store.waitForOpened(frame, never);
    ASSERT_TRUE(opened.samples);
    EXPECT_EQ(opened.samples->samples()[5], frame);
  }
}

/// Going back costs a video everything between two key frames.
TEST(FrameStoreOrder, AReaderThatTakesOneCallAtATimeIsAskedInOrder) {
  CScriptedReader reader(0, 200);
  CFrameStore store(reader, {6, 4});
  const std::atomic<bool> never{false};
  std::vector<int> rising;
  for (const EFrameForm form : {EFrameForm::samples, EFrameForm::opened}) {
    store.start(0, 200, form);
    for (int frame = 0; frame < 200; ++frame) {
      rising.push_back(frame);
      if (form == EFrameForm::opened) {
        store.waitForOpened(frame, never);
      } else {
        const std::unique_ptr<CToolFrameBuffer> taken(store.waitFor(frame, never));
      }
    }
    store.stop();
  }
  EXPECT_EQ(reader.order(), rising);
}

TEST_P(FrameStore, WhatIsKeptIsNotReadAgainWhileThereIsRoom) {
  CScriptedReader reader(10, 30, GetParam());
  const std::size_t frameBytes = reader.info().format.getBytesPerField();
  const struct {
    std::size_t bytes;
    int kept;
  } cases[] = {{0, 0}, {frameBytes - 1, 0}, {7 * frameBytes, 7}, {1000 * frameBytes, 20}};
  for (const auto& c : cases) {
    CFrameStore store(reader, {4, 3, c.bytes});
    reader.reads = 0;
    store.start(10, 30, EFrameForm::opened);
    for (int frame = 10; frame < 30; ++frame)
      store.keep(frame, store.waitForOpened(frame, cancelled_).clipFrame);
    store.stop();
    store.start(10, 30);
    for (int frame = 10; frame < 30; ++frame) {
      const auto buffer = wait(store, frame);
      ASSERT_TRUE(buffer);
      EXPECT_EQ(buffer->frameIndex(), frame);
      EXPECT_EQ(buffer->samples()[5], frame);
    }
    store.stop();
    EXPECT_EQ(reader.reads, 40 - c.kept) << c.bytes;
  }
}

TEST_P(FrameStore, WhoeverAsksForTheOtherFormGetsIt) {
  CScriptedReader reader(0, 30, GetParam());
  CFrameStore store(reader, {4, 3});
  store.start(0, 30, EFrameForm::opened);
  ASSERT_TRUE(store.waitForOpened(0, cancelled_));
  EXPECT_EQ(wait(store, 1)->samples()[0], 1);
  ASSERT_TRUE(store.waitForOpened(2, cancelled_));
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
  for (const EFrameForm form : {EFrameForm::samples, EFrameForm::opened, EFrameForm::both}) {
    CScriptedReader reader(0, 10, GetParam());
    reader.failingFrame = 3;
    CFrameStore store(reader, {4, 2});
    store.start(0, 10, form);
    const auto sampleOf = [&](int frame) -> int {
      if (form == EFrameForm::samples) return wait(store, frame)->samples()[0];
      std::uint16_t pixel[3] = {};
      store.waitForOpened(frame, cancelled_).clipFrame->readPart({0, 0, 0, 0}, pixel);
      return pixel[0];
    };
    for (int frame = 0; frame < 3; ++frame) ASSERT_EQ(sampleOf(frame), frame);
    for (int attempt = 0; attempt < 2; ++attempt) {
      try {
        sampleOf(3);
        FAIL() << "frame 3 must not be there";
      } catch (const CClipError& error) {
        EXPECT_NE(std::string(error.what()).find("frame 3"), std::string::npos);
      }
    }
    EXPECT_EQ(sampleOf(4), 4);
  }
}

TEST_P(FrameStore, GoesWhereItIsAsked) {
  CScriptedReader reader(0, 100, GetParam());
  CFrameStore store(reader, {4, 2});
  store.start(0, 100);
  for (int frame : {0, 1, 50, 51, 2, 99, 0}) EXPECT_EQ(wait(store, frame)->samples()[0], frame);
}

/// Nothing comes of it until it is let.
class CHeldReader : public CScriptedReader {
 public:
  using CScriptedReader::CScriptedReader;
  void readFrame(int frame, std::uint16_t* samples) override {
    gate_.wait();
    CScriptedReader::readFrame(frame, samples);
  }
  void let() { opener_.set_value(); }

 private:
  std::promise<void> opener_;
  std::shared_future<void> gate_ = opener_.get_future().share();
};

TEST_P(FrameStore, AWaitingTakerHearsOfItsCancellation) {
  for (const EFrameForm form : {EFrameForm::samples, EFrameForm::opened}) {
    CHeldReader reader(0, 10, GetParam());
    CFrameStore store(reader, {4, 2});
    cancelled_ = false;
    store.start(0, 10, form);
    auto taken = std::async(std::launch::async, [&] {
      return form == EFrameForm::samples ? wait(store, 0) != nullptr
                                         : bool(store.waitForOpened(0, cancelled_));
    });
    // It shall be asleep by then; where it is not yet, less is tested and nothing fails.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    cancelled_ = true;
    store.wake();
    EXPECT_FALSE(taken.get());
    reader.let();
  }
}

INSTANTIATE_TEST_SUITE_P(Readers, FrameStore, ::testing::Bool(),
                         [](const auto& info) { return info.param ? "Parallel" : "OneAtATime"; });

}  // namespace
