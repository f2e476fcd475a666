#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// One key or mouse-button event, or the parsed form of a binding text. Key codes are the
/// virtual-key codes that bindings are written against; mouse buttons are 1 (left), 2 (right) and
/// 4 (middle). A plain value.
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

  /// Failures of `parse`.
  enum EParseResult {
    PARSE_EMPTY = -1,            ///< nothing but blanks and tabs
    PARSE_NO_EVENT = -2,         ///< the text ends inside or before the key token
    PARSE_TOO_LONG = -3,         ///< text above 511 or key token above 127 characters
    PARSE_UNKNOWN_KEY = -4,      ///< no such key name or character, or an empty token
    PARSE_NO_KEY_EVENT = -5,     ///< a key without "KeyDown" or "KeyUp"
    PARSE_NO_BUTTON_EVENT = -6,  ///< a mouse button without "ButtonDown" or "ButtonUp"
  };

  virtual ~CUserInput() = default;

  void reset();
  /// Binding text: blanks, the prefixes "Ctrl+", "Alt+", "Shift+" in this order, key token, blanks,
  /// event word; letter case does not matter. Prefixes are searched one after another, each in all
  /// that is left, so one that stands before an earlier-searched one is lost: "Shift+Ctrl+X
  /// KeyDown" is Ctrl+X. 0, or a negative EParseResult; a failed parse leaves the input partly
  /// filled.
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

 private:
  bool parseKey(std::string_view token);
  int parseEvent(std::string_view words);
};

/// Names of keys in binding texts, lower case. Immutable. THREAD: any.
class CKeyNameTable {
 public:
  static const CKeyNameTable& Instance();
  /// Key code, or 0 when no name equals `name` exactly (case too).
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
