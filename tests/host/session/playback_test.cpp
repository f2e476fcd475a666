#include "session/Playback.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr std::int64_t SECOND = 1'000'000'000;
constexpr std::int64_t BEGIN = 77 * SECOND + 123;  // of a clock that began long before

// The first nanosecond of frame `count` after the start, from numbers as wide as it takes.
std::int64_t timeOf(std::int64_t count, const SFrameRate& rate) {
  const __int128 nanoseconds = static_cast<__int128>(count) * rate.denominator * SECOND;
  return BEGIN + static_cast<std::int64_t>((nanoseconds + rate.numerator - 1) / rate.numerator);
}

// Frame 0 at BEGIN, and whatever is due every `stepNs` is shown at once.
void playSmoothly(CPlayback& playback, int steps, std::int64_t stepNs) {
  for (int i = 0; i < steps; ++i) {
    const std::int64_t now = BEGIN + i * stepNs;
    playback.shown(playback.due(now), now);
  }
}

TEST(Playback, EveryFrameComesAtItsExactNanosecond) {
  const int COUNT = 100'000;
  for (const SFrameRate rate : {SFrameRate{24000, 1001}, {60000, 1001}, {25, 1}, {23976, 1000}}) {
    CPlayback playback(rate, {0, 2 * COUNT, false, false});
    playback.start(0, 1, BEGIN);
    for (int frame = 1; frame <= COUNT; ++frame) {
      const std::int64_t moment = timeOf(frame, rate);
      ASSERT_EQ(playback.due(moment - 1), frame - 1);
      ASSERT_EQ(playback.nextDueNs(), moment);
      ASSERT_EQ(playback.due(moment), frame);
    }
  }
  CPlayback playback({24000, 1001}, {0, 1000, true, false});
  playback.start(0, 1, BEGIN);
  const std::int64_t YEAR_OF_FRAMES = 24000LL * 365 * 86'400 / 1001;
  EXPECT_EQ(playback.due(timeOf(YEAR_OF_FRAMES, {24000, 1001})), YEAR_OF_FRAMES % 1000);
}

TEST(Playback, GoesThroughItsRangeAtEachSpeed) {
  const struct {
    const char* name;
    int frame, speed;
    bool loop;
    std::vector<int> due;  // one frame time after the other
    bool ended;            // at the last of them
  } cases[] = {
      {"forwards", 13, 1, false, {13, 14, 15, 16, 17, 18, 19}, false},
      {"stops at the end", 18, 1, false, {18, 19, 19}, true},
      {"the last frame has its time", 18, 1, false, {18, 19}, false},
      {"stops at the beginning", 11, -1, false, {11, 10, 10}, true},
      {"fast, and yet to the last frame", 14, 4, false, {14, 18, 19, 19}, true},
      {"fast backwards", 19, -8, false, {19, 11, 10, 10}, true},
      {"looped", 18, 1, true, {18, 19, 10, 11}, false},
      {"looped backwards", 11, -1, true, {11, 10, 19, 18}, false},
      {"looped, fast", 15, 2, true, {15, 17, 19, 11, 13}, false},
      {"looped, fast backwards", 12, -8, true, {12, 14, 16, 18, 10}, false},
      {"from before the range", 3, 1, false, {10, 11}, false},
      {"from behind the range", 30, 1, true, {10, 11}, false},
      {"backwards from before the range", 3, -1, false, {19, 18}, false},
      {"standing", 30, 0, true, {30, 30, 30}, false},
  };
  const SFrameRate rate{24000, 1001};
  for (const auto& c : cases) {
    CPlayback playback(rate, {10, 20, c.loop, false});
    playback.start(c.frame, c.speed, BEGIN);
    EXPECT_EQ(playback.due(BEGIN - SECOND), c.due[0]) << c.name << ": before its beginning";
    std::vector<int> due;
    for (std::size_t i = 0; i < c.due.size(); ++i)
      due.push_back(playback.due(timeOf(static_cast<int>(i), rate)));
    EXPECT_EQ(due, c.due) << c.name;
    EXPECT_EQ(playback.ended(timeOf(static_cast<int>(c.due.size()) - 1, rate)), c.ended) << c.name;
  }
}

