// Many shots: collected in a process list, run one after another, taken up where a run ended.
#include <gtest/gtest.h>
#include <signal.h>

#include <memory>

#include "Program.h"

namespace {

// A sanitizer reserves terabytes of addresses.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr const char* MEMORY_LIMIT = "";
#else
constexpr const char* MEMORY_LIMIT = "ulimit -v 2000000; ";
#endif

namespace fs = std::filesystem;

class Queue : public ProgramTest {
 protected:
  void makeShot(const std::string& name, int frames = 4, const char* size = "320 --height 240") {
    mustRun("mkdir -p " + name + " && stabilize test-shot -o " + name +
            "/scan.####.dpx --dust 0 --no-subject -q --width " + size + " --frames " +
            std::to_string(frames));
  }
  std::string list() const { return fileText("list.pdl"); }
  bool lists(const std::string& text) { return says(run("stabilize queue list list.pdl"), text); }
  /// A run of the list that has begun to write its third frame into `output`.
  std::unique_ptr<CRunningProgram> runInTheMiddle(const std::string& output) {
    auto program =
        std::make_unique<CRunningProgram>(folder, "exec '" STAB_PROGRAM "' queue run list.pdl -q");
    waitForFile(*program, output + "/scan.1003.dpx");
    return program;
  }
};

TEST_F(Queue, AShotThatFailsFailsAlone) {
  for (const char* name : {"a", "b", "c"}) {
    makeShot(name);
    const SRun added = run("stabilize queue add list.pdl " + std::string(name) + " -o out-" + name +
                           "/scan.####.dpx --motion smooth --matting off");
    ASSERT_EQ(added.status, 0) << added.output;
    EXPECT_TRUE(says(added, "frames 1001 to 1004")) << added.output;
  }
  mustRun("mv b gone && mkdir elsewhere");
  const SRun first = run("cd elsewhere && stabilize queue run ../list.pdl");
  EXPECT_EQ(first.status, 1);
  EXPECT_TRUE(says(first, "entry 1: done: ")) << first.output;
  EXPECT_TRUE(says(first, "stabilize: entry 2: failed: ")) << first.output;
  EXPECT_TRUE(says(first, "entry 3: done: ")) << first.output;
  EXPECT_TRUE(says(first, "2 done, 1 failed, 0 left")) << first.output;
  EXPECT_TRUE(exists("out-c/scan.1004.dpx"));
  EXPECT_TRUE(lists("failed")) << "and says why";

  const std::string before = list();
  EXPECT_EQ(run("stabilize queue run list.pdl").status, 1) << "an entry stands failed";
  EXPECT_EQ(list(), before) << "and nothing was left to run";
  mustRun("mv gone b");
  const SRun again = run("stabilize queue run list.pdl --retry-failed");
  EXPECT_EQ(again.status, 0) << again.output;
  EXPECT_TRUE(says(again, "3 done, 0 failed, 0 left")) << again.output;
  expectSameFrames("out-b/scan.", "out-a/scan.", 4);
}

TEST_F(Queue, AnEntryMakesWhatTheCommandMakes) {
  makeShot("a", 6);
  const std::string options =
      " --stabilize rotation --motion match --reference 1003 --fill black --point 100,80 "
      "--point 200,150 --point 150,60 --track-box 12 --matting 4,5,310,230 --verify ";
  mustRun("stabilize a -o direct/scan.####.dpx --report direct.json" + options);
  mustRun("stabilize queue add list.pdl a -o queued/scan.####.dpx --report queued.json" + options);
  const SRun done = run("stabilize queue run list.pdl");
  ASSERT_EQ(done.status, 0) << done.output;
  EXPECT_TRUE(says(done, "3 of 3 points used")) << done.output;
  EXPECT_TRUE(says(done, "weave")) << done.output;
  expectSameFrames("queued/scan.", "direct/scan.", 6);
  EXPECT_EQ(run("grep -c verification queued.json").status, 0);
}

TEST_F(Queue, AKilledRunIsTakenUpWithTheSameBytes) {
  makeShot("a", 60, "640 --height 480");
  makeShot("b");
  mustRun("stabilize a -o whole/scan.####.dpx -q");
  mustRun("stabilize queue add list.pdl a -o out/scan.####.dpx -q");
  mustRun("stabilize queue add list.pdl b -o other/scan.####.dpx -q");
  runInTheMiddle("out")->signal(SIGKILL);
  ASSERT_FALSE(exists("out/scan.1060.dpx")) << "the kill came too late";
  EXPECT_TRUE(lists("interrupted"));
  const SRun resumed = run("stabilize queue run list.pdl");
  EXPECT_EQ(resumed.status, 0) << resumed.output;
  EXPECT_TRUE(says(resumed, "2 done, 0 failed, 0 left")) << resumed.output;
  expectSameFrames("out/scan.", "whole/scan.", 60);
  for (const auto& entry : fs::directory_iterator(folder))
    EXPECT_EQ(entry.path().filename().string().find(".lock"), std::string::npos) << entry.path();
}

TEST_F(Queue, AnInterruptedEntryWaitsForTheNextRun) {
  makeShot("a", 60, "640 --height 480");
  mustRun("stabilize queue add list.pdl a -o out/scan.####.dpx -q");
  const auto program = runInTheMiddle("out");
  program->signal(SIGSTOP);  // it shall not end while the others come
  const SRun second = run("stabilize queue run list.pdl");
  EXPECT_EQ(second.status, 1);
  EXPECT_TRUE(says(second, "is being run already")) << second.output;
  EXPECT_EQ(run("stabilize queue remove list.pdl 1").status, 1) << "while it is run";
  mustRun("stabilize queue add list.pdl a -o late/scan.####.dpx --out 1003 -q");
  EXPECT_TRUE(lists("running"));
  program->signal(SIGINT);
  program->signal(SIGCONT);
  EXPECT_EQ(program->wait(), 130);
  EXPECT_NE(list().find("State=\"interrupted\""), std::string::npos);
  EXPECT_NE(list().find("State=\"waiting\""), std::string::npos);
  mustRun("stabilize queue run list.pdl -q");
  EXPECT_TRUE(exists("out/scan.1060.dpx"));
  EXPECT_TRUE(exists("late/scan.1002.dpx"));
}

TEST_F(Queue, ForeignFramesAreNotReplacedByAnEntryThatHadNotBegun) {
  makeShot("a");
  mustRun("stabilize queue add list.pdl a -o out/scan.####.dpx -q");
  mustRun("sed -i 's/waiting/interrupted/' list.pdl; mkdir out; echo mine > out/scan.1002.dpx");
  EXPECT_EQ(run("stabilize queue run list.pdl").status, 1);
  EXPECT_EQ(fileText("out/scan.1002.dpx"), "mine\n");
  EXPECT_TRUE(lists("exists already"));
  mustRun("rm -r out && stabilize queue reset list.pdl 1 && stabilize queue run list.pdl -q");
  EXPECT_NE(run("stabilize queue list list.pdl --json").output.find("\"done\""), std::string::npos);
  mustRun("stabilize queue remove list.pdl 1");
  EXPECT_EQ(list().find("<Entry"), std::string::npos);
}

TEST_F(Queue, AnAddThatFailsChangesNothing) {
  makeShot("a");
  mustRun("stabilize queue add list.pdl a -o out/scan.####.dpx -q");
  const std::string before = list();
  const struct {
    const char* arguments;
    int status;
    const char* says;
  } cases[] = {{"nowhere.mov -o o.mov", 1, "nowhere.mov"},
               {"a -o a/scan.####.dpx --overwrite", 1, "the output is the input"},
               {"a -o out/scan.####.dpx", 1, "entry 1 writes to the same output"},
               {"a -o none/none/o.####.dpx", 1, "no such folder"},
               {"a -o o.####.dpx --report none/r.json", 1, "none: no such folder"},
               {"a -o o.####.dpx --in 5", 2, "--in 5"},
               {"a -o o.####.dpx --search 1", 2, "--search 1"},
               {"a -o o.####.dpx --point 3,100", 2, "track box"},
               {"a", 2, "--output"}};
  for (const auto& bad : cases) {
    const SRun done = run(std::string("stabilize queue add list.pdl ") + bad.arguments);
    EXPECT_EQ(done.status, bad.status) << bad.arguments << "\n" << done.output;
    EXPECT_TRUE(says(done, bad.says)) << bad.arguments << "\n" << done.output;
    EXPECT_EQ(list(), before) << bad.arguments;
  }
  EXPECT_EQ(run("stabilize queue add new.pdl nowhere.mov -o o.mov").status, 1);
  EXPECT_FALSE(exists("new.pdl"));
}

TEST_F(Queue, AHostileListIsRefusedAndAHostileEntryFailsAlone) {
  makeShot("a");
  mustRun("stabilize queue add list.pdl a -o out/scan.####.dpx -q");
  mustRun("stabilize queue add list.pdl a -o fine/scan.####.dpx -q");
  mustRun(
      "mkdir bad && head -c 3000000 /dev/urandom > bad/rubbish && truncate -s 1G bad/vast && "
      "mkfifo bad/pipe && yes '<a>' | head -c 3000000 > bad/deep && "
      "{ echo '<!DOCTYPE l [<!ENTITY a \"xxxxxxxxxx\">'; for i in b c d e f g h i; do "
      "echo \"<!ENTITY $i '&a;&a;&a;&a;&a;&a;&a;&a;&a;'>\"; done; "
      "echo ']><ProcessList Version=\"&i;\"/>'; } > bad/bomb && mkdir bad/folder");
  const auto contents = [this](const std::string& file) {
    const bool small = fs::is_regular_file(folder + file) && fs::file_size(folder + file) < 4000000;
    return small ? fileText(file) : std::string();
  };
  for (const char* name : {"rubbish", "vast", "pipe", "deep", "bomb", "folder"}) {
    const std::string file = std::string("bad/") + name;
    const std::string before = contents(file);
    for (const char* act : {"run %", "list %", "remove % 1", "add % a -o new/scan.####.dpx"}) {
      std::string line = std::string(MEMORY_LIMIT) + "stabilize queue " + act;
      line.replace(line.find('%'), 1, file);
      const SRun refused = run(line);
      EXPECT_EQ(refused.status, 1) << line << "\n" << refused.output;
      EXPECT_TRUE(says(refused, file)) << line << "\n" << refused.output;
    }
    EXPECT_EQ(contents(file), before);
  }
  EXPECT_EQ(fs::file_size(folder + "bad/vast"), std::uintmax_t{1} << 30);
  EXPECT_FALSE(exists("new"));

  mustRun("sed -i '0,/TrackBoxExtentX=\"10\"/s//TrackBoxExtentX=\"1000000000\"/' list.pdl");
  const SRun done = run("stabilize queue run list.pdl");
  EXPECT_EQ(done.status, 1) << done.output;
  EXPECT_TRUE(says(done, "entry 1: failed")) << done.output;
  EXPECT_TRUE(says(done, "TrackBoxExtentX=\"1000000000\"")) << done.output;
  EXPECT_TRUE(says(done, "entry 2: done")) << done.output;
  EXPECT_FALSE(exists("out"));
}

TEST_F(Queue, TenEntriesInOneProcess) {
  makeShot("a", 3, "160 --height 120");
  for (int i = 0; i < 10; ++i)
    mustRun("stabilize queue add list.pdl a -o null: --point 80,60 --track-box 10 --search 10 -q");
  const SRun done = run("stabilize queue run list.pdl --threads 2");
  EXPECT_EQ(done.status, 0) << done.output;
  EXPECT_TRUE(says(done, "10 done, 0 failed, 0 left")) << done.output;
}

}  // namespace
