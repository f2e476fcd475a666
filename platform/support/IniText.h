#pragma once

#include <string>
#include <string_view>

/// Number of the first line (from 1) that is neither blank, comment, [section] nor key = value, or
/// that holds control characters; 0 when every line is one of these. Such a text was not written by
/// us, and writing it back would lose what it holds.
int FirstLineThatIsNoIni(std::string_view text);

/// A value as it stands on its line. A plain value stands as it is. One that the line could not
/// hold (blanks at its ends, line breaks, a leading quote) is put in quotes, with \" \\ \n \r
/// inside.
std::string QuotedIniValue(const std::string& value);
/// The reverse. A text that is not quoted from end to end is its own value.
std::string UnquotedIniValue(std::string_view text);
