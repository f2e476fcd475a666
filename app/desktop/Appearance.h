#pragma once

enum class EAppearance { system, light, dark };

/// The program's colours, now and for windows to come.
void ApplyAppearance(EAppearance appearance);
