#include "KeyNames.h"

#include <algorithm>
#include <iterator>

#include "ToolObj/UserInput.h"

namespace {

struct SKeyName {
  int key;
  const char* name;
};

constexpr SKeyName KEY_NAMES[] = {
    {0x01, "lbutton"},    {0x02, "rbutton"},     {0x04, "mbutton"},  {0x08, "backspace"},
    {0x09, "tab"},        {0x0D, "return"},      {0x10, "shift"},    {0x11, "ctrl"},
    {0x12, "alt"},        {0x13, "pause"},       {0x14, "capslock"}, {0x1B, "esc"},
    {0x20, "space"},      {0x21, "pageup"},      {0x22, "pagedown"}, {0x23, "end"},
    {0x24, "home"},       {0x25, "left"},        {0x26, "up"},       {0x27, "right"},
    {0x28, "down"},       {0x2C, "printscreen"}, {0x2D, "insert"},   {0x2E, "del"},
    {0x60, "num0"},       {0x61, "num1"},        {0x62, "num2"},     {0x63, "num3"},
    {0x64, "num4"},       {0x65, "num5"},        {0x66, "num6"},     {0x67, "num7"},
    {0x68, "num8"},       {0x69, "num9"},        {0x6A, "num*"},     {0x6B, "num+"},
    {0x6D, "num-"},       {0x6E, "num."},        {0x6F, "num/"},     {0x70, "f1"},
    {0x71, "f2"},         {0x72, "f3"},          {0x73, "f4"},       {0x74, "f5"},
    {0x75, "f6"},         {0x76, "f7"},          {0x77, "f8"},       {0x78, "f9"},
    {0x79, "f10"},        {0x7A, "f11"},         {0x7B, "f12"},      {0x90, "numlock"},
    {0x91, "scrolllock"},
};

// Keys that carry two characters: without and with Shift.
struct SCharacterKey {
  char plain;
  char shifted;
  int key;
};

constexpr SCharacterKey CHARACTER_KEYS[] = {
    {'0', ')', 0x30},  {'1', '!', 0x31}, {'2', '@', 0x32}, {'3', '#', 0x33},  {'4', '$', 0x34},
    {'5', '%', 0x35},  {'6', '^', 0x36}, {'7', '&', 0x37}, {'8', '*', 0x38},  {'9', '(', 0x39},
    {';', ':', 0xBA},  {'=', '+', 0xBB}, {',', '<', 0xBC}, {'-', '_', 0xBD},  {'.', '>', 0xBE},
    {'/', '?', 0xBF},  {'`', '~', 0xC0}, {'[', '{', 0xDB}, {'\\', '|', 0xDC}, {']', '}', 0xDD},
    {'\'', '"', 0xDE},
};

}  // namespace

int keyOfCharacter(char character) {
  if (character >= 'a' && character <= 'z') return 0x41 + (character - 'a');
  if (character >= 'A' && character <= 'Z') return (0x41 + (character - 'A')) | KEY_NEEDS_SHIFT;
  for (const SCharacterKey& entry : CHARACTER_KEYS) {
    if (entry.plain == character) return entry.key;
    if (entry.shifted == character) return entry.key | KEY_NEEDS_SHIFT;
  }
  return NO_KEY;
}

const CKeyNameTable& CKeyNameTable::Instance() {
  static const CKeyNameTable table;
  return table;
}

int CKeyNameTable::lookup(const std::string& name) const {
  const SKeyName* found =
      std::find_if(std::begin(KEY_NAMES), std::end(KEY_NAMES),
                   [&name](const SKeyName& entry) { return entry.name == name; });
  return found == std::end(KEY_NAMES) ? 0 : found->key;
}
