#include "support/FileLock.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <thread>
#include <vector>

#include "support/ErrorReport.h"
#include "support/Files.h"
#include "temp_folder.h"

namespace {

using FileLock = TempFolder;

TEST_F(FileLock, ChangesUnderAFolderLockLoseNothing) {
  const std::string path = folder + "count";
  put(path, "");
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&path] {
      for (int round = 0; round < 25; ++round) {
        const CFolderLock lock(path);
        std::string text;
        if (lock.isHeld() && ReadFileWhole(path, text, 1000)) WriteFileWhole(path, text + "x");
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(textOf(path).size(), 100u);
  EXPECT_EQ(entries(), 1);
}

TEST_F(FileLock, OneClaimAtATimeAndNothingStaysBehind) {
  const std::string path = folder + "list.pdl";
  put(path, "text");
  EXPECT_FALSE(CFileClaim::isClaimed(path));
  {
    const CFileClaim first(path);
    EXPECT_TRUE(first.isHeld());
    EXPECT_TRUE(WriteFileWhole(path, "replaced while it is claimed"));
    EXPECT_TRUE(CFileClaim::isClaimed(path));
    const CFileClaim second(path);
    EXPECT_FALSE(second.isHeld());
    EXPECT_EQ(theError.getError(), -EAGAIN);
    EXPECT_NE(theError.getMessage().find(path), std::string::npos);
    EXPECT_TRUE(CFileClaim(folder + "other.pdl").isHeld());
  }
  EXPECT_FALSE(CFileClaim::isClaimed(path));
  EXPECT_EQ(entries(), 1);
  theError.clear();
}

TEST_F(FileLock, TheClaimOfAKilledProcessIsTakenOver) {
  const std::string path = folder + "list.pdl";
  int held[2];
  ASSERT_EQ(pipe(held), 0);
  const pid_t child = fork();
  if (child == 0) {
    const CFileClaim claim(path);
    const char answer = claim.isHeld() ? 'y' : 'n';
    if (write(held[1], &answer, 1) != 1) _exit(1);
    pause();
  }
  char answer = 0;
  ASSERT_EQ(read(held[0], &answer, 1), 1);
  EXPECT_EQ(answer, 'y');
  EXPECT_TRUE(CFileClaim::isClaimed(path));
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  close(held[0]);
  close(held[1]);
  EXPECT_EQ(entries(), 1) << "the marker is still there";
  EXPECT_FALSE(CFileClaim::isClaimed(path));
  EXPECT_TRUE(CFileClaim(path).isHeld());
  EXPECT_EQ(entries(), 0);
}

TEST_F(FileLock, WhatCannotBeLockedIsNamed) {
  theError.clear();
  EXPECT_FALSE(CFolderLock(folder + "none/file").isHeld());
  EXPECT_NE(theError.getMessage().find("none/"), std::string::npos) << theError.getMessage();
  theError.clear();
  EXPECT_FALSE(CFileClaim(folder + "none/file").isHeld());
  EXPECT_NE(theError.getMessage().find("none/file"), std::string::npos) << theError.getMessage();
  theError.clear();
}

}  // namespace
