#include "frames/FrameCache.h"

#include <gtest/gtest.h>

#include <numeric>
#include <set>

#include "hostdoubles/ScriptedClip.h"

namespace {

constexpr std::size_t FRAME_BYTES = 16 * 8 * 3 * 2;

/// What the test sees of a reader that the cache owns, and the gate that its frames wait at.
struct SReads {
  void enter(int frame, const std::uint16_t* samples) {
    std::unique_lock lock(mutex);
    order.push_back(frame);
    buffers.insert(samples);
    ++active;
    changed.notify_all();
    changed.wait(lock, [this] { return open; });
  }
  void leave() {
    const std::lock_guard lock(mutex);
    --active;
  }
  void setOpen(bool value) {
    const std::lock_guard lock(mutex);
    open = value;
    changed.notify_all();
  }
  void waitForReads(std::size_t count) {
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return order.size() >= count; });
  }
  std::vector<int> taken() {
    const std::lock_guard lock(mutex);
    return order;
  }
  bool isBroken(int frame) {
    const std::lock_guard lock(mutex);
    return broken.contains(frame);
  }
  void setBroken(std::set<int> frames) {
    const std::lock_guard lock(mutex);
    broken = std::move(frames);
  }

  std::mutex mutex;
  std::condition_variable changed;
  bool open = true;
  int active = 0;
  std::vector<int> order;
  std::set<int> broken;
  std::set<const std::uint16_t*> buffers;  // a recycled one counts once: the most at one time
};

class CGatedReader : public CScriptedReader {
 public:
  CGatedReader(std::shared_ptr<SReads> reads, int end, bool parallel)
      : CScriptedReader(0, end, parallel), reads_(std::move(reads)) {}
  void readFrame(int frame, std::uint16_t* samples) override {
    reads_->enter(frame, samples);
    const bool broken = reads_->isBroken(frame);
    if (!broken) CScriptedReader::readFrame(frame, samples);
    reads_->leave();
    if (broken && frame % 2 == 0) throw std::runtime_error("out of luck");
    if (broken) throw CClipError(info().path + ": frame 0" + std::to_string(frame) + " is cut off");
  }

 private:
  const std::shared_ptr<SReads> reads_;
};

class FrameCache : public ::testing::Test {
 protected:
  void open(int frames, int clipEnd, bool parallel = false, int threads = 1) {
    changes_ = 0;
    reads_->order.clear();
    reads_->buffers.clear();
    cache_ = std::make_unique<CFrameCache>(
        std::make_unique<CGatedReader>(reads_, clipEnd, parallel),
        CFrameCache::SSettings{frames * FRAME_BYTES, threads}, [this](int) {
          const std::lock_guard lock(mutex_);
          ++changes_;
          changed_.notify_all();
        });
  }
  void waitForChanges(int count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return changes_ >= count; });
  }
  CFrameCache::Samples waitForFrame(int frame) {
    std::unique_lock lock(mutex_);
    CFrameCache::Samples samples;
    changed_.wait(lock, [&] { return (samples = cache_->find(frame)) != nullptr; });
    return samples;
  }
  int framesKept() const {
    int count = 0;
    for (const SFrameSpan& span : cache_->cached()) count += span.end - span.first;
    return count;
  }
  const std::shared_ptr<SReads> reads_ = std::make_shared<SReads>();
  std::mutex mutex_;
  std::condition_variable changed_;
  int changes_ = 0;
  std::unique_ptr<CFrameCache> cache_;  // first to go: its threads use all of the above
};

