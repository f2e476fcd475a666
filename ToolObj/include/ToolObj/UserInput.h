#pragma once

#include <memory>
#include <string>
#include <vector>

/// One key or mouse-button event, or the parsed form of a binding text. Key codes are the
/// virtual-key codes that bindings are written against.
class CUserInput {
 public:
  enum EAction {
    ACTION_NONE,
    ACTION_KEY_DOWN,
    ACTION_KEY_UP,
    ACTION_BUTTON_DOWN,
    ACTION_BUTTON_UP
  };
  enum EModifier { MODIFIER_SHIFT = 1, MODIFIER_CTRL = 2, MODIFIER_ALT = 4 };

  virtual ~CUserInput() = default;

  void reset();
  /// Binding text: blanks, "Ctrl+", "Alt+", "Shift+" in this order, key token, event word; letter
  /// case does not matter. 0, or: -1 empty, -2 ends in the key token, -3 too long (text above 511,
  /// token above 127 characters), -4 unknown key, -5 no key event word, -6 no button event word. A
  /// failed parse leaves the input partly filled.
  int parse(const std::string& text);
  /// Same action (1 to 4), same key, same three modifier bits.
  bool matches(const CUserInput& other) const;

  int action = 0;
  int key = 0;
  int modifiers = 0;
  int x = 0;  ///< pointer position on the screen; not part of matching
  int y = 0;
  int imageX = 0;  ///< pointer position in image pixels
  int imageY = 0;
};

/// Names of keys in binding texts.
class CKeyNameTable {
 public:
  static const CKeyNameTable& Instance();
  /// 0 when no name equals `name` exactly.
  int lookup(const std::string& name) const;
};

/// Rows of a tool's command table and of its bindings; the arrays are static and not owned.
struct SToolCommandTableEntry {
  int commandNumber;
  const char* name;
};
class CToolCommandTable {
 public:
  /// A count below 1 gives an empty table.
  CToolCommandTable(int count, const SToolCommandTableEntry* entries);
  virtual ~CToolCommandTable() = default;
  int getCount() const { return count_; }
  /// Null for an index out of range.
  const SToolCommandTableEntry* getEntry(int index) const;

 private:
  int count_;
  const SToolCommandTableEntry* entries_;
};

struct SUserInputConfigEntry {
  int commandNumber;
  const char* bindingText;
};
class CUserInputConfiguration {
 public:
  CUserInputConfiguration(int count, const SUserInputConfigEntry* entries);
  virtual ~CUserInputConfiguration() = default;
  int getCount() const { return count_; }
  /// Null for an index out of range.
  const SUserInputConfigEntry* getEntry(int index) const;

 private:
  int count_;
  const SUserInputConfigEntry* entries_;
};

/// One input-to-command pair of a tool.
class CToolUserInputMapEntry {
 public:
  CToolUserInputMapEntry(const CUserInput& input, int commandNumber)
      : input(input), commandNumber(commandNumber) {}
  virtual ~CToolUserInputMapEntry() = default;

  CUserInput input;
  int commandNumber;
};

/// Ordered input-to-command pairs of one tool.
class CToolUserInputMap {
 public:
  virtual ~CToolUserInputMap() = default;
  /// A later binding of the same input wins and keeps the earlier one's place.
  void add(const CUserInput& input, int commandNumber);
  /// Null when nothing matches.
  const CToolUserInputMapEntry* find(const CUserInput& input) const;
  /// -1 when nothing matches.
  int lookupCommand(const CUserInput& input) const;
  int count() const { return static_cast<int>(entries_.size()); }

 private:
  std::vector<std::unique_ptr<CToolUserInputMapEntry>> entries_;
};
