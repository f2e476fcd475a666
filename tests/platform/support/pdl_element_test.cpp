#include "support/PDLElement.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>

#include "support/ErrorReport.h"

namespace {

std::unique_ptr<CPDLEntry> reread(const CPDLEntry& entry) {
  return CPDLEntry::FromText(entry.ToText());
}

TEST(CPDLElement, AttributesOfEveryKindReadBack) {
  CPDLEntry entry;
  CPDLElement tool = entry.FirstElement().MakeNewChild("Tool");
  tool.SetAttribInteger("I", INT_MIN);
  tool.SetAttribDouble("D", 1.0 / 3);
  tool.SetAttribBool("B", true);
  tool.SetAttribString("S", "<a & \"b\">\n\t'c' Größe");
  tool.SetAttribRectangle("R", {-1, 2, INT_MAX, INT_MIN});
  tool.SetAttribInteger("I", INT_MAX);  // replaced, not doubled

  const auto read = reread(entry);
  ASSERT_NE(read, nullptr) << theError.getMessage();
  ASSERT_EQ(read->FirstElement().GetChildCount(), 1);
  const CPDLElement back = read->FirstElement().GetChild(0);
  EXPECT_EQ(back.GetName(), "Tool");
  EXPECT_EQ(back.GetAttribInteger("I", 0), INT_MAX);
  EXPECT_EQ(back.GetAttribDouble("D", 0), 1.0 / 3);
  EXPECT_TRUE(back.GetAttribBool("B", false));
  EXPECT_EQ(back.GetAttribString("S", ""), "<a & \"b\">\n\t'c' Größe");
  EXPECT_EQ(back.GetAttribRectangle("R", {}), (SRect{-1, 2, INT_MAX, INT_MIN}));
  EXPECT_EQ(entry.ToText(), read->ToText());
}

TEST(CPDLElement, IntegerReadTakesTheIntegerPart) {
  const struct {
    const char* text;
    int value;
  } cases[] = {
      {"12.75", 12}, {"-12.75", -12},           {"7", 7},           {" 8 ", 8},    {"1e2", 100},
      {"-0.5", 0},   {"2147483647.9", INT_MAX}, {"2147483648", -9}, {"1e300", -9}, {"nan", -9},
      {"", -9},      {"12 apples", -9},         {"12,5", -9}};
  CPDLEntry entry;
  CPDLElement element = entry.FirstElement();
  for (const auto& c : cases) {
    element.SetAttribString("v", c.text);
    EXPECT_EQ(element.GetAttribInteger("v", -9), c.value) << c.text;
  }
}

TEST(CPDLElement, RectanglesNeedExactlyFourIntegers) {
  CPDLEntry entry;
  CPDLElement element = entry.FirstElement();
  const SRect fallback{9, 9, 9, 9};
  for (const char* text : {"", "1 2 3", "1 2 3 4 5", "1 2 3 x", "1,2,3,4", "1 2 3 9999999999"}) {
    element.SetAttribString("R", text);
    EXPECT_EQ(element.GetAttribRectangle("R", fallback), fallback) << text;
  }
  element.SetAttribString("R", "  1\t2  3 4 ");
  EXPECT_EQ(element.GetAttribRectangle("R", fallback), (SRect{1, 2, 3, 4}));
}

TEST(CPDLElement, ChildrenAreCountedAndReachedInAnyOrderWhileTheyGrow) {
  CPDLEntry entry;
  const CPDLElement reader = entry.FirstElement();
  CPDLElement writer = entry.FirstElement();
  EXPECT_EQ(reader.GetChildCount(), 0);
  EXPECT_TRUE(reader.GetChild(0).IsNull());
  for (int round = 0; round < 3; ++round) {
    for (int i = 0; i < 5; ++i) {
      writer.MakeNewChild("C").SetAttribInteger("n", round * 5 + i);
    }
    const int count = (round + 1) * 5;
    ASSERT_EQ(reader.GetChildCount(), count);
    for (const int index : {0, count - 1, 3, 1, count - 2, 4}) {
      EXPECT_EQ(reader.GetChild(index).GetAttribInteger("n", -1), index);
    }
    EXPECT_TRUE(reader.GetChild(count).IsNull());
    EXPECT_TRUE(reader.GetChild(-1).IsNull());
  }
  const auto mixed = CPDLEntry::FromText("<a>text<!-- c --><b n='1'/>more<c n='2'/>end</a>");
  ASSERT_NE(mixed, nullptr);
  EXPECT_EQ(mixed->FirstElement().GetChildCount(), 2);
  EXPECT_EQ(mixed->FirstElement().GetChild(1).GetName(), "c");
}

TEST(CPDLElement, NullElementReadsAsEmptyAndIgnoresWrites) {
  CPDLElement null;
  null.SetAttribInteger("a", 1);
  EXPECT_TRUE(null.IsNull());
  EXPECT_EQ(null.GetAttribInteger("a", 7), 7);
  EXPECT_EQ(null.GetName(), "");
  EXPECT_EQ(null.GetChildCount(), 0);
  EXPECT_TRUE(null.GetChild(0).IsNull());
  EXPECT_TRUE(null.MakeNewChild("x").IsNull());
}

TEST(CPDLEntry, HandlesOutliveAMove) {
  CPDLEntry entry;
  CPDLElement first = entry.FirstElement();
  const CPDLEntry moved = std::move(entry);
  first.MakeNewChild("late");
  EXPECT_EQ(moved.FirstElement().GetChildCount(), 1);
}

std::string nested(int depth) {
  std::string open, close;
  for (int i = 0; i < depth; ++i) {
    open += "<a>";
    close += "</a>";
  }
  return open + close;
}

TEST(CPDLEntry, TextsThatAreNoSingleTreeAreRefusedWithAReason) {
  const std::string bomb =
      "<!DOCTYPE a [<!ENTITY x \"yyyyyyyyyy\"><!ENTITY z \"&x;&x;&x;&x;\">]><a v='&z;'/>";
  for (const std::string& text :
       {std::string(), std::string("   "), std::string("plain text"), std::string("<a>"),
        std::string("<a></b>"), std::string("<a/><b/>"), std::string("<a/>text"),
        std::string("x<a/>"), std::string("<a b=1/>"), std::string("<"), std::string("<a/>\0<", 6),
        std::string(1000, '<'), nested(102), nested(300000)}) {
    theError.clear();
    EXPECT_EQ(CPDLEntry::FromText(text), nullptr) << text.substr(0, 40);
    EXPECT_NE(theError.getError(), 0) << text.substr(0, 40);
    EXPECT_NE(theError.getMessage(), "") << text.substr(0, 40);
  }
  theError.clear();
  EXPECT_NE(CPDLEntry::FromText(nested(100)), nullptr);
  EXPECT_NE(CPDLEntry::FromText("<?xml version=\"1.0\"?>\n<!-- c -->\n<a/>\n"), nullptr);
  const auto harmless = CPDLEntry::FromText(bomb);
  ASSERT_NE(harmless, nullptr);
  EXPECT_EQ(harmless->FirstElement().GetAttribString("v", ""), "&z;") << "nothing is expanded";
}

TEST(CPDLEntry, EntitiesOfTheDocumentsOwnAreNotExpanded) {
  std::string laughs = "<!DOCTYPE a [<!ENTITY e0 \"haha\">";
  for (int i = 1; i < 40; ++i) {
    const std::string name = "e" + std::to_string(i);
    const std::string inner = "&e" + std::to_string(i - 1) + ";";
    laughs += "<!ENTITY " + name + " \"";
    for (int n = 0; n < 10; ++n) laughs += inner;
    laughs += "\">";
  }
  laughs += "]><a v='&e39;'><b>&e39;</b></a>";
  const auto entry = CPDLEntry::FromText(laughs);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->FirstElement().GetAttribString("v", ""), "&e39;");
  EXPECT_LT(entry->ToText().size(), 100u);
}

