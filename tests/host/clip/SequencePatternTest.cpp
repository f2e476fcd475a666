#include "SequencePattern.h"

#include "TemporaryFolder.h"

TEST(SequencePattern, NamesAreTakenApart) {
  struct SCase {
    const char* path;
    const char* prefix;
    int digits;
    const char* suffix;
    const char* text;
  };
  const SCase cases[] = {
      {"a/name.%04d.dpx", "name.", 4, ".dpx", "a/name.%04d.dpx"},
      {"name.####.dpx", "name.", 4, ".dpx", "name.%04d.dpx"},
      {"name.@@@@@@.exr", "name.", 6, ".exr", "name.%06d.exr"},
      {"name.%d.tif", "name.", 1, ".tif", "name.%d.tif"},
      {"name.%5d.tif", "name.", 5, ".tif", "name.%05d.tif"},
      {"/x/shot2_v03.0017.dpx", "shot2_v03.", 4, ".dpx", "/x/shot2_v03.%04d.dpx"},
      {"0017.png", "", 4, ".png", "%04d.png"},
      {"scan2k.dpx", "scan2k", 0, ".dpx", "scan2k.dpx"},
      {"img001_left.tiff", "img001_left", 0, ".tiff", "img001_left.tiff"},
      {"50%%_#.dpx", "50%_", 1, ".dpx", "50%%_%d.dpx"},
      {"a.b.c-12.DPX", "a.b.c-", 2, ".DPX", "a.b.c-%02d.DPX"},
      {"a#b/name.0001.dpx", "name.", 4, ".dpx", "a#b/name.%04d.dpx"},
      {"serial20240131120000.dpx", "serial20240131120000", 0, ".dpx", "serial20240131120000.dpx"},
  };
  for (const SCase& c : cases) {
    const SSequencePattern pattern = ParseSequencePattern(c.path);
    EXPECT_EQ(pattern.prefix, c.prefix) << c.path;
    EXPECT_EQ(pattern.digits, c.digits) << c.path;
    EXPECT_EQ(pattern.suffix, c.suffix) << c.path;
    EXPECT_EQ(pattern.text(), c.text) << c.path;
  }
  ExpectMentions(ErrorOf([] { ParseSequencePattern("a.##.%02d.dpx"); }),
                 {"a.##.%02d.dpx", "more than one frame number"});
}

TEST(SequencePattern, NumbersAreReadAsTheyAreWritten) {
  const SSequencePattern pattern = ParseSequencePattern("a.####.dpx");
  EXPECT_EQ(pattern.fileName(7), "a.0007.dpx");
  EXPECT_EQ(pattern.fileName(123456), "a.123456.dpx");
  struct SCase {
    const char* name;
    int frame;
  };
  const SCase cases[] = {{"a.0007.dpx", 7},        {"a.123456.dpx", 123456}, {"a.007.dpx", -1},
                         {"a.00007.dpx", -1},      {"a.000x.dpx", -1},       {"b.0007.dpx", -1},
                         {"a.0007.dpx.bak", -1},   {"a..dpx", -1},           {"a.-007.dpx", -1},
                         {"a.12345678901.dpx", -1}};
  for (const SCase& c : cases) EXPECT_EQ(pattern.frameOf(c.name), c.frame) << c.name;
}

TEST(SequencePattern, SequencesAreFoundByWhatNamesThem) {
  struct SCase {
    const char* what;
    std::vector<std::string> files;
    const char* path;
    const char* pattern;
    int first, last;
  };
  const SCase cases[] = {
      {"pattern",
       {"a.0008.dpx", "a.0009.dpx", "a.0010.dpx", "b.0003.dpx"},
       "a.%04d.dpx",
       "a.%04d.dpx",
       8,
       10},
      {"one file", {"a.0008.dpx", "a.0009.dpx", "b.0001.dpx"}, "a.0009.dpx", "a.%04d.dpx", 8, 9},
      {"folder",
       {"a.0008.dpx", "a.0009.dpx", "notes.txt", ".a.0011.tmp.dpx"},
       "",
       "a.%04d.dpx",
       8,
       9},
      {"growing number", {"a.0999.dpx", "a.1000.dpx"}, "a.1000.dpx", "a.%04d.dpx", 999, 1000},
      {"number outgrows its padding",
       {"a.99.dpx", "a.98.dpx", "a.100.dpx"},
       "a.100.dpx",
       "a.%02d.dpx",
       98,
       100},
      {"no padding", {"a.9.dpx", "a.10.dpx", "a.11.dpx"}, "a.11.dpx", "a.%d.dpx", 9, 11},
      {"no padding, folder", {"a.9.dpx", "a.10.dpx"}, "", "a.%d.dpx", 9, 10},
      {"single image", {"still.tif", "other.tif"}, "still.tif", "still.tif", 0, 0},
      {"literal sign", {"#1.dpx", "x.txt"}, "#1.dpx", "#%d.dpx", 1, 1},
      {"from zero", {"a.0000.dpx", "a.0001.dpx"}, "a.####.dpx", "a.%04d.dpx", 0, 1},
  };
  for (const SCase& c : cases) {
    const CTemporaryFolder folder;
    for (const std::string& file : c.files) folder.makeFile(file);
    const SSequence sequence = FindSequence(folder(c.path));
    EXPECT_EQ(sequence.pattern.text(), folder(c.pattern)) << c.what;
    EXPECT_EQ(sequence.frames.front(), c.first) << c.what;
    EXPECT_EQ(sequence.frames.back(), c.last) << c.what;
  }
}

TEST(SequencePattern, WhatIsNoSequenceIsRefusedByName) {
  struct SCase {
    const char* what;
    std::vector<std::string> files;
    const char* path;
    std::vector<std::string> message;
  };
  const SCase cases[] = {
      {"holes",
       {"a.1001.dpx", "a.1003.dpx", "a.1004.dpx", "a.1009.dpx"},
       "a.1003.dpx",
       {"a.%04d.dpx", "missing frames 1002, 1005-1008"}},
      {"a very long hole", {"a.1.dpx", "a.9000000.dpx"}, "a.%d.dpx", {"frames 2-8999999"}},
      {"empty folder", {}, "", {"no image sequence"}},
      {"only other files", {"a.txt"}, "", {"no image sequence"}},
      {"two sequences", {"a.1.dpx", "b.1.dpx"}, "", {"several", "a.%d.dpx", "b.%d.dpx"}},
      {"same name, two types", {"a.1.dpx", "a.1.tif"}, "", {"several", "a.%d.dpx", "a.%d.tif"}},
      {"no such file", {}, "a.0001.dpx", {"a.0001.dpx", "no such file"}},
      {"nothing fits the pattern", {"a.1.dpx"}, "b.%04d.dpx", {"b.%04d.dpx", "no such files"}},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.what);
    const CTemporaryFolder folder;
    for (const std::string& file : c.files) folder.makeFile(file);
    ExpectMentions(ErrorOf([&] { FindSequence(folder(c.path)); }), c.message);
  }
}