TEST(Playback, CountsTheFramesThatWerePassedOver) {
  struct SMoment {
    int frameTime;
    bool ready;  // false: the caller keeps the picture before
  };
  const struct {
    const char* name;
    int speed;
    std::vector<SMoment> moments;
    int dropped;
  } cases[] = {
      {"none", 1, {{0, true}, {1, true}, {1, true}, {2, true}}, 0},
      {"the caller was late", 1, {{0, true}, {4, true}, {5, true}}, 3},
      {"two were not ready", 1, {{0, true}, {1, false}, {2, false}, {3, true}}, 2},
      {"late for its time, but shown in it", 1, {{0, true}, {1, false}, {1, true}}, 0},
      {"nothing yet", 1, {{0, false}, {1, false}}, 0},
      {"not ready at first", 1, {{0, false}, {1, false}, {2, true}}, 2},
      {"skipped by design", 4, {{0, true}, {1, true}, {2, true}}, 0},
      {"two pictures late at speed 4", -4, {{0, true}, {3, true}}, 2},
      {"once round and a picture on", 1, {{0, true}, {101, true}}, 100},
  };
  for (const auto& c : cases) {
    CPlayback playback({25, 1}, {0, 100, true, false});
    playback.start(40, c.speed, BEGIN);
    int picture = -1;
    for (const SMoment& moment : c.moments) {
      const std::int64_t now = BEGIN + moment.frameTime * (SECOND / 25) + 1;
      const int due = playback.due(now);
      if (moment.ready) picture = due;
      playback.shown(picture, now);
    }
    EXPECT_EQ(playback.dropped(), c.dropped) << c.name;
  }
}

TEST(Playback, TheClockWaitsWhereEveryFrameIsWanted) {
  const std::int64_t FRAME = SECOND / 25;
  CPlayback playback({25, 1}, {0, 4, false, true});
  playback.start(0, 1, BEGIN);
  EXPECT_EQ(playback.due(BEGIN + 3 * FRAME), 0) << "nobody has seen frame 0 yet";
  const std::int64_t first = BEGIN + 3 * FRAME + 5;
  playback.shown(0, first);
  EXPECT_EQ(playback.due(first + FRAME - 1), 0) << "a late frame has its whole time";
  EXPECT_EQ(playback.nextDueNs(), first + FRAME);
  EXPECT_EQ(playback.due(first + FRAME + 9), 1);
  playback.shown(1, first + FRAME + 9);
  EXPECT_EQ(playback.nextDueNs(), first + 2 * FRAME) << "a caller's small delays do not add up";

  EXPECT_EQ(playback.due(first + 50 * FRAME), 2);
  playback.shown(1, first + 50 * FRAME);
  EXPECT_EQ(playback.due(first + 90 * FRAME), 2) << "still not there";
  EXPECT_FALSE(playback.ended(first + 90 * FRAME));
  playback.shown(2, first + 90 * FRAME);
  EXPECT_EQ(playback.due(first + 91 * FRAME), 3);
  playback.shown(3, first + 91 * FRAME);
  EXPECT_FALSE(playback.ended(first + 92 * FRAME - 1));
  EXPECT_TRUE(playback.ended(first + 92 * FRAME));
  EXPECT_EQ(playback.dropped(), 0);
}

TEST(Playback, MeasuresThePicturesOfTheLastSecond) {
  const SFrameRate rate{24000, 1001};
  CPlayback playback(rate, {0, 1000, true, false});
  playback.start(0, 1, BEGIN);
  EXPECT_EQ(playback.measuredRate(BEGIN), 0.0);
  const std::int64_t stepNs = 1'001 * SECOND / 24'000 + 1;  // always just within the frame's time
  playSmoothly(playback, 100, stepNs);
  const std::int64_t last = BEGIN + 99 * stepNs;
  EXPECT_NEAR(playback.measuredRate(last), rate.value(), 1e-5);
  EXPECT_NEAR(playback.measuredRate(last + stepNs / 2), rate.value(), 1e-5);
  EXPECT_NEAR(playback.measuredRate(last + 12 * stepNs), rate.value() * 13 / 24, 1e-5)
      << "of 24 frame times 11 brought no picture";
  EXPECT_EQ(playback.measuredRate(last + 3 * SECOND), 0.0);

  playback.start(0, 8, BEGIN);
  playSmoothly(playback, 50, 2 * stepNs);
  EXPECT_NEAR(playback.measuredRate(BEGIN + 49 * 2 * stepNs), rate.value() / 2, 1e-5)
      << "every second picture came";
  EXPECT_EQ(playback.dropped(), 49);
}

TEST(Playback, TheKeysOfATapeDeck) {
  const struct {
    int from;
    const char* keys;
    int speed;
  } cases[] = {
      {0, "L", 1},  {0, "LL", 2},  {0, "LLL", 4},    {0, "LLLL", 8}, {0, "LLLLL", 8},
      {0, "J", -1}, {0, "jj", -2}, {0, "JJJJJ", -8}, {8, "J", -1},   {-4, "l", 1},
      {4, "K", 0},  {-8, "k", 0},  {2, "KL", 1},     {4, "x", 4},
  };
  for (const auto& c : cases) {
    int speed = c.from;
    for (const char* key = c.keys; *key != '\0'; ++key) speed = NextSpeed(speed, *key);
    EXPECT_EQ(speed, c.speed) << c.from << " and " << c.keys;
  }
}

}  // namespace
