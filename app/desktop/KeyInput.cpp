#include "KeyInput.h"

#include <QGuiApplication>
#include <utility>

namespace {

struct SKeyCode {
  int key;
  int code;
};

constexpr SKeyCode NAMED_KEYS[] = {
    {Qt::Key_Backspace, 0x08}, {Qt::Key_Tab, 0x09},      {Qt::Key_Backtab, 0x09},
    {Qt::Key_Return, 0x0D},    {Qt::Key_Enter, 0x0D},    {Qt::Key_Shift, 0x10},
    {Qt::Key_Control, 0x11},   {Qt::Key_Alt, 0x12},      {Qt::Key_Pause, 0x13},
    {Qt::Key_CapsLock, 0x14},  {Qt::Key_Escape, 0x1B},   {Qt::Key_Space, 0x20},
    {Qt::Key_PageUp, 0x21},    {Qt::Key_PageDown, 0x22}, {Qt::Key_End, 0x23},
    {Qt::Key_Home, 0x24},      {Qt::Key_Left, 0x25},     {Qt::Key_Up, 0x26},
    {Qt::Key_Right, 0x27},     {Qt::Key_Down, 0x28},     {Qt::Key_Print, 0x2C},
    {Qt::Key_Insert, 0x2D},    {Qt::Key_Delete, 0x2E},   {Qt::Key_NumLock, 0x90},
    {Qt::Key_ScrollLock, 0x91}};

constexpr SKeyCode PUNCTUATION[] = {
    {Qt::Key_Semicolon, 0xBA},    {Qt::Key_Equal, 0xBB},       {Qt::Key_Comma, 0xBC},
    {Qt::Key_Minus, 0xBD},        {Qt::Key_Period, 0xBE},      {Qt::Key_Slash, 0xBF},
    {Qt::Key_QuoteLeft, 0xC0},    {Qt::Key_BracketLeft, 0xDB}, {Qt::Key_Backslash, 0xDC},
    {Qt::Key_BracketRight, 0xDD}, {Qt::Key_Apostrophe, 0xDE}};

// What a key of the reference layout gives with Shift is still that key. A semicolon that needs
// Shift is the comma's key on the layouts that have it there.
constexpr SKeyCode SHIFTED[] = {
    {Qt::Key_Semicolon, 0xBC}, {Qt::Key_Colon, 0xBA},      {Qt::Key_Plus, 0xBB},
    {Qt::Key_Less, 0xBC},      {Qt::Key_Underscore, 0xBD}, {Qt::Key_Greater, 0xBE},
    {Qt::Key_Question, 0xBF},  {Qt::Key_AsciiTilde, 0xC0}, {Qt::Key_BraceLeft, 0xDB},
    {Qt::Key_Bar, 0xDC},       {Qt::Key_BraceRight, 0xDD}, {Qt::Key_QuoteDbl, 0xDE},
    {Qt::Key_Exclam, '1'},     {Qt::Key_At, '2'},          {Qt::Key_NumberSign, '3'},
    {Qt::Key_Dollar, '4'},     {Qt::Key_Percent, '5'},     {Qt::Key_AsciiCircum, '6'},
    {Qt::Key_Ampersand, '7'},  {Qt::Key_Asterisk, '8'},    {Qt::Key_ParenLeft, '9'},
    {Qt::Key_ParenRight, '0'}};

template <std::size_t N>
int find(const SKeyCode (&table)[N], int key) {
  for (const SKeyCode& entry : table)
    if (entry.key == key) return entry.code;
  return 0;
}

int keypadCode(int key) {
  if (key >= Qt::Key_0 && key <= Qt::Key_9) return 0x60 + key - Qt::Key_0;
  switch (key) {
    case Qt::Key_Asterisk: return 0x6A;
    case Qt::Key_Plus: return 0x6B;
    case Qt::Key_Minus: return 0x6D;
    case Qt::Key_Period:
    case Qt::Key_Comma: return 0x6E;
    case Qt::Key_Slash: return 0x6F;
    default: return find(NAMED_KEYS, key);
  }
}

/// The digit of a key in the row above the letters, whatever the layout puts there; 0: none. Both
/// window systems number the keys as the kernel does, plus eight.
int digitByPlace(const QKeyEvent& event) {
  constexpr quint32 FIRST = 10;
  static const bool isNumbered = QGuiApplication::platformName() == "xcb" ||
                                 QGuiApplication::platformName().startsWith("wayland");
  if (!isNumbered || event.nativeScanCode() < FIRST || event.nativeScanCode() > FIRST + 9) return 0;
  return "1234567890"[event.nativeScanCode() - FIRST];
}

int virtualKey(const QKeyEvent& event) {
  const int key = event.key();
  if (event.modifiers() & Qt::MetaModifier) return 0;  // the window manager's keys
  if (event.modifiers() & Qt::KeypadModifier) return keypadCode(key);
  if (const int digit = digitByPlace(event)) return digit;
  if ((key >= Qt::Key_A && key <= Qt::Key_Z) || (key >= Qt::Key_0 && key <= Qt::Key_9)) return key;
  if (key >= Qt::Key_F1 && key <= Qt::Key_F12) return 0x70 + key - Qt::Key_F1;
  if (event.modifiers() & Qt::ShiftModifier)
    if (const int code = find(SHIFTED, key)) return code;
  const int named = find(NAMED_KEYS, key);
  return named != 0 ? named : find(PUNCTUATION, key);
}

int ownModifier(int key) {
  switch (key) {
    case Qt::Key_Shift: return CUserInput::MODIFIER_SHIFT;
    case Qt::Key_Control: return CUserInput::MODIFIER_CTRL;
    case Qt::Key_Alt: return CUserInput::MODIFIER_ALT;
    default: return 0;
  }
}

}  // namespace

int ToolModifiers(Qt::KeyboardModifiers modifiers) {
  return (modifiers & Qt::ShiftModifier ? CUserInput::MODIFIER_SHIFT : 0) |
         (modifiers & Qt::ControlModifier ? CUserInput::MODIFIER_CTRL : 0) |
         (modifiers & Qt::AltModifier ? CUserInput::MODIFIER_ALT : 0);
}

CUserInput ToUserInput(const QKeyEvent& event) {
  CUserInput input;
  const bool down = event.type() != QEvent::KeyRelease;
  input.action = down ? CUserInput::ACTION_KEY_DOWN : CUserInput::ACTION_KEY_UP;
  input.key = virtualKey(event);
  const int own = ownModifier(event.key());
  input.modifiers = ToolModifiers(event.modifiers());
  input.modifiers = down ? input.modifiers | own : input.modifiers & ~own;
  return input;
}
