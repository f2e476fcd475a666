#include "tracking/TrackingText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <initializer_list>
#include <iomanip>
#include <limits>
#include <locale>
#include <random>
#include <sstream>

#include "tracking/TrackingLimits.h"

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

template <typename TItem>
std::string TextOf(const TItem& item) {
  std::ostringstream text;
  text << item;
  EXPECT_TRUE(text.good());
  return text.str();
}

template <typename TItem>
TItem From(const std::string& text) {
  std::istringstream in(text);
  TItem item;
  EXPECT_TRUE(in >> item) << text;
  return item;
}

CTrackingPoints Points(std::initializer_list<int> indices) {
  CTrackingPoints points;
  for (const int index : indices) points.Point(index) = {index + 0.5, 1.0};
  return points;
}

CTrackingArray TwoTrackedPoints() {
  CTrackingArray array;
  array.PointsAt(100).Point(0) = {512.25, 300};
  array.PointsAt(100).Point(1) = {90.5, 88};
  array.PointsAt(101).Point(0) = {513, 301.5};
  array.PointsAt(101).Point(1) = {91, 88.25};
  array.attributes[0];
  array.attributes[1].An = ANCHOR_Horizontal;
  array.attributes[1].AnIn = 0;
  array.SetUseMatting(true);
  array.SetMattingBox({10, 8, 1909, 1071});
  array.SetTrackState(TRACK_STATE_Tracked);
  return array;
}

const char* const TWO_TRACKED_POINTS =
    "{100[0(512.25, 300) 1(90.5, 88)]\n"
    "101[0(513, 301.5) 1(91, 88.25)]\n"
    "}\n"
    "[0(0,0,0,0.0001,0,-1) 1(0,0,0,0.0001,1,0)]\n"
    "1 10 1909 8 1071\n"
    "G\n";

const char* const TAIL = "}[]0 0 0 0 0 R";

TEST(TrackingText, ASetIsWrittenToTheByteAndComesBack) {
  CTrackingArray array = TwoTrackedPoints();
  EXPECT_EQ(TextOf(array), TWO_TRACKED_POINTS);
  EXPECT_EQ(From<CTrackingArray>(TWO_TRACKED_POINTS), array);
  EXPECT_EQ(TextOf(CTrackingArray()), "{}\n[]\n0 0 0 0 0\nR\n");
  EXPECT_EQ(From<CTrackingArray>("{}\n[]\n0 0 0 0 0\nR\n"), CTrackingArray());
  array.SetTrackState(TRACK_STATE_Rendered);
  EXPECT_EQ(From<CTrackingArray>(TextOf(array)).TrackState(), TRACK_STATE_Rendered);
}

TEST(TrackingText, ReadingReplacesAllButTheExtents) {
  CTrackingArray array = TwoTrackedPoints();
  array.SetBoxExtents(1, 2, 3, 4, 5, 6);
  std::istringstream in("{7[]}[]0 0 0 0 0 x rest");
  EXPECT_TRUE(in >> array);
  CTrackingArray expected;
  expected.PointsAt(7);
  expected.SetBoxExtents(1, 2, 3, 4, 5, 6);
  EXPECT_EQ(array, expected);
  std::string rest;
  in >> rest;
  EXPECT_EQ(rest, "rest") << "nothing behind the state letter is taken";
}

TEST(TrackingText, TensBeginALineWhenTheNineIsThere) {
  struct SCase {
    CTrackingPoints points;
    const char* text;
  };
  CTrackingPoints holes = Points({2});
  holes.Point(0);
  holes.Point(3) = {NOT_A_NUMBER, 1};
  holes.Point(9) = {1, INFINITE};
  const SCase cases[] = {
      {Points({}), "[]"},
      {Points({8, 9, 10, 11}), "[ 8(8.5, 1) 9(9.5, 1)\n10(10.5, 1) 11(11.5, 1)]"},
      {Points({8, 10, 20}), "[ 8(8.5, 1)10(10.5, 1)20(20.5, 1)]"},
      {Points({19}), "[ 19(19.5, 1)\n]"},
      {holes, "[ 2(2.5, 1)]"},
  };
  for (const SCase& c : cases) {
    EXPECT_EQ(TextOf(c.points), c.text);
    CTrackingPoints valid;
    for (const auto& [index, point] : c.points.Entries()) {
      if (index != 0 && std::isfinite(point.x + point.y)) valid.Point(index) = point;
    }
    EXPECT_EQ(From<CTrackingPoints>(c.text), valid);
  }
  CTrackingAttributes attributes;
  for (const int index : {8, 9, 10, 30}) attributes[index].Gr = index;
  const char* const text =
      "[ 8(8,0,0,0.0001,0,-1) 9(9,0,0,0.0001,0,-1)\n"
      "10(10,0,0,0.0001,0,-1)30(30,0,0,0.0001,0,-1)]";
  EXPECT_EQ(TextOf(attributes), text);
  EXPECT_EQ(From<CTrackingAttributes>(text), attributes);
}

