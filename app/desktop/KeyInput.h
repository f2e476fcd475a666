#pragma once

#include <QKeyEvent>

#include "ToolObj/UserInput.h"

/// A key event as tools know it: virtual-key codes of the reference layout, by the key and not by
/// the character. A modifier counts as held while its own key goes down and as released once it is
/// up. `key` is 0 for keys that tools have no code for.
CUserInput ToUserInput(const QKeyEvent& event);

/// The three modifier bits of tools.
int ToolModifiers(Qt::KeyboardModifiers modifiers);
