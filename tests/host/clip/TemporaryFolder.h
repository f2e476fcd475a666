#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "clip/ClipReader.h"

/// A folder that is gone with the object.
class CTemporaryFolder {
 public:
  CTemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "clip-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name + "/";
  }
  ~CTemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  CTemporaryFolder(const CTemporaryFolder&) = delete;
  CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;

  /// Path of a name inside; "" is the folder with its separator.
  std::string operator()(const std::string& name) const { return path_ + name; }
  std::string makeFolder(const std::string& name) const {
    std::filesystem::create_directories(path_ + name);
    return path_ + name;
  }
  void makeFile(const std::string& name, const std::string& content = "x") const {
    std::ofstream(path_ + name, std::ios::binary) << content;
  }
  /// Everything in it, hidden files too, sorted.
  std::vector<std::string> names(const std::string& folder = "") const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(path_ + folder))
      found.push_back(entry.path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
  }

 private:
  std::string path_;
};

inline std::string FileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void RunShell(const std::string& line) {
  ASSERT_EQ(std::system((line + " > /dev/null 2>&1").c_str()), 0) << line;
}

/// The message of the CClipError that `action` throws; "no error" when it throws none.
inline std::string ErrorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const CClipError& error) {
    return error.what();
  }
  return "no error";
}

inline void ExpectMentions(const std::string& message, const std::vector<std::string>& parts) {
  for (const std::string& part : parts)
    EXPECT_NE(message.find(part), std::string::npos) << "\"" << part << "\" in: " << message;
}
