#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "ToolObj/ToolObject.h"
#include "doubles/RecordingHost.h"
#include "support/Threads.h"
#include "toolkit/Application.h"
#include "tracking/TrackingPointsEditor.h"

namespace {

/// The plug-in as a host sees it: a file and seven names.
class CPluginFile {
 public:
  CPluginFile() : handle_(dlopen(STAB_PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL)) {
    EXPECT_NE(handle_, nullptr) << dlerror();
  }
  ~CPluginFile() { unload(); }
  CPluginFile(const CPluginFile&) = delete;
  CPluginFile& operator=(const CPluginFile&) = delete;

  void unload() {
    if (handle_) dlclose(handle_);
    handle_ = nullptr;
  }

  std::string version(std::int32_t* numbers) {
    return entry<std::string(std::int32_t*)>("_QTX_PluginVersion")(numbers);
  }
  CToolObject* create(const std::string& name) {
    return entry<CToolObject*(std::string)>("_Create")(name);
  }
  void* resource(std::int32_t number) { return entry<void*(std::int32_t)>("_Resource")(number); }
  const char* text(std::int32_t number) { return static_cast<const char*>(resource(number)); }
  std::int32_t send(std::int32_t message, void* data) {
    return entry<std::int32_t(std::int32_t, void*)>("_SendTheMessage")(message, data);
  }
  std::int32_t properties() { return entry<std::int32_t()>("_Properties")(); }
  std::int32_t readOrWriteProperties(const char* which) {
    return entry<std::int32_t(std::string, std::string)>(which)("a", "b");
  }

 private:
  template <typename TFunction>
  TFunction* entry(const char* name) {
    void* symbol = dlsym(handle_, name);
    EXPECT_NE(symbol, nullptr) << name;
    return reinterpret_cast<TFunction*>(symbol);
  }

  void* handle_;
};

TEST(EntryPoints, TheVersionIsTextAndNumbers) {
  CPluginFile plugin;
  std::int32_t numbers[4] = {};
  EXPECT_EQ(plugin.version(numbers), "1.2.0.0");
  const std::int32_t expected[] = {1, 2, 0, 0};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(numbers[i], expected[i]);
  EXPECT_EQ(plugin.version(nullptr), "1.2.0.0");
}

TEST(EntryPoints, ResourcesAreFoundByNumber) {
  CPluginFile plugin;
  const auto names = static_cast<const char* const*>(plugin.resource(1));
  EXPECT_STREQ(names[0], "Stabilize");
  EXPECT_STREQ(names[1], "");
  EXPECT_EQ(reinterpret_cast<std::intptr_t>(plugin.resource(2)), 1);
  EXPECT_STREQ(plugin.text(3), "Stabilize");
  for (const int number : {4, 5, 6}) {
    ASSERT_NE(plugin.text(number), nullptr);
    EXPECT_STRNE(plugin.text(number), "");
  }
  for (const int number : {-1, 0, 7, 1000}) EXPECT_EQ(plugin.resource(number), nullptr) << number;
}

TEST(EntryPoints, OneToolForItsExactName) {
  CPluginFile plugin;
  for (const char* name : {"stabilize", "Stabilize ", " Stabilize", "", "Stabiliz"}) {
    EXPECT_EQ(plugin.create(name), nullptr) << name;
  }
  CToolObject* tool = plugin.create("Stabilize");
  ASSERT_NE(tool, nullptr);
  EXPECT_EQ(plugin.create("Stabilize"), nullptr);
  EXPECT_EQ(tool->getToolName(), "Stabilize");
}

TEST(EntryPoints, PropertiesAreAccepted) {
  CPluginFile plugin;
  EXPECT_EQ(plugin.properties(), 1);
  EXPECT_EQ(plugin.readOrWriteProperties("_ReadProperties"), 1);
  EXPECT_EQ(plugin.readOrWriteProperties("_WriteProperties"), 1);
}

TEST(EntryPoints, TheHostsApplicationServesUntilTheLibraryIsUnloaded) {
  TApplication* own = Application();
  TApplication first;
  TApplication second;
  {
    CPluginFile plugin;
    EXPECT_EQ(plugin.send(1, nullptr), 0);
    EXPECT_EQ(Application(), own);
    EXPECT_EQ(plugin.send(2, &first), 1);
    EXPECT_EQ(Application(), own);
    EXPECT_EQ(plugin.send(1, &first), 0);
    EXPECT_EQ(Application(), &first);
    EXPECT_EQ(plugin.send(1, &second), 0);
    EXPECT_EQ(Application(), &second);
  }
  EXPECT_EQ(Application(), own);
}

TEST(EntryPoints, ALoadedAgainLibraryIsAFreshOne) {
  for (int round = 0; round < 3; ++round) {
    CPluginFile plugin;
    CToolObject* tool = plugin.create("Stabilize");
    ASSERT_NE(tool, nullptr) << "round " << round;
    CRecordingHost host;
    host.clip.clipPath = testing::TempDir() + "stab_plugin_shot.mov";
    host.markIn = 0;
    host.markOut = 10;
    ASSERT_EQ(tool->toolInitialize(&host), 0);
    EXPECT_EQ(tool->getToolNumber(), 20);
    tool->toolShow();
    tool->toolActivate();
    EXPECT_TRUE(tool->isToolShowing());
    EXPECT_EQ(tool->onHeartbeat(), 0);
    tool->toolDeactivate();
    tool->toolHide();
    tool->toolShutdown();
    plugin.unload();
    EXPECT_EQ(dlopen(STAB_PLUGIN_FILE, RTLD_NOW | RTLD_NOLOAD), nullptr)
        << "the library is still in the process";
  }
}

// The last instructions of a smoothing thread are the library's code too.
TEST(EntryPoints, ALibraryThatIsShutDownAmidSmoothingUnloads) {
  for (int round = 0; round < 10; ++round) {
    CRecordingHost host;
    host.clip.clipPath = testing::TempDir() + "stab_plugin_shot.mov";
    host.folderText = "/nowhere/shot";  // no place for the points that are saved on the way out
    host.markIn = 0;
    host.markOut = 200;
    CPluginFile plugin;
    CToolObject* tool = plugin.create("Stabilize");
    ASSERT_NE(tool, nullptr);
    ASSERT_EQ(tool->toolInitialize(&host), 0);
    tool->toolShow();
    tool->toolActivate();
    ASSERT_NE(host.editor, nullptr);
    host.editor->updateMarks();
    for (int frame = 0; frame < 200; ++frame) {
      host.editor->trackingArray()->PointsAt(frame).Point(0) = CTrackPoint(frame % 7, frame % 5);
    }
    host.editor->setTracked();
    tool->startProcessing(CToolObject::EVENT_PREPROCESS, false);
    tool->onHeartbeat();  // starts the thread
    tool->toolDeactivate();
    tool->toolShutdown();
    plugin.unload();
  }
}

}  // namespace
