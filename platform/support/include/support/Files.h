#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// True for anything but a folder.
bool DoesFileExist(const std::string& path);
/// Folder part with its trailing separator; empty when there is none.
std::string GetFilePath(const std::string& path);
/// The user's base folders by the XDG base directory rules, without trailing separator. Nothing is
/// created.
std::string ConfigFolder();
std::string StateFolder();
/// Reads a regular file of at most `limit` bytes into `text`. On false `text` stands as it was and
/// `theError` names file and cause.
bool ReadFileWhole(const std::string& path, std::string& text, std::size_t limit);
/// Writes the whole text under a temporary name beside `path` and renames it. On false nothing is
/// left behind, an old file stands as it was, and `theError` names file and cause (its code is the
/// negative errno). A file that is there keeps its permissions, a link stays one.
bool WriteFileWhole(const std::string& path, std::string_view text);
