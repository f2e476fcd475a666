#include "support/IniFile.h"

#include <cmath>
#include <limits>
#include <locale>
#include <random>

#include "support/ErrorReport.h"
#include "temp_folder.h"

namespace {

class IniFile : public TempFolder {
 protected:
  std::string path = folder + "new/deep/settings.ini";
};

struct SCommaForPoint : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST_F(IniFile, EveryKindOfValueReadsBackInAnyLocale) {
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new SCommaForPoint));
  {
    CIniFile ini(path);
    EXPECT_TRUE(ini.good());
    ini.WriteInteger("A", "Int", std::numeric_limits<std::int64_t>::min());
    ini.WriteDouble("A", "Double", 1234567.891);
    ini.WriteBool("A", "Yes", true);
    ini.WriteBool("B", "Yes", false);
    ini.WriteString("B", "Text", "Größe = 3 ; [x] # y");
    EXPECT_FALSE(std::filesystem::exists(path)) << "nothing is written before Save";
    ASSERT_TRUE(ini.Save()) << theError.getMessage();
  }
  const CIniFile ini(path);
  EXPECT_EQ(ini.ReadInteger("A", "Int", 0), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(ini.ReadDouble("A", "Double", 0), 1234567.891);
  EXPECT_TRUE(ini.ReadBool("A", "Yes", false));
  EXPECT_FALSE(ini.ReadBool("B", "Yes", true));
  EXPECT_EQ(ini.ReadString("B", "Text", ""), "Größe = 3 ; [x] # y");
  EXPECT_EQ(ini.ReadInteger("A", "Missing", 42), 42);
  EXPECT_EQ(ini.ReadInteger("Missing", "Int", 43), 43);
  std::locale::global(before);
}

TEST_F(IniFile, DoublesReadBackToTheSameBits) {
  std::mt19937_64 random(20240611);
  std::vector<double> values = {0.0001, 0.1, -0.0, 1e-310, 1.7976931348623157e308, 1.0 / 3};
  while (values.size() < 300) {
    const double value = std::bit_cast<double>(random());
    if (std::isfinite(value)) values.push_back(value);
  }
  {
    CIniFile ini(path);
    for (std::size_t i = 0; i < values.size(); ++i) {
      ini.WriteDouble("D", std::to_string(i), values[i]);
    }
    ASSERT_TRUE(ini.Save());
  }
  const CIniFile ini(path);
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double read = ini.ReadDouble("D", std::to_string(i), 9);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(read), std::bit_cast<std::uint64_t>(values[i])) << i;
  }
}

TEST_F(IniFile, AnyTextIsAValue) {
  const std::string texts[] = {"",        " ",      "  both  ", "\t",           "a\nb",
                               "\r\n",    "\"",     "\"in\"",   "\"",           "C:\\new\\reel",
                               "\\n",     "a\\",    " \\\" ",   "<<<END\nx",    "<<<END",
                               "; no",    "[S]",    "k=v",      "two\n[S]\nk=", "\"half",
                               "\" a \\", "end \"", "ünïcode"};
  {
    CIniFile ini(path);
    for (std::size_t i = 0; i < std::size(texts); ++i) {
      ini.WriteString("T", std::to_string(i), texts[i]);
    }
    ASSERT_TRUE(ini.Save());
  }
  const CIniFile ini(path);
  ASSERT_TRUE(ini.good()) << theError.getMessage();
  for (std::size_t i = 0; i < std::size(texts); ++i) {
    EXPECT_EQ(ini.ReadString("T", std::to_string(i), "missing"), texts[i]) << i;
  }
}

