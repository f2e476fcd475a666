#include "frames/ResultFrames.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

constexpr std::size_t COUNT = 100;
constexpr std::size_t BYTES = COUNT * sizeof(std::uint16_t);

void put(CResultFrames& results, int frame) {
  const std::vector<std::uint16_t> samples(COUNT, static_cast<std::uint16_t>(frame));
  results.put(frame, samples.data());
}

TEST(ResultFrames, WhatIsFarthestFromTheNewestGoesFirst) {
  const struct {
    std::vector<int> put;
    std::vector<int> kept;
  } cases[] = {{{1, 2, 3}, {1, 2, 3}},
               {{1, 2, 3, 4}, {2, 3, 4}},
               {{10, 11, 12, 5}, {5, 10, 11}},
               {{1, 2, 3, 2, 2}, {1, 2, 3}}};
  for (const auto& c : cases) {
    CResultFrames results(3 * BYTES, BYTES);
    for (const int frame : c.put) put(results, frame);
    EXPECT_EQ(results.frames(), c.kept);
    for (const int frame : c.kept) EXPECT_EQ(results.find(frame).get()[COUNT - 1], frame);
  }
  CResultFrames tiny(1, BYTES);
  put(tiny, 7);
  put(tiny, 8);
  EXPECT_EQ(tiny.frames(), std::vector<int>{8}) << "the newest, however little there is";
}

TEST(ResultFrames, AFrameInSomebodysHandsIsNotWrittenOver) {
  CResultFrames results(BYTES, BYTES);
  put(results, 1);
  const CResultFrames::Samples held = results.find(1);
  put(results, 2);
  put(results, 1);
  EXPECT_EQ(held.get()[0], 1);
}

TEST(ResultFrames, OneThreadPutsWhileAnotherLooks) {
  CResultFrames results(4 * BYTES, BYTES);
  std::thread pass([&] {
    for (int frame = 0; frame < 500; ++frame) put(results, frame);
  });
  for (int look = 0; look < 500; ++look) {
    for (const int frame : results.frames()) {
      const CResultFrames::Samples samples = results.find(frame);
      EXPECT_TRUE(!samples || samples.get()[0] == samples.get()[COUNT - 1]) << frame;
    }
  }
  pass.join();
  EXPECT_EQ(results.frames().size(), 4u);
}

}  // namespace
