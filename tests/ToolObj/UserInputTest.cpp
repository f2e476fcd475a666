#include "ToolObj/UserInput.h"

#include <gtest/gtest.h>

namespace {

constexpr int SHIFT = CUserInput::MODIFIER_SHIFT;
constexpr int CTRL = CUserInput::MODIFIER_CTRL;
constexpr int ALT = CUserInput::MODIFIER_ALT;
constexpr int DOWN = CUserInput::ACTION_KEY_DOWN;
constexpr int UP = CUserInput::ACTION_KEY_UP;

CUserInput parsed(const std::string& text) {
  CUserInput input;
  EXPECT_EQ(input.parse(text), 0) << text;
  return input;
}

}  // namespace

TEST(UserInput, ReadsBindingTexts) {
  const struct {
    const char* text;
    int action, key, modifiers;
  } cases[] = {
      {" D                KeyDown", DOWN, 0x44, 0},
      {"\t Ctrl+D\tkeyDOWN", DOWN, 0x44, CTRL},
      {" CTRL+ALT+SHIFT+z  keyup", UP, 0x5A, CTRL | ALT | SHIFT},
      {" Ctrl+Shift+Shift KeyDown", DOWN, 0x10, CTRL | SHIFT},
      {" Ctrl+Shift+Ctrl  KeyDown", DOWN, 0x11, CTRL | SHIFT},
      {" Ctrl+Shift       KeyUp", UP, 0x10, CTRL},
      {" Shift            KeyUp", UP, 0x10, 0},
      {" SPACE KeyDown", DOWN, 0x20, 0},
      {" ,                KeyDown", DOWN, 0xBC, 0},
      {" Shift+,          KeyDown", DOWN, 0xBC, SHIFT},
      {" !                KeyDown", DOWN, 0x31, SHIFT},
      {" num+             KeyDown", DOWN, 0x6B, 0},
      {" F12 KeyDown", DOWN, 0x7B, 0},
      {" lbutton ButtonDown", CUserInput::ACTION_BUTTON_DOWN, 1, 0},
      {" Shift+mbutton ButtonUp", CUserInput::ACTION_BUTTON_UP, 4, SHIFT},
      // Each prefix is searched in all that is left, so one standing too early is lost.
      {" Shift+Ctrl+X KeyDown", DOWN, 0x58, CTRL},
      // Down is looked for before up.
      {" X KeyUp KeyDown", DOWN, 0x58, 0},
  };
  for (const auto& c : cases) {
    const CUserInput input = parsed(c.text);
    EXPECT_EQ(input.action, c.action) << c.text;
    EXPECT_EQ(input.key, c.key) << c.text;
    EXPECT_EQ(input.modifiers, c.modifiers) << c.text;
  }
}

TEST(UserInput, ReferenceLayoutGivesEveryPlainCharacterItsKey) {
  const std::string characters = ";=,-./`[\\]'09az";
  const int keys[] = {0xBA, 0xBB, 0xBC, 0xBD, 0xBE, 0xBF, 0xC0, 0xDB,
                      0xDC, 0xDD, 0xDE, 0x30, 0x39, 0x41, 0x5A};
  for (std::size_t i = 0; i < characters.size(); ++i) {
    const CUserInput input = parsed(std::string(1, characters[i]) + " KeyDown");
    EXPECT_EQ(input.key, keys[i]) << characters[i];
    EXPECT_EQ(input.modifiers, 0) << characters[i];
  }
}

TEST(UserInput, SaysWhyATextIsNoBinding) {
  const std::string longest(511, ' ');
  const std::string token127(127, 'x');
  const struct {
    const char* name;
    std::string text;
    int result;
  } cases[] = {
      {"empty", "", -1},
      {"blanks only", " \t ", -1},
      {"line feed ends the text", "  \nD KeyDown", -1},
      {"zero ends the text", std::string("\0 D KeyDown", 11), -1},
      {"longest text", longest, -1},
      {"text too long", longest + " ", -3},
      {"lone key", "D", -2},
      {"line feed in the key", "D\n KeyDown", -2},
      {"prefix only", "Ctrl+", -2},
      {"longest token", token127 + " KeyDown", -4},
      {"token too long", token127 + "x KeyDown", -3},
      {"blank after a prefix", "Ctrl+ D KeyDown", -4},
      {"unknown name", "hyper KeyDown", -4},
      {"no such character", "\x80 KeyDown", -4},
      {"other word", "D pressed", -5},
      {"key with a button word", "D ButtonDown", -5},
      {"button with a key word", "lbutton KeyDown", -6},
  };
  for (const auto& c : cases) {
    CUserInput input;
    EXPECT_EQ(input.parse(c.text), c.result) << c.name;
  }
}

