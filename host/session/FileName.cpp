#include "FileName.h"

#include <algorithm>
#include <filesystem>

bool HasExtension(const std::string& path, std::string_view extension) {
  const std::string given = std::filesystem::path(path).extension().string();
  return std::equal(
      given.begin(), given.end(), extension.begin(), extension.end(),
      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + ('a' - 'A') : a) == b; });
}
