// Part of every test program: settings and state lie in a folder of the program's own, so that no
// test reads or writes a person's.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

namespace {

class COwnFolders : public ::testing::Environment {
 public:
  void SetUp() override {
    std::string name = testing::TempDir() + "stab_home_XXXXXX";
    path_ = mkdtemp(name.data());
    setenv("XDG_CONFIG_HOME", (path_ + "/config").c_str(), 1);
    setenv("XDG_STATE_HOME", (path_ + "/state").c_str(), 1);
  }
  void TearDown() override { std::filesystem::remove_all(path_); }

 private:
  std::string path_;
};

[[maybe_unused]] const auto* const ownFolders =
    ::testing::AddGlobalTestEnvironment(new COwnFolders);

}  // namespace
