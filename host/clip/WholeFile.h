#pragma once

#include <string>

/// Throws CClipError when the file ends before its content does, in the cases where the image
/// library does not notice: on reading it takes the missing part for black or ignores it, on
/// writing it does not look whether the disk was full. Looks at structure only, which is quick.
/// THREAD: any.
void RequireWholeFile(const std::string& path, const std::string& extension);
