#include "support/Files.h"

#include <sys/stat.h>

#include "support/BinManager.h"
#include "support/ErrorReport.h"
#include "temp_folder.h"

namespace {

using Files = TempFolder;

TEST_F(Files, WritesWholeAndLeavesNothingElseBehind) {
  const std::string path = folder + "points.txt";
  ASSERT_TRUE(WriteFileWhole(path, "old"));
  const std::string text("new\0text", 8);
  ASSERT_TRUE(WriteFileWhole(path, text));
  EXPECT_EQ(textOf(path), text);
  EXPECT_EQ(entries(), 1);
  EXPECT_TRUE(WriteFileWhole(folder + std::string(255, 'n'), "longest name"));
}

TEST_F(Files, KeepsPermissionsAndLinks) {
  const std::string real = folder + "real", link = folder + "link";
  put(real, "old");
  chmod(real.c_str(), 0640);
  std::filesystem::create_symlink("real", link);
  ASSERT_TRUE(WriteFileWhole(link, "new"));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(textOf(real), "new");
  struct stat status {};
  ASSERT_EQ(stat(real.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST_F(Files, FailedWriteNamesTheFileAndLeavesTheFolderAlone) {
  std::filesystem::create_directory(folder + "taken");
  put(folder + "taken/inside", "x");
  put(folder + "file", "x");
  ASSERT_EQ(mkfifo((folder + "pipe").c_str(), 0600), 0);
  for (const std::string& path : {folder + "none/file", folder + "taken", folder + "file/below",
                                  folder + "pipe", folder + std::string(300, 'n')}) {
    theError.clear();
    EXPECT_FALSE(WriteFileWhole(path, "text")) << path;
    EXPECT_LT(theError.getError(), 0) << path;
    EXPECT_NE(theError.getMessage().find(path), std::string::npos) << theError.getMessage();
  }
  EXPECT_EQ(entries(), 3);
  EXPECT_TRUE(std::filesystem::is_fifo(folder + "pipe"));
  theError.clear();
}

TEST_F(Files, ReadsOnlyRegularFilesUpToTheLimit) {
  put(folder + "ten", "0123456789");
  ASSERT_EQ(mkfifo((folder + "pipe").c_str(), 0600), 0);
  std::string text;
  EXPECT_TRUE(ReadFileWhole(folder + "ten", text, 10));
  EXPECT_EQ(text, "0123456789");
  EXPECT_FALSE(ReadFileWhole(folder + "ten", text, 9));
  put(folder + "vast", "");
  std::filesystem::resize_file(folder + "vast", std::uintmax_t{1} << 40);
  EXPECT_FALSE(ReadFileWhole(folder + "vast", text, std::size_t{1} << 40 >> 1));
  for (const std::string& path : {folder + "none", folder, folder + "pipe"}) {
    EXPECT_FALSE(ReadFileWhole(path, text, 100)) << path;
    EXPECT_NE(theError.getMessage().find(path), std::string::npos) << theError.getMessage();
  }
  EXPECT_EQ(text, "0123456789");
  theError.clear();
}

TEST_F(Files, NamesAndExistence) {
  put(folder + "there", "");
  EXPECT_TRUE(DoesFileExist(folder + "there"));
  EXPECT_FALSE(DoesFileExist(folder + "not"));
  EXPECT_FALSE(DoesFileExist(folder));
  EXPECT_EQ(GetFilePath("/a/b/c.dpx"), "/a/b/");
  EXPECT_EQ(GetFilePath("/c.dpx"), "/");
  EXPECT_EQ(GetFilePath("c.dpx"), "");
  EXPECT_EQ(GetFilePath("/a/b/"), "/a/b/");
}

TEST_F(Files, BaseFoldersFollowTheEnvironmentAndIgnoreRelativePaths) {
  const CEnvironment home("HOME", "/home/archivist");
  const struct {
    const char* set;
    const char* config;
  } cases[] = {{"/etc/xdg-mine/", "/etc/xdg-mine"},
               {"relative", "/home/archivist/.config"},
               {"", "/home/archivist/.config"},
               {nullptr, "/home/archivist/.config"}};
  for (const auto& c : cases) {
    const CEnvironment config("XDG_CONFIG_HOME", c.set);
    EXPECT_EQ(ConfigFolder(), c.config);
    EXPECT_EQ(IniFileNameFor("Stabilizer"), std::string(c.config) + "/stabilize/Stabilizer.ini");
  }
  const CEnvironment state("XDG_STATE_HOME", nullptr);
  EXPECT_EQ(StateFolder(), "/home/archivist/.local/state");
}

TEST_F(Files, ClipDesktopStandsBesideTheClip) {
  const CBinManager bin;
  const std::string clip = folder + "reel1.%04d.dpx";
  EXPECT_EQ(bin.desktopFileName(clip), folder + ".reel1.%04d.dpx.desktop.ini");
  EXPECT_EQ(bin.desktopFileName(folder + "./sub/../reel1.%04d.dpx"), bin.desktopFileName(clip));

  CIniFile* desktop = bin.openDesktop(clip);
  ASSERT_NE(desktop, nullptr);
  desktop->WriteInteger("BlueBoundingBox", "Left", 12);
  EXPECT_TRUE(bin.closeDesktop(desktop, false));
  EXPECT_EQ(entries(), 0);
  desktop = bin.openDesktop(clip);
  desktop->WriteInteger("BlueBoundingBox", "Left", 12);
  EXPECT_TRUE(bin.closeDesktop(desktop, true));
  desktop = bin.openDesktop(clip);
  EXPECT_EQ(desktop->ReadInteger("BlueBoundingBox", "Left", -1), 12);
  EXPECT_TRUE(bin.closeDesktop(desktop, false));
  EXPECT_TRUE(bin.closeDesktop(nullptr, true));

  CIniFile* const longest = bin.openDesktop(folder + std::string(250, 'n'));
  longest->WriteBool("a", "b", true);
  EXPECT_TRUE(bin.closeDesktop(longest, true)) << theError.getMessage();
}

TEST_F(Files, ClipDesktopOfAFolderThatTakesNoFilesStandsInTheStateFolder) {
  const CEnvironment state("XDG_STATE_HOME", (folder + "state").c_str());
  const CBinManager bin;
  const std::string here = bin.desktopFileName("/proc/clips/a.mov");
  EXPECT_EQ(GetFilePath(here), folder + "state/stabilize/desktop/");
  EXPECT_NE(here, bin.desktopFileName("/proc/other/a.mov"));

  CIniFile* const desktop = bin.openDesktop("/proc/clips/a.mov");
  ASSERT_NE(desktop, nullptr);
  desktop->WriteBool("a", "b", true);
  EXPECT_TRUE(bin.closeDesktop(desktop, true)) << theError.getMessage();
  EXPECT_TRUE(DoesFileExist(here));
}

}  // namespace
