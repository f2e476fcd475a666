#include "session/PluginLibrary.h"

#include <gtest/gtest.h>

#include "Complaint.h"

namespace {

TEST(PluginLibrary, SaysWhatIsWrongWithAnOddOne) {
  const struct {
    const char* file;
    const char* says;
  } cases[] = {{"/nowhere/at/all.so", "/nowhere/at/all.so"},
               {ODD_PLUGIN_SOURCE, "cannot be loaded"},
               {ODD_PLUGIN_WITHOUT_CREATE, "_Create"},
               {ODD_PLUGIN_WITHOUT_PROPERTIES, "_WriteProperties"}};
  for (const auto& odd : cases) {
    const std::string complaint =
        complaintOf<CPluginError>([&] { CPluginLibrary library(odd.file); });
    EXPECT_NE(complaint.find(odd.says), std::string::npos) << complaint;
    EXPECT_NE(complaint.find(odd.file), std::string::npos) << complaint;
  }
}

TEST(PluginLibrary, APluginWithoutTheToolIsNamed) {
  CPluginLibrary library(ODD_PLUGIN_WITHOUT_TOOL);
  EXPECT_EQ(library.version(), "9.9.9.9");
  EXPECT_EQ(library.legalText(), "");
  const std::string complaint = complaintOf<CPluginError>([&] { library.createTool("Stabilize"); });
  EXPECT_NE(complaint.find("Stabilize"), std::string::npos);
}

}  // namespace
