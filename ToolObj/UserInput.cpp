#include "ToolObj/UserInput.h"

#include <algorithm>
#include <string_view>

#include "KeyNames.h"

namespace {

constexpr std::size_t MAX_TEXT_LENGTH = 511;
constexpr std::size_t MAX_TOKEN_LENGTH = 127;
constexpr int MODIFIER_MASK =
    CUserInput::MODIFIER_SHIFT | CUserInput::MODIFIER_CTRL | CUserInput::MODIFIER_ALT;

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

// The end of a text is its end, a terminating zero or a line feed.
bool isEnd(std::string_view text, std::size_t position) {
  return position >= text.size() || text[position] == '\n';
}

// Cuts `text` behind the first occurrence of `prefix`, wherever it stands.
bool skipBehind(std::string_view& text, std::string_view prefix) {
  const std::size_t found = text.find(prefix);
  if (found == std::string_view::npos) return false;
  text.remove_prefix(found + prefix.size());
  return true;
}

bool isMouseButton(int key) {
  return key == 0x01 || key == 0x02 || key == 0x04;
}

}  // namespace

void CUserInput::reset() {
  action = key = modifiers = 0;
  x = y = imageX = imageY = 0;
}

int CUserInput::parse(const std::string& bindingText) {
  reset();
  std::string lowered = bindingText.substr(0, bindingText.find('\0'));
  if (lowered.size() > MAX_TEXT_LENGTH) return PARSE_TOO_LONG;
  std::transform(lowered.begin(), lowered.end(), lowered.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });

  std::string_view rest = lowered;
  while (!rest.empty() && isBlank(rest.front())) rest.remove_prefix(1);
  if (isEnd(rest, 0)) return PARSE_EMPTY;

  if (skipBehind(rest, "ctrl+")) modifiers |= MODIFIER_CTRL;
  if (skipBehind(rest, "alt+")) modifiers |= MODIFIER_ALT;
  if (skipBehind(rest, "shift+")) modifiers |= MODIFIER_SHIFT;

  std::size_t length = 0;
  for (; isEnd(rest, length) || !isBlank(rest[length]); ++length) {
    if (isEnd(rest, length)) return PARSE_NO_EVENT;
    if (length >= MAX_TOKEN_LENGTH) return PARSE_TOO_LONG;
  }
  if (!parseKey(rest.substr(0, length))) return PARSE_UNKNOWN_KEY;
  return parseEvent(rest.substr(length));
}

bool CUserInput::parseKey(std::string_view token) {
  if (token.size() != 1) {
    key = CKeyNameTable::Instance().lookup(std::string(token));
    return key != 0;
  }
  const int scan = keyOfCharacter(token.front());
  if (scan == NO_KEY) return false;
  key = scan & 0xFF;
  if (scan & KEY_NEEDS_SHIFT) modifiers |= MODIFIER_SHIFT;
  return true;
}

int CUserInput::parseEvent(std::string_view words) {
  const auto contains = [words](std::string_view word) {
    return words.find(word) != std::string_view::npos;
  };
  if (isMouseButton(key)) {
    if (contains("buttondown"))
      action = ACTION_BUTTON_DOWN;
    else if (contains("buttonup"))
      action = ACTION_BUTTON_UP;
    else
      return PARSE_NO_BUTTON_EVENT;
    return 0;
  }
  if (contains("keydown"))
    action = ACTION_KEY_DOWN;
  else if (contains("keyup"))
    action = ACTION_KEY_UP;
  else
    return PARSE_NO_KEY_EVENT;
  return 0;
}

bool CUserInput::matches(const CUserInput& other) const {
  return action == other.action && action >= ACTION_KEY_DOWN && action <= ACTION_BUTTON_UP &&
         (modifiers & MODIFIER_MASK) == (other.modifiers & MODIFIER_MASK) && key == other.key;
}

CToolCommandTable::CToolCommandTable(int count, const SToolCommandTableEntry* entries)
    : count_(std::max(count, 0)), entries_(count > 0 ? entries : nullptr) {}

const SToolCommandTableEntry* CToolCommandTable::getEntry(int index) const {
  return index < 0 || index >= count_ ? nullptr : entries_ + index;
}

CUserInputConfiguration::CUserInputConfiguration(int count, const SUserInputConfigEntry* entries)
    : count_(std::max(count, 0)), entries_(count > 0 ? entries : nullptr) {}

const SUserInputConfigEntry* CUserInputConfiguration::getEntry(int index) const {
  return index < 0 || index >= count_ ? nullptr : entries_ + index;
}

void CToolUserInputMap::add(const CUserInput& input, int commandNumber) {
  for (const auto& entry : entries_) {
    if (entry->input.matches(input)) {
      entry->commandNumber = commandNumber;
      return;
    }
  }
  entries_.push_back(std::make_unique<CToolUserInputMapEntry>(input, commandNumber));
}

const CToolUserInputMapEntry* CToolUserInputMap::find(const CUserInput& input) const {
  const auto found = std::find_if(entries_.begin(), entries_.end(), [&input](const auto& entry) {
    return entry->input.matches(input);
  });
  return found == entries_.end() ? nullptr : found->get();
}

int CToolUserInputMap::lookupCommand(const CUserInput& input) const {
  const CToolUserInputMapEntry* entry = find(input);
  return entry ? entry->commandNumber : -1;
}