TEST(TrackingText, NumbersHaveSixDigits) {
  EXPECT_EQ(TextOf(CTrackPoint(123.456789, 1234567.0)), "(123.457, 1.23457e+06)");
  EXPECT_EQ(TextOf(CTrackPoint(0.0001, -1e-7)), "(0.0001, -1e-07)");
  EXPECT_EQ(From<CTrackPoint>("(123.457, 1.23457e+06)"), CTrackPoint(123.457, 1234570.0));
  EXPECT_EQ(TextOf(CTrackAttribute{-7, true, 5, 1.0 / 3, ANCHOR_Both, 12, TRACK_STATUS_Tracked}),
            "(-7,1,5,0.333333,3,12)");
}

TEST(TrackingText, WhatIsNoFiniteNumberIsNeverWrittenAsOne) {
  EXPECT_EQ(From<CTrackPoint>(TextOf(CTrackPoint(NOT_A_NUMBER, 1))), CTrackPoint());
  CTrackAttribute attribute;
  attribute.Al = INFINITE;
  EXPECT_EQ(From<CTrackAttribute>(TextOf(attribute)), CTrackAttribute());
}

/// Decimal comma, grouped thousands.
class CContinentalNumbers : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(TrackingText, TheStreamsFormatHasNoSayAndStaysAsItWas) {
  const std::locale locale(std::locale::classic(), new CContinentalNumbers);
  std::stringstream stream;
  stream.imbue(locale);
  stream << std::hex << std::showpos << std::fixed << std::boolalpha << std::setprecision(2)
         << std::setfill('*') << std::setw(12);
  stream >> std::noskipws;
  const std::ios_base::fmtflags flags = stream.flags();
  CTrackingArray array = TwoTrackedPoints();
  array.mattingBox.right = 19090;
  stream << array;
  EXPECT_NE(stream.str().find("\n1 10 19090 8 1071\n"), std::string::npos) << stream.str();
  CTrackingArray read;
  EXPECT_TRUE(stream >> read);
  EXPECT_EQ(read, array);
  EXPECT_EQ(stream.flags(), flags);
  EXPECT_EQ(stream.precision(), 2);
  EXPECT_EQ(stream.fill(), '*');
  EXPECT_EQ(stream.getloc(), locale);
}

TEST(TrackingText, ABracketOrCommaThatDoesNotMatchSkipsAPointOrTheRestOfAnAttribute) {
  struct SCase {
    const char* points;
    std::initializer_list<int> valid, invalid;
  };
  const SCase points[] = {
      {"[0(1 7 1(1.5,1)]", {1}, {0}},
      {"[0(9;2)1(1.5,1)]", {1}, {0, 2}},
      {"[0<1(1.5,1)]", {1}, {0}},
      {"[0(1,2]1(1.5,1)]", {1}, {0}},
      {"[ 0 ( 0.5 , 1 )\t1\n(1.5,1)]", {0, 1}, {}},
      {"[1(1.5,1)1<]", {1}, {}},
  };
  for (const SCase& c : points) {
    CTrackingPoints expected = Points(c.valid);
    for (const int index : c.invalid) expected.Point(index);
    EXPECT_EQ(From<CTrackingPoints>(c.points), expected) << c.points;
  }
  const std::pair<const char*, CTrackAttribute> attributes[] = {
      {"<1,1,1,0.5,1,1)", {}},
      {"(4 1,1,0.5,1,1)", {.Gr = 4}},
      {"(4,1;3,0.5,1,1)", {.Gr = 4, .SmEn = true}},
      {"(4,1,3,0.5;1,1)", {.Gr = 4, .SmEn = true, .Sm = 3, .Al = 0.5}},
      {"(4,1,3,0.5,2,7]", {.Gr = 4, .SmEn = true, .Sm = 3, .Al = 0.5, .An = 2, .AnIn = 7}},
  };
  for (const auto& [text, expected] : attributes) {
    EXPECT_EQ(From<CTrackAttribute>(text), expected) << text;
  }
}

