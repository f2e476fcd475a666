#include "support/BinManager.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "support/Files.h"

namespace {

// Room for the leading dot, the hash and the ending within the 255 bytes of a file name.
constexpr std::size_t kLongestName = 200;

/// FNV-1a, 64 bits (Fowler, Noll, Vo). Stored in file names; do not change.
std::uint64_t hashOf(const std::string& text) {
  std::uint64_t hash = 0xcbf29ce484222325u;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
  return hash;
}

std::string hashed(const std::string& name, const std::string& wholePath) {
  char hash[24];
  std::snprintf(hash, sizeof hash, "-%016llx", static_cast<unsigned long long>(hashOf(wholePath)));
  return name.substr(0, kLongestName) + hash;
}

/// The same for every way to write the path of one clip.
std::string wholePathOf(const std::string& clipPath) {
  std::error_code problem;
  const std::filesystem::path whole = std::filesystem::absolute(clipPath, problem);
  return problem ? clipPath : whole.lexically_normal().string();
}

}  // namespace

std::string CBinManager::desktopFileName(const std::string& clipPath) const {
  const std::string wholePath = wholePathOf(clipPath);
  const std::string folder = GetFilePath(wholePath);
  const std::string name = wholePath.substr(folder.size());
  if (::access(folder.c_str(), W_OK | X_OK) != 0) {
    return StateFolder() + "/stabilize/desktop/" + hashed(name, wholePath) + ".ini";
  }
  const bool fits = name.size() <= kLongestName;
  return folder + "." + (fits ? name : hashed(name, wholePath)) + ".desktop.ini";
}

CIniFile* CBinManager::openDesktop(const std::string& clipPath) const {
  return CreateIniFile(desktopFileName(clipPath));
}

bool CBinManager::closeDesktop(CIniFile* desktop, bool save) const {
  return DeleteIniFile(desktop, save);
}