TEST_F(FrameCache, DecodesInTheOrderOfWant) {
  const bool SINGLE = true;  // a reader that is as fast in any order
  const struct {
    const char* name;
    bool parallel;
    int fits, frame, direction, first, end;
    std::vector<int> order;
  } cases[] = {
      {"both sides", SINGLE, 6, 50, 0, 0, 100, {50, 51, 49, 52, 48, 53}},
      {"both sides, at an edge", SINGLE, 6, 98, 0, 0, 100, {98, 99, 97, 96, 95, 94}},
      {"whole range", SINGLE, 60, 12, 0, 10, 15, {12, 13, 11, 14, 10}},
      {"forwards, round", SINGLE, 6, 97, 1, 90, 100, {97, 98, 99, 90, 91, 92}},
      {"backwards, round", SINGLE, 6, 11, -1, 10, 20, {11, 10, 19, 18, 17, 16}},
      {"fast forwards", SINGLE, 4, 5, 4, 0, 100, {5, 6, 7, 8}},
      {"before the range", SINGLE, 4, 3, 1, 10, 20, {3, 10, 11, 12}},
      {"behind the range", SINGLE, 4, 30, -1, 10, 20, {30, 19, 18, 17}},
      {"beside the range", SINGLE, 4, 25, 0, 10, 20, {25, 19, 18, 17}},
      {"range beyond the clip", SINGLE, 4, 98, 1, -5, 300, {98, 99, 0, 1}},
      {"frame beyond the clip", SINGLE, 3, 300, 0, 0, 100, {99, 98, 97}},
      {"no range", SINGLE, 4, 7, 1, 20, 20, {7}},
      {"no memory", SINGLE, 0, 7, 1, 0, 100, {7, 8}},
      {"in order, forwards", false, 6, 98, 1, 0, 100, {98, 99, 0, 1, 2, 3}},
      {"blocks back", false, 8, 45, -1, 0, 100, {45, 44, 42, 43, 40, 41, 38, 39}},
      {"blocks back, round",
       false,
       12,
       1,
       -1,
       0,
       100,
       {1, 0, 99, 96, 97, 98, 93, 94, 95, 90, 91, 92}},
      {"blocks back, whole range", false, 60, 13, -1, 10, 18, {13, 12, 10, 11, 16, 17, 14, 15}},
      {"blocks on both sides", false, 9, 50, 0, 0, 100, {50, 51, 52, 53, 48, 49, 54, 55, 46}},
  };
  for (const auto& c : cases) {
    open(c.fits, 100, c.parallel);
    cache_->lookAt(c.frame, c.direction, c.first, c.end);
    waitForChanges(static_cast<int>(c.order.size()));
    EXPECT_EQ(framesKept(), static_cast<int>(c.order.size())) << c.name;
    cache_.reset();
    EXPECT_EQ(reads_->taken(), c.order) << c.name;
  }
}

TEST_F(FrameCache, TurnsToTheNewPlaceAfterTheFrameUnderWay) {
  open(10, 100);
  reads_->setOpen(false);
  cache_->lookAt(0, 1, 0, 100);
  reads_->waitForReads(1);
  EXPECT_FALSE(cache_->find(0)) << "asking does not wait for the decoder";
  EXPECT_EQ(cache_->failure(0), "");
  for (int frame : {30, 40, 50}) cache_->lookAt(frame, 1, 0, 100);
  reads_->setOpen(true);
  waitForChanges(11);
  EXPECT_EQ(reads_->taken(), (std::vector<int>{0, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59}));
  EXPECT_EQ(cache_->cached(), (std::vector<SFrameSpan>{{50, 60}})) << "frame 0 made room at last";
  EXPECT_EQ(cache_->find(50).get()[100], 50);
}

TEST_F(FrameCache, KeepsToItsMemoryWhereverTheViewerGoes) {
  for (const int threads : {1, 3}) {
    for (const int fits : {0, 2, 5, 9}) {
      open(fits, 60, true, threads);
      const int bound = std::max(2, fits);
      int frame = 0;
      for (int step = 0; step < 120; ++step) {
        frame = step % 7 == 0 ? (frame * 31 + 17) % 60 : (frame + 1) % 60;
        cache_->lookAt(frame, step % 3 - 1, 5, 55);
        ASSERT_EQ(waitForFrame(frame).get()[7], frame);
        ASSERT_LE(framesKept(), bound);
      }
      cache_.reset();
      const int buffers = static_cast<int>(reads_->buffers.size());
      EXPECT_GE(buffers, bound) << "all of the memory is used";
      EXPECT_LE(buffers, bound + 1) << "one more for the frame in the viewer's hands";
    }
  }
}

