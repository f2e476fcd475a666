#include "params/StabilizerParameters.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

using P = CStabilizerParameters;

P unusual() {
  P p;
  p.TrackBoxExtentX = 1;
  p.TrackBoxExtentY = -2;
  p.SearchBoxExtentLeft = 3;
  p.SearchBoxExtentRight = 4;
  p.SearchBoxExtentUp = 5;
  p.SearchBoxExtentDown = 2147483647;
  p.GoodFramesIn = 7;
  p.GoodFramesOut = 0;
  p.RefFrameIndex = 86400;
  p.Jitter = 9.5;
  p.Alpha2 = 1.7782794100389228e-07;
  p.HMode = STABMODE_Smoothed;
  p.VMode = STABMODE_Registered;
  p.RMode = STABMODE_Flat;
  p.UFunction = U_Fcn_Thin_Plate;
  p.MissingDataFill = MISSING_DATA_Zoom;
  p.UseMatting = false;
  p.KeepOriginalMatValues = false;
  return p;
}

P throughIni(const P& written) {
  CIniFile ini("never-saved.ini");
  EXPECT_TRUE(written.WriteParameters(ini, "Stabilizer"));
  P read;
  EXPECT_TRUE(read.ReadParameters(ini, "Stabilizer"));
  return read;
}

P throughPDL(const P& written) {
  CPDLEntry entry;
  written.WritePDLEntry(entry.FirstElement());
  const auto text = CPDLEntry::FromText(entry.ToText());
  EXPECT_EQ(text->FirstElement().GetChild(0).GetName(), "StabilizerParameters");
  P read;
  read.ReadPDLEntry(text->FirstElement().GetChild(0));
  return read;
}

TEST(CStabilizerParameters, EveryFieldTravelsByBothRoads) {
  for (const auto& road : {throughIni, throughPDL}) {
    EXPECT_EQ(road(P()), P());
    EXPECT_EQ(road(unusual()), unusual());
    P extreme = unusual();
    extreme.Alpha2 = -1.0;
    extreme.RMode = STABMODE_None;
    extreme.UFunction = U_Fcn_None;
    EXPECT_EQ(road(extreme), extreme);
  }
}

TEST(CStabilizerParameters, NothingStoredLeavesTheRecordAsItWas) {
  const CIniFile ini("never-saved.ini");
  const CPDLEntry entry;
  for (const P& before : {P(), unusual()}) {
    P p = before;
    EXPECT_TRUE(p.ReadParameters(ini, "Stabilizer"));
    EXPECT_EQ(p, before);
    p.ReadPDLEntry(entry.FirstElement());
    EXPECT_EQ(p, before);
  }
  EXPECT_EQ(P().Alpha2, 0.0001);
  EXPECT_EQ(P().RMode, -1);
}

// These names and numbers stand in people's files.
TEST(CStabilizerParameters, StoredTextsAreFixed) {
  const struct {
    const char *key, *stored;
  } cases[] = {{"TrackBoxExtentX", "10"},
               {"TrackBoxExtentY", "10"},
               {"SearchBoxExtentLeft", "20"},
               {"SearchBoxExtentRight", "20"},
               {"SearchBoxExtentUp", "20"},
               {"SearchBoxExtentDown", "20"},
               {"GoodFramesIn", "1"},
               {"GoodFramesOut", "1"},
               {"RefFrameIndex", "0"},
               {"Jitter", "0"},
               {"Alpha2", "1e-04"},
               {"HMode", "STABMODE_Flat"},
               {"VMode", "STABMODE_Flat"},
               {"RMode", "STABMODE_None"},
               {"UFunction", "U_Fcn_Euclidean"},
               {"MissingDataFill", "MISSING_DATA_White"},
               {"UseMatting", "true"},
               {"KeepOriginalMatValues", "true"}};
  CIniFile ini("never-saved.ini");
  P().WriteParameters(ini, "S");
  CPDLEntry entry;
  P().WritePDLEntry(entry.FirstElement());
  const CPDLElement element = entry.FirstElement().GetChild(0);
  for (const auto& c : cases) {
    EXPECT_EQ(ini.ReadString("S", c.key, "missing"), c.stored) << c.key;
    EXPECT_EQ(element.GetAttribString(c.key, "missing"), c.stored) << c.key;
  }
}

TEST(CStabilizerParameters, NameTablesHoldTheirRowsInOrder) {
  const struct {
    const CIniAssociations& table;
    std::vector<std::pair<std::string, int>> rows;
  } cases[] = {{StabilizationModeNames(),
                {{"STABMODE_None", -1},
                 {"STABMODE_Smoothed", 0},
                 {"STABMODE_Flat", 1},
                 {"STABMODE_Registered", 2}}},
               {UFunctionNames(),
                {{"U_Fcn_Euclidean", 0},
                 {"U_Fcn_Logrithmic", 1},
                 {"U_Fcn_Thin_Plate", 3},
                 {"U_Fcn_None", 2}}},
               {MissingDataFillNames(),
                {{"MISSING_DATA_White", 0},
                 {"MISSING_DATA_Black", 1},
                 {"MISSING_DATA_Previous_Frame", 2},
                 {"MISSING_DATA_Zoom", 3}}}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.table.DefaultValue(), -1);
    ASSERT_EQ(c.table.Rows().size(), c.rows.size());
    for (std::size_t i = 0; i < c.rows.size(); ++i) {
      const auto& [name, value] = c.rows[i];
      EXPECT_EQ(c.table.Rows()[i].symbolicName, name);
      EXPECT_EQ(c.table.SymbolicName(value), name);
      int shown = -77;
      EXPECT_TRUE(c.table.ValueByDisplayName(c.table.DisplayName(value), shown)) << name;
      EXPECT_EQ(shown, value);
    }
  }
}

TEST(CStabilizerParameters, OneUnreadableValueKeepsThatFieldAlone) {
  const struct {
    const char* key;
    const char* text;
    std::function<void(P&)> expected;
  } cases[] = {
      {"HMode", "STABMODE_Wobbly", [](P&) {}},
      {"HMode", "1", [](P&) {}},
      {"HMode", "", [](P&) {}},
      {"RMode", "STABMODE_None", [](P& p) { p.RMode = -1; }},
      {"UFunction", "U_Fcn_None", [](P& p) { p.UFunction = 2; }},
      {"GoodFramesIn", "many", [](P&) {}},
      {"GoodFramesIn", "4294967297", [](P&) {}},
      {"GoodFramesIn", "-100000", [](P& p) { p.GoodFramesIn = -100000; }},
      {"Jitter", "1000.5", [](P& p) { p.Jitter = 1000.5; }},
      {"Alpha2", "0,5", [](P&) {}},
      {"UseMatting", "perhaps", [](P&) {}},
      {"UseMatting", "true", [](P& p) { p.UseMatting = true; }},
  };
  for (const auto& c : cases) {
    P expected = unusual();
    c.expected(expected);
    CIniFile ini("never-saved.ini");
    ini.WriteString("S", c.key, c.text);
    P fromIni = unusual();
    fromIni.ReadParameters(ini, "S");
    EXPECT_EQ(fromIni, expected) << c.key << " = " << c.text;

    CPDLEntry entry;
    entry.FirstElement().SetAttribString(c.key, c.text);
    P fromPDL = unusual();
    fromPDL.ReadPDLEntry(entry.FirstElement());
    EXPECT_EQ(fromPDL, expected) << c.key << " = " << c.text;
  }
}

}  // namespace
