#pragma once

#include <string>
#include <string_view>

/// True when the path ends in the extension, given with its dot and in lower case; the path's may
/// be in any case.
bool HasExtension(const std::string& path, std::string_view extension);