TEST_F(FrameCache, WhatIsWantedAndThereIsNotDecodedAgain) {
  for (const int direction : {1, -1}) {
    open(16, 64);
    for (int step = 0; step <= 48; ++step) {
      cache_->lookAt(direction > 0 ? step : 63 - step, direction, 0, 64);
      waitForChanges(16 + step);
      ASSERT_EQ(framesKept(), 16);
    }
    cache_.reset();
    std::vector<int> order = reads_->taken();
    int jumpsBack = 0;
    for (std::size_t i = 1; i < order.size(); ++i) jumpsBack += order[i] < order[i - 1];
    EXPECT_LE(jumpsBack, direction > 0 ? 0 : 1 + 64 / 4) << "one for each block of a quarter";
    std::sort(order.begin(), order.end());
    std::vector<int> everyFrame(64);
    std::iota(everyFrame.begin(), everyFrame.end(), 0);
    EXPECT_EQ(order, everyFrame) << direction;
  }
}

TEST_F(FrameCache, AFailureIsNamedAndTakesNoMemory) {
  reads_->setBroken({11, 12});
  open(4, 100);
  cache_->lookAt(10, 1, 0, 100);
  waitForChanges(6);
  EXPECT_EQ(cache_->cached(), (std::vector<SFrameSpan>{{10, 11}, {13, 16}}));
  EXPECT_EQ(cache_->failure(11), "scripted.####.dpx: frame 011 is cut off");
  EXPECT_EQ(cache_->failure(12), "scripted.####.dpx: frame 12: out of luck");
  EXPECT_EQ(cache_->failure(10), "");
  EXPECT_FALSE(cache_->find(11));

  cache_->lookAt(10, 1, 0, 99);
  cache_->lookAt(13, 1, 0, 100);
  waitForFrame(16);
  EXPECT_EQ(reads_->taken(), (std::vector<int>{10, 11, 12, 13, 14, 15, 16}))
      << "what failed is left alone";
}

TEST_F(FrameCache, AFailedFrameIsTriedAgainWhenAskedTo) {
  reads_->setBroken({11, 12});
  open(4, 14);
  cache_->lookAt(11, 0, 10, 14);
  waitForChanges(4);
  reads_->setBroken({});
  cache_->lookAt(11, 0, 10, 14);
  cache_->lookAt(11, 1, 10, 14);
  EXPECT_NE(cache_->failure(11), "") << "looking on is not looking again";

  cache_->lookAt(10, 0, 10, 14);
  cache_->lookAt(11, 0, 10, 14);
  EXPECT_EQ(waitForFrame(11).get()[0], 11);
  EXPECT_EQ(cache_->failure(11), "");
  EXPECT_NE(cache_->failure(12), "");

  cache_->retryFailed();
  EXPECT_EQ(waitForFrame(12).get()[0], 12);
  EXPECT_EQ(cache_->cached(), (std::vector<SFrameSpan>{{10, 14}}));
}

TEST_F(FrameCache, EndsWhileFramesAreBeingDecoded) {
  for (int round = 0; round < 20; ++round) {
    open(30, 100, true, 3);
    reads_->setOpen(false);
    cache_->lookAt(50, round % 3 - 1, 0, 100);
    reads_->waitForReads(3);
    std::thread opener([this] { reads_->setOpen(true); });
    cache_.reset();
    opener.join();
    EXPECT_EQ(reads_->active, 0);
    EXPECT_EQ(changes_, static_cast<int>(reads_->order.size())) << "each read was told of";
  }
}

TEST_F(FrameCache, AFrameGivenOutIsTheHoldersWhateverBecomesOfTheCache) {
  open(2, 100);
  cache_->lookAt(7, 1, 0, 100);
  const CFrameCache::Samples held = waitForFrame(7);
  for (int frame = 20; frame < 40; ++frame) {
    cache_->lookAt(frame, 1, 0, 100);
    waitForFrame(frame);
  }
  EXPECT_FALSE(cache_->find(7)) << "dropped";
  EXPECT_EQ(held.get()[0], 7) << "and yet not written over";
  const CFrameCache::Samples last = cache_->find(39);
  cache_.reset();
  EXPECT_EQ(held.get()[FRAME_BYTES / 2 - 1], 7);
  EXPECT_EQ(last.get()[FRAME_BYTES / 2 - 1], 39);
}

}  // namespace