// Small pieces make a tree many times the size of its text; such a text is not even parsed.
TEST(CPDLEntry, TextsOfTooManyPiecesAreRefused) {
  for (const std::string piece : {"<b/>", "<b/>x", "<b a=''/>"}) {
    std::string text = "<a>";
    while (text.size() < (std::size_t{64} << 20)) text += piece;
    theError.clear();
    EXPECT_EQ(CPDLEntry::FromText(text + "</a>"), nullptr);
    EXPECT_NE(theError.getMessage().find("gigabyte"), std::string::npos);
  }
  theError.clear();
}

TEST(CPDLEntry, AnyTextIsEitherRefusedOrStaysTheSame) {
  std::mt19937 random(11);
  const std::string pieces[] = {"<a>",       "</a>", "<b v='1'/>", "<",      ">",      "/",
                                "'",         "\"",   "&lt;",       "&#0;",   "&#x41;", "text",
                                "<!--",      "-->",  " ",          "=",      "<?p",    "?>",
                                "<![CDATA[", "]]>",  "\xff",       "<a v='", "\n",     "'/>"};
  int accepted = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string text = "<a>";
    for (unsigned n = random() % 8; n > 0; --n) text += pieces[random() % std::size(pieces)];
    const auto entry = CPDLEntry::FromText(text + "</a>");
    if (entry == nullptr) continue;
    ++accepted;
    const auto again = reread(*entry);
    ASSERT_NE(again, nullptr) << text << "\n" << entry->ToText();
    EXPECT_EQ(again->FirstElement().GetChildCount(), entry->FirstElement().GetChildCount()) << text;
  }
  EXPECT_GT(accepted, 1000);
  theError.clear();
}

}  // namespace
