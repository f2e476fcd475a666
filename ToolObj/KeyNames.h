#pragma once

/// Result bit: the character needs Shift on the reference layout.
constexpr int KEY_NEEDS_SHIFT = 0x100;
/// The layout has no key for the character.
constexpr int NO_KEY = -1;

/// Key code of a character on the reference (US) keyboard layout in the low byte, with
/// KEY_NEEDS_SHIFT where the character is typed with Shift; NO_KEY for any other character.
int keyOfCharacter(char character);