TEST(TrackingText, ASetThatCannotBeReadSaysWhere) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "line 1: the text ends where '{' should stand"},
      {"\n\n x", "line 3: 'x' where '{' should stand"},
      {"{", "line 1: the text ends where frame index should stand"},
      {"{\n\n-5[0(1,1)]", "line 3: frame index -5 is out of range"},
      {"{2147483647[]", "line 1: frame index 2147483647 is out of range"},
      {"{2147483648[]", "line 1: frame index 2147483648 is out of range"},
      {"{5x", "line 1: 'x' where '[' should stand"},
      {"{\a[", "line 1: byte 0x07 where frame index should stand"},
      {"{5[0(1,1)\n-1(1,1)]", "line 2: point index -1 is out of range"},
      {"{5[100000(1,1)]", "line 1: point index 100000 is out of range"},
      {"{5[0(1 2)]", "line 1: ')' where point index should stand"},
      {"{5[0(nan,1)]", "line 1: 'n' where x should stand"},
      {"{5[0(inf,1)]", "line 1: 'i' where x should stand"},
      {"{5[0(1,1e999)]", "line 1: y 1e999 is out of range"},
      {"{5[0(1e,1)]", "line 1: x 1e is no number"},
      {"{5[0(-,1)]", "line 1: x - is no number"},
      {"{5[0(" + std::string(300, '1') + ",1)]", "line 1: x has too many digits"},
      {"{5[0(1,1", "line 1: the text ends where ')' should stand"},
      {"{5[0(1,1)", "line 1: the text ends where point index should stand"},
      {"{0[]1000000[]", "line 1: frame 1000000 makes the set longer than 1000000 frames"},
      {"{2147483646[]0[]", "line 1: frame 0 makes the set longer than 1000000 frames"},
      {"{}", "line 1: the text ends where '[' should stand"},
      {"{}[-1(0,0,0,1,0,-1)]", "line 1: point index -1 is out of range"},
      {"{}[0(0,2,0,1,0,-1)]", "line 1: SmEn is neither 0 nor 1"},
      {"{}[0(0,0,0,1,0,99999999999)]", "line 1: AnIn 99999999999 is out of range"},
      {"{}[]2 0 0 0 0 R", "line 1: use-matting flag is neither 0 nor 1"},
      {"{}[]1 0 0 0.5 0 R", "line 1: '.' where matting box's bottom should stand"},
      {"{}[]\n1 0 0 0 0\n", "line 3: the text ends where state letter should stand"},
  };
  for (const auto& [text, reason] : cases) {
    std::istringstream in(text);
    CTrackingArray array;
    std::string said;
    EXPECT_FALSE(ReadTrackingArray(in, array, said)) << text;
    EXPECT_EQ(said, reason);
    EXPECT_TRUE(in.fail()) << text;
    std::istringstream again(text);
    EXPECT_FALSE(again >> array) << text;
  }
}

TEST(TrackingText, WhatLiesAtTheLimitsIsRead) {
  const std::string text =
      "{2146483647[99999(1,-1)\n]2147483646[]}[99999(0,0,0,1,77,-2147483648)\n]"
      "1 -2147483648 2147483647 0 0 ?";
  const auto array = From<CTrackingArray>(text);
  EXPECT_EQ(array.FirstFrame(), 2146483647);
  EXPECT_EQ(array.EndFrame(), 2147483647);
  EXPECT_EQ(array.attributes.at(99999).AnIn, std::numeric_limits<int>::min());
  EXPECT_EQ(From<CTrackingArray>(TextOf(array)), array);
}