TEST(UserInput, ParsingForgetsWhatWasThere) {
  CUserInput input = parsed("Ctrl+D KeyDown");
  input.x = input.imageY = 7;
  EXPECT_EQ(input.parse(""), -1);
  EXPECT_EQ(input.action + input.key + input.modifiers + input.x + input.imageY, 0);
}

TEST(UserInput, MatchesActionKeyAndThreeModifierBits) {
  const CUserInput binding = parsed("Ctrl+D KeyDown");
  CUserInput event = binding;
  event.x = 5;
  event.modifiers |= 0x18;
  EXPECT_TRUE(binding.matches(event)) << "position and higher modifier bits do not count";
  event.modifiers |= SHIFT;
  EXPECT_FALSE(binding.matches(event));
  for (const int action : {0, 5, -1}) {
    CUserInput odd;
    odd.action = action;
    EXPECT_FALSE(odd.matches(odd)) << action;
  }
}

TEST(ToolUserInputMap, ALaterBindingOfAnInputWins) {
  CToolUserInputMap map;
  map.add(parsed("D KeyDown"), 1);
  map.add(parsed("G KeyDown"), 2);
  map.add(parsed("D KeyDown"), 3);
  EXPECT_EQ(map.count(), 2);
  EXPECT_EQ(map.lookupCommand(parsed("D KeyDown")), 3);
  EXPECT_EQ(map.lookupCommand(parsed("G KeyDown")), 2);
  EXPECT_EQ(map.lookupCommand(parsed("D KeyUp")), -1);
  EXPECT_EQ(map.lookupCommand(CUserInput()), -1);
}

TEST(KeyNameTable, IsCaseSensitiveAndComplete) {
  const CKeyNameTable& table = CKeyNameTable::Instance();
  EXPECT_EQ(table.lookup("Space"), 0);
  EXPECT_EQ(table.lookup(""), 0);
  const struct {
    const char* name;
    int key;
  } cases[] = {{"lbutton", 0x01},  {"rbutton", 0x02},   {"mbutton", 0x04},     {"backspace", 0x08},
               {"tab", 0x09},      {"return", 0x0D},    {"alt", 0x12},         {"pause", 0x13},
               {"capslock", 0x14}, {"esc", 0x1B},       {"pageup", 0x21},      {"pagedown", 0x22},
               {"end", 0x23},      {"home", 0x24},      {"left", 0x25},        {"up", 0x26},
               {"right", 0x27},    {"down", 0x28},      {"printscreen", 0x2C}, {"insert", 0x2D},
               {"del", 0x2E},      {"num0", 0x60},      {"num9", 0x69},        {"num*", 0x6A},
               {"num-", 0x6D},     {"num.", 0x6E},      {"num/", 0x6F},        {"f1", 0x70},
               {"numlock", 0x90},  {"scrolllock", 0x91}};
  for (const auto& c : cases) EXPECT_EQ(table.lookup(c.name), c.key) << c.name;
}

TEST(CommandTables, GiveEntriesInsideTheirCountOnly) {
  static const SToolCommandTableEntry commands[] = {{5, "FIVE"}, {6, "SIX"}};
  static const SUserInputConfigEntry bindings[] = {{5, "D KeyDown"}};
  const CToolCommandTable table(2, commands);
  EXPECT_STREQ(table.getEntry(1)->name, "SIX");
  EXPECT_EQ(table.getEntry(2), nullptr);
  EXPECT_EQ(table.getEntry(-1), nullptr);
  EXPECT_EQ(CToolCommandTable(-3, commands).getCount(), 0);
  const CUserInputConfiguration configuration(1, bindings);
  EXPECT_STREQ(configuration.getEntry(0)->bindingText, "D KeyDown");
  EXPECT_EQ(configuration.getEntry(1), nullptr);
  EXPECT_EQ(CUserInputConfiguration(0, bindings).getEntry(0), nullptr);
}
