#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "ToolObj/ToolObject.h"
#include "tool/StabilizerCommands.h"

namespace {

CUserInput parsed(const std::string& text) {
  CUserInput input;
  EXPECT_EQ(input.parse(text), 0) << text;
  return input;
}

TEST(CommandTables, EveryBindingParsesAndBelongsToANamedCommand) {
  const CUserInputConfiguration& bindings = StabilizerKeyBindings();
  const CToolCommandTable& table = StabilizerCommandTable();
  ASSERT_EQ(bindings.getCount(), 35);
  ASSERT_EQ(table.getCount(), 34);
  std::map<int, std::string> names;
  for (int i = 0; i < table.getCount(); ++i) {
    names[table.getEntry(i)->commandNumber] = table.getEntry(i)->name;
  }
  EXPECT_EQ(names.size(), 32u);
  std::vector<CUserInput> seen;
  for (int i = 0; i < bindings.getCount(); ++i) {
    const std::string text = bindings.getEntry(i)->bindingText;
    const CUserInput input = parsed(text);
    EXPECT_TRUE(names.contains(bindings.getEntry(i)->commandNumber)) << text;
    EXPECT_EQ(text.front(), ' ') << text;
    EXPECT_EQ(text.find("Key"), 18u) << text << ": event words stand in one column";
    for (const CUserInput& other : seen) EXPECT_FALSE(input.matches(other)) << text;
    seen.push_back(input);
  }
}

TEST(CommandTables, TheTablesDifferInOrderOnlyAtTheirEnd) {
  const CUserInputConfiguration& bindings = StabilizerKeyBindings();
  const CToolCommandTable& table = StabilizerCommandTable();
  for (int i = 0; i < 31; ++i) {
    EXPECT_EQ(table.getEntry(i)->commandNumber, bindings.getEntry(i)->commandNumber) << i;
  }
  const int tableEnd[] = {30, 31, 32};
  const int bindingsEnd[] = {31, 32, 30, 30};
  for (int i = 0; i < 3; ++i) EXPECT_EQ(table.getEntry(31 + i)->commandNumber, tableEnd[i]);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(bindings.getEntry(31 + i)->commandNumber, bindingsEnd[i]);
  EXPECT_EQ(table.getEntry(34), nullptr);
  EXPECT_EQ(bindings.getEntry(-1), nullptr);
}

TEST(CommandTables, KeysFindTheirCommands) {
  CToolUserInputMap map;
  const CUserInputConfiguration& bindings = StabilizerKeyBindings();
  for (int i = 0; i < bindings.getCount(); ++i) {
    map.add(parsed(bindings.getEntry(i)->bindingText), bindings.getEntry(i)->commandNumber);
  }
  struct {
    const char* keys;
    int command;
  } const cases[] = {
      {"Shift+G KeyDown", 20006},
      {"D KeyDown", 20001},
      {"Ctrl+Space KeyDown", 20010},
      {"Return KeyDown", 20014},
      {", KeyDown", 20011},
      {"Shift+, KeyDown", 20012},
      {"F1 KeyDown", 17},
      {"9 KeyDown", 23},
      {"8 KeyDown", 25},
      {"7 KeyDown", 24},
      {"Ctrl+L KeyDown", 12},
      {"Shift+L KeyDown", 13},
      {"Ctrl+Shift+E KeyDown", 30},
      {"Shift KeyUp", 32},
      {"Shift+Shift KeyDown", 31},
      {"Ctrl+Shift+Ctrl KeyDown", 28},
      {"Shift+Ctrl KeyUp", 29},
      {"Alt+G KeyDown", -1},
      {"G KeyUp", -1},
  };
  for (const auto& c : cases) EXPECT_EQ(map.lookupCommand(parsed(c.keys)), c.command) << c.keys;
}

TEST(CommandTables, NamesAreStable) {
  const CToolCommandTable& table = StabilizerCommandTable();
  struct {
    int index;
    const char* name;
  } const cases[] = {
      {0, "EXEC_BUTTON_PREVIEW_FRAME"},
      {7, "EXEC_BUTTON_PAUSE_OR_RESUME"},
      {23, "STAB_CMD_TURN_COLOR_PICKER_ON"},
      {24, "STAB_CMD_TURN_COLOR_PICKER_ON"},
      {31, "STAB_CMD_SET_MARKS_FROM_TRACK_ARRAY"},
      {33, "STAB_CMD_SHIFT_IS_OFF"},
  };
  for (const auto& c : cases) EXPECT_STREQ(table.getEntry(c.index)->name, c.name);
}

}  // namespace