TEST(TrackingText, MorePointsThanMemoryShouldHoldAreRefused) {
  std::string text = "{";
  for (int frame = 0; frame <= 80; ++frame) {
    text += std::to_string(frame) + "[";
    for (int entry = 0; entry < LARGEST_POINT_TOTAL / 80; ++entry) text += "1<";
    text += "]\n";
  }
  std::istringstream in(text + TAIL);
  CTrackingArray array;
  std::string reason;
  EXPECT_FALSE(ReadTrackingArray(in, array, reason));
  EXPECT_EQ(reason, "line 81: more than 8000000 points");
}

TEST(TrackingText, ASetThatCouldNotBeReadAgainIsNotWritten) {
  void (*const edits[])(CTrackingArray&) = {
      [](CTrackingArray& a) { a.PointsAt(-1); },
      [](CTrackingArray& a) { a.PointsAt(1000100); },
      [](CTrackingArray& a) { a.PointsAt(100).Point(-1) = CTrackPoint(1, 1); },
      [](CTrackingArray& a) { a.PointsAt(100).Point(100000) = CTrackPoint(1, 1); },
      [](CTrackingArray& a) { a.attributes[100000]; },
  };
  for (const auto edit : edits) {
    CTrackingArray array = TwoTrackedPoints();
    edit(array);
    std::ostringstream out;
    EXPECT_FALSE(out << array);
    EXPECT_EQ(out.str(), "");
  }
}

TEST(TrackingText, ASourceThatFailsIsSaid) {
  std::ifstream folder(testing::TempDir());  // opens, but cannot be read
  CTrackingArray array;
  std::string reason;
  EXPECT_FALSE(ReadTrackingArray(folder, array, reason));
  EXPECT_TRUE(folder.bad());
  EXPECT_NE(reason, "");
  EXPECT_FALSE(ReadTrackingArray(folder, array, reason));
  EXPECT_EQ(reason, "the stream had failed before");
}

TEST(TrackingText, NumbersAreThoseOfStreamExtraction) {
  std::mt19937 random(23);
  const std::string characters = "0123456789019..eE+-";
  for (int round = 0; round < 200000; ++round) {
    std::string number;
    for (unsigned n = random() % 9; n > 0; --n) number += characters[random() % characters.size()];
    std::istringstream in("(" + number + ",1)");
    CTrackPoint point;
    in >> point;
    std::istringstream plain("(" + number + ",1)");
    double x = 0, y = 0;
    char opening = 0, comma = 0, closing = 0;
    plain >> opening >> x >> comma;
    const bool matches = plain && comma == ',' && plain >> y >> closing;
    ASSERT_EQ(in.fail(), plain.fail()) << number;
    ASSERT_EQ(point, matches ? CTrackPoint(x, y) : CTrackPoint()) << number;
  }
}

TEST(TrackingText, AnyTextIsEitherRefusedOrReadsAsItWritesItself) {
  std::mt19937 random(31);
  const std::string pieces[] = {
      "{", "}",    "[",  "]",  "(",     ")",         ",",    " ",  "\n",
      "0", "1",    "17", "-3", "0.5",   "1e9",       "1e-9", "R",  "B",
      "x", "\xff", "[]", "{}", "(1,2)", "0 0 0 0 0", "5[",   "]}", "1(0,0,0,1,2,3)"};
  int accepted = 0;
  for (int round = 0; round < 100000; ++round) {
    std::string text =
        round % 2 == 0 ? TWO_TRACKED_POINTS : "{5[0(1,2)]}[1(0,0,0,1,2,3)]0 0 0 0 0 R";
    for (unsigned n = random() % 4; n > 0; --n) {
      text.replace(random() % text.size(), random() % 4, pieces[random() % std::size(pieces)]);
    }
    std::istringstream in(text);
    CTrackingArray array;
    std::string reason;
    const bool loaded = ReadTrackingArray(in, array, reason);
    ASSERT_NE(loaded, in.fail()) << text;
    ASSERT_NE(reason.empty(), in.fail()) << text;
    if (in.fail()) continue;
    ++accepted;
    const std::string written = TextOf(array);
    ASSERT_EQ(TextOf(From<CTrackingArray>(written)), written) << text;
  }
  EXPECT_GT(accepted, 10000);
}

}  // namespace
