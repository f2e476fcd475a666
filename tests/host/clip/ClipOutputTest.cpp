#include <sys/resource.h>

#include <csignal>
#include <thread>

#include "ClipCopies.h"
#include "TemporaryFolder.h"

namespace {

std::unique_ptr<IClipReader> SmallShot(int frames = 3) {
  return OpenClip("test:width=64,height=48,firstFrame=1,frames=" + std::to_string(frames), 1);
}

/// Files cannot grow beyond so many bytes, as on a full disk, while this lives.
class CFullDisk {
 public:
  explicit CFullDisk(rlim_t bytes) {
    signal_ = std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit small{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }
  ~CFullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, signal_);
  }
  CFullDisk(const CFullDisk&) = delete;
  CFullDisk& operator=(const CFullDisk&) = delete;

 private:
  rlimit before_{};
  void (*signal_)(int) = nullptr;
};

}  // namespace

TEST(ClipOutput, IsCheckedBeforeAnyWork) {
  const CTemporaryFolder folder;
  CopyClip(*SmallShot(), folder("in.%04d.dpx"));
  CopyClip(*SmallShot(), folder("in.mkv"));
  folder.makeFolder("full");
  folder.makeFile("full/in.0002.dpx");
  folder.makeFile("old.mkv");
  folder.makeFolder("links");
  std::filesystem::create_directory_symlink(folder(""), folder("same"));
  std::filesystem::create_symlink(folder("in.0003.dpx"), folder("links/x.0003.dpx"));
  std::filesystem::create_symlink(folder("in.mkv"), folder("links/x.mkv"));
  struct SCase {
    const char* what;
    const char* source;
    const char* output;
    bool overwrite;
    std::vector<std::string> message;  ///< empty: accepted
  };
  const std::string input = "the output is the input";
  const SCase cases[] = {
      {"a new name", "in.%04d.dpx", "out.%04d.dpx", false, {}},
      {"a folder to be made", "in.%04d.dpx", "new/out.%04d.dpx", false, {}},
      {"two folders to be made", "in.%04d.dpx", "new/er/out.%04d.dpx", false, {"no such folder"}},
      {"no folder for a video", "in.%04d.dpx", "new/out.mkv", false, {"no such folder"}},
      {"itself", "in.%04d.dpx", "in.%04d.dpx", true, {input}},
      {"itself, said otherwise", "in.0002.dpx", "full/../in.@@@@.dpx", true, {input}},
      {"itself through a folder link", "in.%04d.dpx", "same/in.####.dpx", true, {input}},
      {"its own folder", "in.0001.dpx", "", true, {input}},
      {"a frame that links back", "in.%04d.dpx", "links/x.%04d.dpx", true, {input, "x.0003"}},
      {"a video onto itself", "in.mkv", "same/in.mkv", true, {input}},
      {"a video through a link", "in.mkv", "links/x.mkv", true, {input}},
      {"a frame exists", "in.%04d.dpx", "full/", false, {"full/in.0002.dpx", "exists already"}},
      {"a frame exists, overwrite", "in.%04d.dpx", "full/", true, {}},
      {"a video exists", "in.%04d.dpx", "old.mkv", false, {"old.mkv", "exists already"}},
      {"a video exists, overwrite", "in.%04d.dpx", "old.mkv", true, {}},
      {"one file for all", "in.%04d.dpx", "out.dpx", false, {"out.dpx", "3 frames"}},
      {"unknown type",
       "in.%04d.dpx",
       "out.foo",
       false,
       {"out.foo", ".mov", ".mkv", ".mp4", ".dpx"}},
      {"a folder for a video", "in.mkv", "full", false, {"full", "name.%04d.dpx"}},
  };
  const auto before = folder.names();
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.what);
    const SClipInfo info = OpenClip(folder(c.source), 1)->info();
    const std::string error = ErrorOf(
        [&] { CheckOutput(folder(c.output), info, info.firstFrame, info.endFrame, c.overwrite); });
    if (c.message.empty()) {
      EXPECT_EQ(error, "no error");
    }
    ExpectMentions(error, c.message);
    EXPECT_EQ(folder.names(), before);
  }
  EXPECT_NO_THROW(CheckOutput("null:", SmallShot()->info(), 1, 4, false));
}

