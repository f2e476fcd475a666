#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Numbers as settings and process lists store them: the same text in every locale. Blanks around
/// the text are ignored; anything else that does not belong to it makes it no number.

std::string_view WithoutBlanks(std::string_view text);

std::optional<std::int64_t> IntegerOf(std::string_view text);
/// Finite numbers only: no setting of ours has a use for an infinity or for "nan".
std::optional<double> DoubleOf(std::string_view text);
/// true/false, yes/no, on/off, 1/0, in any case.
std::optional<bool> BoolOf(std::string_view text);

/// The shortest text that reads back as the same double.
std::string TextOf(double value);
