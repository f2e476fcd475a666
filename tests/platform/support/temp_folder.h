#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// A folder of its own for each test, gone afterwards.
class TempFolder : public testing::Test {
 protected:
  TempFolder() {
    std::string name = testing::TempDir() + "stabilize-XXXXXX";
    folder = std::string(mkdtemp(name.data())) + "/";
  }
  ~TempFolder() override { std::filesystem::remove_all(folder); }

  static void put(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
  }
  static std::string textOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  int entries() const {
    const std::filesystem::directory_iterator all(folder);
    return static_cast<int>(std::distance(begin(all), end(all)));
  }

  std::string folder;  // with its trailing separator
};

/// Sets an environment variable for a scope.
class CEnvironment {
 public:
  CEnvironment(const char* name, const char* value) : name_(name) {
    if (const char* before = getenv(name)) before_ = before;
    hadOne_ = getenv(name) != nullptr;
    value == nullptr ? unsetenv(name) : setenv(name, value, 1);
  }
  ~CEnvironment() { hadOne_ ? setenv(name_, before_.c_str(), 1) : unsetenv(name_); }
  CEnvironment(const CEnvironment&) = delete;
  CEnvironment& operator=(const CEnvironment&) = delete;

 private:
  const char* name_;
  std::string before_;
  bool hadOne_ = false;
};