TEST_F(IniFile, WhatDoesNotParseGivesTheFallback) {
  path = folder + "hand.ini";
  put(path,
      "\xEF\xBB\xBF; by hand\n[S]\n empty =\nword=abc\nhalf = 5.5\nbig=9223372036854775808\n"
      "plus=+7\nblank =  8 \t\nnan=nan\ninf = inf\nyes = YES\noff=Off\ntwo=2\nexp=1e3\nsame=1\n"
      "same=2\r\ncrlf=6\r\n");
  const CIniFile ini(path);
  ASSERT_TRUE(ini.good()) << theError.getMessage();
  const struct {
    const char* key;
    int integer;
    double number;
    bool truth;
  } cases[] = {{"empty", -9, -9, true}, {"word", -9, -9, true},
               {"half", -9, 5.5, true}, {"big", -9, 9223372036854775808.0, true},
               {"plus", 7, 7, true},    {"blank", 8, 8, true},
               {"nan", -9, -9, true},   {"inf", -9, -9, true},
               {"yes", -9, -9, true},   {"off", -9, -9, false},
               {"two", 2, 2, true},     {"exp", -9, 1000, true},
               {"same", 2, 2, true},    {"crlf", 6, 6, true}};
  for (const auto& c : cases) {
    EXPECT_EQ(ini.ReadInteger("S", c.key, -9), c.integer) << c.key;
    EXPECT_EQ(ini.ReadDouble("S", c.key, -9), c.number) << c.key;
    EXPECT_EQ(ini.ReadBool("S", c.key, true), c.truth) << c.key;
  }
  EXPECT_FALSE(ini.ReadBool("S", "word", false));
  EXPECT_EQ(ini.ReadString("S", "empty", "x"), "");
}

TEST_F(IniFile, FilesThatAreNoSettingsAreRefusedAndNeverOverwritten) {
  path = folder + "precious";
  for (const std::string& text :
       {std::string("SDPX\0\0\x20", 7), std::string("\x89PNG\r\n\x1a\n"), std::string(100, '\xff'),
        std::string("[S]\nkey=1\nwhat is this\n"), std::string("=5\n"), std::string("[S\nkey=1\n"),
        std::string("[S]\nkey=a\0b", 11), std::string((16 << 20) + 1, ';')}) {
    put(path, text);
    theError.clear();
    CIniFile ini(path);
    EXPECT_FALSE(ini.good()) << text.substr(0, 20);
    EXPECT_NE(theError.getMessage().find(path), std::string::npos) << theError.getMessage();
    EXPECT_EQ(ini.ReadInteger("S", "key", 3), 3);
    ini.WriteInteger("S", "key", 4);
    EXPECT_FALSE(ini.Save());
    EXPECT_EQ(CreateIniFile(path), nullptr);
    EXPECT_EQ(textOf(path), text);
  }
  CIniFile directory(folder);
  EXPECT_FALSE(directory.good());
  theError.clear();
}

TEST_F(IniFile, AnyHandEditedTextIsEitherRefusedOrKeepsWorking) {
  std::mt19937 random(7);
  const std::string pieces[] = {"[", "]",  "=",   ";",   "#",  "\"", "<<<", "\n",  "\n",   "\r\n",
                                " ", "\t", "key", "Sec", "\\", "%",  "ü",   "k=v", "[S]\n"};
  int accepted = 0;
  for (int round = 0; round < 300; ++round) {
    std::string text;
    for (unsigned n = random() % 12; n > 0; --n) text += pieces[random() % std::size(pieces)];
    put(folder + "x.ini", text);
    CIniFile ini(folder + "x.ini");
    if (!ini.good()) continue;
    ++accepted;
    ini.WriteInteger("Mine", "number", round);
    ASSERT_TRUE(ini.Save());
    const CIniFile again(folder + "x.ini");
    EXPECT_TRUE(again.good()) << text << "\n---\n" << textOf(folder + "x.ini");
    EXPECT_EQ(again.ReadInteger("Mine", "number", -1), round) << text;
  }
  EXPECT_GT(accepted, 30);
  theError.clear();
}