TEST(ClipOutput, TypesThatCannotHoldTheSamplesAreRefused) {
  const CTemporaryFolder folder;
  const auto shot = SmallShot();
  ExpectMentions(ErrorOf([&] { CopyClip(*shot, folder("a.%d.exr")); }), {"OpenEXR"});
  EXPECT_TRUE(folder.names().empty());
}

TEST(ClipOutput, AFullDiskLeavesWholeFramesOnly) {
  struct SCase {
    const char* output;
    rlim_t limit;
    std::vector<std::string> message;
  };
  const SCase cases[] = {{"a.%04d.dpx", 6000, {"frame 1", "a.0001.dpx", "File too large"}},
                         {"a.%04d.tif", 3000, {"frame 1", "a.0001.tif"}},
                         {"a.%04d.png", 3000, {"frame 1", "a.0001.png"}},
                         {"a.mkv", 3000, {"a.mkv", "File too large"}},
                         {"a.mov", 3000, {"a.mov", "File too large"}}};
  for (const SCase& c : cases) {
    SCOPED_TRACE(c.output);
    const CTemporaryFolder folder;
    const auto shot = SmallShot();
    std::string error;
    {
      const CFullDisk disk(c.limit);
      error = ErrorOf([&] { CopyClip(*shot, folder(c.output)); });
    }
    ExpectMentions(error, c.message);
    EXPECT_TRUE(folder.names().empty());
    CopyClip(*shot, folder(c.output));
    EXPECT_EQ(OpenClip(folder(c.output), 1)->info().frameCount(), 3);
  }
}

TEST(ClipOutput, AFailedOverwriteLeavesTheOldFrame) {
  const CTemporaryFolder folder;
  const auto shot = SmallShot(1);
  CopyClip(*shot, folder("a.%04d.dpx"));
  const std::string old = FileBytes(folder("a.0001.dpx"));
  {
    const CFullDisk disk(6000);
    EXPECT_NE(ErrorOf([&] { CopyClip(*shot, folder("a.%04d.dpx"), true); }), "no error");
  }
  EXPECT_TRUE(FileBytes(folder("a.0001.dpx")) == old);
  CopyClip(*shot, folder("a.%04d.dpx"), true);
  EXPECT_TRUE(FileBytes(folder("a.0001.dpx")) == old);
  EXPECT_EQ(folder.names(), std::vector<std::string>{"a.0001.dpx"});
}

TEST(ClipOutput, FramesMayComeFromSeveralThreadsInAnyOrder) {
  const CTemporaryFolder folder;
  const auto shot = SmallShot(24);
  CopyClip(*shot, folder("a.%04d.dpx"));
  const auto clip = OpenClip(folder("a.%04d.dpx"), 1);
  const auto writer = CreateClip(folder("b.%04d.dpx"), *clip, 1, 25, {});
  ASSERT_TRUE(clip->isParallel() && writer->isParallel());
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      for (int frame = 24 - t; frame >= 1; frame -= 4)
        writer->writeFrame(frame, ReadFrame(*clip, frame).data());
    });
  for (std::thread& thread : threads) thread.join();
  writer->finish();
  for (int frame = 1; frame <= 24; ++frame) {
    char a[16], b[16];
    std::snprintf(a, sizeof a, "a.%04d.dpx", frame);
    std::snprintf(b, sizeof b, "b.%04d.dpx", frame);
    EXPECT_TRUE(FileBytes(folder(a)) == FileBytes(folder(b))) << frame;
  }
}
