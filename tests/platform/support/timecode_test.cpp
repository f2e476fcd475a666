#include "support/Timecode.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr int kDay30Drop = 2589408;
constexpr int kDay60Drop = 5178816;

TEST(CTimecode, KnownOnesAreShownAndRead) {
  const struct {
    int frame, fps;
    bool drop;
    const char* text;
  } cases[] = {{0, 24, false, "00:00:00:00"},
               {86400, 24, false, "01:00:00:00"},
               {90125, 25, false, "01:00:05:00"},
               {2073599, 24, false, "23:59:59:23"},
               {1800, 30, false, "00:01:00:00"},
               {1799, 30, true, "00:00:59;29"},
               {1800, 30, true, "00:01:00;02"},
               {3597, 30, true, "00:01:59;29"},
               {3598, 30, true, "00:02:00;02"},
               {17981, 30, true, "00:09:59;29"},
               {17982, 30, true, "00:10:00;00"},
               {19781, 30, true, "00:10:59;29"},
               {19782, 30, true, "00:11:00;02"},
               {107892, 30, true, "01:00:00;00"},
               {kDay30Drop - 1, 30, true, "23:59:59;29"},
               {3599, 60, true, "00:00:59;59"},
               {3600, 60, true, "00:01:00;04"},
               {35964, 60, true, "00:10:00;00"},
               {kDay60Drop - 1, 60, true, "23:59:59;59"},
               {119, 120, false, "00:00:00:119"}};
  for (const auto& [frame, fps, drop, text] : cases) {
    EXPECT_EQ(CTimecode(frame, fps, drop).toText(), text);
    CTimecode read(1, fps, drop);
    ASSERT_TRUE(read.fromText(text)) << text;
    EXPECT_EQ(read, CTimecode(frame, fps, drop)) << text;
  }
}

TEST(CTimecode, EveryDropFrameLabelOfADayReadsBackAsItsFrame) {
  for (const int fps : {30, 60}) {
    std::string previous;
    CTimecode read(0, fps, true);
    const int day = fps == 30 ? kDay30Drop : kDay60Drop;
    for (int frame = 0; frame < day; frame += fps == 30 ? 7 : 13) {
      const CTimecode timecode(frame, fps, true);
      const std::string text = timecode.toText();
      ASSERT_LT(previous, text);
      ASSERT_TRUE(read.fromText(text)) << text;
      ASSERT_EQ(read.frameCount(), frame) << text;
      previous = text;
    }
  }
}

TEST(CTimecode, TimeOfDayWrapsAtMidnightBothWays) {
  EXPECT_EQ(CTimecode(24 * 86400 + 5, 24, false).toText(), "00:00:00:05");
  EXPECT_EQ(CTimecode(-1, 25, false).toText(), "23:59:59:24");
  EXPECT_EQ(CTimecode(-1, 30, true).toText(), "23:59:59;29");
  EXPECT_EQ(CTimecode(kDay30Drop, 30, true).toText(), "00:00:00;00");
  EXPECT_EQ(CTimecode(-5, 24, false).frameCount(), -5);
}

TEST(CTimecode, DropsOnlyWhereThereIsADropFrameCount) {
  for (const int fps : {24, 25, 48, 50}) EXPECT_FALSE(CTimecode(0, fps, true).isDropFrame()) << fps;
  EXPECT_EQ(CTimecode(3, 0, false).framesPerSecond(), 1);
}

TEST(CTimecode, OtherTextsLeaveItAsItIs) {
  for (const char* text :
       {"", "1", "01:00:00", "01:00:00:00:00", "24:00:00:00", "00:60:00:00", "00:00:60:00",
        "00:00:00:30", "00:00:00:-1", "-1:00:00:00", "a0:00:00:00", "00:01:00;00", "00:01:00:01",
        "00-00-00-00", "00:00:00:99999999999", "00:00:00:00x"}) {
    CTimecode timecode(77, 30, true);
    EXPECT_FALSE(timecode.fromText(text)) << text;
    EXPECT_EQ(timecode, CTimecode(77, 30, true)) << text;
  }
  CTimecode timecode(0, 25, false);
  EXPECT_TRUE(timecode.fromText("  1.2;3:4\n"));
  EXPECT_EQ(timecode.toText(), "01:02:03:04");
}

}  // namespace