TEST_F(IniFile, CommentsAndOtherSectionsOutliveAChange) {
  path = folder + "kept.ini";
  put(path, "; head\n\n[Keep]\n; why\na=1\n\n[Go]\nb=2\n");
  CIniFile* const ini = CreateIniFile(path);
  ASSERT_NE(ini, nullptr);
  ini->EraseSection("Go");
  ini->EraseSection("Never there");
  ini->WriteInteger("Keep", "a", 5);
  EXPECT_TRUE(DeleteIniFile(ini, true));
  const std::string text = textOf(path);
  for (const char* kept : {"; head", "; why", "[Keep]", "a = 5"}) {
    EXPECT_NE(text.find(kept), std::string::npos) << kept << " in\n" << text;
  }
  EXPECT_EQ(text.find("Go"), std::string::npos);
  EXPECT_TRUE(DeleteIniFile(nullptr, true));
}

TEST_F(IniFile, SaveWritesOnlyWhatChangedAndTellsWhatItCannot) {
  path = folder + "a.ini";
  put(path, "[S]\nk=1\n");
  {
    CIniFile ini(path);
    ini.WriteInteger("S", "k", 1);
    EXPECT_TRUE(ini.Save());
  }
  EXPECT_EQ(textOf(path), "[S]\nk=1\n") << "an unchanged file is not rewritten";
  put(folder + "file", "");
  CIniFile nowhere(folder + "none");
  nowhere.WriteInteger("S", "k", 2);
  std::filesystem::create_directory(folder + "none");
  EXPECT_FALSE(nowhere.Save());
  EXPECT_NE(theError.getMessage().find(folder + "none"), std::string::npos);
  theError.clear();
}

TEST_F(IniFile, AListIsNamesPartedByCommas) {
  const struct {
    const char* text;
    std::vector<std::string> names;
  } cases[] = {
      {"", {}},
      {" ,\t, ,", {}},
      {"One", {"One"}},
      {" B ,\tA\t,,B,", {"B", "A", "B"}},
      {"Track edit, Größe = 3", {"Track edit", "Größe = 3"}},
  };
  CIniFile ini(path);
  EXPECT_TRUE(ini.ReadStringList("S", "missing").empty());
  for (const auto& c : cases) {
    ini.WriteString("S", "k", c.text);
    EXPECT_EQ(ini.ReadStringList("S", "k"), c.names) << c.text;
  }
}

TEST_F(IniFile, AssociationsAreStoredByNameAndUnknownNamesChangeNothing) {
  const SIniAssociation rows[] = {
      {"X_First_One", nullptr, 3}, {"X_Other", "Shown", -1}, {"", "", -1}, {"X_Beyond", "", 8}};
  const CIniAssociations table(rows, "X", -1);
  EXPECT_EQ(table.Rows().size(), 2u);
  EXPECT_EQ(table.DefaultValue(), -1);
  EXPECT_EQ(table.SymbolicName(3), "X_First_One");
  EXPECT_EQ(table.DisplayName(3), "First One");
  EXPECT_EQ(table.DisplayName(-1), "Shown");
  EXPECT_EQ(table.SymbolicName(99), "");
  int value = 55;
  EXPECT_FALSE(table.ValueBySymbolicName("", value));
  EXPECT_FALSE(table.ValueBySymbolicName("X_Beyond", value));
  EXPECT_FALSE(table.ValueByDisplayName("X_Other", value));
  EXPECT_EQ(value, 55);
  EXPECT_TRUE(table.ValueByDisplayName("First One", value));
  EXPECT_EQ(value, 3);

  CIniFile ini(path);
  ini.WriteAssociation(table, "S", "k", -1);
  EXPECT_EQ(ini.ReadString("S", "k", ""), "X_Other");
  EXPECT_EQ(ini.ReadAssociation(table, "S", "k", 3), -1);
  for (const char* unknown : {"x_other", "-1", "Shown", ""}) {
    ini.WriteString("S", "k", unknown);
    EXPECT_EQ(ini.ReadAssociation(table, "S", "k", 3), 3) << unknown;
  }
}

}  // namespace
