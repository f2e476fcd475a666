#include "session/ProcessList.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "../../platform/support/temp_folder.h"
#include "Complaint.h"
#include "session/ProcessListFile.h"
#include "support/FileLock.h"
#include "support/Files.h"

namespace {

SStabilizeOptions shotOf(const std::string& output, int in = 1001, int out = 1041) {
  SStabilizeOptions options;
  options.input = "/scans/reel 7/scan.####.dpx";
  options.output = output;
  options.in = in;
  options.out = out;
  auto entry = std::make_shared<CPDLEntry>();
  entry->FirstElement().MakeNewChild("StabilizerParameters").SetAttribInteger("GoodFramesIn", 1);
  options.entry = entry;
  return options;
}

TEST(ProcessList, EverythingOfAShotComesBackFromItsText) {
  CProcessList list;
  SStabilizeOptions options = shotOf("/out/<a & \"b\">\nline two \xff.mov");
  options.overwrite = options.verify = true;
  options.maxResidual = 0.1;
  options.report = "/r.json";
  options.graph = "/g.svg";
  options.compare = "/c.mp4";
  ASSERT_EQ(list.add(options), 1);
  ASSERT_EQ(list.add(shotOf("null:")), 2);
  list.find(2)->state = EShotState::failed;
  list.find(2)->message = "frame 1004: 'no' \"space\"";
  list.find(2)->beganWriting = "2026-01-01T00:00:00Z";

  CProcessList back = CProcessList::FromText(list.toText());
  EXPECT_EQ(back.toText(), list.toText());
  const SStabilizeOptions& first = back.find(1)->options;
  EXPECT_EQ(first.input, options.input);
  EXPECT_EQ(first.output, options.output);
  EXPECT_EQ(first.report + first.graph + first.compare, "/r.json/g.svg/c.mp4");
  EXPECT_EQ(first.in, 1001);
  EXPECT_EQ(first.out, 1041);
  EXPECT_TRUE(first.overwrite && first.verify);
  EXPECT_EQ(first.maxResidual, 0.1);
  EXPECT_EQ(first.entry->FirstElement().GetChild(0).GetAttribInteger("GoodFramesIn", 0), 1);
  EXPECT_FALSE(back.find(2)->options.overwrite);
  EXPECT_EQ(back.find(2)->state, EShotState::failed);
  EXPECT_EQ(back.find(2)->message, list.find(2)->message);
  EXPECT_EQ(back.find(2)->beganWriting, "2026-01-01T00:00:00Z");
}

TEST(ProcessList, ANumberIsGivenOnce) {
  CProcessList list;
  for (int number : {1, 2, 3}) EXPECT_EQ(list.add(shotOf("null:")), number);
  list.remove(3);
  list.remove(1);
  CProcessList back = CProcessList::FromText(list.toText());
  EXPECT_EQ(back.find(1), nullptr);
  EXPECT_EQ(back.add(shotOf("null:")), 4);
}

TEST(ProcessList, TwoShotsDoNotWriteTheSameFrames) {
  CProcessList list;
  list.add(shotOf("/out.####.dpx", 1, 10));
  EXPECT_EQ(list.add(shotOf("/out.####.dpx", 10, 20)), 2) << "the rest of the shot";
  EXPECT_NE(complaintOf<CProcessListError>([&] {
              list.add(shotOf("/out.####.dpx", 15, 30));
            }).find("entry 2"),
            std::string::npos);
  SStabilizeOptions replacing = shotOf("/out.####.dpx", 15, 30);
  replacing.overwrite = true;
  EXPECT_EQ(list.add(replacing), 3);
}

struct SForeign {
  const char* name;
  std::string text;
  const char* says;
};

std::string listOf(const std::string& entries, const std::string& next = "9") {
  return "<ProcessList Version='1' Next='" + next + "'>" + entries + "</ProcessList>";
}

std::string entryWith(const std::string& attributes) {
  return "<Entry " + attributes + "><PDLEntry/></Entry>";
}

const std::string GOOD = "Input='/i' Output='/o' In='1' Out='2' ";
const std::string WAITING = "State='waiting' " + GOOD;

std::string nested(int depth) {
  std::string open, close;
  for (int i = 0; i < depth; ++i) {
    open += "<a>";
    close += "</a>";
  }
  return open + close;
}

const SForeign FOREIGN[] = {
    {"Empty", "", "no process list"},
    {"Rubbish",
     std::string("\x7f"
                 "ELF\0\1\2",
                 7),
     "no process list"},
    {"NotClosed", "<ProcessList Version='1' Next='1'><Entry", "byte"},
    {"OtherRoot", "<html/>", "html: not a process list"},
    {"ToolsEntryAlone", "<PDLEntry/>", "PDLEntry: not a process list"},
    {"NoVersion", "<ProcessList Next='1'/>", "no Version"},
    {"NewerVersion", "<ProcessList Version='2' Next='1'/>", "Version=\"2\""},
    {"NoNext", "<ProcessList Version='1'/>", "no Next"},
    {"NextIsTaken", listOf(entryWith("Number='9' " + WAITING)), "Next=\"9\""},
    {"NextBeyondAll", listOf("", "2147483647"), "Next"},
    {"DeepNesting", nested(200000), "nested"},
    {"DeepEntry", listOf("<Entry Number='1' " + WAITING + ">" + nested(200) + "</Entry>"),
     "nested"},
    {"EntityInANumber",
     "<!DOCTYPE a [<!ENTITY x '1'>]>" + listOf(entryWith("Number='&x;' " + WAITING)), "Number"},
    {"OtherElement", listOf("<Shot/>"), "element 1 is no Entry but \"Shot\""},
    {"NoNumber", listOf(entryWith(WAITING)), "no Number"},
    {"NumberZero", listOf(entryWith("Number='0' " + WAITING)), "Number=\"0\""},
    {"HugeNumber", listOf(entryWith("Number='2147483647' " + WAITING)), "Number=\"2147483647\""},
    {"NumberTwice", listOf(entryWith("Number='3' " + WAITING) + entryWith("Number='3' " + WAITING)),
     "two entries have the number 3"},
    {"UnknownState",
     listOf(entryWith("Number='1' " + WAITING) + entryWith("Number='2' State='idle' " + GOOD)),
     "Entry element 2 (number 2): State=\"idle\""},
    {"NoInput", listOf(entryWith("Number='1' State='done' Output='/o' In='1' Out='2'")),
     "no Input"},
    {"NoMarks", listOf(entryWith("Number='1' State='done' Input='/i' Output='/o' In='1'")),
     "no Out"},
    {"MarkTooLarge",
     listOf(entryWith("Number='1' State='done' Input='/i' Output='/o' In='1' Out='99999999999'")),
     "Out=\"99999999999\""},
    {"MarkNotANumber",
     listOf(entryWith("Number='1' State='done' Input='/i' Output='/o' In='nan' Out='2'")),
     "In=\"nan\""},
    {"OverwritePerhaps", listOf(entryWith("Number='1' Overwrite='perhaps' " + WAITING)),
     "Overwrite=\"perhaps\""},
    {"ResidualInfinite", listOf(entryWith("Number='1' MaxResidual='inf' " + WAITING)),
     "MaxResidual=\"inf\""},
    {"NoSettings", listOf("<Entry Number='1' " + WAITING + "/>"), "one entry of the tool"},
    {"TwoSettings", listOf("<Entry Number='1' " + WAITING + "><PDLEntry/><PDLEntry/></Entry>"),
     "one entry of the tool"},
};

using ForeignList = TempFolder;

TEST_F(ForeignList, IsRefusedByNameAndPlaceAndStaysAsItIs) {
  const std::string path = folder + "foreign.pdl";
  const CProcessListFile file(path);
  for (const SForeign& foreign : FOREIGN) {
    SCOPED_TRACE(foreign.name);
    put(path, foreign.text);
    bool edited = false;
    const std::function<void()> acts[] = {
        [&] { file.read(); }, [&] { file.change([&](CProcessList&) { edited = true; }, true); }};
    for (const auto& act : acts) {
      const std::string complaint = complaintOf<CProcessListError>(act);
      EXPECT_NE(complaint.find(path), std::string::npos) << complaint;
      EXPECT_NE(complaint.find(foreign.says), std::string::npos) << complaint;
    }
    EXPECT_FALSE(edited);
    EXPECT_EQ(textOf(path), foreign.text);
    EXPECT_EQ(entries(), 1);
  }
}

class ProcessListFile : public TempFolder {
 protected:
  const std::string path_ = folder + "list.pdl";
  const CProcessListFile file_{path_};
  void add() const {
    file_.change([](CProcessList& list) { list.add(shotOf("null:")); }, true);
  }
};

TEST_F(ProcessListFile, AddersAtTheSameTimeLoseNothing) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([this] {
      for (int round = 0; round < 8; ++round) add();
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(file_.read().shots().size(), 32u);
  EXPECT_EQ(entries(), 1) << "locks leave nothing behind";
}

TEST_F(ProcessListFile, AChangeThatFailsChangesNothing) {
  add();
  const std::string before = textOf(path_);
  EXPECT_THROW(file_.change([](CProcessList& list) {
    list.remove(1);
    throw std::runtime_error("no");
  }),
               std::runtime_error);
  EXPECT_EQ(textOf(path_), before);
  const CProcessListFile none(folder + "none.pdl");
  EXPECT_NE(
      complaintOf<CProcessListError>([&] { none.change([](CProcessList&) {}); }).find("none.pdl"),
      std::string::npos);
  EXPECT_EQ(entries(), 1);
}

TEST_F(ProcessListFile, WhatARunnerLeftBehindReadsAsInterrupted) {
  add();
  file_.change([](CProcessList& list) { list.find(1)->state = EShotState::running; });
  {
    const CFileClaim runner(file_.realPath());
    EXPECT_EQ(file_.read().find(1)->state, EShotState::running);
  }
  EXPECT_EQ(file_.read().find(1)->state, EShotState::interrupted);
}

TEST_F(ProcessListFile, ALinkStaysAndLeadsToTheSameList) {
  add();
  std::filesystem::create_symlink("list.pdl", folder + "link.pdl");
  const CProcessListFile linked(folder + "link.pdl");
  linked.change([](CProcessList& list) { list.add(shotOf("null:")); });
  EXPECT_TRUE(std::filesystem::is_symlink(folder + "link.pdl"));
  EXPECT_EQ(file_.read().shots().size(), 2u);
  const CFileClaim runner(file_.realPath());
  EXPECT_TRUE(linked.isBeingRun());
}

}  // namespace
